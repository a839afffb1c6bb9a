#include <nuv/cv/Exception.h>

namespace nuv::cv {

Exception::Exception(std::string const& message) : nuv::core::Exception(message) {}

Exception::~Exception() = default;

}  // namespace nuv::cv
