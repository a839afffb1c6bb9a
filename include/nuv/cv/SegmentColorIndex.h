/// @file
/// The set of values one 8-bit image channel may take for a pixel to belong to a colour class.
#pragma once

#include <cstdint>
#include <string>

namespace nuv::cv {

/// A plain 256-bit set. Value v lives in bit (v & 31) of word (v >> 5), so word 0 holds the
/// values 0..31 and word 7 the values 224..255.
class SegmentColorIndex {
public:
    /// Empty: no value is a member.
    SegmentColorIndex();
    /// A copy of the other set.
    SegmentColorIndex(SegmentColorIndex const& other);
    /// Takes the other set's values.
    SegmentColorIndex& operator=(SegmentColorIndex const& other);

    /// Takes the other set's values.
    void clone(SegmentColorIndex const& other);

    /// Whether the value is a member.
    bool at(unsigned char value) const;
    /// Makes the value a member or not.
    void set(unsigned char value, bool member);
    /// Set union with the other index.
    void merge(SegmentColorIndex const& other);

    /// 64 lower-case hexadecimal digits: the eight words from low values to high values, each
    /// written most significant digit first.
    std::string serialize() const;
    /// Reads the form of serialize(). Only the length is checked: a text that is not exactly
    /// 64 characters gives false and leaves the index alone; bad digits in a group give the
    /// value of the digits before them (0 with none), and the other groups are still read.
    bool load(std::string const& text);

    /// Eight lower-case hexadecimal digits, zero-padded.
    std::string uint32toHex(unsigned int value) const;
    /// Formatted hexadecimal extraction: blanks skipped, either case, optional sign and 0x,
    /// stops at the first non-digit; no digit at all gives 0.
    unsigned int hexToUint32(std::string const& text) const;

private:
    std::uint32_t _bits[8];
};

}  // namespace nuv::cv
