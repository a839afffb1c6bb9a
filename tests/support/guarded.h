// Image regions inside larger buffers, for the differential tests of the primitives: guard
// bytes around every row and around the whole, a chosen misalignment of the first byte,
// padded rows and rows walked upward (a negative step).
#pragma once

#include <nuv/primitives.h>

#include <cstdint>
#include <random>
#include <vector>

namespace nuv::test {

struct Layout {
    int padding = 0;        // bytes between the end of one row and the start of the next
    int misalign = 0;       // offset of the buffer's first row from a 64-byte boundary
    bool negative = false;  // rows laid bottom-up: the first row has the highest address
    int guard = 32;         // guard bytes before the first and after the last row in memory
};

class GuardedImage {
public:
    static constexpr std::uint8_t guardByte = 0xA5;

    GuardedImage(int rowBytes, int height, Layout layout = {});
    ~GuardedImage();
    GuardedImage(GuardedImage const&) = delete;
    GuardedImage& operator=(GuardedImage const&) = delete;

    // What a primitive is given: the region's first row and the signed step.
    Ipp8u* first() { return _first; }
    Ipp8u const* first() const { return _first; }
    int step() const { return _step; }
    int rowBytes() const { return _rowBytes; }
    int height() const { return _height; }

    Ipp8u* row(int y) { return _first + static_cast<std::ptrdiff_t>(y) * _step; }
    Ipp8u const* row(int y) const { return _first + static_cast<std::ptrdiff_t>(y) * _step; }

    void fill(std::uint8_t value);
    void fillRandom(std::mt19937& rng);
    // The region's bytes row by row, without padding.
    std::vector<std::uint8_t> packed() const;
    // True if no byte outside the rows (padding and the guards) has changed.
    bool guardsIntact() const;
    // With AddressSanitizer, makes any read of the guards and padding a report until called
    // with false (a granule's leading bytes before a row stay readable); elsewhere nothing.
    void forbidOutside(bool forbidden) const;

private:
    int _rowBytes;
    int _height;
    int _step;
    std::uint8_t* _block;
    std::size_t _blockSize;
    Ipp8u* _first;
    Ipp8u* _lowest;  // the row with the lowest address
};

// Layouts that every primitive test runs through: packed, padded, misaligned by 1..15,
// and upward.
std::vector<Layout> standardLayouts(std::mt19937& rng);

}  // namespace nuv::test
