#include <nuv/core/Exception.h>

namespace nuv::core {

Exception::Exception(std::string const& message) : _message(message) {}

Exception::~Exception() = default;

char const* Exception::what() const noexcept {
    return _message.c_str();
}

std::string const& Exception::getMessage() const {
    return _message;
}

}  // namespace nuv::core
