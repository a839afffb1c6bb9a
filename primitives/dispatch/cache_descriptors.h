// The legacy way to learn the cache size: the descriptor bytes of identification leaf 2,
// looked up in a table ordered largest first. Two tables use it: tableCache behind
// ippGetMaxCacheSizeB, and the copy family's own TableCacheSize.
#pragma once

#include "primitives/dispatch/cpu_query.h"

namespace nuv::prim::dispatch {

// The descriptor bytes of leaf 2 as the scan sees them. `count` is 0 when leaf 2 does not
// answer in one round (the low byte of EAX is not 1) or holds no descriptor register.
struct Leaf2Bytes {
    unsigned char bytes[17] = {};
    int count = 0;
    // Positions 1 to count take part; position 0 is the round count of EAX.
    bool contains(unsigned char descriptor) const;
};

Leaf2Bytes readLeaf2();

// Size of the first table entry, in table order, whose descriptor leaf 2 reports; -1 if
// none does or leaf 2 gives no answer. Entry::descriptor and sizeOf(entry) describe a row.
template <class Entry, int N, class SizeOf>
int scanLeaf2(Entry const (&table)[N], SizeOf sizeOf) {
    const Leaf2Bytes leaf2 = readLeaf2();
    if (leaf2.count == 0) return -1;
    for (Entry const& entry : table) {
        if (entry.descriptor == 0) break;
        if (leaf2.contains(entry.descriptor)) return sizeOf(entry);
    }
    return -1;
}

}  // namespace nuv::prim::dispatch
