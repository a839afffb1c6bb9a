"""Every operation of the module on a slice of a frame, on the same pixels in a padded array,
and on their contiguous copy: the three must give the same results. The segmenter reads
packed rows, so the binding packs what is not; the others use the arrays in place."""
import os

import numpy as np
import pytest

import nuv

DATA = os.environ.get("NUV_DATA_DIR", os.path.join(os.path.dirname(__file__), "../../data"))
FRAME = nuv.imread(os.path.join(DATA, "frame.png"))
CLASSES = nuv.segmentListfromString(open(os.path.join(DATA, "classes.txt")).read())


def padded(a, extra=13):
    """The same pixels in rows `extra` pixels longer than the picture."""
    wide = np.zeros((a.shape[0], a.shape[1] + extra) + a.shape[2:], np.uint8)
    wide[:, :a.shape[1]] = a
    return wide[:, :a.shape[1]]


def layouts(a):
    return {"slice": a, "padded": padded(np.ascontiguousarray(a)), "contiguous": np.ascontiguousarray(a)}


def segments(records):
    return [(s.name, s.pixelCount, s.center, len(s.lines)) for s in records]


def hough(gray):
    h = nuv.HoughTransform()
    h.setMaxLineCount(8)
    h.setDelta(1.0, np.pi / 180)
    h.setThreshold(40)
    return nuv.lines(h.transform(nuv.canny(gray, 50, 150)))


def line(gray):
    d = nuv.LineDetector()
    d.setThreshold(40)
    d.setSearchStart(10)
    d.setSearchHeight(40)
    return d.findLine(gray, nuv.LineDetector.Vertical)


def match(bgr):
    m = nuv.MatchTemplate()
    m.setImage(bgr)
    return m.match(np.ascontiguousarray(FRAME[300:340, 150:190]))


def segmenter():
    s = nuv.Segmenter()
    s.setColorSegments(CLASSES)
    return s


# name: what it computes from the 3-channel (c) and one-channel (g) forms of one layout
OPERATIONS = {
    "copyRoi": lambda c, g: nuv.copyRoi(nuv.Image(c, roi=(5, 7, 100, 60))),
    "mirrorHorizontal": lambda c, g: nuv.mirrorHorizontal(c),
    "mirrorVertical": lambda c, g: nuv.mirrorVertical(c),
    "mirrorHorizontalAndVertical": lambda c, g: nuv.mirrorHorizontalAndVertical(c),
    "mirror": lambda c, g: nuv.mirror(g, 2),
    "transpose": lambda c, g: nuv.transpose(c),
    "addition": lambda c, g: nuv.addition(c, c[::-1].copy()),
    "convert": lambda c, g: nuv.convert(c, nuv.HSV),
    "thresholdLT": lambda c, g: nuv.thresholdLT(c, 100, 7),
    "thresholdGT": lambda c, g: nuv.thresholdGT(g, 100, 7),
    "inRange": lambda c, g: nuv.inRange(c, [20, 30, 40], [120, 160, 200]),
    "mean": lambda c, g: nuv.mean(c),
    "minmax": lambda c, g: nuv.minmax(g),
    "canny": lambda c, g: nuv.canny(g, 50, 150),
    "labelmarkers": lambda c, g: nuv.labelmarkers(nuv.thresholdLT(g, 128, 0)),
    "labelmarkersinfo": lambda c, g: nuv.labelmarkersinfo(nuv.labelmarkers(nuv.thresholdLT(g, 128, 0))[0], 5),
    "filter.filter": lambda c, g: nuv.filter.filter(g, nuv.filter.PredefindedFilterSobelHoriz3x3, True),
    "filter.sobelHoriz3x3": lambda c, g: nuv.filter.sobelHoriz3x3(c, False),
    "filter.sobelVert3x3": lambda c, g: nuv.filter.sobelVert3x3(g, True),
    "filter.replicateBorder": lambda c, g: nuv.filter.replicateBorder(c, (5, 3, 2, 1)),
    "filter.min": lambda c, g: nuv.filter.min(c, (5, 3)),
    "filter.max": lambda c, g: nuv.filter.max(g, (3, 5)),
    "HoughTransform.transform": lambda c, g: hough(g),
    "LineDetector.findLine": lambda c, g: line(g),
    "MatchTemplate.match": lambda c, g: match(c),
    "Segmenter.segment": lambda c, g: segments(segmenter().segment(c)),
    "Segmenter.doSegmentation": lambda c, g: segments(nuv.segmentList(segmenter().doSegmentation(c))),
}
OPERATIONS.update({name: (lambda n: lambda c, g: getattr(nuv, n)(c if n[0] != "G" else g))(name) for name in (
    "RGBtoBGR", "BGRtoRGB", "HSVtoRGB", "HSVtoBGR", "HLStoRGB", "HLStoBGR", "RGBtoHLS", "RGBtoHSV",
    "BGRtoHSV", "RGBtoYCbCr", "YCbCrToRGB", "YCbCrToBGR", "GrayToRGB", "GrayToBGR", "toGray")})
OPERATIONS.update({name: (lambda n: lambda c, g: getattr(nuv, n)(np.dstack([c, g])))(name)
                   for name in ("BGRAtoBGR", "BGRAtoRGB")})
# Functions that take no pixels.
NOT_ON_PIXELS = {"ippInit", "ippInitCpu", "ippGetEnabledCpuFeatures", "ippGetCpuFeatures", "jumpIndex",
                 "setJumpIndex", "init", "friendlyName", "toString", "segmentListfromString", "imread",
                 "lines", "segmentList"}
TESTED_APART = {"imwrite"}


def plain(value):
    """Results as plain values that compare with ==."""
    if isinstance(value, np.ndarray):
        return ("array", value.shape, value.tobytes())
    if isinstance(value, (tuple, list)):
        return [plain(v) for v in value]
    return value


def test_every_operation_is_in_the_table():
    functions = {n for n, v in vars(nuv).items() if callable(v) and not isinstance(v, type) and not n.startswith("_")}
    functions |= {"filter." + n for n, v in vars(nuv.filter).items() if callable(v) and not isinstance(v, type)}
    missing = functions - set(OPERATIONS) - NOT_ON_PIXELS - TESTED_APART - {"filter.friendlyName"}
    assert not missing


@pytest.mark.parametrize("name", sorted(OPERATIONS))
def test_layouts_agree(name):
    part = FRAME[50:400, 20:600]
    gray = nuv.toGray(FRAME)[50:400, 20:600]
    got = {k: plain(OPERATIONS[name](c, layouts(gray)[k])) for k, c in layouts(part).items()}
    assert got["slice"] == got["contiguous"]
    assert got["padded"] == got["contiguous"]


def test_segmenter_on_a_slice_finds_the_ball_whole():
    part = FRAME[50:400, 20:600]
    assert part.strides[0] != part.shape[1] * 3
    ball = next(s for s in segmenter().segment(part) if s.name == "ball")
    assert (ball.pixelCount, ball.center) == (11929, (150, 250))
    # A contiguous frame is still segmented in place.
    whole = segmenter().doSegmentation(FRAME)
    assert whole.__array_interface__["data"][0] == FRAME.__array_interface__["data"][0]


def test_imwrite_reads_back_every_layout(tmp_path):
    for kind, c in layouts(FRAME[50:400, 20:600]).items():
        nuv.imwrite(str(tmp_path / (kind + ".png")), c)
        np.testing.assert_array_equal(nuv.imread(str(tmp_path / (kind + ".png"))), c)


def test_segmenter_refuses_other_channel_counts():
    with pytest.raises(TypeError, match="3-channel"):
        segmenter().segment(nuv.toGray(FRAME))
