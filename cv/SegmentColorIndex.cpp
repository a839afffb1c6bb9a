#include <nuv/cv/SegmentColorIndex.h>

#include <ios>
#include <cstdio>
#include <sstream>

namespace nuv::cv {

namespace {

const std::size_t kWords = 8;
const std::size_t kDigitsPerWord = 8;

}  // namespace

SegmentColorIndex::SegmentColorIndex() {
    for (std::size_t i = 0; i < kWords; ++i) _bits[i] = 0;
}

SegmentColorIndex::SegmentColorIndex(SegmentColorIndex const& other) {
    clone(other);
}

SegmentColorIndex& SegmentColorIndex::operator=(SegmentColorIndex const& other) {
    clone(other);
    return *this;
}

void SegmentColorIndex::clone(SegmentColorIndex const& other) {
    for (std::size_t i = 0; i < kWords; ++i) _bits[i] = other._bits[i];
}

bool SegmentColorIndex::at(unsigned char value) const {
    return (_bits[value >> 5] >> (value & 31)) & 1u;
}

void SegmentColorIndex::set(unsigned char value, bool member) {
    const std::uint32_t bit = std::uint32_t(1) << (value & 31);
    if (member)
        _bits[value >> 5] |= bit;
    else
        _bits[value >> 5] &= ~bit;
}

void SegmentColorIndex::merge(SegmentColorIndex const& other) {
    for (std::size_t i = 0; i < kWords; ++i) _bits[i] |= other._bits[i];
}

std::string SegmentColorIndex::serialize() const {
    std::string text;
    text.reserve(kWords * kDigitsPerWord);
    for (std::size_t i = 0; i < kWords; ++i) text += uint32toHex(_bits[i]);
    return text;
}

bool SegmentColorIndex::load(std::string const& text) {
    if (text.size() != kWords * kDigitsPerWord) return false;
    // Hand-written tables may hold stray characters in a group; such a group keeps the
    // digits in front of them rather than failing the whole class.
    for (std::size_t i = 0; i < kWords; ++i)
        _bits[i] = hexToUint32(text.substr(i * kDigitsPerWord, kDigitsPerWord));
    return true;
}

// Written with snprintf, not a string stream: a stream that cannot grow its buffer drops
// the digits silently, and a class would be saved with an empty index.
std::string SegmentColorIndex::uint32toHex(unsigned int value) const {
    char digits[9];
    std::snprintf(digits, sizeof digits, "%08x", value);
    return digits;
}

unsigned int SegmentColorIndex::hexToUint32(std::string const& text) const {
    std::istringstream stream(text);
    // A failed extraction stores 0, which is the value wanted for a group without digits,
    // so the stream's state needs no check.
    unsigned int value = 0;
    stream >> std::hex >> value;
    return value;
}

}  // namespace nuv::cv
