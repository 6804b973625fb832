#include "resolution/PortPath.h"

#include <string>

#include "mat/Exceptions.h"
#include "mat/Functions.h"

namespace mat {

void PortPath::SetInputPort(const char* name) {
  isInput_ = true;
  portName_ = name != nullptr ? name : "";
}

void PortPath::SetOutputPort(const char* name) {
  isInput_ = false;
  portName_ = name != nullptr ? name : "";
}

size_t PortPath::GetNodeIndex(size_t position) const {
  if (position >= nodeIndices_.size()) {
    throw InvalidDataAccess("Path position " + std::to_string(position) + " out of range (count " +
                            std::to_string(nodeIndices_.size()) + ")");
  }
  return nodeIndices_[position];
}

IPortPath* createPortPath() { return new PortPath(); }

void releasePortPath(const IPortPath* path) { delete path; }

}  // namespace mat
