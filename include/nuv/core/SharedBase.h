/// @file
/// The copy-on-write core of the containers: one shared_ptr to the data, shared between
/// copies until one of them is about to write.
#pragma once

#include <boost/shared_ptr.hpp>

namespace nuv::core {

template <class Impl>
class SharedBase {
protected:
    /// Every container owns data from the start, even an empty one, so no operation ever
    /// has to test for a missing Impl.
    SharedBase() : _d(new Impl) {}
    SharedBase(SharedBase const&) = default;
    SharedBase& operator=(SharedBase const&) = default;
    ~SharedBase() = default;

    /// Makes the data private to this handle before a write. When nobody else holds it there
    /// is nothing to do, so iterators of a unique list or map stay valid. If the copy cannot
    /// be allocated, std::bad_alloc leaves the handle as it was.
    void detach() {
        if (_d.unique()) return;
        boost::shared_ptr<Impl> copy(new Impl(*_d));
        _d = copy;
    }

    /// For operations that throw the content away (clear): a shared handle takes a new empty
    /// Impl instead of copying what it is about to discard.
    Impl& emptiedImpl() {
        if (!_d.unique()) _d = boost::shared_ptr<Impl>(new Impl);
        return *_d;
    }

    /// Reading never detaches.
    Impl const& constImpl() const { return *_d; }
    /// Writing always does.
    Impl& mutableImpl() {
        detach();
        return *_d;
    }

    boost::shared_ptr<Impl> _d;
};

}  // namespace nuv::core
