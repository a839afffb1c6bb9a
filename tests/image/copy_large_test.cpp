// The large-region paths of ippiCopy_8u_C1R and ippiCopy_8u_C3R: the streaming copies that
// each generation takes once a region outgrows the cache, forced here by a processor that
// reports small caches, and the backward copy that u8 and y8 use when the addresses of
// source and destination would alias.
#include "support/fake_processor.h"
#include "support/guarded.h"
#include "support/slots.h"

#include "primitives/dispatch/cpu_query.h"

#include <nuv/primitives.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using nuv::test::forEachSlot;
using nuv::test::GuardedImage;
using nuv::test::Layout;

using CopyFn = IppStatus (*)(Ipp8u const*, int, Ipp8u*, int, IppiSize);

// Plays "GenuineIntel" with a 512 KiB cache by descriptor 0x43 (leaf 2, the copy family's
// table) and a 256 KiB data cache by deterministic parameters (leaf 4, ippGetMaxCacheSizeB)
// for the test's lifetime; the fixture then gives the frame back the real processor in a
// fresh state, so no later test sees the fake cache size.
class CopyOnSmallCache : public nuv::test::DispatchTest {
protected:
    void SetUp() override {
        DispatchTest::SetUp();
        play(nuv::test::processors::smallCacheIntel(0x43, 256 * 1024));
    }
};

// A cheap byte noise for large sources (a linear congruential step, top byte).
void fillNoise(Ipp8u* bytes, int count, std::uint32_t& state) {
    for (int i = 0; i < count; ++i) {
        state = state * 1664525u + 1013904223u;
        bytes[i] = static_cast<Ipp8u>(state >> 24);
    }
}

// Writes packed rows into an image, row by row.
void writeRows(GuardedImage& img, std::vector<std::uint8_t> const& packed) {
    for (int y = 0; y < img.height(); ++y)
        std::memcpy(img.row(y), packed.data() + static_cast<std::size_t>(y) * img.rowBytes(),
                    static_cast<std::size_t>(img.rowBytes()));
}

// One large source shared by the cases, so that each copy costs only its move and check.
void expectLargeCopy(CopyFn copy, int channels, int width, int height, Layout const& srcLayout,
                     Layout const& dstLayout) {
    SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height) + " C" +
                 std::to_string(channels) + " src{pad " + std::to_string(srcLayout.padding) +
                 ", off " + std::to_string(srcLayout.misalign) + "} dst{pad " +
                 std::to_string(dstLayout.padding) + ", off " + std::to_string(dstLayout.misalign) +
                 (dstLayout.negative ? ", up" : "") + "}");
    std::uint32_t state = static_cast<std::uint32_t>(width * 31 + height);
    const int rowBytes = width * channels;
    GuardedImage src(rowBytes, height, srcLayout);
    GuardedImage dst(rowBytes, height, dstLayout);
    for (int y = 0; y < height; ++y) fillNoise(src.row(y), rowBytes, state);
    const std::vector<std::uint8_t> expected = src.packed();
    // The destination starts as the complement of the source, so no missed byte passes.
    std::vector<std::uint8_t> complement = expected;
    for (std::uint8_t& b : complement) b = static_cast<std::uint8_t>(~b);
    forEachSlot([&](int) {
        writeRows(dst, complement);
        ASSERT_EQ(copy(src.first(), src.step(), dst.first(), dst.step(), {width, height}),
                  ippStsNoErr);
        // Compare without building a second large vector per slot.
        bool same = true;
        for (int y = 0; y < height && same; ++y)
            same = std::memcmp(dst.row(y), src.row(y), static_cast<std::size_t>(rowBytes)) == 0;
        EXPECT_TRUE(same);
        EXPECT_TRUE(dst.guardsIntact());
    });
    EXPECT_EQ(src.packed(), expected);
}

// The fake must reach both cache queries, or the streaming paths below would go untried.
TEST_F(CopyOnSmallCache, TheFakeProcessorReportsSmallCaches) {
    EXPECT_EQ(nuvLegacyCacheSize(), 512 * 1024);
    int size = 0;
    EXPECT_EQ(ippGetMaxCacheSizeB(&size), ippStsNoErr);
    EXPECT_EQ(size, 256 * 1024);
}

// 3072-byte rows, 2.1 MB: past 1 MiB for m7, u8 and y8, past half the cache for n8, and past
// 4 MiB doubled for the rows of at least 1 KiB of e9 and l9. Once as a single run, once row
// by row with misaligned, padded and upward rows.
TEST_F(CopyOnSmallCache, StreamingThreeChannelRegions) {
    expectLargeCopy(ippiCopy_8u_C3R, 3, 1024, 700, {0, 0, false, 32}, {0, 0, false, 32});
    expectLargeCopy(ippiCopy_8u_C3R, 3, 1024, 700, {0, 5, false, 32}, {0, 37, false, 32});
    expectLargeCopy(ippiCopy_8u_C3R, 3, 1024, 700, {16, 8, false, 32}, {3, 1, true, 32});
}

// Run lengths that leave a rest after the last 64-byte and 0x40000-byte blocks.
TEST_F(CopyOnSmallCache, StreamingOneChannelRegionsWithRests) {
    expectLargeCopy(ippiCopy_8u_C1R, 1, 1031, 2100, {0, 13, false, 32}, {0, 50, false, 32});
    expectLargeCopy(ippiCopy_8u_C1R, 1, 1031, 2100, {0, 3, false, 32}, {9, 17, false, 32});
}

// n8 streams from a smaller region than the others: 300 KiB is above half of its 512 KiB.
TEST_F(CopyOnSmallCache, StreamingFromHalfTheCacheOnN8) {
    expectLargeCopy(ippiCopy_8u_C1R, 1, 640, 480, {0, 0, false, 32}, {0, 7, false, 32});
    expectLargeCopy(ippiCopy_8u_C1R, 1, 640, 480, {0, 9, false, 32}, {11, 0, true, 32});
}

// The same large regions on the real processor take the plain paths of every generation.
TEST(CopyLargeRegion, PlainPathsOnTheRealProcessor) {
    expectLargeCopy(ippiCopy_8u_C3R, 3, 1024, 700, {0, 0, false, 32}, {0, 0, false, 32});
    expectLargeCopy(ippiCopy_8u_C3R, 3, 1024, 700, {16, 8, false, 32}, {3, 1, true, 32});
}

// ------------------------------------------------------------------ aliasing addresses

// Rows placed at chosen offsets within 4 KiB pages, with a step of two pages so that every
// row sits at the same offset.
class PagedRows {
public:
    static constexpr std::uint8_t guardByte = 0x3C;
    static constexpr int step = 8192;

    PagedRows(int rowBytes, int height, int pageOffset)
        : _rowBytes(rowBytes),
          _height(height),
          _offset(pageOffset),
          _size(static_cast<std::size_t>(height) * step) {
        void* block = nullptr;
        if (posix_memalign(&block, 4096, _size) != 0) std::abort();
        _block = static_cast<Ipp8u*>(block);
        std::memset(_block, guardByte, _size);
    }
    ~PagedRows() { std::free(_block); }
    PagedRows(PagedRows const&) = delete;
    PagedRows& operator=(PagedRows const&) = delete;

    Ipp8u* first() { return _block + _offset; }
    Ipp8u* row(int y) { return first() + static_cast<std::ptrdiff_t>(y) * step; }

    // Each row byte becomes the complement of the other's, so no missed byte passes for copied.
    void complementOf(PagedRows& other) {
        for (int y = 0; y < _height; ++y) {
            Ipp8u const* from = other.row(y);
            Ipp8u* to = row(y);
            for (int x = 0; x < _rowBytes; ++x) to[x] = static_cast<Ipp8u>(~from[x]);
        }
    }

    bool sameRowsAs(PagedRows& other) {
        for (int y = 0; y < _height; ++y)
            if (std::memcmp(row(y), other.row(y), static_cast<std::size_t>(_rowBytes)) != 0)
                return false;
        return true;
    }

    // Every byte between the rows, before the first and after the last, is a guard byte.
    bool onlyRowsChanged() const {
        const std::vector<Ipp8u> guards(step, guardByte);
        auto intact = [&](std::size_t from, std::size_t to) {
            return std::memcmp(_block + from, guards.data(), to - from) == 0;
        };
        std::size_t from = 0;
        for (int y = 0; y < _height; ++y) {
            const std::size_t rowStart = static_cast<std::size_t>(y) * step + _offset;
            if (!intact(from, rowStart)) return false;
            from = rowStart + _rowBytes;
        }
        return intact(from, _size);
    }

private:
    int _rowBytes;
    int _height;
    int _offset;
    std::size_t _size;
    Ipp8u* _block;
};

// Source and destination 16-byte aligned with low address bits that make u8 and y8 walk the
// rows backward (source 0xF80 or 0xF60 ahead, or up to 0xA0 behind), and neighbours of those
// offsets that keep the forward walk. Every slot must give the plain copy.
TEST(CopyLargeRegion, AliasingAddressesGiveAPlainCopy) {
    struct Offsets {
        int src, dst;
    };
    const Offsets offsets[] = {{0xF80, 0x000}, {0xF60, 0x000}, {0x000, 0x040}, {0x000, 0x0A0},
                               {0x010, 0x0B0}, {0xF50, 0x000}, {0x000, 0x0B0}, {0x100, 0x100}};
    std::mt19937 rng(17);
    std::uint32_t state = 17;
    std::vector<int> rowLengths = {1, 15, 16, 63, 64, 65, 127, 128, 129, 1000, 3000};
    for (int i = 0; i < 5; ++i) rowLengths.push_back(static_cast<int>(rng() % 3000) + 1);
    for (Offsets const& o : offsets) {
        for (int rowBytes : rowLengths) {
            SCOPED_TRACE("src +" + std::to_string(o.src) + " dst +" + std::to_string(o.dst) +
                         " row " + std::to_string(rowBytes));
            PagedRows src(rowBytes, 3, o.src), dst(rowBytes, 3, o.dst);
            for (int y = 0; y < 3; ++y) fillNoise(src.row(y), rowBytes, state);
            forEachSlot([&](int) {
                dst.complementOf(src);
                ASSERT_EQ(ippiCopy_8u_C1R(src.first(), PagedRows::step, dst.first(),
                                          PagedRows::step, {rowBytes, 3}),
                          ippStsNoErr);
                EXPECT_TRUE(dst.sameRowsAs(src));
                EXPECT_TRUE(dst.onlyRowsChanged());
            });
        }
    }
}

// A region just under 1 MiB on the small-cache processor: u8 and y8 stay off the streaming
// path and take the backward walk for aliasing rows of a large image.
TEST_F(CopyOnSmallCache, AliasingRowsOfALargeRegion) {
    const int rowBytes = 3000, height = 340;  // 1,020,000 bytes
    PagedRows src(rowBytes, height, 0xF80), dst(rowBytes, height, 0x000);
    std::uint32_t state = 23;
    for (int y = 0; y < height; ++y) fillNoise(src.row(y), rowBytes, state);
    forEachSlot([&](int) {
        dst.complementOf(src);
        ASSERT_EQ(ippiCopy_8u_C1R(src.first(), PagedRows::step, dst.first(), PagedRows::step,
                                  {rowBytes, height}),
                  ippStsNoErr);
        EXPECT_TRUE(dst.sameRowsAs(src));
        EXPECT_TRUE(dst.onlyRowsChanged());
    });
}

}  // namespace
