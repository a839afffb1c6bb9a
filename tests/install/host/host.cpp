// A host program as a user writes it: the umbrella headers, an image with a region, a cut.
#include <nuv/core.h>
#include <nuv/cv.h>

#include <cstdio>

int main() {
    using namespace nuv::core;
    image::Image frame(image::ImageInfo(8, 6, image::BGR));
    for (unsigned y = 0; y < 6; ++y)
        for (unsigned x = 0; x < 24; ++x) frame.data()[y * frame.step() + x] = (unsigned char)(y * 24 + x);
    image::setRoi(frame, Roi(Point(2, 1), Size(3, 2)));
    image::Image cut = nuv::cv::copyRoi(frame);
    unsigned char const* p = cut.constData();
    // Row 1, pixel 2 of the frame is byte 1 * 24 + 6.
    if (cut.info().width != 3 || cut.info().height != 2 || p[0] != 30) {
        std::fprintf(stderr, "unexpected cut\n");
        return 1;
    }
    IppiSize size = {4, 1};
    unsigned char src[4] = {1, 2, 3, 4}, dst[4] = {};
    return ippiCopy_8u_C1R(src, 4, dst, 4, size) == ippStsNoErr && dst[3] == 4 ? 0 : 1;
}
