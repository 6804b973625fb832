#include "support/TestSupport.h"

#include <fstream>
#include <iterator>

namespace mat::test {

std::string sourcePath(const std::string& relative) {
  return std::string(MATGRAPH_SOURCE_DIR) + "/" + relative;
}

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  EXPECT_TRUE(in.good()) << "cannot read " << path;
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace mat::test
