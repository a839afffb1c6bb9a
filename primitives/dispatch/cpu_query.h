// The one road by which the primitive layer asks the processor about itself. Every
// identification query and every read of the extended control register goes through
// nuvCpuid and nuvXgetbv0, and a test may put recorded answers of another processor in
// their place with nuvSetCpuQuery.
#pragma once

#include <nuv/primitives.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct NuvCpuQuery {
    // Stores EAX, EBX, ECX, EDX of the identification query (leaf, subleaf) in regs.
    void (*cpuid)(Ipp32u leaf, Ipp32u subleaf, Ipp32u regs[4]);
    // The low word of extended control register 0 (which register states the system saves).
    Ipp64u (*xgetbv0)(void);
} NuvCpuQuery;

// Replaces the processor's answers; null restores the processor's own.
void nuvSetCpuQuery(NuvCpuQuery const* query);

void nuvCpuid(Ipp32u leaf, Ipp32u subleaf, Ipp32u regs[4]);
Ipp64u nuvXgetbv0(void);

// Returns the dispatch layer to the state of a fresh process: index 0, LP flag 0, mask 7, features
// not read, cache size not queried. For tests that play several processors in one process.
void nuvResetDispatchState(void);

// The largest cache in bytes by the legacy descriptor method (leaf 2) with the copy
// family's own table TableCacheSize, on "GenuineIntel" only; 0 when there is no answer.
// Asked afresh on every call: its callers ask only for blocks large enough that the query
// costs nothing beside the move.
int nuvLegacyCacheSize(void);

#ifdef __cplusplus
}
#endif
