// Small questions to the processor, each answered from one or two identification queries.
// Only ipp_has_cpuid, ipp_max_cpuid_input, ipp_is_GenuineIntel and ipp_is_avx_extension have
// callers inside the library; the others are kept for hosts that want the same answers.
// Every query goes through nuvCpuid and nuvXgetbv0, so a test can play another processor.
#pragma once

#include "primitives/dispatch/cpu_query.h"

#ifdef __cplusplus
extern "C" {
#endif

// What ipp_get_pentium_ident fills in. Family and model are the displayed values: the
// extended fields are folded in the way the processor's documentation prescribes.
typedef struct NuvProcessorIdent {
    int family;          // base family, plus the extended family when the base is 0xF
    int model;           // base model, plus the extended model shifted by 4 for families 6 and 0xF
    int stepping;        // leaf 1 EAX bits 3..0
    int type;            // leaf 1 EAX bits 13..12
    Ipp32u maxLeaf;      // EAX of leaf 0
    Ipp32u maxExtLeaf;   // EAX of leaf 0x80000000
    Ipp32u signature;    // leaf 1 EAX as read
    Ipp32u misc;         // leaf 1 EBX as read
    Ipp32u featuresEcx;  // leaf 1 ECX as read
    Ipp32u featuresEdx;  // leaf 1 EDX as read
    char vendor[13];     // EBX, EDX, ECX of leaf 0, null-terminated
    int genuineIntel;
    int rdtsc;
    int mmx;
    int sse;
    int sse2;
    int sse3;
    int ssse3;
    int sse41;
    int sse42;
    int movbe;
    int avx;  // in the processor and enabled by the system
    int htt;
    int em64t;
    int coresOnDie;
} NuvProcessorIdent;

// 1 where the identification instruction exists (every x86-64 processor), 0 elsewhere.
int ipp_has_cpuid(void);
// EAX of leaf 0: the highest standard leaf.
int ipp_max_cpuid_input(void);
int ipp_has_rdtsc(void);
int ipp_is_mmx_extension(void);
int ipp_is_ssx_extension(void);
int ipp_is_wni_extension(void);
int ipp_is_htt_extension(void);
int ipp_is_pni_extension(void);
int ipp_is_em64t_extension(void);
int ipp_is_mni_extension(void);
int ipp_is_sse41_extension(void);
int ipp_is_sse42_extension(void);
int ipp_is_movbe(void);
int ipp_is_avx_extension(void);
int ipp_get_cores_on_die(void);
Ipp64u ipp_get_pentium_counter(void);
int ipp_is_GenuineIntel(void);
// Fills *ident and returns 1; returns 0 and writes nothing for a null record.
int ipp_get_pentium_ident(NuvProcessorIdent* ident);

#ifdef __cplusplus
}
#endif
