// The process-wide words behind processor selection and the cache query, and the internal
// functions that read and write them. Plain words, unguarded: selection runs before the host
// starts other threads, and a racing first cache query only computes the same value twice.
// nuvResetDispatchState (cpu_query.h) puts all of them back to their first values.
#pragma once

#include <nuv/primitives.h>

namespace nuv::prim::dispatch {

// Enabled features: what selection decided the bodies may use. 7 (MMX, SSE, SSE2) until then.
extern Ipp64u ownFeaturesMask;
// Detected features, filled on the first query; ownMaskIsFeatures may overwrite it.
extern Ipp64u ownFeatures;
// 1 once ownFeatures holds a result.
extern int ownFeaturesAreValid;
// 1 while the cache has not been queried; afterwards the status of that one query.
extern int ownStatus;
// The largest cache in bytes, 0 while unknown.
extern int cacheSize;

// Stores EAX, EBX, ECX, EDX of the identification query (leaf, subleaf) in regs.
void ownGetReg(Ipp32u regs[4], Ipp32u leaf, Ipp32u subleaf);
// 1 and the detected feature word, computed on the first call only; 0 without the
// identification instruction.
int ownGetMaskFeatures(Ipp64u* pFeatures);
// True if every bit of mask is enabled.
int ownGetFeature(Ipp64u mask);
// Stores the enabled mask; returns 1.
int ownSetFeatureMask(Ipp64u mask);
// Makes the enabled mask the detected word, so a forced selection is what a later
// ippGetCpuFeatures reports.
void ownMaskIsFeatures();
// Forces the selection named by a processor code; -1 detects as ippInit does.
IppStatus ownippStaticInitCpu(int cpuCode);

// One row of the descriptor table of ippGetMaxCacheSizeB: a leaf-2 descriptor byte and the
// size in bytes of the cache it names. A zero descriptor ends the table.
struct CacheDescriptor {
    unsigned char descriptor;
    int size;
};
constexpr int tableCacheRows = 56;
extern CacheDescriptor const tableCache[tableCacheRows];
// The size of the first row of table, in table order, that leaf 2 reports; -1 if none.
int ownGetCacheSize(CacheDescriptor const (&table)[tableCacheRows]);

}  // namespace nuv::prim::dispatch
