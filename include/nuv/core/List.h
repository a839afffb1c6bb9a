/// @file
/// A copy-on-write linked list. Copies share the elements until one of them is written. The
/// non-const begin() and end() count as writes and copy a shared list; code that only reads
/// uses constBegin(), the const forms or a const reference.
///
/// While the list is not shared, iterators stay valid across append() and erase() of other
/// elements, as for std::list: callers may keep iterators to elements and go on appending.
/// An iterator taken from a list that is later copied must not be passed to erase() while the
/// copy lives: erase() detaches first, and the iterator would point into the other copy.
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

/// A copy-on-write linked list of T: copies share the elements until one of them is written.
template <typename T>
class List : private SharedBase<ListImpl<T>> {
public:
    /// The element type, as the standard containers name it.
    using value_type = T;
    /// An iterator that may write.
    using iterator = typename std::list<T>::iterator;
    /// An iterator that only reads.
    using const_iterator = typename std::list<T>::const_iterator;

    /// An empty list.
    List() = default;
    /// A list of these values in order.
    List(std::initializer_list<T> values) { lst().assign(values); }
    /// Shares the other list's elements.
    List(List const&) = default;
    /// Shares the other list's elements.
    List& operator=(List const&) = default;
    /// Lets go of the elements, which the last list sharing them frees.
    virtual ~List() = default;

    /// The number of elements.
    int size() const { return static_cast<int>(clst().size()); }
    /// The number of elements, as size().
    int count() const { return size(); }
    /// Whether the list has no element.
    bool isEmpty() const { return clst().empty(); }

    /// Adds at the end and returns an iterator to the new element.
    iterator append(T const& element) {
        std::list<T>& list = lst();
        return list.insert(list.end(), element);
    }
    /// Appends the element and returns the list, for chains.
    List& operator<<(T const& element) {
        append(element);
        return *this;
    }
    /// Removes the element and returns the iterator to the next one.
    iterator erase(iterator position) { return lst().erase(position); }
    /// Empties the list; a shared list lets go of the shared elements.
    void clear() { this->emptiedImpl().list.clear(); }

    /// The first element; unchecked: the list must not be empty.
    T const& first() const { return clst().front(); }
    /// The last element; unchecked, as first().
    T const& last() const { return clst().back(); }

    /// The detaching iterator: it counts as a write.
    iterator begin() { return lst().begin(); }
    /// The detaching end iterator.
    iterator end() { return lst().end(); }
    /// The iterator that only reads.
    const_iterator begin() const { return clst().begin(); }
    /// The end iterator that only reads.
    const_iterator end() const { return clst().end(); }
    /// The iterator that only reads, also for a non-const list.
    const_iterator constBegin() const { return clst().begin(); }
    /// The end iterator that only reads, also for a non-const list.
    const_iterator constEnd() const { return clst().end(); }

    /// The elements as a standard list, without copying.
    std::list<T> const& toStdList() const { return clst(); }

    /// Lists are equal when their elements are, in order.
    bool operator==(List const& other) const {
        return this->_d == other._d || clst() == other.clst();
    }
    /// Whether the elements differ.
    bool operator!=(List const& other) const { return !(*this == other); }

private:
    std::list<T> const& clst() const { return this->constImpl().list; }
    std::list<T>& lst() { return this->mutableImpl().list; }
};

}  // namespace nuv::core
