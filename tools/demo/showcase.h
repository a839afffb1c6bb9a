// The demo's capabilities: each runs one part of the library on the frame, times it at slot 0
// and at the selected slot beside the OpenCV call that does the same job, reports what it
// found and draws an annotated picture.
#pragma once

#include <nuv/core.h>
#include <nuv/cv.h>

#include <opencv2/core.hpp>

#include <string>
#include <utility>
#include <vector>

namespace nuv::demo {

struct Frame {
    ::cv::Mat picture;              // BGR, as decoded
    nuv::core::image::Image image;  // the same pixels as a library image
    nuv::cv::SegmentList classes;   // trained on BGR pixels
    int slot = 0;                   // the slot ippInit selected
};

struct Shown {
    Shown(std::string k, std::string t) : key(std::move(k)), title(std::move(t)) {}
    std::string key;    // file name part: nuv_demo_<key>.png
    std::string title;  // the tile's label
    std::vector<std::string> facts;
    ::cv::Mat picture;
    double slot0 = 0, selected = 0, opencv = 0;  // microseconds per frame, medians
    std::string opencvCall;
};

// Every capability in the order shown.
std::vector<Shown> showEverything(Frame const& frame);

// Conversions between library images and pictures, row by row.
nuv::core::image::Image toImage(::cv::Mat const& picture);
::cv::Mat toPicture(nuv::core::image::Image const& image);

// One picture of labelled tiles, two rows, each tile with its title and its times.
::cv::Mat contactSheet(std::vector<Shown> const& shown, int slot);

// Median time of one call of `work`, in microseconds, with the index word set to `slot`.
double medianMicroseconds(int slot, int rounds, void (*run)(void*), void* work);
template <class Work>
double medianMicroseconds(int slot, int rounds, Work& work) {
    return medianMicroseconds(
        slot, rounds, [](void* w) { (*static_cast<Work*>(w))(); }, &work);
}

}  // namespace nuv::demo
