#pragma once

// JSON text to picojson values, for tests that build the objects a reader receives.

#include <picojson.h>

#include <string>

namespace mat::test {

// The value that `text` holds; fails the test (and returns null) when it does not parse.
picojson::value parseJson(const std::string& text);

// As parseJson(), for text that must hold an object (an empty object otherwise).
picojson::object parseObject(const std::string& text);

// As parseJson(), for text that must hold an array (an empty array otherwise).
picojson::array parseArray(const std::string& text);

}  // namespace mat::test
