#include "mat/IPortPath.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

#include "mat/Exceptions.h"
#include "mat/Functions.h"
#include "support/TestSupport.h"

namespace mat {
namespace {

struct PathReleaser {
  void operator()(IPortPath* path) const { releasePortPath(path); }
};
using PathHandle = std::unique_ptr<IPortPath, PathReleaser>;

TEST(PortPath, NewPathEndsAtAnUnnamedOutputWithoutIndices) {
  PathHandle path(createPortPath());
  EXPECT_EQ(path->GetNodeIndexCount(), 0u);
  EXPECT_FALSE(path->IsInputPort());
  EXPECT_TRUE(path->IsOutputPort());
  ASSERT_NE(path->GetPortName(), nullptr);
  EXPECT_STREQ(path->GetPortName(), "");
}

struct PortSetting {
  const char* why;
  void (*first)(IPortPath&);
  void (*second)(IPortPath&);
  bool isInput;
  const char* name;
};

const PortSetting portSettings[] = {
    {"input x, then output y", [](IPortPath& p) { p.SetInputPort("x"); },
     [](IPortPath& p) { p.SetOutputPort("y"); }, false, "y"},
    {"output y, then input x", [](IPortPath& p) { p.SetOutputPort("y"); },
     [](IPortPath& p) { p.SetInputPort("x"); }, true, "x"},
    {"input x, then input null", [](IPortPath& p) { p.SetInputPort("x"); },
     [](IPortPath& p) { p.SetInputPort(nullptr); }, true, ""},
    {"output y, then output null", [](IPortPath& p) { p.SetOutputPort("y"); },
     [](IPortPath& p) { p.SetOutputPort(nullptr); }, false, ""},
};

TEST(PortPath, LastSetPortWins) {
  for (const PortSetting& setting : portSettings) {
    SCOPED_TRACE(setting.why);
    PathHandle path(createPortPath());
    setting.first(*path);
    setting.second(*path);
    EXPECT_EQ(path->IsInputPort(), setting.isInput);
    EXPECT_EQ(path->IsOutputPort(), !setting.isInput);
    EXPECT_STREQ(path->GetPortName(), setting.name);
  }
}

TEST(PortPath, KeepsItsOwnCopyOfThePortName) {
  PathHandle path(createPortPath());
  std::string name = "base color";
  path->SetInputPort(name.c_str());
  name.assign(100, 'z');
  EXPECT_STREQ(path->GetPortName(), "base color");
}

TEST(PortPath, KeepsIndicesInAppendOrderUnchecked) {
  PathHandle path(createPortPath());
  for (size_t index : {size_t{3}, size_t{0}, size_t{3}, SIZE_MAX}) path->AppendNodeIndex(index);
  ASSERT_EQ(path->GetNodeIndexCount(), 4u);
  EXPECT_EQ(path->GetNodeIndex(0), 3u);
  EXPECT_EQ(path->GetNodeIndex(1), 0u);
  EXPECT_EQ(path->GetNodeIndex(2), 3u);
  EXPECT_EQ(path->GetNodeIndex(3), SIZE_MAX);
  EXPECT_TRUE(path->IsOutputPort()) << "appending leaves the port alone";
}

TEST(PortPath, PositionBeyondTheIndicesThrows) {
  PathHandle path(createPortPath());
  path->AppendNodeIndex(3);
  path->AppendNodeIndex(0);
  EXPECT_THROW_MSG(path->GetNodeIndex(2), InvalidDataAccess,
                   "Index out of Range: Path position 2 out of range (count 2)");
  PathHandle empty(createPortPath());
  EXPECT_THROW_MSG(empty->GetNodeIndex(0), InvalidDataAccess,
                   "Index out of Range: Path position 0 out of range (count 0)");
  releasePortPath(nullptr);
}

}  // namespace
}  // namespace mat
