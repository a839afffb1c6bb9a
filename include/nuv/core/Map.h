/// @file
/// A copy-on-write ordered map. Copies share the entries until one of them is written;
/// operator[] counts as a write whether or not the caller writes, value() never does.
/// While the map is not shared, iterators stay valid across insertions, as for std::map.
#pragma once

#include <nuv/core/SharedBase.h>

#include <map>

namespace nuv::core {

template <typename K, typename V>
class MapImpl {
public:
    MapImpl() = default;
    MapImpl(MapImpl const& other) : map(other.map) {}

    std::map<K, V> map;
};

/// A copy-on-write ordered map from K to V: copies share the entries until one of them is written.
template <typename K, typename V>
class Map : private SharedBase<MapImpl<K, V>> {
public:
    /// The key type, as the standard containers name it.
    using key_type = K;
    /// The value type, as the standard containers name it.
    using mapped_type = V;
    /// An iterator that only reads.
    using const_iterator = typename std::map<K, V>::const_iterator;

    /// An empty map.
    Map() = default;
    /// Shares the other map's entries.
    Map(Map const&) = default;
    /// Shares the other map's entries.
    Map& operator=(Map const&) = default;
    /// Lets go of the entries, which the last map sharing them frees.
    virtual ~Map() = default;

    /// The number of entries.
    int size() const { return static_cast<int>(cmap().size()); }
    /// The number of entries, as size().
    int count() const { return size(); }
    /// Whether the map has no entry.
    bool isEmpty() const { return cmap().empty(); }
    /// Whether the key has an entry.
    bool contains(K const& key) const { return cmap().find(key) != cmap().end(); }

    /// The value, default-constructed and inserted if the key is absent.
    V& operator[](K const& key) { return wmap()[key]; }
    /// The value, or V() if the key is absent: checked reads, nothing is inserted.
    V value(K const& key) const { return value(key, V()); }
    /// The value, or fallback if the key is absent; nothing is inserted.
    V value(K const& key, V const& fallback) const {
        const_iterator it = cmap().find(key);
        return it == cmap().end() ? fallback : it->second;
    }

    /// Sets the key's value, replacing any before.
    void insert(K const& key, V const& item) { wmap()[key] = item; }
    /// Returns the number of entries removed, 0 or 1. A missing key leaves a shared map shared.
    int remove(K const& key) {
        if (!contains(key)) return 0;
        return static_cast<int>(wmap().erase(key));
    }
    /// Empties the map; a shared map lets go of the shared entries.
    void clear() { this->emptiedImpl().map.clear(); }

    /// The key's entry, or end().
    const_iterator find(K const& key) const { return cmap().find(key); }
    /// The first entry in key order.
    const_iterator begin() const { return cmap().begin(); }
    /// The end of the entries.
    const_iterator end() const { return cmap().end(); }
    /// The first entry in key order.
    const_iterator constBegin() const { return cmap().begin(); }
    /// The end of the entries.
    const_iterator constEnd() const { return cmap().end(); }

    /// The entries as a standard map, without copying.
    std::map<K, V> const& toStdMap() const { return cmap(); }

    /// Maps are equal when their entries are.
    bool operator==(Map const& other) const {
        return this->_d == other._d || cmap() == other.cmap();
    }
    /// Whether the entries differ.
    bool operator!=(Map const& other) const { return !(*this == other); }

private:
    std::map<K, V> const& cmap() const { return this->constImpl().map; }
    std::map<K, V>& wmap() { return this->mutableImpl().map; }
};

}  // namespace nuv::core
