// The one sweep that every primitive runs through. A case names the primitive, how one call
// is made from a uniform set of arguments, the shape of its images and a plain model of the
// bytes and status it must give. The sweep runs each case at each distinct body that the
// processor can execute (a parameterised test named after the generation) over random sizes
// 1..70, padded, misaligned and upward rows, with guard bytes around every destination; it
// also runs large regions on a processor with small caches, so that the streaming paths
// run, and tables of refused calls that must leave the destination untouched.
#pragma once

#include "support/fake_processor.h"
#include "support/guarded.h"

#include <nuv/primitives.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <ostream>
#include <random>
#include <string>
#include <vector>

namespace nuv::test {

using Bytes = std::vector<std::uint8_t>;

enum class Generation {
#define NUV_GENERATION(token, flags) token,
#include "primitives/dispatch/generations.def"
#undef NUV_GENERATION
};
char const* nameOf(Generation g);
// Every generation, in the order of their ids.
std::vector<Generation> const& allGenerations();
inline void PrintTo(Generation g, std::ostream* os) {
    *os << nameOf(g);
}

// The slot that runs generation g's body of the primitive `name` (its slots 2 and 3 taken
// from the dispatch lists) on this processor, or -1 if no executable slot does.
int slotOf(Generation g, char const* name);

// One call, its arguments in one shape for every primitive: up to two sources, a
// destination (which the in-place forms both read and write), the size and one extra
// integer (mirror axis, scale factor, fill value).
struct Call {
    Ipp8u const* src1;
    int src1Step;
    Ipp8u const* src2;
    int src2Step;
    Ipp8u* dst;
    int dstStep;
    IppiSize size;
    int arg;
};

// The bytes a model sees: the packed sources and the destination as it was before the call.
struct ModelInput {
    Generation generation;  // the body's generation, for families whose bytes differ by it
    std::vector<Bytes> const& sources;
    Bytes const& dstBefore;
    IppiSize size;
    int arg;
    int srcStep, dstStep;  // for families that refuse some steps
};

// Pixels of source around the region on each side: filters read beyond their region, and a
// border copy's source is smaller than its destination (negative margins).
struct Margins {
    int left, top, right, bottom;
};

struct SweepCase {
    std::string name;  // the primitive, as in the dispatch lists
    std::function<IppStatus(int slot, Call const&)> call;
    int sources;        // 0 for fills and in-place forms, 1 or 2
    int srcPixelBytes;  // bytes per source pixel
    int dstPixelBytes;
    bool transposed;  // the destination is height x width
    bool square;      // the size is made square before the call (in-place transposition)
    std::vector<int> args;
    // Expected status, and on success the expected packed destination in `expected`.
    std::function<IppStatus(ModelInput const&, Bytes& expected)> model;
    std::vector<IppiSize> largeSizes;  // regions that pass the streaming bounds
    // The source block around the region by argument; null for sources of the region's size.
    // Reads outside the block are sanitizer reports, and the model sees the whole block.
    std::function<Margins(int arg)> sourceMargins = nullptr;
};

// Builds a case's call from a body table of the dispatch lists and an adapter from Call to
// the body's parameters.
template <class Fn, class Adapter>
std::function<IppStatus(int, Call const&)> callOf(Fn const (&table)[7], Adapter adapter) {
    return [&table, adapter](int slot, Call const& c) { return adapter(table[slot], c); };
}

// A refused call: which pointers are null, the size and the argument, and the status.
struct Refusal {
    bool nullSrc, nullDst;
    IppiSize size;
    int arg;
    IppStatus status;
};

class PrimitiveSweep : public DispatchTest, public ::testing::WithParamInterface<Generation> {
protected:
    // Random regions against the model; returns the number of cases that have a body of
    // this generation here.
    int sweepRandom(std::vector<SweepCase> const& cases, int rounds, std::mt19937& rng);
    // Each large size of each case in a packed, a padded and an upward layout.
    void sweepLarge(std::vector<SweepCase> const& cases);
    // Each refusal at the case's body: the status, and the destination and guards untouched.
    void sweepRefusals(SweepCase const& c, std::vector<Refusal> const& refusals);
};

std::string generationName(::testing::TestParamInfo<Generation> const& info);

}  // namespace nuv::test

// Instantiates a PrimitiveSweep test suite for every generation.
#define NUV_SWEEP_GENERATIONS(suite)                                                          \
    INSTANTIATE_TEST_SUITE_P(Bodies, suite, ::testing::ValuesIn(nuv::test::allGenerations()), \
                             nuv::test::generationName)
