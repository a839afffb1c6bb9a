// The exception type of the front end, declared for users; the library itself never throws
// it.
#pragma once

#include <nuv/core/Exception.h>

#include <string>

namespace nuv::cv {

class Exception : public nuv::core::Exception {
public:
    explicit Exception(std::string const& message);
    ~Exception() override;
};

}  // namespace nuv::cv
