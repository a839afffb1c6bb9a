// Draws the frame that the demo and the benchmarks use: a table top with a few coloured
// objects, a strip of tape and a printed marker, soft light from one side and sensor noise,
// as a camera on an inspection rig would see it. The output is deterministic, so the bundled file
// can be made again.
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <cstdio>
#include <string>

int main(int argc, char** argv) {
    const std::string out = argc > 1 ? argv[1] : NUV_DATA_DIR "/frame.png";
    const int width = 640, height = 480;
    cv::Mat frame(height, width, CV_8UC3);

    // Background: a grey-green surface lit from the left.
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const double light = 1.0 - 0.35 * x / width - 0.1 * y / height;
            frame.at<cv::Vec3b>(y, x) = cv::Vec3b(cv::saturate_cast<uchar>(110 * light),
                                                  cv::saturate_cast<uchar>(125 * light),
                                                  cv::saturate_cast<uchar>(105 * light));
        }

    // Objects in BGR: an orange ball, a blue box, a yellow disc, a red bar, a green cone.
    cv::circle(frame, {170, 300}, 62, {20, 120, 245}, cv::FILLED, cv::LINE_AA);
    cv::rectangle(frame, {360, 90}, {520, 210}, {190, 90, 30}, cv::FILLED, cv::LINE_AA);
    cv::circle(frame, {470, 360}, 45, {30, 215, 235}, cv::FILLED, cv::LINE_AA);
    cv::RotatedRect bar({300, 400}, {200, 26}, -12);
    cv::Point2f corners[4];
    bar.points(corners);
    std::vector<cv::Point> polygon(corners, corners + 4);
    cv::fillConvexPoly(frame, polygon, {35, 35, 200}, cv::LINE_AA);
    std::vector<cv::Point> cone = {{90, 150}, {150, 40}, {210, 150}};
    cv::fillConvexPoly(frame, cone, {60, 170, 40}, cv::LINE_AA);

    // A strip of dark tape across the bottom rows, for the line detector, and a printed
    // checker marker, for template matching.
    cv::rectangle(frame, {556, 392}, {566, height - 1}, {38, 40, 42}, cv::FILLED);
    for (int cy = 0; cy < 4; ++cy)
        for (int cx = 0; cx < 4; ++cx)
            cv::rectangle(frame, {34 + 12 * cx, 380 + 12 * cy}, {45 + 12 * cx, 391 + 12 * cy},
                          (cx + cy) % 2 ? cv::Scalar(235, 235, 235) : cv::Scalar(25, 25, 25),
                          cv::FILLED);

    // A soft shadow edge and sensor noise.
    cv::GaussianBlur(frame, frame, {3, 3}, 0.8);
    cv::Mat noise(height, width, CV_8SC3);
    cv::RNG rng(20261123);
    rng.fill(noise, cv::RNG::NORMAL, 0, 4);
    cv::Mat noisy;
    frame.convertTo(noisy, CV_16SC3);
    cv::Mat noise16;
    noise.convertTo(noise16, CV_16SC3);
    noisy += noise16;
    noisy.convertTo(frame, CV_8UC3);

    if (!cv::imwrite(out, frame)) {
        std::fprintf(stderr, "cannot write %s\n", out.c_str());
        return 1;
    }
    std::printf("wrote %s (%dx%d)\n", out.c_str(), width, height);
    return 0;
}
