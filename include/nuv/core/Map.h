// A copy-on-write ordered map. Copies share the entries until one of them is written;
// operator[] counts as a write whether or not the caller writes, value() never does.
// While the map is not shared, iterators stay valid across insertions, as for std::map.
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

template <typename K, typename V>
class Map : private SharedBase<MapImpl<K, V>> {
public:
    using key_type = K;
    using mapped_type = V;
    using const_iterator = typename std::map<K, V>::const_iterator;

    Map() = default;
    Map(Map const&) = default;
    Map& operator=(Map const&) = default;
    virtual ~Map() = default;

    int size() const { return static_cast<int>(cmap().size()); }
    int count() const { return size(); }
    bool isEmpty() const { return cmap().empty(); }
    bool contains(K const& key) const { return cmap().find(key) != cmap().end(); }

    // The value, default-constructed and inserted if the key is absent.
    V& operator[](K const& key) { return wmap()[key]; }
    // Checked reads: nothing is inserted.
    V value(K const& key) const { return value(key, V()); }
    V value(K const& key, V const& fallback) const {
        const_iterator it = cmap().find(key);
        return it == cmap().end() ? fallback : it->second;
    }

    void insert(K const& key, V const& item) { wmap()[key] = item; }
    // Returns the number of entries removed, 0 or 1. A missing key leaves a shared map shared.
    int remove(K const& key) {
        if (!contains(key)) return 0;
        return static_cast<int>(wmap().erase(key));
    }
    void clear() { this->emptiedImpl().map.clear(); }

    const_iterator find(K const& key) const { return cmap().find(key); }
    const_iterator begin() const { return cmap().begin(); }
    const_iterator end() const { return cmap().end(); }
    const_iterator constBegin() const { return cmap().begin(); }
    const_iterator constEnd() const { return cmap().end(); }

    std::map<K, V> const& toStdMap() const { return cmap(); }

    bool operator==(Map const& other) const {
        return this->_d == other._d || cmap() == other.cmap();
    }
    bool operator!=(Map const& other) const { return !(*this == other); }

private:
    std::map<K, V> const& cmap() const { return this->constImpl().map; }
    std::map<K, V>& wmap() { return this->mutableImpl().map; }
};

}  // namespace nuv::core
