// The C++ side of the Python suite's comparisons: runs a fixed list of front-end calls on a
// frame the suite wrote and writes what each gives, so that the suite can check the binding
// against the library called directly on the same pixels.
//
//   nuv_python_reference FRAME.raw CLASSES.txt OUT_DIR SLOT
//
// SLOT is the jump index to run at: generations may differ in documented bytes (which pixels
// a conversion takes as block pixels), so both sides must run the same bodies.
// FRAME.raw is "width height channels\n" and packed BGR rows. Every image result is written to
// OUT_DIR/<name>.raw in the same form (a null image as "0 0 0\n"), every other result as one
// line "<name> <numbers...>" of OUT_DIR/values.txt.
#include <nuv/cv.h>

#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>

namespace {

using nuv::core::Point;
using nuv::core::Roi;
using nuv::core::Size;
using nuv::core::image::Image;
using nuv::core::image::ImageInfo;

std::string outDir;
std::ofstream values;

void write(std::string const& name, Image const& image) {
    std::ofstream out(outDir + "/" + name + ".raw", std::ios::binary);
    char const* first = nullptr;
    const Size size = image.isNull() ? Size() : getRoi(image, &first).size();
    const unsigned int channels = image.isNull() ? 0 : image.info().numChannels;
    out << size.width() << ' ' << size.height() << ' ' << channels << '\n';
    for (unsigned int y = 0; y < size.height(); ++y)
        out.write(first + std::size_t(y) * image.step(), std::streamsize(size.width()) * channels);
}

template <typename Sequence>
void write(std::string const& name, Sequence const& numbers) {
    values << name;
    for (auto n : numbers) values << ' ' << int(n);
    values << '\n';
}

void write(std::string const& name, nuv::core::List<nuv::core::Line> const& lines) {
    values << name;
    for (nuv::core::Line const& l : lines)
        values << ' ' << l.x0() << ' ' << l.y0() << ' ' << l.x1() << ' ' << l.y1();
    values << '\n';
}

Image withRoi(Image image, int x, int y, unsigned int w, unsigned int h) {
    setRoi(image, Roi(Point(x, y), Size(w, h)));
    return image;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        std::cerr << "usage: nuv_python_reference FRAME.raw CLASSES.txt OUT_DIR SLOT\n";
        return 2;
    }
    std::ifstream in(argv[1], std::ios::binary);
    unsigned int width = 0, height = 0, channels = 0;
    in >> width >> height >> channels;
    in.get();
    Image frame(ImageInfo(width, height, nuv::core::image::BGR));
    in.read(reinterpret_cast<char*>(frame.data()),
            std::streamsize(frame.info().rowBytes()) * height);
    std::ifstream classesFile(argv[2]);
    const std::string classes((std::istreambuf_iterator<char>(classesFile)),
                              std::istreambuf_iterator<char>());
    outDir = argv[3];
    ippJumpIndexForMergedLibs = static_cast<Ipp32u>(std::stoul(argv[4]));
    values.open(outDir + "/values.txt");
    if (!in || channels != 3 || !values) return 1;

    namespace cv = nuv::cv;
    using namespace nuv::core::image;
    const Image region = withRoi(frame, 100, 80, 200, 120);
    write("copyRoi", cv::copyRoi(region));
    const struct {
        char const* name;
        Format format;
    } targets[] = {{"HSV", HSV}, {"Gray", Gray}, {"RGB", RGB}};
    for (auto const& t : targets)
        write(std::string("convert") + t.name, cv::convert(region, t.format));
    // The same bytes taken as RGB, for the conversions that start from RGB only.
    const Image rgb = withRoi(Image(const_cast<unsigned char*>(frame.constData()), frame.step(),
                                    ImageInfo(width, height, RGB), {}),
                              100, 80, 200, 120);
    write("convertHLS", cv::convert(rgb, HLS));
    write("convertYCbCr", cv::convert(rgb, YCbCr));
    write("mirrorVertical", cv::mirrorVertical(region));
    write("transpose", cv::transpose(region));
    write("thresholdGT", cv::thresholdGT(frame, 128, 0));
    const Image hsv = cv::convert(frame, HSV);
    const Image mask = cv::inRange(hsv, {240, 80, 60}, {270, 255, 255});
    write("inRange", mask);
    write("mean", cv::mean(region));
    nuv::core::Vector<int> low, high;
    cv::minmax(region, low, high);
    write("min", low);
    write("max", high);

    const Image gray = cv::convert(frame, Gray);
    write("sobelHoriz", cv::filter::sobelHoriz3x3(withRoi(gray, 10, 20, 300, 200), true));
    write("filterMax", cv::filter::max(gray, Size(5, 3)));
    const Image edges = cv::canny(gray, 50, 150);
    write("canny", edges);
    int markers = 0;
    const Image labels = cv::labelmarkers(mask, &markers);
    write("labels", labels);
    nuv::core::Vector<Point> centers;
    nuv::core::Vector<int> sizes;
    cv::labelmarkersinfo(labels, 20, centers, sizes);
    values << "markers " << markers << '\n';
    write("sizes", sizes);
    values << "centers";
    for (Point const& p : centers) values << ' ' << p.x() << ' ' << p.y();
    values << '\n';

    cv::HoughTransform hough;
    hough.setMaxLineCount(8);
    hough.setDelta(1.0f, 3.14159265f / 180);
    hough.setThreshold(70);
    write("hough", lines(hough.transform(edges)));

    cv::LineDetector detector;
    detector.setThreshold(60);
    Point point;
    write("lineEdges", detector.findLine(frame, cv::LineDetector::Vertical, &point));
    values << "linePoint " << point.x() << ' ' << point.y() << '\n';

    cv::MatchTemplate matcher;
    matcher.setImage(frame);
    float score = 0;
    matcher.match(cv::copyRoi(withRoi(frame, 300, 200, 40, 30)), &point, &score);
    values << "match " << point.x() << ' ' << point.y() << ' ' << score << '\n';

    cv::Segmenter segmenter;
    segmenter.setColorSegments(cv::segmentListfromString(classes));
    for (Segment const& s : segmentList(segmenter.doSegmentation(frame)))
        values << "segment " << s.name << ' ' << s.pixelCount << ' ' << s.center.x() << ' '
               << s.center.y() << ' ' << s.lines.size() << '\n';
    return 0;
}
