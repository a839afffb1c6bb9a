#include "support/fake_processor.h"

#include <cstring>

namespace nuv::test {

FakeProcessor& FakeProcessor::answer(Ipp32u leaf, Ipp32u subleaf, CpuRegs regs) {
    _answers[{leaf, subleaf}] = regs;
    return *this;
}

FakeProcessor& FakeProcessor::vendor(char const* text, Ipp32u maxLeaf) {
    CpuRegs regs;
    regs.eax = maxLeaf;
    std::memcpy(&regs.ebx, text, 4);
    std::memcpy(&regs.edx, text + 4, 4);
    std::memcpy(&regs.ecx, text + 8, 4);
    return answer(0, regs);
}

FakeProcessor& FakeProcessor::xcr0(Ipp64u value) {
    _xcr0 = value;
    return *this;
}

CpuRegs FakeProcessor::query(Ipp32u leaf, Ipp32u subleaf) const {
    ++_calls[leaf];
    ++_totalCalls;
    auto exact = _answers.find({leaf, subleaf});
    if (exact != _answers.end()) return exact->second;
    auto any = _answers.find({leaf, anySubleaf});
    if (any != _answers.end()) return any->second;
    return {};
}

Ipp64u FakeProcessor::readXcr0() const {
    ++_xcr0Reads;
    auto leaf1 = _answers.find({1, anySubleaf});
    const bool osxsave = leaf1 != _answers.end() && (leaf1->second.ecx & (1u << 27)) != 0;
    if (!osxsave) {
        ADD_FAILURE() << "extended control register read while the system has not enabled it";
        return 0;
    }
    return _xcr0;
}

int FakeProcessor::calls(Ipp32u leaf) const {
    auto it = _calls.find(leaf);
    return it == _calls.end() ? 0 : it->second;
}

void FakeProcessor::resetCounts() {
    _calls.clear();
    _totalCalls = 0;
    _xcr0Reads = 0;
}

namespace {

FakeProcessor const* playing = nullptr;

void fakeCpuid(Ipp32u leaf, Ipp32u subleaf, Ipp32u regs[4]) {
    const CpuRegs r = playing ? playing->query(leaf, subleaf) : CpuRegs{};
    regs[0] = r.eax;
    regs[1] = r.ebx;
    regs[2] = r.ecx;
    regs[3] = r.edx;
}

Ipp64u fakeXgetbv0() {
    return playing ? playing->readXcr0() : 0;
}

NuvCpuQuery const fakeQuery = {fakeCpuid, fakeXgetbv0};

// Leaf 4 rows: cache type and level in EAX, ways/partitions/line size in EBX, sets in ECX.
CpuRegs cacheLevel(Ipp32u eax, Ipp32u ways, Ipp32u lineSize, Ipp32u sets) {
    return {eax, ((ways - 1) << 22) | (lineSize - 1), sets - 1, 0};
}

constexpr char intel[] = "GenuineIntel";

// An Intel part told apart by its highest leaf and its leaf-1 answer; the other leaves are
// added by the callers that need them.
FakeProcessor intelPart(Ipp32u maxLeaf, CpuRegs leaf1) {
    FakeProcessor cpu;
    cpu.vendor(intel, maxLeaf).answer(1, leaf1);
    return cpu;
}

// The leaf-4 levels shared by the recorded desktop parts of one era: 32 KiB data and
// instruction caches, 256 KiB second level, 8 MiB third level.
FakeProcessor& desktopCaches8MiB(FakeProcessor& cpu) {
    return cpu
        .answer(4, 0, cacheLevel(0x1C004121, 8, 64, 64))      // L1 data, 32 KiB
        .answer(4, 1, cacheLevel(0x1C004122, 8, 64, 64))      // L1 instruction, 32 KiB
        .answer(4, 2, cacheLevel(0x1C004143, 8, 64, 512))     // L2, 256 KiB
        .answer(4, 3, cacheLevel(0x1C03C163, 16, 64, 8192));  // L3, 8 MiB
}

}  // namespace

namespace processors {

FakeProcessor haswell() {
    FakeProcessor cpu = intelPart(0xD, {0x000306C3, 0x02100800, 0x7FFAFBFF, 0xBFEBFBFF});
    cpu.answer(2, {0x76036301, 0x00F0B5FF, 0x00000000, 0x00C10000});
    desktopCaches8MiB(cpu)
        .answer(4, 4, {})
        .answer(7, 0, {0, 0x000027AB, 0, 0})
        .answer(0x80000000u, {0x80000008u, 0, 0, 0})
        .answer(0x80000001u, {0, 0, 0x00000021, 0x2C100800})
        .xcr0(7);
    return cpu;
}

FakeProcessor ivyBridge() {
    FakeProcessor cpu = intelPart(0xD, {0x000306A9, 0x03100800, 0x7FBAE3FF, 0xBFEBFBFF});
    desktopCaches8MiB(cpu).answer(7, 0, {0, 0x00000281, 0, 0}).xcr0(7);
    return cpu;
}

FakeProcessor westmere() {
    return intelPart(0xB, {0x000206C2, 0x00200800, 0x029EE3FF, 0xBFEBFBFF});
}

FakeProcessor silvermont() {
    return intelPart(0xB, {0x000406D8, 0x00100800, 0x43D8E3BF, 0xBFEBFBFF});
}

FakeProcessor penryn() {
    return intelPart(0xD, {0x0001067A, 0x00020800, 0x0408E3FD, 0xBFEBFBFF});
}

FakeProcessor core2Merom() {
    FakeProcessor cpu = intelPart(0xA, {0x000006F6, 0x00020800, 0x0000E3BD, 0xBFEBFBFF});
    cpu.answer(4, 0, cacheLevel(0x04000121, 8, 64, 64))
        .answer(4, 1, cacheLevel(0x04000122, 8, 64, 64))
        .answer(4, 2, cacheLevel(0x04004143, 16, 64, 4096))  // L2, 4 MiB
        .answer(4, 3, {});
    return cpu;
}

FakeProcessor atomBonnell() {
    return intelPart(0xA, {0x000106C2, 0x00010800, 0x0040C39D, 0xBFE9FBFF});
}

FakeProcessor prescott() {
    FakeProcessor cpu = intelPart(0x5, {0x00000F41, 0x00010800, 0x0000649D, 0xBFEBFBFF});
    cpu.answer(4, 0, cacheLevel(0x00004121, 8, 64, 32))
        .answer(4, 1, cacheLevel(0x00004143, 8, 64, 2048));  // L2, 1 MiB
    return cpu;
}

FakeProcessor northwood() {
    FakeProcessor cpu = intelPart(0x2, {0x00000F29, 0x00010809, 0x00004400, 0xBFEBFBFF});
    cpu.answer(2, {0x665B5001, 0x00000000, 0x00000000, 0x007B7040});
    return cpu;
}

FakeProcessor amdZen2() {
    FakeProcessor cpu;
    cpu.vendor("AuthenticAMD", 0x10)
        .answer(1, {0x00870F10, 0x00100800, 0x7ED8320B, 0x178BFBFF})
        .answer(4, 0, cacheLevel(0x00004121, 8, 64, 64))
        .answer(7, 0, {0, 0x219C91A9, 0, 0})
        .xcr0(7);
    return cpu;
}

FakeProcessor smallCacheIntel(Ipp8u leaf2Descriptor, int leaf4Bytes) {
    FakeProcessor cpu;
    cpu.vendor(intel, 4);
    // One round of leaf 2, the descriptor in the byte above the round count.
    if (leaf2Descriptor != 0) cpu.answer(2, {0x01u | (Ipp32u{leaf2Descriptor} << 8), 0, 0, 0});
    // 16 ways of 64-byte lines; sub-leaf 1 answers zeros and ends the list.
    const auto sets = static_cast<Ipp32u>(leaf4Bytes) / (16 * 64);
    cpu.answer(4, 0, cacheLevel(0x00000041, 16, 64, sets));
    return cpu;
}

}  // namespace processors

void DispatchTest::SetUp() {
    nuvResetDispatchState();
    playing = nullptr;
}

void DispatchTest::TearDown() {
    nuvSetCpuQuery(nullptr);
    playing = nullptr;
    nuvResetDispatchState();
}

void DispatchTest::play(FakeProcessor const& cpu) {
    _cpu = cpu;
    _cpu.resetCounts();
    playing = &_cpu;
    nuvSetCpuQuery(&fakeQuery);
}

void DispatchTest::restart() {
    nuvResetDispatchState();
    _cpu.resetCounts();
}

}  // namespace nuv::test
