// Thresholds and constant compares through the shared sweep: each form against a plain
// per-byte model over tables of bounds (bytes equal to a bound, bounds at 0 and 255, crossed
// bounds, unknown modes and operations), and the general forms' orders of checks.
#include "support/bodies.h"
#include "support/sweep.h"

namespace {

using namespace nuv::test;
namespace bodies = nuv::test::slotTable;

// Per channel: t, v for one bound (and tLT, vLT for two), t2, v2 for the upper bound; a mode.
struct Bounds {
    Ipp8u t[3], v[3], t2[3], v2[3];
    int mode;
};
Bounds const bounds[] = {
    {{100, 50, 200}, {7, 8, 9}, {150, 50, 255}, {1, 2, 3}, ippCmpLess},
    {{0, 255, 128}, {255, 0, 1}, {0, 255, 200}, {9, 9, 9}, ippCmpGreater},
    {{255, 0, 1}, {1, 2, 3}, {255, 0, 1}, {4, 5, 6}, ippCmpLess},
    {{60, 20, 30}, {0, 0, 0}, {50, 200, 40}, {0, 0, 0}, ippCmpGreater},  // channel 0 crossed
    {{100, 90, 60}, {0, 0, 0}, {200, 80, 70}, {0, 0, 0}, 7},             // channel 1 crossed
};
std::vector<int> const allBounds = {0, 1, 2, 3, 4};

enum class Kind { clip, value, band };

// The per-byte result of a threshold: a byte equal to a bound stays.
int thresholdByte(Kind k, int mode, int x, Bounds const& b, int c) {
    switch (k) {
        case Kind::clip:
            return mode == ippCmpLess ? std::max(x, int{b.t[c]}) : std::min(x, int{b.t[c]});
        case Kind::value:
            return (mode == ippCmpLess ? x < b.t[c] : x > b.t[c]) ? b.v[c] : x;
        case Kind::band:
            return x < b.t[c] ? b.v[c] : x > b.t2[c] ? b.v2[c] : x;
    }
    return -1;
}

// The checks after pointers and size: steps and the mode in their orders, crossed bounds.
// `modeFirst`: the mode is tested before everything (value forms) or after the steps.
template <Kind K, int Channels, bool InPlace, int FixedMode = -1, bool ModeFirst = false>
IppStatus thresholdModel(ModelInput const& in, Bytes& out) {
    Bounds const& b = bounds[in.arg];
    const int mode = FixedMode >= 0 ? FixedMode : b.mode;
    const bool badMode = K != Kind::band && mode != ippCmpLess && mode != ippCmpGreater;
    if (ModeFirst && badMode) return ippStsNotSupportedModeErr;
    if (in.dstStep < 1 || (!InPlace && in.srcStep < 1)) return ippStsStepErr;
    if (badMode) return ippStsNotSupportedModeErr;
    for (int c = 0; c < (K == Kind::band ? Channels : 0); ++c)
        if (b.t2[c] < b.t[c]) return ippStsThresholdErr;
    out = InPlace ? in.dstBefore : in.sources[0];
    for (std::size_t i = 0; i < out.size(); ++i)
        out[i] = std::uint8_t(thresholdByte(K, mode, out[i], b, int(i % Channels)));
    return ippStsNoErr;
}

// ---- compares: (operation, values) pairs

struct Comparison {
    int op;
    Ipp8u value[3];
};
Comparison const comparisons[] = {{0, {0, 0, 0}},       {0, {128, 1, 255}}, {1, {255, 0, 77}},
                                  {1, {100, 200, 9}},   {2, {3, 128, 250}}, {3, {0, 128, 255}},
                                  {4, {255, 255, 255}}, {4, {0, 0, 0}},     {4, {128, 30, 200}},
                                  {5, {1, 2, 3}},       {-1, {1, 2, 3}}};
std::vector<int> const allComparisons = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10};

bool compares(int op, int x, int v) {
    return op == 0 ? x < v : op == 1 ? x <= v : op == 2 ? x == v : op == 3 ? x >= v : x > v;
}

template <int Channels>
IppStatus compareModel(ModelInput const& in, Bytes& out) {
    Comparison const& k = comparisons[in.arg];
    if (in.srcStep < 1 || in.dstStep < 1) return ippStsStepErr;
    out = in.dstBefore;
    if (k.op < 0 || k.op > 4) return ippStsNoErr;  // a silent success that writes nothing
    Bytes const& s = in.sources[0];
    for (std::size_t i = 0; i < out.size(); ++i) {
        bool all = true;
        for (int c = 0; c < Channels; ++c)
            all = all && compares(k.op, s[Channels * i + c], k.value[c]);
        out[i] = all ? 255 : 0;
    }
    return ippStsNoErr;
}

// ---- the cases

Bounds const& boundsOf(Call const& c) {
    return bounds[c.arg];
}
auto const ltC1 = [](auto f, Call const& c) {
    return f(c.src1, c.src1Step, c.dst, c.dstStep, c.size, boundsOf(c).t[0]);
};
auto const ltC3IR = [](auto f, Call const& c) {
    return f(c.dst, c.dstStep, c.size, boundsOf(c).t);
};
auto const valueC1 = [](auto f, Call const& c) {
    return f(c.src1, c.src1Step, c.dst, c.dstStep, c.size, boundsOf(c).t[0], boundsOf(c).v[0]);
};
auto const valueC3 = [](auto f, Call const& c) {
    return f(c.src1, c.src1Step, c.dst, c.dstStep, c.size, boundsOf(c).t, boundsOf(c).v);
};
auto const bandC1IR = [](auto f, Call const& c) {
    Bounds const& b = boundsOf(c);
    return f(c.dst, c.dstStep, c.size, b.t[0], b.v[0], b.t2[0], b.v2[0]);
};
auto const bandC3IR = [](auto f, Call const& c) {
    Bounds const& b = boundsOf(c);
    return f(c.dst, c.dstStep, c.size, b.t, b.v, b.t2, b.v2);
};
// The general forms, with the mode of the bounds.
auto const clipC1Mode = [](auto f, Call const& c) {
    return f(c.src1, c.src1Step, c.dst, c.dstStep, c.size, boundsOf(c).t[0], boundsOf(c).mode);
};
auto const valueC1Mode = [](auto f, Call const& c) {
    Bounds const& b = boundsOf(c);
    return f(c.src1, c.src1Step, c.dst, c.dstStep, c.size, b.t[0], b.v[0], b.mode);
};
auto const compareC1 = [](auto f, Call const& c) {
    Comparison const& k = comparisons[c.arg];
    return f(c.src1, c.src1Step, k.value[0], c.dst, c.dstStep, c.size, k.op);
};
auto const compareC3 = [](auto f, Call const& c) {
    Comparison const& k = comparisons[c.arg];
    return f(c.src1, c.src1Step, k.value, c.dst, c.dstStep, c.size, k.op);
};

constexpr int lt = ippCmpLess, gt = ippCmpGreater;
#define NUV_CASE(name, adapter, sources, channels) \
#name, callOf(bodies::name, adapter), sources, channels, channels, false, false, allBounds
std::vector<SweepCase> const& cases() {
    static std::vector<SweepCase> const all = {
        {NUV_CASE(ippiThreshold_LT_8u_C1R, ltC1, 1, 1),
         thresholdModel<Kind::clip, 1, false, lt>,
         {}},
        {NUV_CASE(ippiThreshold_LT_8u_C3IR, ltC3IR, 0, 3),
         thresholdModel<Kind::clip, 3, true, lt>,
         {}},
        {NUV_CASE(ippiThreshold_LTVal_8u_C1R, valueC1, 1, 1),
         thresholdModel<Kind::value, 1, false, lt>,
         {}},
        {NUV_CASE(ippiThreshold_LTVal_8u_C3R, valueC3, 1, 3),
         thresholdModel<Kind::value, 3, false, lt>,
         {}},
        {NUV_CASE(ippiThreshold_GTVal_8u_C1R, valueC1, 1, 1),
         thresholdModel<Kind::value, 1, false, gt>,
         {}},
        {NUV_CASE(ippiThreshold_GTVal_8u_C3R, valueC3, 1, 3),
         thresholdModel<Kind::value, 3, false, gt>,
         {}},
        {NUV_CASE(ippiThreshold_LTValGTVal_8u_C1IR, bandC1IR, 0, 1),
         thresholdModel<Kind::band, 1, true>,
         {}},
        {NUV_CASE(ippiThreshold_LTValGTVal_8u_C3IR, bandC3IR, 0, 3),
         thresholdModel<Kind::band, 3, true>,
         {}},
        {NUV_CASE(ippiThreshold_8u_C1R, clipC1Mode, 1, 1),
         thresholdModel<Kind::clip, 1, false>,
         {}},
        {NUV_CASE(ippiThreshold_Val_8u_C1R, valueC1Mode, 1, 1),
         thresholdModel<Kind::value, 1, false, -1, true>,
         {}},
        {"ippiCompareC_8u_C1R",
         callOf(bodies::ippiCompareC_8u_C1R, compareC1),
         1,
         1,
         1,
         false,
         false,
         allComparisons,
         compareModel<1>,
         {}},
        {"ippiCompareC_8u_C3R",
         callOf(bodies::ippiCompareC_8u_C3R, compareC3),
         1,
         3,
         1,
         false,
         false,
         allComparisons,
         compareModel<3>,
         {}},
    };
    return all;
}
#undef NUV_CASE

class ThresholdSweep : public PrimitiveSweep {};

TEST_P(ThresholdSweep, RandomRegionsMatchTheModels) {
    std::mt19937 rng(4000 + static_cast<int>(GetParam()));
    if (sweepRandom(cases(), 40, rng) == 0) GTEST_SKIP() << "no body of this generation runs here";
}

// Pointers, then the size, for every form; the value forms test the mode before both.
TEST_P(ThresholdSweep, PointersThenSize) {
    constexpr IppStatus null = ippStsNullPtrErr, size = ippStsSizeErr;
    for (SweepCase const& c : cases()) {
        const bool modeFirst = c.name.find("_Val_") != std::string::npos;
        std::vector<Refusal> rows = {{false, true, {0, 4}, 0, null},
                                     {false, false, {0, 4}, 0, size},
                                     {false, false, {8, -1}, 0, size}};
        if (c.sources > 0) rows.push_back({true, false, {0, 4}, 0, null});
        if (modeFirst) rows.push_back({true, true, {0, 0}, 4, ippStsNotSupportedModeErr});
        sweepRefusals(c, rows);
    }
}

// Null bound arrays come after the steps, the mode last in the plain three-channel form.
TEST_P(ThresholdSweep, NullBoundArrays) {
    const int plain = slotOf(GetParam(), "ippiThreshold_8u_C3R");
    const int value = slotOf(GetParam(), "ippiThreshold_Val_8u_C3R");
    const int band = slotOf(GetParam(), "ippiThreshold_LTValGTVal_8u_C3R");
    Ipp8u img[12] = {}, t[3] = {1, 2, 3};
    if (plain >= 0) {
        EXPECT_EQ(bodies::ippiThreshold_8u_C3R[plain](img, 6, img, 0, {2, 2}, nullptr, 7),
                  ippStsStepErr);
        EXPECT_EQ(bodies::ippiThreshold_8u_C3R[plain](img, 6, img, 6, {2, 2}, nullptr, 7),
                  ippStsNullPtrErr);
        EXPECT_EQ(bodies::ippiThreshold_8u_C3R[plain](img, 6, img, 6, {2, 2}, t, 7),
                  ippStsNotSupportedModeErr);
    }
    if (value >= 0) {
        EXPECT_EQ(bodies::ippiThreshold_Val_8u_C3R[value](img, 6, img, 6, {2, 2}, t, nullptr, 0),
                  ippStsNullPtrErr);
        EXPECT_EQ(bodies::ippiThreshold_Val_8u_C3R[value](nullptr, 0, img, 0, {0, 0}, t, t, 7),
                  ippStsNotSupportedModeErr);
    }
    if (band >= 0) {
        EXPECT_EQ(
            bodies::ippiThreshold_LTValGTVal_8u_C3R[band](img, 6, img, 6, {2, 2}, t, t, nullptr, t),
            ippStsNullPtrErr);
    }
    EXPECT_EQ(std::vector<Ipp8u>(img, img + 12), std::vector<Ipp8u>(12, 0));
}

NUV_SWEEP_GENERATIONS(ThresholdSweep);

}  // namespace
