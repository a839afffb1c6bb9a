#include "support/sweep.h"

#include "support/bodies.h"
#include "support/slots.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace nuv::test {

char const* nameOf(Generation g) {
    static char const* const names[] = {
#define NUV_GENERATION(token, flags) #token,
#include "primitives/dispatch/generations.def"
#undef NUV_GENERATION
    };
    return names[static_cast<int>(g)];
}

std::vector<Generation> const& allGenerations() {
    static std::vector<Generation> const all = {
#define NUV_GENERATION(token, flags) Generation::token,
#include "primitives/dispatch/generations.def"
#undef NUV_GENERATION
    };
    return all;
}

std::string generationName(::testing::TestParamInfo<Generation> const& info) {
    return nameOf(info.param);
}

int slotOf(Generation g, char const* name) {
    for (NamedSlots const& n : namedSlots) {
        if (std::strcmp(n.name, name) != 0) continue;
        for (int slot : executableSlots())
            if (variantOfSlot(slot, n.slot2, n.slot3) == nameOf(g)) return slot;
        return -1;
    }
    ADD_FAILURE() << name << " is in no dispatch list";
    return -1;
}

namespace {

struct Shape {
    int rowBytes, rows;
};
Margins marginsOf(SweepCase const& c, int arg) {
    return c.sourceMargins ? c.sourceMargins(arg) : Margins{0, 0, 0, 0};
}
Shape sourceShape(SweepCase const& c, IppiSize s, Margins m) {
    return {(s.width + m.left + m.right) * c.srcPixelBytes, s.height + m.top + m.bottom};
}
Shape destinationShape(SweepCase const& c, IppiSize s) {
    return c.transposed ? Shape{s.height * c.dstPixelBytes, s.width}
                        : Shape{s.width * c.dstPixelBytes, s.height};
}

// One call of the case at `slot` on fresh images in the given layouts, checked against the
// model: status, bytes, the guards and padding around the destination, the sources unchanged.
void expectModel(SweepCase const& c, Generation g, int slot, IppiSize size, int arg,
                 Layout const& srcLayout, Layout const& dstLayout, std::mt19937& rng) {
    SCOPED_TRACE(c.name + " " + std::to_string(size.width) + "x" + std::to_string(size.height) +
                 " arg " + std::to_string(arg) + " src{pad " + std::to_string(srcLayout.padding) +
                 " off " + std::to_string(srcLayout.misalign) + (srcLayout.negative ? " up" : "") +
                 "} dst{pad " + std::to_string(dstLayout.padding) + " off " +
                 std::to_string(dstLayout.misalign) + (dstLayout.negative ? " up" : "") + "}");
    const Margins margins = marginsOf(c, arg);
    const Shape in = sourceShape(c, size, margins), out = destinationShape(c, size);
    if (in.rowBytes < 1 || in.rows < 1) return;  // no source fits this region
    std::vector<std::unique_ptr<GuardedImage>> sources;
    std::vector<Bytes> packedSources;
    // A second source takes the destination's layout, so the two sources differ in alignment.
    for (int k = 0; k < c.sources; ++k) {
        sources.push_back(
            std::make_unique<GuardedImage>(in.rowBytes, in.rows, k == 0 ? srcLayout : dstLayout));
        sources.back()->fillRandom(rng);
        packedSources.push_back(sources.back()->packed());
    }
    GuardedImage dst(out.rowBytes, out.rows, dstLayout);
    dst.fillRandom(rng);
    const Bytes before = dst.packed();
    Bytes expected;
    Call call{nullptr, 0, nullptr, 0, dst.first(), dst.step(), size, arg};
    if (c.sources > 0)
        call.src1 = sources[0]->row(margins.top) + margins.left * c.srcPixelBytes,
        call.src1Step = sources[0]->step();
    if (c.sources > 1) call.src2 = sources[1]->first(), call.src2Step = sources[1]->step();
    const IppStatus status =
        c.model({g, packedSources, before, size, arg, call.src1Step, call.dstStep}, expected);
    for (auto const& source : sources) source->forbidOutside(true);
    const IppStatus got = c.call(slot, call);
    for (auto const& source : sources) source->forbidOutside(false);
    ASSERT_EQ(got, status);
    if (status != ippStsNoErr) expected = before;
    const Bytes bytes = dst.packed();
    if (bytes != expected) {
        const auto at = std::mismatch(bytes.begin(), bytes.end(), expected.begin()).first;
        FAIL() << "first wrong byte at " << (at - bytes.begin()) << " of " << bytes.size();
    }
    EXPECT_TRUE(dst.guardsIntact());
    for (int k = 0; k < c.sources; ++k) {
        EXPECT_EQ(sources[k]->packed(), packedSources[k]);
        EXPECT_TRUE(sources[k]->guardsIntact());
    }
}

}  // namespace

int PrimitiveSweep::sweepRandom(std::vector<SweepCase> const& cases, int rounds,
                                std::mt19937& rng) {
    int covered = 0;
    for (SweepCase const& c : cases) {
        const int slot = slotOf(GetParam(), c.name.c_str());
        if (slot < 0) continue;
        ++covered;
        for (int round = 0; round < rounds; ++round) {
            IppiSize size{static_cast<int>(rng() % 70) + 1, static_cast<int>(rng() % 9) + 1};
            if (round % 4 == 3) size.height = static_cast<int>(rng() % 70) + 1;
            if (c.square) size.height = size.width;
            const std::vector<Layout> layouts = standardLayouts(rng);
            const Layout& s = layouts[rng() % layouts.size()];
            const Layout& d = layouts[rng() % layouts.size()];
            expectModel(c, GetParam(), slot, size, c.args[rng() % c.args.size()], s, d, rng);
            if (HasFatalFailure()) return covered;
        }
    }
    return covered;
}

void PrimitiveSweep::sweepLarge(std::vector<SweepCase> const& cases) {
    std::mt19937 rng(7);
    const Layout layouts[] = {{}, {64, 0, false, 32}, {3, 5, true, 32}};
    for (SweepCase const& c : cases) {
        const int slot = slotOf(GetParam(), c.name.c_str());
        if (slot < 0) continue;
        for (IppiSize size : c.largeSizes)
            for (Layout const& layout : layouts)
                for (int arg : c.args)
                    expectModel(c, GetParam(), slot, size, arg, layout, layout, rng);
    }
}

void PrimitiveSweep::sweepRefusals(SweepCase const& c, std::vector<Refusal> const& refusals) {
    const int slot = slotOf(GetParam(), c.name.c_str());
    if (slot < 0) return;
    std::mt19937 rng(3);
    GuardedImage src(64, 8), dst(64, 8);
    src.fillRandom(rng);
    dst.fillRandom(rng);
    const Bytes before = dst.packed();
    for (Refusal const& r : refusals) {
        SCOPED_TRACE(c.name + " " + std::to_string(r.size.width) + "x" +
                     std::to_string(r.size.height) + " arg " + std::to_string(r.arg) +
                     (r.nullSrc ? " null source" : "") + (r.nullDst ? " null destination" : ""));
        Ipp8u const* source = r.nullSrc ? nullptr : src.first();
        Call call{source,     src.step(), source, src.step(), r.nullDst ? nullptr : dst.first(),
                  dst.step(), r.size,     r.arg};
        EXPECT_EQ(c.call(slot, call), r.status);
        EXPECT_EQ(dst.packed(), before);
        EXPECT_TRUE(dst.guardsIntact());
    }
}

}  // namespace nuv::test
