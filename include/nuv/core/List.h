// A copy-on-write linked list. Copies share the elements until one of them is written. The
// non-const begin() and end() count as writes and copy a shared list; code that only reads
// uses constBegin(), the const forms or a const reference.
//
// While the list is not shared, iterators stay valid across append() and erase() of other
// elements, as for std::list: callers may keep iterators to elements and go on appending.
// An iterator taken from a list that is later copied must not be passed to erase() while the
// copy lives: erase() detaches first, and the iterator would point into the other copy.
#pragma once

#include <nuv/core/SharedBase.h>

#include <initializer_list>
#include <list>

namespace nuv::core {

template <typename T>
class ListImpl {
public:
    ListImpl() = default;
    ListImpl(ListImpl const& other) : list(other.list) {}

    std::list<T> list;
};

template <typename T>
class List : private SharedBase<ListImpl<T>> {
public:
    using value_type = T;
    using iterator = typename std::list<T>::iterator;
    using const_iterator = typename std::list<T>::const_iterator;

    List() = default;
    List(std::initializer_list<T> values) { lst().assign(values); }
    List(List const&) = default;
    List& operator=(List const&) = default;
    virtual ~List() = default;

    int size() const { return static_cast<int>(clst().size()); }
    int count() const { return size(); }
    bool isEmpty() const { return clst().empty(); }

    // Adds at the end and returns an iterator to the new element.
    iterator append(T const& element) {
        std::list<T>& list = lst();
        return list.insert(list.end(), element);
    }
    List& operator<<(T const& element) {
        append(element);
        return *this;
    }
    // Removes the element and returns the iterator to the next one.
    iterator erase(iterator position) { return lst().erase(position); }
    void clear() { this->emptiedImpl().list.clear(); }

    // Unchecked: the list must not be empty.
    T const& first() const { return clst().front(); }
    T const& last() const { return clst().back(); }

    iterator begin() { return lst().begin(); }
    iterator end() { return lst().end(); }
    const_iterator begin() const { return clst().begin(); }
    const_iterator end() const { return clst().end(); }
    const_iterator constBegin() const { return clst().begin(); }
    const_iterator constEnd() const { return clst().end(); }

    std::list<T> const& toStdList() const { return clst(); }

    bool operator==(List const& other) const {
        return this->_d == other._d || clst() == other.clst();
    }
    bool operator!=(List const& other) const { return !(*this == other); }

private:
    std::list<T> const& clst() const { return this->constImpl().list; }
    std::list<T>& lst() { return this->mutableImpl().list; }
};

}  // namespace nuv::core
