#include "support/guarded.h"

#include <cstdlib>
#include <cstring>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#define NUV_POISON(on, p, n) \
    ((on) ? ASAN_POISON_MEMORY_REGION(p, n) : ASAN_UNPOISON_MEMORY_REGION(p, n))
#else
#define NUV_POISON(on, p, n) ((void)(on), (void)(p), (void)(n))
#endif

namespace nuv::test {

GuardedImage::GuardedImage(int rowBytes, int height, Layout layout)
    : _rowBytes(rowBytes), _height(height), _step(rowBytes + layout.padding) {
    const std::size_t span = static_cast<std::size_t>(_step) * (height - 1) + rowBytes;
    const std::size_t lead = 64 + static_cast<std::size_t>(layout.guard);
    // The lowest row starts `misalign` bytes past a 64-byte boundary.
    const std::size_t start = (lead + 63) / 64 * 64 + layout.misalign;
    _blockSize = start + span + layout.guard;
    // posix_memalign keeps the exact size, so the sanitizer sees a read past the last guard.
    void* block = nullptr;
    if (posix_memalign(&block, 64, _blockSize) != 0) std::abort();
    _block = static_cast<std::uint8_t*>(block);
    std::memset(_block, guardByte, _blockSize);
    _lowest = _block + start;
    if (layout.negative) {
        _first = _lowest + static_cast<std::ptrdiff_t>(_step) * (height - 1);
        _step = -_step;
    } else {
        _first = _lowest;
    }
}

GuardedImage::~GuardedImage() {
    forbidOutside(false);
    std::free(_block);
}

void GuardedImage::fill(std::uint8_t value) {
    for (int y = 0; y < _height; ++y) std::memset(row(y), value, _rowBytes);
}

void GuardedImage::fillRandom(std::mt19937& rng) {
    for (int y = 0; y < _height; ++y)
        for (int x = 0; x < _rowBytes; ++x) row(y)[x] = static_cast<Ipp8u>(rng());
}

std::vector<std::uint8_t> GuardedImage::packed() const {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(static_cast<std::size_t>(_rowBytes) * _height);
    for (int y = 0; y < _height; ++y) bytes.insert(bytes.end(), row(y), row(y) + _rowBytes);
    return bytes;
}

bool GuardedImage::guardsIntact() const {
    // Rows lie in address order from _lowest, |step| apart: the guards are the lead before
    // the lowest row, the gap after each row and the tail after the highest.
    auto untouched = [](std::uint8_t const* from, std::uint8_t const* to) {
        for (; from < to; ++from)
            if (*from != guardByte) return false;
        return true;
    };
    const std::ptrdiff_t distance = _step < 0 ? -_step : _step;
    if (!untouched(_block, _lowest)) return false;
    for (int k = 0; k < _height; ++k) {
        std::uint8_t const* rowEnd = _lowest + k * distance + _rowBytes;
        std::uint8_t const* next =
            k + 1 < _height ? _lowest + (k + 1) * distance : _block + _blockSize;
        if (!untouched(rowEnd, next)) return false;
    }
    return true;
}

void GuardedImage::forbidOutside(bool forbidden) const {
    const std::ptrdiff_t distance = _step < 0 ? -_step : _step;
    NUV_POISON(forbidden, _block, _lowest - _block);
    for (int k = 0; k < _height; ++k) {
        std::uint8_t* rowEnd = _lowest + k * distance + _rowBytes;
        std::uint8_t* next = k + 1 < _height ? _lowest + (k + 1) * distance : _block + _blockSize;
        NUV_POISON(forbidden, rowEnd, next - rowEnd);
    }
}

std::vector<Layout> standardLayouts(std::mt19937& rng) {
    std::vector<Layout> layouts;
    layouts.push_back({});
    layouts.push_back({static_cast<int>(rng() % 40 + 1), 0, false, 32});
    layouts.push_back({static_cast<int>(rng() % 40), static_cast<int>(rng() % 15 + 1), false, 32});
    layouts.push_back({static_cast<int>(rng() % 40), static_cast<int>(rng() % 15 + 1), true, 32});
    layouts.push_back({0, 0, false, 0});  // no guard: reads past the end meet the sanitizer
    return layouts;
}

}  // namespace nuv::test
