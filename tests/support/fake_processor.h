// Recorded answers of other processors, played to the frame through nuvSetCpuQuery, and the
// fixture that every test playing a processor starts from.
#pragma once

#include "primitives/dispatch/cpu_query.h"

#include <gtest/gtest.h>

#include <map>
#include <utility>

namespace nuv::test {

struct CpuRegs {
    Ipp32u eax = 0, ebx = 0, ecx = 0, edx = 0;
};

// A processor as a table (leaf, subleaf) -> four registers, plus extended control register 0.
// Leaves not in the table answer zeros, as reserved leaves do. Counts every query, and fails
// the running test if the control register is read while leaf 1 says the system has not
// enabled it (OSXSAVE clear), where the real instruction would fault.
class FakeProcessor {
public:
    // For leaves whose answer does not depend on the sub-leaf.
    static constexpr Ipp32u anySubleaf = 0xFFFFFFFFu;

    FakeProcessor& answer(Ipp32u leaf, Ipp32u subleaf, CpuRegs regs);
    FakeProcessor& answer(Ipp32u leaf, CpuRegs regs) { return answer(leaf, anySubleaf, regs); }
    // Leaf 0: the highest leaf and the 12-character vendor text.
    FakeProcessor& vendor(char const* text, Ipp32u maxLeaf);
    FakeProcessor& xcr0(Ipp64u value);

    CpuRegs query(Ipp32u leaf, Ipp32u subleaf) const;
    Ipp64u readXcr0() const;

    int calls(Ipp32u leaf) const;
    int totalCalls() const { return _totalCalls; }
    int xcr0Reads() const { return _xcr0Reads; }
    void resetCounts();

private:
    std::map<std::pair<Ipp32u, Ipp32u>, CpuRegs> _answers;
    Ipp64u _xcr0 = 0;
    mutable std::map<Ipp32u, int> _calls;
    mutable int _totalCalls = 0;
    mutable int _xcr0Reads = 0;
};

// Recorded and composed processors.
namespace processors {
FakeProcessor haswell();      // Intel, AVX2 complete, leaf-4 caches up to 8 MiB
FakeProcessor ivyBridge();    // Intel, AVX enabled, F16C and RDRAND, no AVX2
FakeProcessor westmere();     // Intel, SSE4.2, AES, PCLMULQDQ, no AVX
FakeProcessor silvermont();   // Intel, SSE4.2 with MOVBE and RDRAND
FakeProcessor penryn();       // Intel, SSE4.1
FakeProcessor core2Merom();   // Intel, SSSE3 without MOVBE, leaf-4 caches up to 4 MiB
FakeProcessor atomBonnell();  // Intel, SSSE3 with MOVBE
FakeProcessor prescott();     // Intel, SSE3 only
FakeProcessor northwood();    // Intel, SSE2 only, highest leaf 2, 512 KiB by descriptor
FakeProcessor amdZen2();      // AuthenticAMD, AVX2 complete

// "GenuineIntel" with highest leaf 4 and no feature bits, whose caches are small enough that
// blocks of a few MiB pass them: leaf 2 holds the one descriptor byte leaf2Descriptor (no
// answer for 0), which the copy family's older route reads, and leaf 4 one level-2 data cache
// of leaf4Bytes (a multiple of 1 KiB), which ippGetMaxCacheSizeB reads.
FakeProcessor smallCacheIntel(Ipp8u leaf2Descriptor, int leaf4Bytes);
}  // namespace processors

// Starts each test in the state of a fresh process and gives the processor back at the end.
class DispatchTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
    // Plays cpu to the frame until the end of the test (or the next play). The fixture keeps
    // its own copy, reachable as cpu().
    void play(FakeProcessor const& cpu);
    // Returns the frame to a fresh process's state and clears the counts of the processor
    // being played, so that the next call is seen asking on its own.
    void restart();
    FakeProcessor& cpu() { return _cpu; }

private:
    FakeProcessor _cpu;
};

}  // namespace nuv::test
