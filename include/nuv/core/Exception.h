// The exception type of the library: a message and nothing else.
#pragma once

#include <exception>
#include <string>

namespace nuv::core {

class Exception : public std::exception {
public:
    explicit Exception(std::string const& message);
    ~Exception() override;

    char const* what() const noexcept override;
    virtual std::string const& getMessage() const;

private:
    std::string _message;
};

}  // namespace nuv::core
