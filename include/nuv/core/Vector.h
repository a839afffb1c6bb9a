/// @file
/// A copy-on-write array. Copies share the elements until one of them is written; every
/// operation that may write (the non-const element access included) makes the data private
/// first, so code that only reads should use the const forms.
#pragma once

#include <nuv/core/SharedBase.h>

#include <initializer_list>
#include <vector>

namespace nuv::core {

template <typename T>
class VectorImpl {
public:
    VectorImpl() = default;
    VectorImpl(VectorImpl const& other) : vector(other.vector) {}

    std::vector<T> vector;
};

/// A copy-on-write array of T: copies share the elements until one of them is written.
template <typename T>
class Vector : private SharedBase<VectorImpl<T>> {
public:
    /// The element type, as the standard containers name it.
    using value_type = T;
    /// An iterator that may write.
    using iterator = typename std::vector<T>::iterator;
    /// An iterator that only reads.
    using const_iterator = typename std::vector<T>::const_iterator;

    /// An empty vector.
    Vector() = default;
    /// A vector of these values in order.
    Vector(std::initializer_list<T> values) { vec().assign(values); }
    /// Shares the other vector's elements.
    Vector(Vector const&) = default;
    /// Shares the other vector's elements.
    Vector& operator=(Vector const&) = default;
    /// Lets go of the elements, which the last vector sharing them frees.
    virtual ~Vector() = default;

    /// The number of elements.
    int size() const { return static_cast<int>(cvec().size()); }
    /// The number of elements, as size().
    int count() const { return size(); }
    /// Whether the vector has no element.
    bool isEmpty() const { return cvec().empty(); }

    /// Unchecked reads.
    T const& operator[](int i) const { return cvec()[static_cast<std::size_t>(i)]; }
    /// Unchecked read, as operator[].
    T const& at(int i) const { return cvec()[static_cast<std::size_t>(i)]; }
    /// Unchecked and detaching, whether or not the caller then writes.
    T& operator[](int i) { return vec()[static_cast<std::size_t>(i)]; }

    /// The element, or T() for an index out of range: the only checked reads.
    T value(int i) const { return value(i, T()); }
    /// The element, or fallback for an index out of range.
    T value(int i, T const& fallback) const {
        return i < 0 || i >= size() ? fallback : cvec()[static_cast<std::size_t>(i)];
    }

    /// Adds at the end.
    void append(T const& element) { vec().push_back(element); }
    /// Appends the element and returns the vector, for chains.
    Vector& operator<<(T const& element) {
        append(element);
        return *this;
    }
    /// Empties the vector; a shared vector lets go of the shared elements.
    void clear() { this->emptiedImpl().vector.clear(); }
    /// A negative size is ignored before anything else, so a shared vector stays shared.
    void resize(int n, T const& fill = T()) {
        if (n < 0) return;
        vec().resize(static_cast<std::size_t>(n), fill);
    }

    /// The first element, read-only.
    T const* constData() const { return cvec().data(); }
    /// The first element, read-only.
    T const* data() const { return cvec().data(); }
    /// The first element, writable: detaches.
    T* data() { return vec().data(); }

    /// The detaching iterator: it counts as a write.
    iterator begin() { return vec().begin(); }
    /// The detaching end iterator.
    iterator end() { return vec().end(); }
    /// The iterator that only reads.
    const_iterator begin() const { return cvec().begin(); }
    /// The end iterator that only reads.
    const_iterator end() const { return cvec().end(); }
    /// The iterator that only reads, also for a non-const vector.
    const_iterator constBegin() const { return cvec().begin(); }
    /// The end iterator that only reads, also for a non-const vector.
    const_iterator constEnd() const { return cvec().end(); }

    /// The elements as a standard vector, without copying.
    std::vector<T> const& toStdVector() const { return cvec(); }

    /// Vectors are equal when their elements are, in order.
    bool operator==(Vector const& other) const {
        return this->_d == other._d || cvec() == other.cvec();
    }
    /// Whether the elements differ.
    bool operator!=(Vector const& other) const { return !(*this == other); }

private:
    std::vector<T> const& cvec() const { return this->constImpl().vector; }
    std::vector<T>& vec() { return this->mutableImpl().vector; }
};

}  // namespace nuv::core
