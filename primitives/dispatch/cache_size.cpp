// The largest cache of the processor, asked once per process. Bodies that choose between
// plain and non-temporal stores ask for it on demand, selection or not.
#include "primitives/dispatch/cache_descriptors.h"
#include "primitives/dispatch/dispatch_state.h"
#include "primitives/dispatch/probes.h"

namespace nuv::prim::dispatch {

namespace {
constexpr int KiB = 1024;
}  // namespace

// Largest first, so that a processor reporting several caches by descriptor is credited with
// its largest one whatever the order of the bytes in the registers.
CacheDescriptor const tableCache[tableCacheRows] = {
    {0xEC, 24576 * KiB}, {0xEB, 18432 * KiB}, {0x4D, 16384 * KiB}, {0xEA, 12288 * KiB},
    {0x4C, 12288 * KiB}, {0xE4, 8192 * KiB},  {0xDE, 8192 * KiB},  {0x4B, 8192 * KiB},
    {0x47, 8192 * KiB},  {0x4E, 6144 * KiB},  {0x4A, 6144 * KiB},  {0xE3, 4096 * KiB},
    {0xDD, 4096 * KiB},  {0xD8, 4096 * KiB},  {0x49, 4096 * KiB},  {0x29, 4096 * KiB},
    {0x46, 4096 * KiB},  {0x48, 3072 * KiB},  {0xE2, 2048 * KiB},  {0xDC, 2048 * KiB},
    {0xD7, 2048 * KiB},  {0xD2, 2048 * KiB},  {0x25, 2048 * KiB},  {0x7D, 2048 * KiB},
    {0x85, 2048 * KiB},  {0x45, 2048 * KiB},  {0xD6, 1024 * KiB},  {0xD1, 1024 * KiB},
    {0x23, 1024 * KiB},  {0x87, 1024 * KiB},  {0x7C, 1024 * KiB},  {0x78, 1024 * KiB},
    {0x84, 1024 * KiB},  {0x44, 1024 * KiB},  {0xD0, 512 * KiB},   {0x22, 512 * KiB},
    {0x7B, 512 * KiB},   {0x80, 512 * KiB},   {0x86, 512 * KiB},   {0x3E, 512 * KiB},
    {0x7F, 512 * KiB},   {0x83, 512 * KiB},   {0x43, 512 * KiB},   {0x3D, 384 * KiB},
    {0x21, 256 * KiB},   {0x7A, 256 * KiB},   {0x82, 256 * KiB},   {0x3C, 256 * KiB},
    {0x3F, 256 * KiB},   {0x42, 256 * KiB},   {0x3A, 192 * KiB},   {0x79, 128 * KiB},
    {0x39, 128 * KiB},   {0x3B, 128 * KiB},   {0x41, 128 * KiB},   {0x00, 0},
};

int ownGetCacheSize(CacheDescriptor const (&table)[tableCacheRows]) {
    return scanLeaf2(table, [](CacheDescriptor const& row) { return row.size; });
}

namespace {

// Deterministic cache parameters (leaf 4): every data and unified level, the largest wins.
// 0 when no level reports a size.
int largestCacheByLeaf4() {
    int largest = 0;
    for (Ipp32u subleaf = 0; subleaf < 32; ++subleaf) {
        Ipp32u regs[4];
        ownGetReg(regs, 4, subleaf);
        const Ipp32u type = regs[0] & 0x1Fu;
        if (type == 0) break;     // no more levels
        if (type == 2) continue;  // instruction caches hold no data worth streaming past
        const Ipp32u ways = (regs[1] >> 22) & 0x3FFu;
        const Ipp32u partitions = (regs[1] >> 12) & 0x3FFu;
        const Ipp32u lineSize = regs[1] & 0xFFFu;
        const Ipp32u sets = regs[2];
        // The product is taken as a signed 32-bit figure; one that wraps to a negative value
        // never wins.
        const int size =
            static_cast<int>((ways + 1) * (partitions + 1) * (lineSize + 1) * (sets + 1));
        if (size > largest) largest = size;
    }
    return largest;
}

}  // namespace

}  // namespace nuv::prim::dispatch

extern "C" IppStatus ippGetMaxCacheSizeB(int* pSize) {
    using namespace nuv::prim::dispatch;
    if (pSize == nullptr) return ippStsNullPtrErr;
    if (ownStatus != 1) {
        *pSize = cacheSize;
        return ownStatus;
    }
    // Only Intel processors describe their caches in a way this query trusts; elsewhere the
    // size stays 0 and the bodies keep to their plain paths.
    if (!ipp_has_cpuid() || ipp_max_cpuid_input() < 2 || !ipp_is_GenuineIntel()) {
        ownStatus = ippStsNoCpuFeaturesWrn;
        *pSize = cacheSize;
        return ownStatus;
    }
    const int size =
        ipp_max_cpuid_input() >= 4 ? largestCacheByLeaf4() : ownGetCacheSize(tableCache);
    if (size <= 0) {
        ownStatus = ippStsCacheSizeUnknownWrn;
        cacheSize = 0;
    } else {
        ownStatus = ippStsNoErr;
        cacheSize = size;
    }
    *pSize = cacheSize;
    return ownStatus;
}
