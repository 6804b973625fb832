#include "tools/ToolRun.h"

#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace matgraph::test {
namespace {

std::string readWhole(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::string shellQuoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

}  // namespace

void ToolTest::SetUp() {
  const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
  folder_ =
      std::string(MATGRAPH_TOOL_WORK_DIR) + "/" + test->test_suite_name() + "." + test->name();
  std::filesystem::remove_all(folder_);
  std::filesystem::create_directories(folder_);
  for (const char* name : {"base.matlib", "materials.matlib"}) Write(name, Example(name));
}

ToolRun ToolTest::Shell(const std::string& command) const {
  const std::string errPath = folder_ + "/.stderr";
  const std::string line = "cd " + shellQuoted(folder_) +
                           " && MATGRAPH=" + shellQuoted(MATGRAPH_TOOL) + " && { " + command +
                           " ; } 2>" + shellQuoted(errPath);
  ToolRun run;
  FILE* pipe = popen(line.c_str(), "r");
  if (pipe == nullptr) {
    ADD_FAILURE() << "cannot run: " << line;
    return run;
  }
  char buffer[4096];
  size_t count = 0;
  while ((count = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) run.out.append(buffer, count);
  const int status = pclose(pipe);
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  run.err = readWhole(errPath);
  return run;
}

ToolRun ToolTest::Run(const std::string& arguments) const {
  return Shell("\"$MATGRAPH\" " + arguments);
}

void ToolTest::Write(const std::string& name, const std::string& text) const {
  std::ofstream out(PathOf(name), std::ios::binary | std::ios::trunc);
  out << text;
  ASSERT_TRUE(out.flush()) << "cannot write " << PathOf(name);
}

std::string ToolTest::Read(const std::string& name) const { return readWhole(PathOf(name)); }

std::string ToolTest::Example(const std::string& name) {
  const std::string text = readWhole(std::string(MATGRAPH_SOURCE_DIR) + "/examples/" + name);
  EXPECT_FALSE(text.empty()) << "no example " << name;
  return text;
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  const size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << "not in the text: " << from;
  if (at != std::string::npos) text.replace(at, from.size(), to);
  return text;
}

}  // namespace matgraph::test
