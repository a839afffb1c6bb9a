// The contact sheet, image conversions and timing of the demo.
#include "showcase.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace nuv::demo {

using nuv::core::image::Image;
using nuv::core::image::ImageInfo;

Image toImage(::cv::Mat const& picture) {
    const auto format = picture.channels() == 1 ? nuv::core::image::Gray : nuv::core::image::BGR;
    Image image(ImageInfo(picture.cols, picture.rows, format));
    for (int y = 0; y < picture.rows; ++y)
        std::copy_n(picture.ptr(y), picture.cols * picture.channels(),
                    image.data() + y * image.step());
    return image;
}

::cv::Mat toPicture(Image const& image) {
    const int channels = static_cast<int>(image.info().numChannels);
    ::cv::Mat picture(static_cast<int>(image.info().height), static_cast<int>(image.info().width),
                      CV_8UC(channels));
    for (int y = 0; y < picture.rows; ++y)
        std::copy_n(image.constData() + y * image.step(), picture.cols * channels, picture.ptr(y));
    return picture;
}

double medianMicroseconds(int slot, int rounds, void (*run)(void*), void* work) {
    const Ipp32u saved = ippJumpIndexForMergedLibs;
    ippJumpIndexForMergedLibs = static_cast<Ipp32u>(slot);
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        const auto start = std::chrono::steady_clock::now();
        run(work);
        const auto stop = std::chrono::steady_clock::now();
        times.push_back(std::chrono::duration<double, std::micro>(stop - start).count());
    }
    ippJumpIndexForMergedLibs = saved;
    std::nth_element(times.begin(), times.begin() + times.size() / 2, times.end());
    return times[times.size() / 2];
}

namespace {

constexpr int kTileWidth = 400, kTileHeight = 300, kLabel = 44, kColumns = 5;

std::string timeText(double us) {
    char text[32];
    std::snprintf(text, sizeof text, us >= 1000 ? "%.1f ms" : "%.0f us",
                  us >= 1000 ? us / 1000 : us);
    return text;
}

}  // namespace

::cv::Mat contactSheet(std::vector<Shown> const& shown, int slot) {
    const int rows = (static_cast<int>(shown.size()) + kColumns - 1) / kColumns;
    ::cv::Mat sheet(rows * (kTileHeight + kLabel), kColumns * kTileWidth, CV_8UC3,
                    ::cv::Scalar(32, 32, 32));
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const ::cv::Point corner(static_cast<int>(i % kColumns) * kTileWidth,
                                 static_cast<int>(i / kColumns) * (kTileHeight + kLabel));
        ::cv::Mat picture = shown[i].picture;
        if (picture.channels() == 1) ::cv::cvtColor(picture, picture, ::cv::COLOR_GRAY2BGR);
        const double scale =
            std::min(double(kTileWidth - 8) / picture.cols, double(kTileHeight - 8) / picture.rows);
        ::cv::Mat fitted;
        ::cv::resize(picture, fitted, {}, scale, scale, ::cv::INTER_AREA);
        fitted.copyTo(sheet(
            ::cv::Rect(corner + ::cv::Point((kTileWidth - fitted.cols) / 2, 4), fitted.size())));
        const ::cv::Point text = corner + ::cv::Point(8, kTileHeight + 16);
        ::cv::putText(sheet, shown[i].title, text, ::cv::FONT_HERSHEY_SIMPLEX, 0.55,
                      ::cv::Scalar(255, 255, 255), 1, ::cv::LINE_AA);
        const std::string times = "slot 0 " + timeText(shown[i].slot0) + "  slot " +
                                  std::to_string(slot) + " " + timeText(shown[i].selected) +
                                  "  OpenCV " + timeText(shown[i].opencv);
        ::cv::putText(sheet, times, text + ::cv::Point(0, 20), ::cv::FONT_HERSHEY_SIMPLEX, 0.42,
                      ::cv::Scalar(180, 220, 255), 1, ::cv::LINE_AA);
    }
    return sheet;
}

}  // namespace nuv::demo
