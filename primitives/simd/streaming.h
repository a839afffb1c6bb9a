// When a family's stores stream past the cache. A large region written through the cache
// evicts the caller's working set and makes the processor read every destination line
// before writing it; a small one would only lose the cache's help. Every family states its
// choice as one StreamRule per generation, and `streams` is the one place that applies it.
// Part of the vector layer: see simd.h.
#pragma once

#include "primitives/dispatch/cpu_query.h"
#include "primitives/simd/policy.h"

namespace nuv::prim::NUV_V::simd {

// Which cache size a rule compares against.
enum class CacheQuery {
    none,       // a fixed bound alone decides
    largest,    // ippGetMaxCacheSizeB: the processor's largest cache, asked once per process
    copyTable,  // the copy family's own descriptor table, asked afresh on every call
};

struct StreamRule {
    // The region's bytes must pass this bound (or reach it, with orEqual) before the cache
    // is asked at all; a negative bound never streams.
    std::int64_t above;
    bool orEqual;
    CacheQuery cache;
    // Then cacheMultiple times the bytes must pass the cache (or reach it, with
    // cacheOrEqual).
    int cacheMultiple;
    bool cacheOrEqual;
    // When the query knows no cache: the bytes must pass this bound to stream; a negative
    // bound keeps the plain stores.
    std::int64_t aboveWhenCacheUnknown = -1;
};

inline constexpr StreamRule neverStream{-1, false, CacheQuery::none, 0, false, -1};

// Streams above a fixed bound whatever the cache.
inline constexpr StreamRule streamAbove(std::int64_t bound) {
    return {bound, false, CacheQuery::none, 0, false, -1};
}

// The cache size in bytes that a query reports, 0 when it knows none.
inline int cacheBytes(CacheQuery query) {
    if (query == CacheQuery::copyTable) return nuvLegacyCacheSize();
    int size = 0;
    if (query == CacheQuery::largest && ippGetMaxCacheSizeB(&size) != ippStsNoErr) return 0;
    return size;
}

inline bool streams(StreamRule const& rule, std::int64_t bytes) {
    if (rule.above < 0) return false;
    if (rule.orEqual ? bytes < rule.above : bytes <= rule.above) return false;
    if (rule.cache == CacheQuery::none) return true;
    const int cache = cacheBytes(rule.cache);
    if (cache <= 0) return rule.aboveWhenCacheUnknown >= 0 && bytes > rule.aboveWhenCacheUnknown;
    const std::int64_t weighed = rule.cacheMultiple * bytes;
    return rule.cacheOrEqual ? weighed >= cache : weighed > cache;
}

}  // namespace nuv::prim::NUV_V::simd
