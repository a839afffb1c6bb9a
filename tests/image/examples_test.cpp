// The numbers that define the image primitives, and the calls the sweep does not make: one
// region handed over to the in-place forms, zero steps, sources that must not be read,
// addresses that alias. Each runs at every slot this processor executes.
#include "support/bodies.h"
#include "support/guarded.h"
#include "support/slots.h"

#include <nuv/primitives.h>

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <climits>
#include <cstdint>
#include <numeric>
#include <vector>

namespace {

using nuv::test::forEachSlot;
using Bytes = std::vector<std::uint8_t>;

TEST(AddExamples, EachRowOfTheFactorTable) {
    struct Row {
        Ipp8u a, b;
        int factor;
        Ipp8u sum;
    };
    // Saturated sum; half with ties to even (1.5, 2.5, 254.5, 0.5, 3.5); quarters; the top
    // bits at 8 and 9; zero above 9; doubling with saturation; any non-zero below -7.
    const Row rows[] = {
        {200, 100, 0, 255},     {100, 55, 0, 155},   {255, 255, 1, 255}, {1, 2, 1, 2},
        {2, 3, 1, 2},           {254, 255, 1, 254},  {0, 1, 1, 0},       {3, 4, 1, 4},
        {3, 3, 2, 2},           {5, 5, 2, 2},        {5, 6, 2, 3},       {4, 5, 2, 2},
        {7, 7, 2, 4},           {64, 64, 8, 0},      {128, 255, 8, 1},   {255, 129, 8, 2},
        {128, 128, 9, 0},       {128, 129, 9, 1},    {255, 255, 9, 1},   {255, 255, 10, 0},
        {255, 255, INT_MAX, 0}, {100, 100, -1, 255}, {60, 63, -1, 246},  {1, 0, -7, 128},
        {1, 1, -7, 255},        {0, 0, -7, 0},       {0, 0, -8, 0},      {0, 1, -8, 255},
        {1, 0, INT_MIN, 255},   {0, 0, INT_MIN, 0}};
    forEachSlot([&](int) {
        for (Row const& r : rows) {
            Ipp8u out = 0x5A;
            ASSERT_EQ(ippiAdd_8u_C1RSfs(&r.a, 1, &r.b, 1, &out, 1, {1, 1}, r.factor), ippStsNoErr);
            EXPECT_EQ(out, r.sum) << int{r.a} << " + " << int{r.b} << " at " << r.factor;
        }
    });
}

// Above 9 a nine-bit sum leaves nothing: zeros, and the sources are never read.
TEST(AddExamples, AboveNineFillsZerosWithoutReadingTheSources) {
    const std::size_t pageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* page = mmap(nullptr, pageSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(page, MAP_FAILED);
    auto const* unreadable = static_cast<Ipp8u const*>(page);
    forEachSlot([&](int) {
        for (int factor : {10, 32, INT_MAX}) {
            nuv::test::GuardedImage dst(3 * 37, 5, {7, 3, true, 32});
            dst.fill(0xFF);
            ASSERT_EQ(ippiAdd_8u_C3RSfs(unreadable, 1 << 20, unreadable, -(1 << 20), dst.first(),
                                        dst.step(), {37, 5}, factor),
                      ippStsNoErr);
            EXPECT_EQ(dst.packed(), Bytes(3 * 37 * 5, 0));
            EXPECT_TRUE(dst.guardsIntact());
        }
    });
    munmap(page, pageSize);
}

// The byte count of the 32-bit form is a 32-bit product: 0x40000001 words are 4 bytes, one
// word cleared and nothing beyond; 0x40000000 words are none at all.
TEST(ZeroExamples, WordByteCountWrapsInThirtyTwoBits) {
    forEachSlot([](int slot) {
        Ipp32s words[3] = {-1, -1, -1};
        ASSERT_EQ(nuv::test::slotTable::ippsZero_32s[slot](words, 0x40000001), ippStsNoErr);
        EXPECT_EQ(std::vector<Ipp32s>(words, words + 3), (std::vector<Ipp32s>{0, -1, -1}));
        ASSERT_EQ(nuv::test::slotTable::ippsZero_32s[slot](words + 1, 0x40000000), ippStsNoErr);
        EXPECT_EQ(words[1], -1);
    });
}

// One region with one step goes to the in-place form through the copying stub: a forward
// read with a backward write in one buffer would read bytes it had already overwritten.
TEST(HandOver, OneRegionWithOneStepIsWorkedInPlace) {
    const int side = 70, step = 224;
    Bytes image(static_cast<std::size_t>(step) * side);
    std::iota(image.begin(), image.end(), 0);
    forEachSlot([&](int slot) {
        for (int flip = 0; flip < 3; ++flip) {
            Bytes viaCopy = image, inPlace = image;
            ASSERT_EQ(
                ippiMirror_8u_C3R(viaCopy.data(), step, viaCopy.data(), step, {side, side}, flip),
                ippStsNoErr);
            ASSERT_EQ(nuv::test::slotTable::ippiMirror_8u_C3IR[slot](inPlace.data(), step,
                                                                     {side, side}, flip),
                      ippStsNoErr);
            EXPECT_EQ(viaCopy, inPlace) << "flip " << flip;
            EXPECT_NE(viaCopy, image);
        }
        Bytes viaCopy = image, inPlace = image;
        ASSERT_EQ(ippiTranspose_8u_C1R(viaCopy.data(), step, viaCopy.data(), step, {side, side}),
                  ippStsNoErr);
        ASSERT_EQ(
            nuv::test::slotTable::ippiTranspose_8u_C1IR[slot](inPlace.data(), step, {side, side}),
            ippStsNoErr);
        EXPECT_EQ(viaCopy, inPlace);
        // A shape that cannot stay where it lies is refused, not copied.
        EXPECT_EQ(ippiTranspose_8u_C3R(viaCopy.data(), step, viaCopy.data(), step, {3, 2}),
                  ippStsSizeErr);
        EXPECT_EQ(viaCopy, inPlace);
    });
}

// Equal pointers with different steps take the copying way: rows of the source walk down
// from p and those of the destination up from it.
TEST(HandOver, EqualPointersWithDifferentStepsCopy) {
    forEachSlot([](int) {
        Bytes buffer(300);
        std::iota(buffer.begin(), buffer.end(), 0);
        const Bytes before = buffer;
        Ipp8u* p = buffer.data() + 100;
        ASSERT_EQ(ippiMirror_8u_C1R(p, 100, p, -100, {37, 2}, 0), ippStsNoErr);
        for (int x = 0; x < 37; ++x) {
            EXPECT_EQ(buffer[x], before[100 + x]);
            EXPECT_EQ(buffer[100 + x], before[200 + x]);
        }
        Ipp8u row[8] = {1, 2, 0, 0, 0, 0, 0, 0};
        ASSERT_EQ(ippiTranspose_8u_C1R(row, 8, row, 4, {2, 1}), ippStsNoErr);
        EXPECT_EQ(Bytes(row, row + 8), (Bytes{1, 2, 0, 0, 2, 0, 0, 0}));
    });
}

// No step is tested: a zero source step repeats the first row in every row written.
TEST(Steps, ZeroSourceStepRepeatsTheFirstRow) {
    const int width = 75, height = 4;
    Bytes src(3 * width), a(3 * width * height), b(a.size()), added(a.size());
    std::iota(src.begin(), src.end(), 1);
    forEachSlot([&](int) {
        ASSERT_EQ(ippiCopy_8u_C3R(src.data(), 0, a.data(), 3 * width, {width, height}),
                  ippStsNoErr);
        ASSERT_EQ(ippiMirror_8u_C3R(src.data(), 0, b.data(), 3 * width, {width, height}, 0),
                  ippStsNoErr);
        ASSERT_EQ(ippiAdd_8u_C3RSfs(src.data(), 0, src.data(), 0, added.data(), 3 * width,
                                    {width, height}, 1),
                  ippStsNoErr);
        for (int y = 0; y < height; ++y) {
            const Bytes row(a.begin() + 3 * width * y, a.begin() + 3 * width * (y + 1));
            EXPECT_EQ(row, src) << "row " << y;
            EXPECT_EQ(Bytes(b.begin() + 3 * width * y, b.begin() + 3 * width * (y + 1)), src);
            EXPECT_EQ(Bytes(added.begin() + 3 * width * y, added.begin() + 3 * width * (y + 1)),
                      src);
        }
    });
}

// Both pointers 16-byte aligned and the source just below the destination in the low 12
// address bits (or far above it, across a 4 KiB step): the copy that walks backward to keep
// loads and stores apart gives a plain copy at every length.
TEST(Steps, AliasingAddressesGiveAPlainCopy) {
    Bytes buffer(6 * 4096);
    Ipp8u* page = buffer.data() + (4096 - reinterpret_cast<std::uintptr_t>(buffer.data()) % 4096);
    for (int i = 0; i < 5 * 4096; ++i) page[i] = static_cast<Ipp8u>(i * 7 + 3);
    // Source offset, destination offset: low-bit differences of -0x50, -0xA0 and 0xF70.
    const std::pair<int, int> placements[] = {
        {0, 4096 + 0x50}, {0, 4096 + 0xA0}, {0xF80, 2 * 4096 + 0x10}};
    forEachSlot([&](int) {
        for (auto [from, to] : placements)
            for (int n : {1, 15, 16, 63, 64, 65, 127, 200, 333, 1000}) {
                ASSERT_EQ(ippiCopy_8u_C1R(page + from, n, page + to, n, {n, 1}), ippStsNoErr);
                ASSERT_EQ(Bytes(page + to, page + to + n), Bytes(page + from, page + from + n))
                    << "offsets " << from << ", " << to << " length " << n;
            }
    });
}

}  // namespace
