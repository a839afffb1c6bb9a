// A copy-on-write array. Copies share the elements until one of them is written; every
// operation that may write (the non-const element access included) makes the data private
// first, so code that only reads should use the const forms.
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

template <typename T>
class Vector : private SharedBase<VectorImpl<T>> {
public:
    using value_type = T;
    using iterator = typename std::vector<T>::iterator;
    using const_iterator = typename std::vector<T>::const_iterator;

    Vector() = default;
    Vector(std::initializer_list<T> values) { vec().assign(values); }
    Vector(Vector const&) = default;
    Vector& operator=(Vector const&) = default;
    virtual ~Vector() = default;

    int size() const { return static_cast<int>(cvec().size()); }
    int count() const { return size(); }
    bool isEmpty() const { return cvec().empty(); }

    // Unchecked reads.
    T const& operator[](int i) const { return cvec()[static_cast<std::size_t>(i)]; }
    T const& at(int i) const { return cvec()[static_cast<std::size_t>(i)]; }
    // Unchecked and detaching, whether or not the caller then writes.
    T& operator[](int i) { return vec()[static_cast<std::size_t>(i)]; }

    // The only checked reads.
    T value(int i) const { return value(i, T()); }
    T value(int i, T const& fallback) const {
        return i < 0 || i >= size() ? fallback : cvec()[static_cast<std::size_t>(i)];
    }

    void append(T const& element) { vec().push_back(element); }
    Vector& operator<<(T const& element) {
        append(element);
        return *this;
    }
    void clear() { this->emptiedImpl().vector.clear(); }
    // A negative size is ignored before anything else, so a shared vector stays shared.
    void resize(int n, T const& fill = T()) {
        if (n < 0) return;
        vec().resize(static_cast<std::size_t>(n), fill);
    }

    T const* constData() const { return cvec().data(); }
    T const* data() const { return cvec().data(); }
    T* data() { return vec().data(); }

    iterator begin() { return vec().begin(); }
    iterator end() { return vec().end(); }
    const_iterator begin() const { return cvec().begin(); }
    const_iterator end() const { return cvec().end(); }
    const_iterator constBegin() const { return cvec().begin(); }
    const_iterator constEnd() const { return cvec().end(); }

    std::vector<T> const& toStdVector() const { return cvec(); }

    bool operator==(Vector const& other) const {
        return this->_d == other._d || cvec() == other.cvec();
    }
    bool operator!=(Vector const& other) const { return !(*this == other); }

private:
    std::vector<T> const& cvec() const { return this->constImpl().vector; }
    std::vector<T>& vec() { return this->mutableImpl().vector; }
};

}  // namespace nuv::core
