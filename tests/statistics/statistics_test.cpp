// Sums, means and extremes at each generation's body: random regions in the standard
// layouts (full-range ones, where the extremes stop early, and narrow ones) against plain
// sums and extremes and the two forms of the mean, and refusals that write nothing.
#include "support/bodies.h"
#include "support/guarded.h"
#include "support/sweep.h"

#include <algorithm>

namespace {

using namespace nuv::test;
namespace bodies = nuv::test::slotTable;

// Per channel: the sum, the smallest and the largest byte of a region.
struct Plain {
    double sum[3] = {0, 0, 0}, min[3] = {255, 255, 255}, max[3] = {0, 0, 0};
};

using Results = std::vector<double>;
struct Measure {
    char const* name;
    int channels;
    // The body at `slot`; its results per channel (the minima, then the maxima) in `out`,
    // or a null result pointer if `out` is null.
    std::function<IppStatus(int slot, Ipp8u const*, int, IppiSize, double* out)> call;
    std::function<Results(Plain const&, double pixels)> want;
};

template <class Table>
auto direct(Table const& table) {
    return [&table](int slot, Ipp8u const* s, int step, IppiSize size, double* out) {
        return table[slot](s, step, size, out);
    };
}
template <int Channels, class Table>
auto extremes(Table const& table) {
    return [&table](int slot, Ipp8u const* s, int step, IppiSize size, double* out) {
        Ipp8u lo[3], hi[3];
        const IppStatus status = table[slot](s, step, size, out ? lo : nullptr, hi);
        for (int c = 0; out && status == ippStsNoErr && c < Channels; ++c)
            out[c] = lo[c], out[Channels + c] = hi[c];
        return status;
    };
}

std::vector<Measure> const measures = {
    {"ippiSum_8u_C1R", 1, direct(bodies::ippiSum_8u_C1R),
     [](Plain const& p, double) { return Results{p.sum[0]}; }},
    {"ippiSum_8u_C3R", 3, direct(bodies::ippiSum_8u_C3R),
     [](Plain const& p, double) {
         return Results{p.sum[0], p.sum[1], p.sum[2]};
     }},
    {"ippiMean_8u_C1R", 1, direct(bodies::ippiMean_8u_C1R),  // a true division
     [](Plain const& p, double n) { return Results{p.sum[0] / n}; }},
    {"ippiMean_8u_C3R", 3, direct(bodies::ippiMean_8u_C3R),  // by the reciprocal
     [](Plain const& p, double n) {
         return Results{p.sum[0] * (1.0 / n), p.sum[1] * (1.0 / n), p.sum[2] * (1.0 / n)};
     }},
    {"ippiMinMax_8u_C1R", 1, extremes<1>(bodies::ippiMinMax_8u_C1R),
     [](Plain const& p, double) {
         return Results{p.min[0], p.max[0]};
     }},
    {"ippiMinMax_8u_C3R", 3, extremes<3>(bodies::ippiMinMax_8u_C3R),
     [](Plain const& p, double) {
         return Results{p.min[0], p.min[1], p.min[2], p.max[0], p.max[1], p.max[2]};
     }},
};

class Statistics : public PrimitiveSweep {};

TEST_P(Statistics, RandomRegionsMatchPlainSumsAndExtremes) {
    std::mt19937 rng(5000 + static_cast<int>(GetParam()));
    int ran = 0;
    for (Measure const& m : measures) {
        const int slot = slotOf(GetParam(), m.name);
        if (slot < 0) continue;
        ++ran;
        for (int round = 0; round < 40; ++round) {
            const IppiSize size{int(rng() % 80) + 1, int(rng() % 9) + 1};
            const std::vector<Layout> layouts = standardLayouts(rng);
            GuardedImage img(m.channels * size.width, size.height, layouts[rng() % layouts.size()]);
            img.fillRandom(rng);
            // Narrow ranges now and then, so that the extremes are not simply 0 and 255.
            const int low = int(rng() % 200), span = round % 2 ? 50 : 256;
            for (int y = 0; y < size.height; ++y)
                for (int x = 0; x < m.channels * size.width; ++x)
                    img.row(y)[x] = Ipp8u(low + img.row(y)[x] % span);
            Plain p;
            const Bytes bytes = img.packed();
            for (std::size_t i = 0; i < bytes.size(); ++i) {
                const int c = int(i % m.channels);
                p.sum[c] += bytes[i];
                p.min[c] = std::min(p.min[c], double(bytes[i]));
                p.max[c] = std::max(p.max[c], double(bytes[i]));
            }
            const Results want = m.want(p, double(size.width) * size.height);
            Results got(want.size(), -1);
            ASSERT_EQ(m.call(slot, img.first(), img.step(), size, got.data()), ippStsNoErr);
            EXPECT_EQ(got, want) << m.name << " " << size.width << "x" << size.height;
            EXPECT_TRUE(img.guardsIntact());
        }
    }
    if (ran == 0) GTEST_SKIP() << "no body of this generation runs here";
}

// Null pointers, then the size; nothing is written. The mean tests its own pointer first and
// then returns the sum's status.
TEST_P(Statistics, Refusals) {
    const Bytes img(12, 7);
    struct Row {
        bool nullSrc, nullOut;
        IppiSize size;
        IppStatus status;
    } const rows[] = {{true, false, {0, 0}, ippStsNullPtrErr},
                      {false, true, {0, 0}, ippStsNullPtrErr},
                      {false, false, {0, 2}, ippStsSizeErr},
                      {false, false, {2, -1}, ippStsSizeErr}};
    for (Measure const& m : measures) {
        const int slot = slotOf(GetParam(), m.name);
        for (Row const& r : rows) {
            if (slot < 0) continue;
            double out[6] = {-1, -1, -1, -1, -1, -1};
            EXPECT_EQ(m.call(slot, r.nullSrc ? nullptr : img.data(), 6, r.size,
                             r.nullOut ? nullptr : out),
                      r.status)
                << m.name;
            EXPECT_EQ(Results(out, out + 6), Results(6, -1)) << m.name;
        }
    }
}

NUV_SWEEP_GENERATIONS(Statistics);

}  // namespace
