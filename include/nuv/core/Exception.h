/// @file
/// The exception type of the library: a message and nothing else.
#pragma once

#include <exception>
#include <string>

namespace nuv::core {

/// The exception type of the library: a message and nothing else.
class Exception : public std::exception {
public:
    /// An exception carrying this message.
    explicit Exception(std::string const& message);
    /// Lets go of the message.
    ~Exception() override;

    /// The message.
    char const* what() const noexcept override;
    /// The message.
    virtual std::string const& getMessage() const;

private:
    std::string _message;
};

}  // namespace nuv::core
