#pragma once

#include <string>
#include <vector>

#include "mat/IPortPath.h"

namespace mat {

class PortPath final : public IPortPath {
 public:
  void AppendNodeIndex(size_t index) override { nodeIndices_.push_back(index); }
  void SetInputPort(const char* name) override;
  void SetOutputPort(const char* name) override;
  bool IsInputPort() const override { return isInput_; }
  bool IsOutputPort() const override { return !isInput_; }
  const char* GetPortName() const override { return portName_.c_str(); }
  size_t GetNodeIndexCount() const override { return nodeIndices_.size(); }
  size_t GetNodeIndex(size_t position) const override;

 private:
  std::vector<size_t> nodeIndices_;
  bool isInput_ = false;
  std::string portName_;
};

}  // namespace mat
