/// @file
/// Reads one value from text in a chosen base.
#pragma once

#include <nuv/core/Exception.h>

#include <ios>
#include <sstream>
#include <string>

namespace nuv::core {

/// Extracts one T from the start of the text after applying the manipulator (std::hex,
/// std::dec ...). Leading blanks are skipped and whatever follows the value is ignored, so
/// "12x" reads as 12; text that holds no value throws Exception("Bad conversion").
template <typename T>
T fromString(std::string const& text, std::ios_base& (*base)(std::ios_base&) = std::dec) {
    std::istringstream stream(text);
    T value{};
    stream >> base >> value;
    if (stream.fail()) throw Exception("Bad conversion");
    return value;
}

}  // namespace nuv::core
