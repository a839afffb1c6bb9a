/// @file
/// The exception type of the front end, declared for users; the library itself never throws
/// it.
#pragma once

#include <nuv/core/Exception.h>

#include <string>

namespace nuv::cv {

/// The exception type of the front end, declared for users; the library itself never throws it.
class Exception : public nuv::core::Exception {
public:
    /// An exception carrying this message.
    explicit Exception(std::string const& message);
    /// Lets go of the message.
    ~Exception() override;
};

}  // namespace nuv::cv
