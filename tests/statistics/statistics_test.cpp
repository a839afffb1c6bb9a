// Sums, means and extremes at each generation's body: random regions in the standard
// layouts against plain sums and extremes, the two forms of the mean, the early exit on
// 0 and 255, and refusals that write nothing.
#include "support/bodies.h"
#include "support/guarded.h"
#include "support/sweep.h"

#include <algorithm>

namespace {

using namespace nuv::test;
namespace bodies = nuv::test::slotTable;

class Statistics : public PrimitiveSweep {
protected:
    int slot(char const* name) { return slotOf(GetParam(), name); }
};

// Per channel of `channels`: the sum, the smallest and the largest byte of the region.
struct Plain {
    double sum[3] = {0, 0, 0};
    int min[3] = {255, 255, 255}, max[3] = {0, 0, 0};
};
Plain plainOf(Bytes const& packed, int channels) {
    Plain p;
    for (std::size_t i = 0; i < packed.size(); ++i) {
        const int c = int(i % channels), x = packed[i];
        p.sum[c] += x;
        p.min[c] = std::min(p.min[c], x);
        p.max[c] = std::max(p.max[c], x);
    }
    return p;
}

TEST_P(Statistics, RandomRegionsMatchPlainSumsAndExtremes) {
    std::mt19937 rng(5000 + static_cast<int>(GetParam()));
    int ran = 0;
    for (int round = 0; round < 60; ++round) {
        const IppiSize size{int(rng() % 80) + 1, int(rng() % 9) + 1};
        const std::vector<Layout> layouts = standardLayouts(rng);
        for (int channels : {1, 3}) {
            GuardedImage img(channels * size.width, size.height, layouts[rng() % layouts.size()]);
            img.fillRandom(rng);
            // Narrow value ranges now and then, so that extremes are not simply 0 and 255.
            if (round % 2) {
                const Ipp8u low = Ipp8u(rng() % 200);
                for (int y = 0; y < size.height; ++y)
                    for (int x = 0; x < channels * size.width; ++x)
                        img.row(y)[x] = Ipp8u(low + img.row(y)[x] % 50);
            }
            const Plain want = plainOf(img.packed(), channels);
            const double n = double(size.width) * size.height;
            SCOPED_TRACE(std::to_string(channels) + " channels, " + std::to_string(size.width) +
                         "x" + std::to_string(size.height));
            // Each primitive at its own body of this generation, where there is one.
            auto run = [&](char const* name, auto const& table, auto... results) {
                const int k = slot(name);
                if (k >= 0) {
                    EXPECT_EQ(table[k](img.first(), img.step(), size, results...), ippStsNoErr)
                        << name;
                    ++ran;
                }
                return k >= 0;
            };
            double sum[3] = {}, mean[3] = {};
            Ipp8u lo[3] = {}, hi[3] = {};
            const bool one = channels == 1;
            if (one ? run("ippiSum_8u_C1R", bodies::ippiSum_8u_C1R, sum)
                    : run("ippiSum_8u_C3R", bodies::ippiSum_8u_C3R, sum)) {
                for (int c = 0; c < channels; ++c) EXPECT_EQ(sum[c], want.sum[c]) << c;
            }
            if (one ? run("ippiMean_8u_C1R", bodies::ippiMean_8u_C1R, mean)
                    : run("ippiMean_8u_C3R", bodies::ippiMean_8u_C3R, mean)) {  // divide, multiply
                for (int c = 0; c < channels; ++c)
                    EXPECT_EQ(mean[c], one ? want.sum[c] / n : want.sum[c] * (1.0 / n)) << c;
            }
            if (one ? run("ippiMinMax_8u_C1R", bodies::ippiMinMax_8u_C1R, lo, hi)
                    : run("ippiMinMax_8u_C3R", bodies::ippiMinMax_8u_C3R, lo, hi)) {
                for (int c = 0; c < channels; ++c)
                    EXPECT_EQ(std::pair(int{lo[c]}, int{hi[c]}),
                              std::pair(want.min[c], want.max[c]))
                        << c;
            }
            EXPECT_TRUE(img.guardsIntact());
        }
    }
    if (ran == 0) GTEST_SKIP() << "no body of this generation runs here";
}

// 49 * (1.0 / 49) is just below 1; 49 / 49 is 1. A zero step re-reads the first row.
TEST_P(Statistics, MeanByDivisionAndByReciprocal) {
    const int c1 = slot("ippiMean_8u_C1R"), c3 = slot("ippiMean_8u_C3R");
    if (c1 < 0 && c3 < 0) GTEST_SKIP();
    Bytes ones(3 * 7, 1);
    double mean[3] = {};
    if (c1 >= 0) {
        ASSERT_EQ(bodies::ippiMean_8u_C1R[c1](ones.data(), 0, {7, 7}, mean), ippStsNoErr);
        EXPECT_EQ(mean[0], 1.0);
    }
    if (c3 >= 0) {
        ASSERT_EQ(bodies::ippiMean_8u_C3R[c3](ones.data(), 0, {7, 7}, mean), ippStsNoErr);
        for (double m : mean) EXPECT_LT(m, 1.0);
    }
}

// 0 and 255 anywhere in a row, in long rows that the vectors cover and the last bytes.
TEST_P(Statistics, BothEndsOfTheRangeWherever) {
    const int s = slot("ippiMinMax_8u_C1R");
    if (s < 0) GTEST_SKIP();
    for (int width : {1, 2, 15, 16, 17, 33, 64, 100})
        for (int at : {0, width / 2, width - 1}) {
            Bytes row(2 * width, 128);
            row[at] = 0;
            row[width + (width - 1 - at)] = 255;
            Ipp8u lo = 1, hi = 1;
            ASSERT_EQ(bodies::ippiMinMax_8u_C1R[s](row.data(), width, {width, 2}, &lo, &hi),
                      ippStsNoErr);
            EXPECT_EQ(std::pair(int{lo}, int{hi}), std::pair(0, 255)) << width << " at " << at;
        }
}

// Null pointers, then the size; nothing is written. The mean tests its own pointer first
// and then returns the sum's status.
TEST_P(Statistics, Refusals) {
    Bytes img(12, 7);
    Ipp8u lo[3] = {9, 9, 9}, hi[3] = {9, 9, 9};
    double out[3] = {-1, -1, -1};
    struct Row {
        bool nullSrc, nullResult;
        IppiSize size;
        IppStatus status;
    } const rows[] = {{true, false, {0, 0}, ippStsNullPtrErr},
                      {false, true, {0, 0}, ippStsNullPtrErr},
                      {false, false, {0, 2}, ippStsSizeErr},
                      {false, false, {2, -1}, ippStsSizeErr}};
    for (Row const& r : rows) {
        Ipp8u const* src = r.nullSrc ? nullptr : img.data();
        double* result = r.nullResult ? nullptr : out;
        Ipp8u* resultBytes = r.nullResult ? nullptr : lo;
        if (int k = slot("ippiMinMax_8u_C1R"); k >= 0) {
            EXPECT_EQ(bodies::ippiMinMax_8u_C1R[k](src, 6, r.size, resultBytes, hi), r.status);
            EXPECT_EQ(bodies::ippiMinMax_8u_C1R[k](src, 6, r.size, lo, resultBytes ? hi : nullptr),
                      r.status);
        }
        if (int k = slot("ippiMinMax_8u_C3R"); k >= 0) {
            EXPECT_EQ(bodies::ippiMinMax_8u_C3R[k](src, 6, r.size, resultBytes, hi), r.status);
        }
        if (int k = slot("ippiSum_8u_C1R"); k >= 0) {
            EXPECT_EQ(bodies::ippiSum_8u_C1R[k](src, 6, r.size, result), r.status);
        }
        if (int k = slot("ippiSum_8u_C3R"); k >= 0) {
            EXPECT_EQ(bodies::ippiSum_8u_C3R[k](src, 6, r.size, result), r.status);
        }
        if (int k = slot("ippiMean_8u_C1R"); k >= 0) {
            EXPECT_EQ(bodies::ippiMean_8u_C1R[k](src, 6, r.size, result), r.status);
        }
        if (int k = slot("ippiMean_8u_C3R"); k >= 0) {
            EXPECT_EQ(bodies::ippiMean_8u_C3R[k](src, 6, r.size, result), r.status);
        }
    }
    if (int k = slot("ippiMean_8u_C1R"); k >= 0) {  // its own pointer before the sum's checks
        EXPECT_EQ(bodies::ippiMean_8u_C1R[k](nullptr, 6, {0, 0}, nullptr), ippStsNullPtrErr);
    }
    EXPECT_EQ(std::vector<double>(out, out + 3), std::vector<double>(3, -1));
    EXPECT_EQ(Bytes(lo, lo + 3), Bytes(3, 9));
    EXPECT_EQ(Bytes(hi, hi + 3), Bytes(3, 9));
}

NUV_SWEEP_GENERATIONS(Statistics);

}  // namespace
