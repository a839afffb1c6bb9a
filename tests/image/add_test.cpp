// ippiAdd_8u_C1RSfs and ippiAdd_8u_C3RSfs at every slot this processor runs: every input
// pair at every row of the scale-factor table against a model of the arithmetic, odd sizes
// in every layout, long rows at every alignment, and the checks that refuse a call before
// anything is written.
#include "support/guarded.h"
#include "support/slots.h"

#include <nuv/primitives.h>

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <climits>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace {

using nuv::test::forEachSlot;
using nuv::test::GuardedImage;
using nuv::test::Layout;

using AddFn = IppStatus (*)(Ipp8u const*, int, Ipp8u const*, int, Ipp8u*, int, IppiSize, int);

struct Form {
    AddFn add;
    int channels;
    char const* name;
};

Form const forms[] = {{ippiAdd_8u_C1RSfs, 1, "C1"}, {ippiAdd_8u_C3RSfs, 3, "C3"}};

// One factor from each row of the table, every factor of the shifting rows, and the far
// ends of the int range.
std::vector<int> const factors = {INT_MIN, -1000, -9, -8, -7, -6, -5, -4, -3, -2, -1, 0,      1,
                                  2,       3,     4,  5,  6,  7,  8,  9,  10, 11, 64, INT_MAX};

// The model: the exact sum scaled by 2^-factor, rounded to the nearest integer with a tie
// going to the even one, then clamped to a byte. Written from the arithmetic itself (a
// quotient, a remainder and a comparison with half the divisor), not from the bit tricks
// of the library.
Ipp8u expectedSum(unsigned a, unsigned b, int factor) {
    const std::uint64_t t = a + b;
    std::uint64_t value = 0;
    if (factor <= 0) {
        // Multiplying: any non-zero sum times 256 or more passes 255.
        const std::int64_t k = -static_cast<std::int64_t>(factor);
        value = k >= 8 ? (t == 0 ? 0 : 256) : t << k;
    } else if (factor >= 32) {
        value = 0;  // the sum is below 2^9, so its quotient is 0 and the rest below half
    } else {
        const std::uint64_t divisor = std::uint64_t{1} << factor;
        const std::uint64_t quotient = t / divisor;
        const std::uint64_t twiceRest = 2 * (t % divisor);
        if (twiceRest > divisor || (twiceRest == divisor && quotient % 2 == 1))
            value = quotient + 1;
        else
            value = quotient;
    }
    return static_cast<Ipp8u>(value > 255 ? 255 : value);
}

std::string describe(int width, int height, Layout const& l) {
    return std::to_string(width) + "x" + std::to_string(height) + " {pad " +
           std::to_string(l.padding) + ", off " + std::to_string(l.misalign) +
           (l.negative ? ", up" : "") + "}";
}

// The model for one factor as a table over all pairs, so that large regions are checked
// quickly.
class Model {
public:
    explicit Model(int factor) : _factor(factor), _table(256 * 256) {
        for (unsigned a = 0; a < 256; ++a)
            for (unsigned b = 0; b < 256; ++b) _table[a * 256 + b] = expectedSum(a, b, factor);
    }
    int factor() const { return _factor; }
    Ipp8u operator()(Ipp8u a, Ipp8u b) const { return _table[a * 256u + b]; }

private:
    int _factor;
    std::vector<Ipp8u> _table;
};

// Compares the destination region with the model and reports the first difference with
// its inputs; the guards and padding around the region must be as they were.
void expectModel(GuardedImage const& s1, GuardedImage const& s2, GuardedImage const& dst,
                 Model const& model) {
    for (int y = 0; y < dst.height(); ++y) {
        Ipp8u const* a = s1.row(y);
        Ipp8u const* b = s2.row(y);
        Ipp8u const* d = dst.row(y);
        int x = 0;
        while (x < dst.rowBytes() && d[x] == model(a[x], b[x])) ++x;
        ASSERT_EQ(x, dst.rowBytes()) << "row " << y << " byte " << x << ": " << int{a[x]} << " + "
                                     << int{b[x]} << " at factor " << model.factor() << " gave "
                                     << int{d[x]} << ", expected " << int{model(a[x], b[x])};
    }
    EXPECT_TRUE(dst.guardsIntact());
}

// Every destination byte starts as the complement of its expected value, so a byte that is
// skipped never passes for a written one.
void fillAgainst(GuardedImage& dst, GuardedImage const& s1, GuardedImage const& s2,
                 Model const& model) {
    for (int y = 0; y < dst.height(); ++y)
        for (int x = 0; x < dst.rowBytes(); ++x)
            dst.row(y)[x] = static_cast<Ipp8u>(~model(s1.row(y)[x], s2.row(y)[x]));
}

// ---- exact examples ----------------------------------------------------------------------

IppStatus addOne(Ipp8u a, Ipp8u b, int factor, Ipp8u& out) {
    return ippiAdd_8u_C1RSfs(&a, 1, &b, 1, &out, 1, {1, 1}, factor);
}

Ipp8u sumOf(Ipp8u a, Ipp8u b, int factor) {
    Ipp8u out = 0x5A;
    EXPECT_EQ(addOne(a, b, factor, out), ippStsNoErr);
    return out;
}

TEST(AddExamples, EachRowOfTheFactorTable) {
    forEachSlot([](int) {
        // 0: the saturated sum.
        EXPECT_EQ(sumOf(200, 100, 0), 255);
        EXPECT_EQ(sumOf(100, 55, 0), 155);
        // 1: half the sum, ties to even.
        EXPECT_EQ(sumOf(255, 255, 1), 255);
        EXPECT_EQ(sumOf(1, 2, 1), 2);        // 1.5
        EXPECT_EQ(sumOf(2, 3, 1), 2);        // 2.5
        EXPECT_EQ(sumOf(254, 255, 1), 254);  // 254.5
        EXPECT_EQ(sumOf(0, 1, 1), 0);        // 0.5
        EXPECT_EQ(sumOf(3, 4, 1), 4);        // 3.5
        // 2: quarter the sum.
        EXPECT_EQ(sumOf(3, 3, 2), 2);  // 1.5
        EXPECT_EQ(sumOf(5, 5, 2), 2);  // 2.5
        EXPECT_EQ(sumOf(5, 6, 2), 3);  // 2.75
        EXPECT_EQ(sumOf(4, 5, 2), 2);  // 2.25
        EXPECT_EQ(sumOf(7, 7, 2), 4);  // 3.5
        // 8 and 9: only the top bits survive.
        EXPECT_EQ(sumOf(64, 64, 8), 0);    // 0.5
        EXPECT_EQ(sumOf(128, 255, 8), 1);  // 1.496
        EXPECT_EQ(sumOf(255, 129, 8), 2);  // 1.5
        EXPECT_EQ(sumOf(128, 128, 9), 0);  // 0.5
        EXPECT_EQ(sumOf(128, 129, 9), 1);  // 0.502
        EXPECT_EQ(sumOf(255, 255, 9), 1);
        // Above 9: zero whatever the sources.
        EXPECT_EQ(sumOf(255, 255, 10), 0);
        EXPECT_EQ(sumOf(255, 255, INT_MAX), 0);
        // -1 to -7: the sum doubled k times, saturated.
        EXPECT_EQ(sumOf(100, 100, -1), 255);
        EXPECT_EQ(sumOf(60, 63, -1), 246);
        EXPECT_EQ(sumOf(1, 0, -7), 128);
        EXPECT_EQ(sumOf(1, 1, -7), 255);
        EXPECT_EQ(sumOf(0, 0, -7), 0);
        // -8 and below: anything non-zero saturates.
        EXPECT_EQ(sumOf(0, 0, -8), 0);
        EXPECT_EQ(sumOf(0, 1, -8), 255);
        EXPECT_EQ(sumOf(1, 0, INT_MIN), 255);
        EXPECT_EQ(sumOf(0, 0, INT_MIN), 0);
    });
}

// ---- every input pair --------------------------------------------------------------------

// All 65536 pairs, as a 256 by 256 region (row y of the first source holds y, column x of
// the second holds x), in the given layouts. C3 rows are three times as long: each pair
// appears three times in a row, once in each channel.
void expectAllPairs(Form const& form, Model const& model, Layout const& l1, Layout const& l2,
                    Layout const& ld) {
    const int width = 256;
    const int rowBytes = width * form.channels;
    GuardedImage s1(rowBytes, 256, l1);
    GuardedImage s2(rowBytes, 256, l2);
    GuardedImage dst(rowBytes, 256, ld);
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < rowBytes; ++x) {
            s1.row(y)[x] = static_cast<Ipp8u>(y);
            s2.row(y)[x] = static_cast<Ipp8u>(x / form.channels);
        }
    const std::vector<std::uint8_t> before1 = s1.packed();
    const std::vector<std::uint8_t> before2 = s2.packed();
    forEachSlot([&](int) {
        fillAgainst(dst, s1, s2, model);
        ASSERT_EQ(form.add(s1.first(), s1.step(), s2.first(), s2.step(), dst.first(), dst.step(),
                           {width, 256}, model.factor()),
                  ippStsNoErr);
        expectModel(s1, s2, dst, model);
    });
    EXPECT_EQ(s1.packed(), before1);
    EXPECT_EQ(s2.packed(), before2);
    EXPECT_TRUE(s1.guardsIntact());
    EXPECT_TRUE(s2.guardsIntact());
}

TEST(AddAllPairs, PackedRegionsAtEveryFactor) {
    // Packed rows in all three: the region is one run of 64 KiB (C1) or 192 KiB (C3).
    for (Form const& form : forms)
        for (int factor : factors) {
            SCOPED_TRACE(std::string(form.name) + " factor " + std::to_string(factor));
            expectAllPairs(form, Model(factor), {}, {}, {});
        }
}

TEST(AddAllPairs, RowByRowWithEverySourceAlignmentAtEveryFactor) {
    // Padded and misaligned rows go row by row. The sources' alignments relative to the
    // destination pick between the aligned and unaligned loads of each source.
    const Layout layouts[][3] = {
        {{3, 0, false, 32}, {5, 0, false, 32}, {1, 0, false, 32}},
        {{0, 1, false, 32}, {16, 0, false, 32}, {32, 0, false, 32}},
        {{32, 0, false, 32}, {0, 7, false, 32}, {16, 0, false, 32}},
        {{7, 3, false, 32}, {9, 11, true, 32}, {13, 5, true, 32}},
        {{0, 17, true, 32}, {0, 17, false, 32}, {0, 17, false, 32}},
    };
    for (Form const& form : forms)
        for (int factor : factors) {
            const Model model(factor);
            for (auto const& l : layouts) {
                SCOPED_TRACE(std::string(form.name) + " factor " + std::to_string(factor) +
                             " src1 " + describe(256, 256, l[0]) + " src2 " +
                             describe(256, 256, l[1]) + " dst " + describe(256, 256, l[2]));
                expectAllPairs(form, model, l[0], l[1], l[2]);
            }
        }
}

// ---- odd sizes and layouts ------------------------------------------------------------------

TEST(AddLayouts, RandomSizesInEveryLayoutAtEveryFactor) {
    std::mt19937 rng(20240612);
    for (Form const& form : forms)
        for (int factor : factors) {
            const Model model(factor);
            for (int round = 0; round < 4; ++round) {
                const int width = static_cast<int>(rng() % 70) + 1;
                const int height = static_cast<int>(rng() % 6) + 1;
                const int rowBytes = width * form.channels;
                const std::vector<Layout> layouts = nuv::test::standardLayouts(rng);
                for (std::size_t i = 0; i < layouts.size(); ++i) {
                    // Each source and the destination in a different layout of the set.
                    Layout const& l1 = layouts[i];
                    Layout const& l2 = layouts[(i + 1) % layouts.size()];
                    Layout const& ld = layouts[(i + 2) % layouts.size()];
                    SCOPED_TRACE(std::string(form.name) + " factor " + std::to_string(factor) +
                                 " src1 " + describe(width, height, l1) + " src2 " +
                                 describe(width, height, l2) + " dst " +
                                 describe(width, height, ld));
                    GuardedImage s1(rowBytes, height, l1);
                    GuardedImage s2(rowBytes, height, l2);
                    GuardedImage dst(rowBytes, height, ld);
                    s1.fillRandom(rng);
                    s2.fillRandom(rng);
                    forEachSlot([&](int) {
                        fillAgainst(dst, s1, s2, model);
                        ASSERT_EQ(form.add(s1.first(), s1.step(), s2.first(), s2.step(),
                                           dst.first(), dst.step(), {width, height}, factor),
                                  ippStsNoErr);
                        expectModel(s1, s2, dst, model);
                    });
                    EXPECT_TRUE(s1.guardsIntact());
                    EXPECT_TRUE(s2.guardsIntact());
                }
            }
        }
}

TEST(AddLayouts, LongRowsAtEveryDestinationAlignment) {
    // Rows long enough for the vector loops of every generation, each one starting at every
    // offset of a 32-byte block, with the sources offset differently: the scalar head, both
    // loop forms and the scalar tail all run, and none may spill past the row.
    std::mt19937 rng(77);
    for (int factor : {-9, -3, 0, 1, 2, 7, 9}) {
        const Model model(factor);
        for (int misalign = 0; misalign < 32; ++misalign)
            for (int width : {31, 47, 48, 63, 64, 95, 96, 97, 127, 161, 300}) {
                SCOPED_TRACE("factor " + std::to_string(factor) + " width " +
                             std::to_string(width) + " dst off " + std::to_string(misalign));
                GuardedImage s1(width, 2, {1, (misalign * 5) % 32, false, 32});
                GuardedImage s2(width, 2, {2, (misalign * 3 + 1) % 32, false, 32});
                GuardedImage dst(width, 2, {3, misalign, false, 32});
                s1.fillRandom(rng);
                s2.fillRandom(rng);
                forEachSlot([&](int) {
                    fillAgainst(dst, s1, s2, model);
                    ASSERT_EQ(ippiAdd_8u_C1RSfs(s1.first(), s1.step(), s2.first(), s2.step(),
                                                dst.first(), dst.step(), {width, 2}, factor),
                              ippStsNoErr);
                    expectModel(s1, s2, dst, model);
                });
            }
    }
}

TEST(AddLayouts, ZeroStepRepeatsASourceRow) {
    // No step is tested: a source step of 0 adds the same row to every row of the other.
    std::mt19937 rng(3);
    GuardedImage s1(37, 1);
    GuardedImage s2(37, 5, {4, 1, false, 32});
    GuardedImage dst(37, 5, {2, 3, true, 32});
    s1.fillRandom(rng);
    s2.fillRandom(rng);
    forEachSlot([&](int) {
        dst.fill(0);
        ASSERT_EQ(ippiAdd_8u_C1RSfs(s1.first(), 0, s2.first(), s2.step(), dst.first(), dst.step(),
                                    {37, 5}, 1),
                  ippStsNoErr);
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < 37; ++x)
                ASSERT_EQ(dst.row(y)[x], expectedSum(s1.row(0)[x], s2.row(y)[x], 1))
                    << "row " << y << " byte " << x;
        EXPECT_TRUE(dst.guardsIntact());
    });
}

TEST(AddLayouts, ThreeChannelsAreOneChannelRowsThreeTimesAsLong) {
    std::mt19937 rng(11);
    for (int factor : factors) {
        const int width = static_cast<int>(rng() % 70) + 1;
        GuardedImage s1(3 * width, 4, {5, 2, false, 32});
        GuardedImage s2(3 * width, 4, {0, 9, true, 32});
        GuardedImage viaC3(3 * width, 4, {1, 4, false, 32});
        GuardedImage viaC1(3 * width, 4, {1, 4, false, 32});
        s1.fillRandom(rng);
        s2.fillRandom(rng);
        forEachSlot([&](int) {
            viaC3.fill(0x11);
            viaC1.fill(0xEE);
            ASSERT_EQ(ippiAdd_8u_C3RSfs(s1.first(), s1.step(), s2.first(), s2.step(), viaC3.first(),
                                        viaC3.step(), {width, 4}, factor),
                      ippStsNoErr);
            ASSERT_EQ(ippiAdd_8u_C1RSfs(s1.first(), s1.step(), s2.first(), s2.step(), viaC1.first(),
                                        viaC1.step(), {3 * width, 4}, factor),
                      ippStsNoErr);
            EXPECT_EQ(viaC3.packed(), viaC1.packed()) << "factor " << factor;
            EXPECT_TRUE(viaC3.guardsIntact());
        });
    }
}

// ---- factors above 9 ------------------------------------------------------------------------

// A page that faults on any access: a source that must not be read.
class UnreadablePage {
public:
    UnreadablePage() : _size(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))) {
        _page = mmap(nullptr, _size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    }
    ~UnreadablePage() {
        if (_page != MAP_FAILED) munmap(_page, _size);
    }
    UnreadablePage(UnreadablePage const&) = delete;
    UnreadablePage& operator=(UnreadablePage const&) = delete;
    bool valid() const { return _page != MAP_FAILED; }
    Ipp8u const* bytes() const { return static_cast<Ipp8u const*>(_page); }

private:
    std::size_t _size;
    void* _page;
};

TEST(AddAboveNine, FillsZerosWithoutReadingTheSources) {
    UnreadablePage page;
    ASSERT_TRUE(page.valid());
    std::mt19937 rng(10);
    for (Form const& form : forms)
        for (int factor : {10, 11, 31, 32, INT_MAX}) {
            for (Layout const& layout : nuv::test::standardLayouts(rng)) {
                const int width = static_cast<int>(rng() % 70) + 1;
                const int height = static_cast<int>(rng() % 5) + 1;
                GuardedImage dst(width * form.channels, height, layout);
                forEachSlot([&](int) {
                    dst.fill(0xFF);
                    ASSERT_EQ(form.add(page.bytes(), 1 << 20, page.bytes(), -(1 << 20), dst.first(),
                                       dst.step(), {width, height}, factor),
                              ippStsNoErr);
                    for (int y = 0; y < height; ++y)
                        for (int x = 0; x < width * form.channels; ++x)
                            ASSERT_EQ(dst.row(y)[x], 0) << form.name << " row " << y;
                    EXPECT_TRUE(dst.guardsIntact());
                });
            }
        }
}

// ---- refusals ---------------------------------------------------------------------------------

// A call that must be refused with `status` and leave the destination and its guards alone.
void expectRefused(AddFn add, Ipp8u const* s1, Ipp8u const* s2, bool nullDst, IppiSize size,
                   int factor, IppStatus status) {
    GuardedImage dst(64, 4);
    dst.fill(0x3C);
    EXPECT_EQ(add(s1, 64, s2, 64, nullDst ? nullptr : dst.first(), dst.step(), size, factor),
              status)
        << size.width << "x" << size.height << " factor " << factor;
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 64; ++x) ASSERT_EQ(dst.row(y)[x], 0x3C);
    EXPECT_TRUE(dst.guardsIntact());
}

TEST(AddRefusals, OneChannelChecksPointersThenSize) {
    std::vector<Ipp8u> src(64 * 4, 9);
    Ipp8u const* p = src.data();
    forEachSlot([&](int) {
        for (int factor : {-8, -1, 0, 1, 5, 10}) {
            // Any null pointer, whatever the size.
            expectRefused(ippiAdd_8u_C1RSfs, nullptr, p, false, {8, 4}, factor, ippStsNullPtrErr);
            expectRefused(ippiAdd_8u_C1RSfs, p, nullptr, false, {8, 4}, factor, ippStsNullPtrErr);
            expectRefused(ippiAdd_8u_C1RSfs, p, p, true, {8, 4}, factor, ippStsNullPtrErr);
            expectRefused(ippiAdd_8u_C1RSfs, nullptr, p, false, {0, 0}, factor, ippStsNullPtrErr);
            expectRefused(ippiAdd_8u_C1RSfs, p, p, true, {-3, 4}, factor, ippStsNullPtrErr);
            // Then the size, either dimension.
            for (IppiSize size : {IppiSize{0, 4}, IppiSize{8, 0}, IppiSize{-1, 4}, IppiSize{8, -1},
                                  IppiSize{INT_MIN, INT_MIN}})
                expectRefused(ippiAdd_8u_C1RSfs, p, p, false, size, factor, ippStsSizeErr);
        }
    });
}

TEST(AddRefusals, ThreeChannelsCheckTheWidthBeforeThePointers) {
    std::vector<Ipp8u> src(64 * 4, 9);
    Ipp8u const* p = src.data();
    forEachSlot([&](int) {
        for (int factor : {-8, 0, 1, 10}) {
            // A width below 1 is refused first, null pointers or not.
            expectRefused(ippiAdd_8u_C3RSfs, nullptr, nullptr, true, {0, 4}, factor, ippStsSizeErr);
            expectRefused(ippiAdd_8u_C3RSfs, nullptr, p, false, {-2, 4}, factor, ippStsSizeErr);
            expectRefused(ippiAdd_8u_C3RSfs, p, p, false, {0, 4}, factor, ippStsSizeErr);
            // With a valid width the pointers come next, and only then the height.
            expectRefused(ippiAdd_8u_C3RSfs, nullptr, p, false, {4, 0}, factor, ippStsNullPtrErr);
            expectRefused(ippiAdd_8u_C3RSfs, p, nullptr, false, {4, 4}, factor, ippStsNullPtrErr);
            expectRefused(ippiAdd_8u_C3RSfs, p, p, true, {4, -1}, factor, ippStsNullPtrErr);
            expectRefused(ippiAdd_8u_C3RSfs, p, p, false, {4, 0}, factor, ippStsSizeErr);
        }
    });
}

}  // namespace
