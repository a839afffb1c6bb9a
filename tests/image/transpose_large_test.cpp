// The large-image route of ippiTranspose_8u_C1R: in u8, y8, e9 and l9 an image wider than
// 1024 with sizes in multiples of 64 and aligned rows is transposed in 512x512 tiles when
// twice its size passes the cache. The route is chosen by size, alignment and cache only,
// so it must give the bytes of the block route. Recorded processors make the cache small or
// large at will, and the cache query they count shows which calls got as far as asking.
#include "support/bodies.h"
#include "support/fake_processor.h"
#include "support/guarded.h"
#include "support/slots.h"

#include <nuv/primitives.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

using nuv::test::forEachSlot;
using nuv::test::GuardedImage;
using nuv::test::Layout;

// Slots 0 and 1 run m7, which has no large route; 2 and 3 run u8, then y8, e9, l9.
bool slotHasLargeRoute(int slot) {
    return slot >= 2;
}

void fillNoise(GuardedImage& image, std::uint32_t seed) {
    for (int y = 0; y < image.height(); ++y) {
        Ipp8u* row = image.row(y);
        for (int x = 0; x < image.rowBytes(); ++x) {
            seed = seed * 1664525u + 1013904223u;
            row[x] = static_cast<Ipp8u>(seed >> 24);
        }
    }
}

// The destination rows a correct transposition gives, computed once per source.
std::vector<std::uint8_t> modelTranspose(GuardedImage const& src) {
    const int width = src.rowBytes(), height = src.height();
    std::vector<std::uint8_t> dst(static_cast<std::size_t>(width) * height);
    for (int y = 0; y < height; ++y) {
        Ipp8u const* row = src.row(y);
        for (int x = 0; x < width; ++x) dst[static_cast<std::size_t>(x) * height + y] = row[x];
    }
    return dst;
}

bool rowsMatch(GuardedImage const& dst, std::vector<std::uint8_t> const& expected) {
    for (int y = 0; y < dst.height(); ++y)
        if (std::memcmp(dst.row(y), expected.data() + static_cast<std::size_t>(y) * dst.rowBytes(),
                        static_cast<std::size_t>(dst.rowBytes())) != 0)
            return false;
    return true;
}

struct Case {
    int width, height;
    Layout src, dst;
    std::string name() const {
        auto layout = [](Layout const& l) {
            return "{pad " + std::to_string(l.padding) + ", off " + std::to_string(l.misalign) +
                   (l.negative ? ", up" : "") + "}";
        };
        return std::to_string(width) + "x" + std::to_string(height) + " src" + layout(src) +
               " dst" + layout(dst);
    }
};

const Layout aligned{0, 0, false, 32};

class TransposeLarge : public nuv::test::DispatchTest {
protected:
    // Transposes the case at every slot, each time from a fresh frame so that the cache query
    // runs again and can be counted, and checks the bytes against the model. `asked` says
    // whether the slots with the large route are expected to reach the cache query.
    void expectTransposed(Case const& c, bool asked) {
        SCOPED_TRACE(c.name());
        GuardedImage src(c.width, c.height, c.src);
        GuardedImage dst(c.height, c.width, c.dst);
        fillNoise(src, static_cast<std::uint32_t>(c.width * 7 + c.height));
        const std::vector<std::uint8_t> expected = modelTranspose(src);
        forEachSlot([&](int slot) {
            dst.fill(0x5A);
            restart();
            ASSERT_EQ(nuv::test::slotTable::ippiTranspose_8u_C1R[slot](
                          src.first(), src.step(), dst.first(), dst.step(), {c.width, c.height}),
                      ippStsNoErr);
            EXPECT_TRUE(rowsMatch(dst, expected));
            EXPECT_TRUE(dst.guardsIntact());
            EXPECT_EQ(cpu().calls(4) > 0, asked && slotHasLargeRoute(slot));
        });
    }
};

// "GenuineIntel" with a 256 KiB data cache: every image below passes twice the cache.
const int kSmallCache = 256 * 1024;
// The same with 64 MiB: none does.
const int kLargeCache = 64 * 1024 * 1024;

TEST_F(TransposeLarge, TheFakeProcessorsReportTheirCaches) {
    play(nuv::test::processors::smallCacheIntel(0, kSmallCache));
    int size = 0;
    EXPECT_EQ(ippGetMaxCacheSizeB(&size), ippStsNoErr);
    EXPECT_EQ(size, kSmallCache);
    play(nuv::test::processors::smallCacheIntel(0, kLargeCache));
    restart();
    EXPECT_EQ(ippGetMaxCacheSizeB(&size), ippStsNoErr);
    EXPECT_EQ(size, kLargeCache);
}

// 2048 square is whole tiles; 1600x1152 leaves a last tile column 64 wide and a last tile
// band 128 high; upward rows are aligned as well when the step is.
const Case largeAligned[] = {
    {2048, 2048, aligned, aligned},
    {1600, 1152, aligned, aligned},
    {1600, 1152, {64, 0, true, 32}, {128, 0, true, 32}},
    {1088, 192, {16, 16, false, 32}, aligned},  // source rows on 16, not 64: aligned enough
};

TEST_F(TransposeLarge, SmallCacheTakesTheTiledRoute) {
    play(nuv::test::processors::smallCacheIntel(0, kSmallCache));
    for (Case const& c : largeAligned) expectTransposed(c, true);
}

TEST_F(TransposeLarge, LargeCacheKeepsTheBlockRoute) {
    play(nuv::test::processors::smallCacheIntel(0, kLargeCache));
    for (Case const& c : largeAligned) expectTransposed(c, true);
}

// The two routes side by side on one image: the same bytes at every slot.
TEST_F(TransposeLarge, BothRoutesGiveTheSameBytes) {
    GuardedImage src(2048, 2048, aligned);
    GuardedImage tiled(2048, 2048, aligned), blocked(2048, 2048, aligned);
    fillNoise(src, 99);
    forEachSlot([&](int slot) {
        auto const body = nuv::test::slotTable::ippiTranspose_8u_C1R[slot];
        tiled.fill(0);
        blocked.fill(0xFF);
        play(nuv::test::processors::smallCacheIntel(0, kSmallCache));
        restart();
        ASSERT_EQ(body(src.first(), src.step(), tiled.first(), tiled.step(), {2048, 2048}),
                  ippStsNoErr);
        play(nuv::test::processors::smallCacheIntel(0, kLargeCache));
        restart();
        ASSERT_EQ(body(src.first(), src.step(), blocked.first(), blocked.step(), {2048, 2048}),
                  ippStsNoErr);
        EXPECT_TRUE(tiled.packed() == blocked.packed());
    });
}

// Each condition missed by one step: the body never asks for the cache and takes the block
// route, with the model's bytes.
TEST_F(TransposeLarge, ConditionsNotMetNeverAskForTheCache) {
    play(nuv::test::processors::smallCacheIntel(0, kSmallCache));
    const Case misses[] = {
        {1024, 1024, aligned, aligned},            // not wider than 1024
        {1090, 128, aligned, {62, 0, false, 32}},  // width no multiple of 64
        {1088, 100, aligned, {28, 0, false, 32}},  // height no multiple of 64
        {1088, 128, {8, 0, false, 32}, aligned},   // source step no multiple of 16
        {1088, 128, aligned, {32, 0, false, 32}},  // destination step no multiple of 64
        {1088, 128, {0, 8, false, 32}, aligned},   // source rows 8 past a boundary
        {1088, 128, aligned, {0, 16, false, 32}},  // destination rows 16 past 64
    };
    for (Case const& c : misses) expectTransposed(c, false);
}

// The three-channel form has no such route in any generation.
TEST_F(TransposeLarge, ThreeChannelsNeverAskForTheCache) {
    play(nuv::test::processors::smallCacheIntel(0, kSmallCache));
    const int width = 1088, height = 128;
    GuardedImage src(3 * width, height, aligned), dst(3 * height, width, aligned);
    fillNoise(src, 5);
    forEachSlot([&](int) {
        restart();
        ASSERT_EQ(
            ippiTranspose_8u_C3R(src.first(), src.step(), dst.first(), dst.step(), {width, height}),
            ippStsNoErr);
        EXPECT_EQ(cpu().totalCalls(), 0);
        bool same = true;
        for (int x = 0; x < width && same; ++x)
            for (int y = 0; y < height && same; ++y)
                same = std::memcmp(dst.row(x) + 3 * y, src.row(y) + 3 * x, 3) == 0;
        EXPECT_TRUE(same);
    });
}

// On a processor of another vendor the cache query answers 0 with a warning, and 0 is below
// twice any image: every large aligned image takes the tiled route there. The bodies ask
// once (leaf 0 for the vendor), and the bytes are those of the model.
TEST_F(TransposeLarge, OtherVendorsReportNoCacheAndTakeTheTiledRoute) {
    play(nuv::test::processors::amdZen2());
    int size = -1;
    EXPECT_EQ(ippGetMaxCacheSizeB(&size), ippStsNoCpuFeaturesWrn);
    EXPECT_EQ(size, 0);
    const Case c = {1600, 1152, aligned, aligned};
    GuardedImage src(c.width, c.height, c.src), dst(c.height, c.width, c.dst);
    fillNoise(src, 3);
    const std::vector<std::uint8_t> expected = modelTranspose(src);
    forEachSlot([&](int slot) {
        dst.fill(0);
        restart();
        ASSERT_EQ(nuv::test::slotTable::ippiTranspose_8u_C1R[slot](
                      src.first(), src.step(), dst.first(), dst.step(), {c.width, c.height}),
                  ippStsNoErr);
        EXPECT_TRUE(rowsMatch(dst, expected));
        EXPECT_EQ(cpu().calls(0) > 0, slotHasLargeRoute(slot));
    });
}

// The real processor, through the stubs. On the AMD machine these tests are developed on,
// the cache size is unknown to the query (it trusts Intel's reports only), the size given is
// 0, which is below 2 * width * height, so the slots from 2 on take the tiled route here
// without any fake; on an Intel processor with a cache above 8 MiB they keep the block
// route. Either way the bytes must be the model's.
TEST(TransposeLargeRegion, RealProcessor) {
    GuardedImage src(2048, 2048, aligned), dst(2048, 2048, aligned);
    fillNoise(src, 11);
    const std::vector<std::uint8_t> expected = modelTranspose(src);
    forEachSlot([&](int) {
        dst.fill(0);
        ASSERT_EQ(
            ippiTranspose_8u_C1R(src.first(), src.step(), dst.first(), dst.step(), {2048, 2048}),
            ippStsNoErr);
        EXPECT_TRUE(rowsMatch(dst, expected));
        EXPECT_TRUE(dst.guardsIntact());
    });
}

}  // namespace
