/// @file
/// A running number that tells variants apart: every new Variant takes the next one, and
/// copies keep the id of their original.
#pragma once

namespace nuv::core::variant {

/// A running number that tells variants apart; copies keep the id of their original.
class Id {
public:
    /// Takes the value of g_id and advances it. Not atomic: variants built on two threads
    /// at once may get the same id, and nothing relies on ids being unique.
    Id();

    /// The number.
    unsigned int value() const { return _value; }
    /// Whether the numbers are equal.
    bool operator==(Id const& other) const { return _value == other._value; }
    /// Whether the numbers differ.
    bool operator!=(Id const& other) const { return _value != other._value; }

    /// The next id to give. Starts at 1, so that 0 is never the id of a variant until the
    /// counter wraps.
    static unsigned int g_id;

private:
    unsigned int _value;
};

}  // namespace nuv::core::variant
