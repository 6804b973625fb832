#include "mat/Exceptions.h"

namespace mat {

InputFileParsingException::InputFileParsingException(const char* detail)
    : message_(std::string("InputFileParsingException: ") + detail) {}
InputFileParsingException::InputFileParsingException(const std::string& detail)
    : message_("InputFileParsingException: " + detail) {}
InputFileParsingException::~InputFileParsingException() = default;
const char* InputFileParsingException::what() const noexcept { return message_.c_str(); }

InvalidDataAccess::InvalidDataAccess(const char* detail)
    : message_(std::string("Index out of Range: ") + detail) {}
InvalidDataAccess::InvalidDataAccess(const std::string& detail)
    : message_("Index out of Range: " + detail) {}
InvalidDataAccess::~InvalidDataAccess() = default;
const char* InvalidDataAccess::what() const noexcept { return message_.c_str(); }

}  // namespace mat
