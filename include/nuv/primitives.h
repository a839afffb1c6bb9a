/* The primitive layer of nuv: C-linkage pixel functions reached through dispatch stubs.
 *
 * Every dispatched name jumps through a seven-slot table <name>_arraddr, indexed by the
 * word ippJumpIndexForMergedLibs. The index stays 0 (the m7 bodies) unless the host calls
 * ippStaticInit, ippInit or ippInitCpu. This header compiles as C and as C++. */
#ifndef NUV_PRIMITIVES_H
#define NUV_PRIMITIVES_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned char Ipp8u;
typedef signed char Ipp8s;
typedef unsigned short Ipp16u;
typedef short Ipp16s;
typedef unsigned int Ipp32u;
typedef int Ipp32s;
typedef float Ipp32f;
typedef double Ipp64f;
typedef unsigned long long Ipp64u;
typedef long long Ipp64s;

/* 0 success; negative: an error, nothing was written; positive: a warning, the result stands. */
typedef int IppStatus;

enum {
    ippStsNoErr = 0,
    ippStsSizeOverflowWrn = 12,
    ippStsNonGenuineCpuWrn = 20,
    ippStsUnknownCpuCodeWrn = 21,
    ippStsLineCountWrn = 33,
    ippStsNoCpuFeaturesWrn = 36,
    ippStsCacheSizeUnknownWrn = 37,
    ippStsBadArgErr = -5,
    ippStsSizeErr = -6,
    ippStsNullPtrErr = -8,
    ippStsMemAllocErr = -9,
    ippStsOutOfRangeErr = -11,
    ippStsStepErr = -14,
    ippStsThresholdErr = -18,
    ippStsMirrorAxisErr = -21,
    ippStsMaskSizeErr = -33,
    ippStsAnchorErr = -34,
    ippStsChannelOrderErr = -60,
    ippStsNotSupportedModeErr = -9999
};

/** The size of a region in pixels. */
typedef struct {
    int width;  /**< pixels in a row */
    int height; /**< rows */
} IppiSize;

/* Comparison codes; the thresholds take the less and greater codes only. */
typedef int IppCmpOp;
enum { ippCmpLess = 0, ippCmpLessEq = 1, ippCmpEq = 2, ippCmpGreaterEq = 3, ippCmpGreater = 4 };

/** A pixel position, column x and row y. */
typedef struct {
    int x; /**< column */
    int y; /**< row */
} IppiPoint;

/** A rectangle: its top-left pixel and its size. */
typedef struct {
    int x;      /**< column of the top-left pixel */
    int y;      /**< row of the top-left pixel */
    int width;  /**< pixels in a row */
    int height; /**< rows */
} IppiRect;

/** What a flood fill did: pixels written, the fill value in value[0], the bounding box. */
typedef struct {
    Ipp64f area;     /**< pixels written */
    Ipp64f value[3]; /**< the fill value in value[0] */
    IppiRect rect;   /**< the bounding box of the pixels written */
} IppiFillRegion;

/** As an argument, the steps of the Hough space's axes; as a result, one line
 * x cos(theta) + y sin(theta) = rho. */
typedef struct {
    Ipp32f rho;   /**< distance from the origin in pixels */
    Ipp32f theta; /**< angle of the line's normal in radians */
} IppiRhoTheta;

/* ---- selection and dispatch ------------------------------------------------------- */

/* Slot read by every stub; the host may write it directly. */
extern Ipp32u ippJumpIndexForMergedLibs;
/* 1 after a selection of slot 3, else 0; nothing in the library reads it. */
extern Ipp32u ippJumpIndexForMergedLibsLP;

IppStatus ippStaticInit(void);
IppStatus ippInit(void);
IppStatus ippInitCpu(int cpuCode);
IppStatus ippGetCpuFeatures(Ipp64u* pFeatures, Ipp32u* pRegs);
Ipp64u ippGetEnabledCpuFeatures(void);
IppStatus ippSetCpuFeaturesMask(Ipp64u mask);
IppStatus ippEnableCpu(int cpuCode);
int ippIsCpuEnabled(int cpuCode);
IppStatus ippGetMaxCacheSizeB(int* pSize);

/* Feature bits of ippGetCpuFeatures and ippGetEnabledCpuFeatures. */
#define ippCPUID_MMX 0x1ULL
#define ippCPUID_SSE 0x2ULL
#define ippCPUID_SSE2 0x4ULL
#define ippCPUID_SSE3 0x8ULL
#define ippCPUID_SSSE3 0x10ULL
#define ippCPUID_MOVBE 0x20ULL
#define ippCPUID_SSE41 0x40ULL
#define ippCPUID_SSE42 0x80ULL
#define ippCPUID_AVX 0x100ULL
#define ippAVX_ENABLEDBYOS 0x200ULL
#define ippCPUID_AES 0x400ULL
#define ippCPUID_CLMUL 0x800ULL
#define ippCPUID_ABR 0x1000ULL
#define ippCPUID_RDRRAND 0x2000ULL
#define ippCPUID_F16C 0x4000ULL
#define ippCPUID_AVX2 0x8000ULL

/* ---- allocation ------------------------------------------------------------------- */

/* Hooks behind the allocator, initialised with the C library's functions. */
extern void* (*i_malloc)(size_t size);
extern void* (*i_calloc)(size_t count, size_t size);
extern void* (*i_realloc)(void* p, size_t size);
extern void (*i_free)(void* p);
extern int i_version;
extern int i_min_version;

/* 64-byte aligned blocks; release them with ippFree only. */
void* ippMalloc(int length);
void ippFree(void* p);

/* ---- dispatched primitives -------------------------------------------------------- */

#define NUV_DISPATCHED(name, slot2, slot3, ret, params, args) ret name params;
#include "nuv/primitives/dispatched.def"
#undef NUV_DISPATCHED

#ifdef __cplusplus
}
#endif

#endif /* NUV_PRIMITIVES_H */
