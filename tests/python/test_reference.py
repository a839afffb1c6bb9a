"""The binding against the library called directly: the reference program runs the same calls
on the same pixels through the C++ API, and every result must agree byte for byte."""
import os
import subprocess

import numpy as np
import pytest

import nuv

DATA = os.environ.get("NUV_DATA_DIR", os.path.join(os.path.dirname(__file__), "../../data"))
CLASSES = os.path.join(DATA, "classes.txt")


def slots():
    nuv.ippInit()
    return sorted({0, nuv.jumpIndex()})


@pytest.fixture(scope="module", params=slots())
def reference(request, tmp_path_factory):
    program = os.environ.get("NUV_PYTHON_REFERENCE")
    if not program:
        pytest.skip("NUV_PYTHON_REFERENCE names the reference program (ctest sets it)")
    out = tmp_path_factory.mktemp("reference")
    # A frame from the file, given to the program raw, so that both sides read the same bytes.
    frame = nuv.imread(os.path.join(DATA, "frame.png"))
    with open(out / "frame.raw", "wb") as f:
        f.write(b"%d %d 3\n" % (frame.shape[1], frame.shape[0]) + frame.tobytes())
    subprocess.run([program, str(out / "frame.raw"), CLASSES, str(out), str(request.param)], check=True)

    def image(name):
        with open(out / (name + ".raw"), "rb") as f:
            w, h, c = map(int, f.readline().split())
            pixels = np.frombuffer(f.read(), np.uint8)
        return None if c == 0 else pixels.reshape((h, w) if c == 1 else (h, w, c))

    values = {}
    for line in open(out / "values.txt"):
        name, *numbers = line.split()
        values.setdefault(name, []).append(numbers)
    selected = nuv.jumpIndex()
    nuv.setJumpIndex(request.param)
    yield frame, image, values
    nuv.setJumpIndex(selected)


def test_operations_agree_with_the_library(reference):
    frame, image, values = reference
    numbers = lambda name: [int(n) for n in values[name][0]]  # noqa: E731
    region = nuv.Image(frame, roi=(100, 80, 200, 120))
    results = {
        "copyRoi": nuv.copyRoi(region),
        "mirrorVertical": nuv.mirrorVertical(region),
        "transpose": nuv.transpose(region),
        "thresholdGT": nuv.thresholdGT(frame, 128, 0),
    }
    for name in ("HSV", "Gray", "RGB"):
        results["convert" + name] = nuv.convert(region, getattr(nuv.Format, name))
    rgb = nuv.Image(frame, format=nuv.RGB, roi=(100, 80, 200, 120))
    results["convertHLS"] = nuv.convert(rgb, nuv.HLS)
    results["convertYCbCr"] = nuv.convert(rgb, nuv.YCbCr)
    hsv = nuv.Image(nuv.convert(frame, nuv.HSV), format=nuv.HSV)
    results["inRange"] = mask = nuv.inRange(hsv, [240, 80, 60], [270, 255, 255])
    gray = nuv.convert(frame, nuv.Gray)
    results["sobelHoriz"] = nuv.filter.sobelHoriz3x3(nuv.Image(gray, roi=(10, 20, 300, 200)), True)
    results["filterMax"] = nuv.filter.max(gray, (5, 3))
    results["canny"] = edges = nuv.canny(gray, 50, 150)
    results["labels"], markers = nuv.labelmarkers(mask)
    detector = nuv.LineDetector()
    detector.setThreshold(60)
    results["lineEdges"], point = detector.findLine(frame, nuv.LineDetector.Vertical)
    for name, result in results.items():
        assert result is not None, name
        np.testing.assert_array_equal(result, image(name), err_msg=name)

    assert nuv.mean(region) == numbers("mean")
    assert nuv.minmax(region) == (numbers("min"), numbers("max"))
    centers, sizes = nuv.labelmarkersinfo(results["labels"], 20)
    assert markers == numbers("markers")[0] and sizes == numbers("sizes")
    assert [c for p in centers for c in p] == numbers("centers")
    assert point == tuple(numbers("linePoint")) and point is not None

    hough = nuv.HoughTransform()
    hough.setMaxLineCount(8)
    hough.setDelta(1.0, 3.14159265 / 180)
    hough.setThreshold(70)
    found = nuv.lines(hough.transform(edges))
    assert len(found) > 0 and [c for line in found for c in line] == numbers("hough")

    matcher = nuv.MatchTemplate()
    matcher.setImage(frame)
    (x, y), score = matcher.match(frame[200:230, 300:340])
    mx, my, mscore = values["match"][0]
    assert (x, y) == (int(mx), int(my)) == (300, 200) and score == pytest.approx(float(mscore), abs=1e-5)

    segmenter = nuv.Segmenter()
    segmenter.setColorSegments(nuv.segmentListfromString(open(CLASSES).read()))
    got = [[s.name, s.pixelCount, *s.center, len(s.lines)] for s in segmenter.segment(frame)]
    want = [[n, *map(int, rest)] for n, *rest in values["segment"]]
    assert got == want and all(s[1] > 0 for s in got)
