#pragma once

// Running the built matgraph command from a test, in a folder of the test's own that
// holds copies of the example libraries.

#include <gtest/gtest.h>

#include <string>

namespace matgraph::test {

struct ToolRun {
  int status = -1;  // the exit status; 128 + the signal when the command was killed
  std::string out;  // what it wrote on standard output
  std::string err;  // and on standard error
};

// Each test gets an empty folder work/<suite>.<test> with base.matlib and
// materials.matlib copied from examples/, and runs the command there.
class ToolTest : public ::testing::Test {
 protected:
  void SetUp() override;

  // Runs `matgraph ARGUMENTS` in the test's folder; `arguments` is shell text.
  ToolRun Run(const std::string& arguments) const;
  // Runs any shell command in the test's folder, with the command's path in $MATGRAPH.
  ToolRun Shell(const std::string& command) const;

  // Files of the test's folder.
  std::string PathOf(const std::string& name) const { return folder_ + "/" + name; }
  void Write(const std::string& name, const std::string& text) const;
  std::string Read(const std::string& name) const;

  // The text of an example, e.g. Example("materials.matlib").
  static std::string Example(const std::string& name);

 private:
  std::string folder_;
};

// `text` with the first `from` replaced by `to`; fails the test when `from` is not there.
std::string replaced(std::string text, const std::string& from, const std::string& to);

}  // namespace matgraph::test
