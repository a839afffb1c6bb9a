// Every image primitive through the shared sweep: plain models of the bytes, random regions
// in every layout, large regions that stream, and the refused calls in their order.
#include "support/bodies.h"
#include "support/slots.h"
#include "support/sweep.h"

#include <algorithm>
#include <climits>

namespace {

using namespace nuv::test;
namespace bodies = nuv::test::slotTable;

// ---- models

// Pixel (x, y) of an output of `out` pixels comes from pixel from(x, y) of a packed source
// `srcWidth` pixels wide, all `px` bytes of it.
template <class From>
Bytes remap(Bytes const& src, int srcWidth, IppiSize out, int px, From from) {
    Bytes result(static_cast<std::size_t>(out.width) * out.height * px);
    for (int y = 0; y < out.height; ++y)
        for (int x = 0; x < out.width; ++x) {
            const auto [sx, sy] = from(x, y);
            for (int c = 0; c < px; ++c)
                result[(static_cast<std::size_t>(y) * out.width + x) * px + c] =
                    src[(static_cast<std::size_t>(sy) * srcWidth + sx) * px + c];
        }
    return result;
}

// The exact sum scaled by 2^-factor, rounded to nearest with a tie to the even neighbour,
// clamped to a byte: from a quotient and a remainder, not from the library's bit tricks.
std::uint8_t scaledSum(unsigned a, unsigned b, int factor) {
    const std::uint64_t t = a + b;
    std::uint64_t value = 0;
    if (factor <= 0) {
        const std::int64_t k = -static_cast<std::int64_t>(factor);
        value = k >= 8 ? (t == 0 ? 0 : 256) : t << k;
    } else if (factor < 32) {
        const std::uint64_t divisor = std::uint64_t{1} << factor;
        const std::uint64_t quotient = t / divisor, twiceRest = 2 * (t % divisor);
        value = quotient + (twiceRest > divisor || (twiceRest == divisor && quotient % 2 == 1));
    }
    return static_cast<std::uint8_t>(value > 255 ? 255 : value);
}

IppStatus copyModel(ModelInput const& in, Bytes& out) {
    out = in.sources[0];
    return ippStsNoErr;
}

// Gray into channel 0 of three, channel 0 out of three, four bytes to three.
IppStatus grayToChannel0(ModelInput const& in, Bytes& out) {
    out = in.dstBefore;
    for (std::size_t i = 0; i < in.sources[0].size(); ++i) out[3 * i] = in.sources[0][i];
    return ippStsNoErr;
}
// Gray into all three channels: what channel 0 and then its spread over the pixel give.
IppStatus grayToAll(ModelInput const& in, Bytes& out) {
    out.resize(3 * in.sources[0].size());
    for (std::size_t i = 0; i < out.size(); ++i) out[i] = in.sources[0][i / 3];
    return ippStsNoErr;
}
IppStatus channel0ToGray(ModelInput const& in, Bytes& out) {
    out.resize(in.sources[0].size() / 3);
    for (std::size_t i = 0; i < out.size(); ++i) out[i] = in.sources[0][3 * i];
    return ippStsNoErr;
}
IppStatus fourToThree(ModelInput const& in, Bytes& out) {
    out.resize(in.sources[0].size() / 4 * 3);
    for (std::size_t i = 0; i < out.size(); ++i) out[i] = in.sources[0][i / 3 * 4 + i % 3];
    return ippStsNoErr;
}

// The vector forms clear `width` elements from the first byte: the first row of the region.
template <int ElementBytes>
IppStatus zeroModel(ModelInput const& in, Bytes& out) {
    out = in.dstBefore;
    std::fill(out.begin(), out.begin() + ElementBytes * in.size.width, 0);
    return ippStsNoErr;
}

IppStatus fillModel(ModelInput const& in, Bytes& out) {
    out.assign(in.dstBefore.size(), static_cast<std::uint8_t>(in.arg));
    return ippStsNoErr;
}

IppStatus addModel(ModelInput const& in, Bytes& out) {
    out.resize(in.sources[0].size());
    for (std::size_t i = 0; i < out.size(); ++i)
        out[i] = scaledSum(in.sources[0][i], in.sources[1][i], in.arg);
    return ippStsNoErr;
}

// Axis 0 swaps rows, 1 columns, 2 both; a single row or column cannot be flipped along it.
template <int C, bool InPlace>
IppStatus mirrorModel(ModelInput const& in, Bytes& out) {
    const int w = in.size.width, h = in.size.height, flip = in.arg;
    if ((flip != 1 && h < 2) || (flip != 0 && w < 2)) return ippStsSizeErr;
    out = remap(InPlace ? in.dstBefore : in.sources[0], w, in.size, C, [&](int x, int y) {
        return std::pair{flip != 0 ? w - 1 - x : x, flip != 1 ? h - 1 - y : y};
    });
    return ippStsNoErr;
}

// Only a square can be transposed where it lies.
template <int C, bool InPlace>
IppStatus transposeModel(ModelInput const& in, Bytes& out) {
    if (InPlace && in.size.width != in.size.height) return ippStsSizeErr;
    out = remap(InPlace ? in.dstBefore : in.sources[0], in.size.width,
                {in.size.height, in.size.width}, C, [](int x, int y) {
                    return std::pair{y, x};
                });
    return ippStsNoErr;
}

// ---- the cases

auto const unary = [](auto f, Call const& c) {
    return f(c.src1, c.src1Step, c.dst, c.dstStep, c.size);
};
auto const mirrorCopy = [](auto f, Call const& c) {
    return f(c.src1, c.src1Step, c.dst, c.dstStep, c.size, c.arg);
};
auto const mirrorInPlace = [](auto f, Call const& c) { return f(c.dst, c.dstStep, c.size, c.arg); };
auto const inPlace = [](auto f, Call const& c) { return f(c.dst, c.dstStep, c.size); };
auto const zero8u = [](auto f, Call const& c) { return f(c.dst, c.size.width); };
auto const zero32s = [](auto f, Call const& c) {
    return f(reinterpret_cast<Ipp32s*>(c.dst), c.size.width);
};
auto const binary = [](auto f, Call const& c) {
    return f(c.src1, c.src1Step, c.src2, c.src2Step, c.dst, c.dstStep, c.size, c.arg);
};
auto const fill = [](auto f, Call const& c) {
    return f(static_cast<Ipp8u>(c.arg), c.dst, c.dstStep, c.size);
};

std::vector<int> const flips = {0, 1, 2};
std::vector<int> const factors = {INT_MIN, -9, -8, -7, -3, -1, 0,  1,  2,
                                  3,       5,  8,  9,  10, 11, 31, 32, INT_MAX};
IppiSize const large1 = {1536, 1400}, large3 = {768, 1000};

#define NUV_CASE(name) #name, callOf(bodies::name
std::vector<SweepCase> const& cases() {
    static std::vector<SweepCase> const all = {
        {NUV_CASE(ippiCopy_8u_C1R), unary), 1, 1, 1, false, false, {0}, copyModel, {large1}},
        {NUV_CASE(ippiCopy_8u_C3R), unary), 1, 3, 3, false, false, {0}, copyModel, {large3}},
        {NUV_CASE(ippiCopy_8u_C1C3R), unary), 1, 1, 3, false, false, {0}, grayToChannel0, {}},
        {NUV_CASE(ippiGrayToRGB_8u_C1C3R), unary), 1, 1, 3, false, false, {0}, grayToAll, {}},
        {NUV_CASE(ippiCopy_8u_C3C1R), unary), 1, 3, 1, false, false, {0}, channel0ToGray, {}},
        {NUV_CASE(ippiCopy_8u_AC4C3R), unary), 1, 4, 3, false, false, {0}, fourToThree, {}},
        {NUV_CASE(ippiSet_8u_C1R), fill), 0, 1, 1, false, false, {0, 0x5A, 255}, fillModel,
         {large1}},
        {NUV_CASE(ippsZero_8u), zero8u), 0, 1, 1, false, false, {0}, zeroModel<1>,
         {{2200000, 1}}},
        {NUV_CASE(ippsZero_32s), zero32s), 0, 4, 4, false, false, {0}, zeroModel<4>,
         {{600000, 1}}},
        {NUV_CASE(ippiAdd_8u_C1RSfs), binary), 2, 1, 1, false, false, factors, addModel, {}},
        {NUV_CASE(ippiAdd_8u_C3RSfs), binary), 2, 3, 3, false, false, factors, addModel, {}},
        {NUV_CASE(ippiMirror_8u_C1R), mirrorCopy), 1, 1, 1, false, false, flips,
         mirrorModel<1, false>, {large1}},
        {NUV_CASE(ippiMirror_8u_C3R), mirrorCopy), 1, 3, 3, false, false, flips,
         mirrorModel<3, false>, {large3}},
        {NUV_CASE(ippiMirror_8u_C1IR), mirrorInPlace), 0, 1, 1, false, false, flips,
         mirrorModel<1, true>, {}},
        {NUV_CASE(ippiMirror_8u_C3IR), mirrorInPlace), 0, 3, 3, false, false, flips,
         mirrorModel<3, true>, {}},
        {NUV_CASE(ippiTranspose_8u_C1R), unary), 1, 1, 1, true, false, {0},
         transposeModel<1, false>, {{1088, 1088}, {1104, 128}}},
        // Source rows 1536 bytes apart share first-level cache sets, which sends m7 by bands.
        {NUV_CASE(ippiTranspose_8u_C3R), unary), 1, 3, 3, true, false, {0},
         transposeModel<3, false>, {{512, 37}}},
        {NUV_CASE(ippiTranspose_8u_C1IR), inPlace), 0, 1, 1, false, true, {0},
         transposeModel<1, true>, {}},
        {NUV_CASE(ippiTranspose_8u_C3IR), inPlace), 0, 3, 3, false, true, {0},
         transposeModel<3, true>, {}},
    };
    return all;
}
#undef NUV_CASE

SweepCase const& caseNamed(std::string const& name) {
    for (SweepCase const& c : cases())
        if (c.name == name) return c;
    throw std::logic_error(name);
}

class ImageSweep : public PrimitiveSweep {};

TEST_P(ImageSweep, RandomRegionsMatchTheModels) {
    std::mt19937 rng(1000 + static_cast<int>(GetParam()));
    if (sweepRandom(cases(), 40, rng) == 0) GTEST_SKIP() << "no body of this generation runs here";
}

// A processor reporting a 512 KiB cache by descriptor and a 256 KiB cache by parameters makes
// every generation's streaming path run on these sizes.
TEST_P(ImageSweep, LargeRegionsStreamingPastASmallCache) {
    play(processors::smallCacheIntel(0x43, 256 * 1024));
    sweepLarge(cases());
}

// ---- refused calls, in the order of the checks

constexpr IppStatus null = ippStsNullPtrErr, size = ippStsSizeErr, axis = ippStsMirrorAxisErr;

// Pointers before the size; no step is looked at.
std::vector<Refusal> const pointersThenSize = {
    {true, false, {8, 4}, 0, null},  {false, true, {8, 4}, 0, null},
    {true, true, {8, 4}, 0, null},   {true, false, {0, 4}, 0, null},
    {false, true, {8, -1}, 0, null}, {false, false, {0, 4}, 0, size},
    {false, false, {8, 0}, 0, size}, {false, false, {-3, 4}, 0, size},
    {false, false, {8, -7}, 0, size}};
std::vector<Refusal> const onePointerThenSize = {{false, true, {8, 4}, 0, null},
                                                 {false, true, {0, 0}, 0, null},
                                                 {false, false, {0, 4}, 0, size},
                                                 {false, false, {8, 0}, 0, size},
                                                 {false, false, {-3, -4}, 0, size}};
// A length below 1 is refused after the pointer.
std::vector<Refusal> const lengthAfterPointer = {{false, true, {0, 1}, 0, null},
                                                 {false, false, {0, 1}, 0, size},
                                                 {false, false, {-7, 1}, 0, size}};
// The three-channel addition refuses a width below 1 before it looks at a pointer.
std::vector<Refusal> const widthFirst = {{true, true, {0, 4}, 0, size},
                                         {true, false, {-2, 4}, 9, size},
                                         {true, false, {4, 0}, 0, null},
                                         {false, true, {4, -1}, 11, null},
                                         {false, false, {4, 0}, 0, size}};
// Pointers, size, axis, then a single row or column along the flipped axis.
std::vector<Refusal> const mirrorOrder = {
    {true, false, {0, 0}, 7, null},  {false, true, {-1, 4}, 3, null},
    {false, false, {0, 4}, 3, size}, {false, false, {5, -2}, -1, size},
    {false, false, {5, 4}, 3, axis}, {false, false, {5, 4}, -1, axis},
    {false, false, {1, 1}, 3, axis}, {false, false, {5, 1}, 0, size},
    {false, false, {5, 1}, 2, size}, {false, false, {1, 4}, 1, size},
    {false, false, {1, 4}, 2, size}};
std::vector<Refusal> const mirrorInPlaceOrder = {
    {false, true, {0, 0}, 7, null},  {false, false, {0, 4}, 3, size},
    {false, false, {5, 4}, 3, axis}, {false, false, {1, 1}, -1, axis},
    {false, false, {5, 1}, 0, size}, {false, false, {1, 4}, 2, size}};
// Pointer, size, then the shape: only a square stays where it lies.
std::vector<Refusal> const squareOnly = {
    {false, true, {4, 4}, 0, null},   {false, true, {2, 3}, 0, null},
    {false, false, {0, 0}, 0, size},  {false, false, {4, -4}, 0, size},
    {false, false, {-2, 3}, 0, size}, {false, false, {4, 2}, 0, size},
    {false, false, {17, 16}, 0, size}};

TEST_P(ImageSweep, RefusedCallsWriteNothing) {
    const std::pair<char const*, std::vector<Refusal> const*> tables[] = {
        {"ippiCopy_8u_C1R", &pointersThenSize},      {"ippiCopy_8u_C3R", &pointersThenSize},
        {"ippiCopy_8u_C1C3R", &pointersThenSize},    {"ippiCopy_8u_C3C1R", &pointersThenSize},
        {"ippiCopy_8u_AC4C3R", &pointersThenSize},   {"ippiSet_8u_C1R", &onePointerThenSize},
        {"ippsZero_8u", &lengthAfterPointer},        {"ippsZero_32s", &lengthAfterPointer},
        {"ippiAdd_8u_C1RSfs", &pointersThenSize},    {"ippiAdd_8u_C3RSfs", &widthFirst},
        {"ippiMirror_8u_C1R", &mirrorOrder},         {"ippiMirror_8u_C3R", &mirrorOrder},
        {"ippiMirror_8u_C1IR", &mirrorInPlaceOrder}, {"ippiMirror_8u_C3IR", &mirrorInPlaceOrder},
        {"ippiTranspose_8u_C1R", &pointersThenSize}, {"ippiTranspose_8u_C3R", &pointersThenSize},
        {"ippiTranspose_8u_C1IR", &squareOnly},      {"ippiTranspose_8u_C3IR", &squareOnly},
    };
    for (auto const& [name, table] : tables) sweepRefusals(caseNamed(name), *table);
    sweepRefusals(caseNamed("ippiGrayToRGB_8u_C1C3R"), pointersThenSize);
}

// The front end's one pass from gray to RGB stands for channel 0 and then its spread in
// place: at each slot, the same bytes from the same frames, in every row length that a block
// or its tail meets.
TEST(GrayToAll, IsChannel0ThenItsSpreadAtEachSlot) {
    std::mt19937 rng(23);
    int const everywhere[3] = {0, 0, 0};
    for (int slot : executableSlots())
        for (int width = 1; width <= 70; width += 3) {
            const IppiSize size{width, 3};
            Bytes gray(static_cast<std::size_t>(width + 5) * 3), twoSteps(3 * width * 3);
            for (auto& b : gray) b = static_cast<std::uint8_t>(rng());
            for (auto& b : twoSteps) b = static_cast<std::uint8_t>(rng());
            Bytes onePass = twoSteps;
            bodies::ippiCopy_8u_C1C3R[slot](gray.data(), width + 5, twoSteps.data(), 3 * width,
                                            size);
            bodies::ippiSwapChannels_8u_C3IR[slot](twoSteps.data(), 3 * width, size, everywhere);
            EXPECT_EQ(bodies::ippiGrayToRGB_8u_C1C3R[slot](gray.data(), width + 5, onePass.data(),
                                                           3 * width, size),
                      ippStsNoErr);
            EXPECT_EQ(onePass, twoSteps) << "slot " << slot << " width " << width;
        }
}

NUV_SWEEP_GENERATIONS(ImageSweep);

}  // namespace
