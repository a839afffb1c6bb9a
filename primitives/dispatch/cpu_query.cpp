#include "primitives/dispatch/cpu_query.h"

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

namespace {

void processorCpuid(Ipp32u leaf, Ipp32u subleaf, Ipp32u regs[4]) {
#if defined(__x86_64__) || defined(__i386__)
    __cpuid_count(leaf, subleaf, regs[0], regs[1], regs[2], regs[3]);
#else
    (void)leaf;
    (void)subleaf;
    regs[0] = regs[1] = regs[2] = regs[3] = 0;
#endif
}

Ipp64u processorXgetbv0() {
#if defined(__x86_64__) || defined(__i386__)
    // Only reached after leaf 1 reported OSXSAVE; the instruction faults otherwise.
    Ipp32u eax, edx;
    __asm__ volatile("xgetbv" : "=a"(eax), "=d"(edx) : "c"(0));
    return (static_cast<Ipp64u>(edx) << 32) | eax;
#else
    return 0;
#endif
}

NuvCpuQuery const processorQuery = {processorCpuid, processorXgetbv0};
NuvCpuQuery activeQuery = processorQuery;

}  // namespace

extern "C" {

void nuvSetCpuQuery(NuvCpuQuery const* query) { activeQuery = query ? *query : processorQuery; }

void nuvCpuid(Ipp32u leaf, Ipp32u subleaf, Ipp32u regs[4]) { activeQuery.cpuid(leaf, subleaf, regs); }

Ipp64u nuvXgetbv0(void) { return activeQuery.xgetbv0(); }

}  // extern "C"
