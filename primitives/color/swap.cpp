// Channel swaps: each output channel c of a pixel is the input channel order[c] of the same
// pixel. Repeats are allowed, so (0,0,0) spreads channel 0 over the pixel. Pure byte moves;
// every generation gives the same bytes.
//
// The vector form works on blocks of 16 pixels: 48 output bytes from 48 source bytes (64 for
// four-channel sources), loaded whole before anything is stored, so the in-place forms are
// safe. With SSSE3 each output vector is a few byte shuffles of the source vectors it draws
// on; without it, each output byte lies at most two bytes from its source byte, so an output
// vector is five masked copies of the source shifted by -2..2 bytes. The masks are built
// once per call from the order.
#include "primitives/simd/simd.h"

#include <type_traits>
#include <utility>

namespace nuv::prim::NUV_V {
namespace {

using namespace simd;
using L = Lanes<16>;
using V = L::V;
using Length = Offset;

constexpr int kBlock = 16;  // pixels per block: 48 output bytes, three vectors
#if defined(__SSSE3__)
constexpr bool kHasShuffles = true;
#else
constexpr bool kHasShuffles = false;
#endif

// Byte p of a block's output comes from this byte of the block's source.
int sourceByte(int srcPixel, int const* order, int p) {
    return srcPixel * (p / 3) + order[p % 3];
}

// Whole blocks of 16 pixels from the start of a run; returns the pixels done. Each block is
// loaded whole before anything is stored, which keeps the in-place forms safe.
template <int SrcPixel, class Plan, class... Form>
Length blockLoop(Plan const& plan, Byte const* src, Byte* dst, Length n, Form... form) {
    Length x = 0;
    for (; x + kBlock <= n; x += kBlock) {
        V in[SrcPixel];
        for (int s = 0; s < SrcPixel; ++s) in[s] = L::load(src + SrcPixel * x + 16 * s);
        V out[3];
        for (int j = 0; j < 3; ++j) {
            if constexpr (sizeof...(Form) == 0)
                out[j] = plan.output(in, j);
            else
                out[j] = plan.template output<decltype(form)::value...>(in, j);
        }
        for (int j = 0; j < 3; ++j) L::store(dst + 3 * x + 16 * j, out[j]);
    }
    return x;
}

#if defined(__SSSE3__)
// Output vector j draws on source vectors first[j]..last[j]; a shuffle mask each, with the
// top bit set where a byte comes from another vector.
template <int SrcPixel>
struct BlockPlan {
    static constexpr int first[3] = {0, SrcPixel == 3 ? 0 : 1, SrcPixel == 3 ? 1 : 2};
    static constexpr int last[3] = {1, 2, SrcPixel == 3 ? 2 : 3};
    V masks[3][SrcPixel];

    explicit BlockPlan(int const* order) {
        for (int j = 0; j < 3; ++j)
            for (int s = 0; s < SrcPixel; ++s) {
                alignas(16) char bytes[16];
                for (int i = 0; i < 16; ++i) {
                    const int q = sourceByte(SrcPixel, order, 16 * j + i);
                    bytes[i] = static_cast<char>(q / 16 == s ? q % 16 : 0x80);
                }
                masks[j][s] = L::constant(bytes);
            }
    }
    V output(V const* in, int j) const {
        V out = L::shuffle(in[first[j]], masks[j][first[j]]);
        for (int s = first[j] + 1; s <= last[j]; ++s)
            out = L::bitOr(out, L::shuffle(in[s], masks[j][s]));
        return out;
    }
    Length blocks(Byte const* src, Byte* dst, Length n) const {
        return blockLoop<SrcPixel>(*this, src, dst, n);
    }
};
#else
// Three-channel sources only: output byte p takes source byte p + d, d in -2..2. Most
// orders use three of the five distances or fewer (reversal: -2, 0, 2; a spread of channel
// 0: -2, -1, 0), so the block loop is compiled for each set of distances and the plan picks
// the one its order needs.
template <int SrcPixel>
struct BlockPlan {
    static_assert(SrcPixel == 3, "the shift form serves three-channel sources");
    V masks[3][5];
    unsigned used = 0;  // bit d + 2 set where some output byte takes distance d

    explicit BlockPlan(int const* order) {
        for (int j = 0; j < 3; ++j)
            for (int d = -2; d <= 2; ++d) {
                alignas(16) char bytes[16];
                for (int i = 0; i < 16; ++i) {
                    const int p = 16 * j + i;
                    const bool takes = sourceByte(3, order, p) - p == d;
                    bytes[i] = static_cast<char>(takes ? 0xFF : 0);
                    if (takes) used |= 1u << (d + 2);
                }
                masks[j][d + 2] = L::load(bytes);
            }
    }
    // Bytes 16j + d .. 16j + d + 15 of the block's source, zero outside it.
    template <int D>
    static V window(V const* in, int j) {
        if constexpr (D > 0) {
            const V next = j < 2 ? in[j + 1] : L::zero();
            return L::bitOr(L::shiftBytesRight<D>(in[j]), L::shiftBytesLeft<16 - D>(next));
        } else if constexpr (D < 0) {
            const V previous = j > 0 ? in[j - 1] : L::zero();
            return L::bitOr(L::shiftBytesLeft<-D>(in[j]), L::shiftBytesRight<16 + D>(previous));
        } else {
            return in[j];
        }
    }
    template <unsigned Used, int D>
    void take(V& out, V const* in, int j) const {
        if constexpr ((Used >> (D + 2)) & 1u)
            out = L::bitOr(out, L::bitAnd(masks[j][D + 2], window<D>(in, j)));
    }
    template <unsigned Used>
    V output(V const* in, int j) const {
        V out = L::zero();
        take<Used, -2>(out, in, j);
        take<Used, -1>(out, in, j);
        take<Used, 0>(out, in, j);
        take<Used, 1>(out, in, j);
        take<Used, 2>(out, in, j);
        return out;
    }
    template <unsigned Used>
    static Length blocksUsing(BlockPlan const& plan, Byte const* src, Byte* dst, Length n) {
        return blockLoop<3>(plan, src, dst, n, std::integral_constant<unsigned, Used>());
    }
    template <unsigned... Sets>
    Length pick(Byte const* src, Byte* dst, Length n,
                std::integer_sequence<unsigned, Sets...>) const {
        using Loop = Length (*)(BlockPlan const&, Byte const*, Byte*, Length);
        static constexpr Loop loops[] = {&blocksUsing<Sets>...};
        return loops[used](*this, src, dst, n);
    }
    Length blocks(Byte const* src, Byte* dst, Length n) const {
        return pick(src, dst, n, std::make_integer_sequence<unsigned, 32>());
    }
};
#endif

#if !defined(__SSSE3__)
// Four-channel sources without byte shuffles, four pixels at a time: output byte c of each
// 32-bit pixel is source byte order[c]. The reversal (2,1,0), the front end's order, swaps
// the two halves of each pixel by word shuffles and keeps byte 1 where it is; any other order
// isolates each byte by a shift down and up to the top byte and brings it down to byte c.
// Either way the top byte ends zero, and the three bytes of each pixel are packed.
struct QuadPlan {
    V down[3];
    bool reversal;

    explicit QuadPlan(int const* order)
        : reversal(order[0] == 2 && order[1] == 1 && order[2] == 0) {
        for (int c = 0; c < 3; ++c) down[c] = _mm_cvtsi32_si128(8 * order[c]);
    }
    V arrange(V in) const {
        if (reversal) {
            const V halves = _mm_shufflehi_epi16(_mm_shufflelo_epi16(in, 0xB1), 0xB1);
            return L::bitOr(L::bitAnd(halves, _mm_set1_epi32(0x00FF00FF)),
                            L::bitAnd(in, _mm_set1_epi32(0x0000FF00)));
        }
        V out = L::zero();
        for (int c = 0; c < 3; ++c)
            out = L::bitOr(out, _mm_srl_epi32(_mm_slli_epi32(_mm_srl_epi32(in, down[c]), 24),
                                              _mm_cvtsi32_si128(24 - 8 * c)));
        return out;
    }
    // Whole groups of four; returns the pixels done. While two more pixels follow a group, its
    // two spare bytes land on them and the next store covers them again.
    Length groups(Byte const* src, Byte* dst, Length n) const {
        Length x = 0;
        for (; x + 5 <= n; x += 4) storeThreeOfFourOver(arrange(L::load(src + 4 * x)), dst + 3 * x);
        for (; x + 4 <= n; x += 4) storeThreeOfFour(arrange(L::load(src + 4 * x)), dst + 3 * x);
        return x;
    }
};
#endif

// One pixel: its channels are all read before any is written.
void swapPixel(Byte const* s, Byte* d, int const* order) {
    const Byte c0 = s[order[0]], c1 = s[order[1]], c2 = s[order[2]];
    d[0] = c0;
    d[1] = c1;
    d[2] = c2;
}

template <int SrcPixel>
void swapRun(Byte const* src, Byte* dst, Length n, int const* order) {
    Length x = 0;
    // Without byte shuffles a four-channel source goes four pixels at a time, below.
    if constexpr (SrcPixel == 3 || kHasShuffles) {
        x = BlockPlan<SrcPixel>(order).blocks(src, dst, n);
    }
#if !defined(__SSSE3__)
    if constexpr (SrcPixel == 4) x = QuadPlan(order).groups(src, dst, n);
#endif
    for (; x < n; ++x) swapPixel(src + SrcPixel * x, dst + 3 * x, order);
}

// Order values compared as unsigned, so a negative one fails too.
bool orderFits(int const* order, unsigned channels) {
    return static_cast<unsigned>(order[0]) < channels &&
           static_cast<unsigned>(order[1]) < channels && static_cast<unsigned>(order[2]) < channels;
}

void swapInPlace(Ipp8u* p, int step, IppiSize size, int const* order) {
    forEachRun<Length>(
        size.width, size.height, [order](Length n, Byte* row) { swapRun<3>(row, row, n, order); },
        plane(p, step, 3));
}

}  // namespace

IppStatus ippiSwapChannels_8u_C3IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize roiSize,
                                   int const* dstOrder) {
    const IppStatus status =
        firstFailure({nullCheck(pSrcDst, dstOrder),
                      sizeCheck(roiSize),
                      {srcDstStep < 1, ippStsStepErr},
                      {dstOrder != nullptr && !orderFits(dstOrder, 3), ippStsChannelOrderErr}});
    if (status != ippStsNoErr) return status;
    swapInPlace(pSrcDst, srcDstStep, roiSize, dstOrder);
    return ippStsNoErr;
}

IppStatus ippiSwapChannels_8u_C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                  IppiSize roiSize, int const* dstOrder) {
    const IppStatus status =
        firstFailure({nullCheck(pSrc, pDst, dstOrder),
                      sizeCheck(roiSize),
                      {srcStep < 1 || dstStep < 1, ippStsStepErr},
                      {dstOrder != nullptr && !orderFits(dstOrder, 3), ippStsChannelOrderErr}});
    if (status != ippStsNoErr) return status;
    // The same buffer is the in-place form on the destination's rows; srcStep is only checked.
    if (pSrc == pDst) {
        swapInPlace(pDst, dstStep, roiSize, dstOrder);
        return ippStsNoErr;
    }
    forEachRun<Length>(
        roiSize.width, roiSize.height,
        [dstOrder](Length n, Byte const* s, Byte* d) { swapRun<3>(s, d, n, dstOrder); },
        plane(pSrc, srcStep, 3), plane(pDst, dstStep, 3));
    return ippStsNoErr;
}

IppStatus ippiSwapChannels_8u_C4C3R(Ipp8u const* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                    IppiSize roiSize, int const* dstOrder) {
    // No step is tested: a zero step reads and writes the same row each time.
    const IppStatus status =
        firstFailure({nullCheck(pSrc, pDst, dstOrder),
                      sizeCheck(roiSize),
                      {dstOrder != nullptr && !orderFits(dstOrder, 4), ippStsChannelOrderErr}});
    if (status != ippStsNoErr) return status;
    forEachRun<Length>(
        roiSize.width, roiSize.height,
        [dstOrder](Length n, Byte const* s, Byte* d) { swapRun<4>(s, d, n, dstOrder); },
        plane(pSrc, srcStep, 4), plane(pDst, dstStep, 3));
    return ippStsNoErr;
}

}  // namespace nuv::prim::NUV_V
