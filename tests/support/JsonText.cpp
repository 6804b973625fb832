#include "support/JsonText.h"

#include <gtest/gtest.h>

namespace mat::test {

picojson::value parseJson(const std::string& text) {
  picojson::value value;
  const std::string error = picojson::parse(value, text);
  EXPECT_EQ(error, "") << "in test JSON: " << text;
  return error.empty() ? value : picojson::value();
}

picojson::object parseObject(const std::string& text) {
  const picojson::value value = parseJson(text);
  EXPECT_TRUE(value.is<picojson::object>()) << "not an object: " << text;
  return value.is<picojson::object>() ? value.get<picojson::object>() : picojson::object();
}

picojson::array parseArray(const std::string& text) {
  const picojson::value value = parseJson(text);
  EXPECT_TRUE(value.is<picojson::array>()) << "not an array: " << text;
  return value.is<picojson::array>() ? value.get<picojson::array>() : picojson::array();
}

}  // namespace mat::test
