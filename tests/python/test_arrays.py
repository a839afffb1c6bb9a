"""Arrays in and out: plain NumPy models of the simple operations on strided views, pixels
shared without copies, lifetimes, the log as warnings and refused input."""
import gc
import threading
import warnings
import weakref

import numpy as np
import pytest

import nuv

rng = np.random.default_rng(7)
FRAME = rng.integers(0, 256, (37, 53, 3), dtype=np.uint8)
VIEW = FRAME[3:30, 5:40]  # rows 159 bytes apart, 105 bytes of pixels: a padded step
GRAY = np.ascontiguousarray(FRAME[..., 1])


@pytest.mark.parametrize("source", [VIEW, VIEW[::-1], np.asfortranarray(VIEW)], ids=["padded", "negative", "fortran"])
def test_plain_models(source):
    x, y, w, h = 4, 2, 20, 9
    expected = {
        "mirrorHorizontal": source[::-1],
        "mirrorVertical": source[:, ::-1],
        "mirrorHorizontalAndVertical": source[::-1, ::-1],
        "transpose": source.transpose(1, 0, 2),
        "BGRtoRGB": source[..., ::-1],
    }
    for name, want in expected.items():
        np.testing.assert_array_equal(getattr(nuv, name)(source), want, err_msg=name)
    np.testing.assert_array_equal(nuv.thresholdLT(source, 100, 7), np.where(source < 100, 7, source))
    np.testing.assert_array_equal(nuv.copyRoi(nuv.Image(source, roi=(x, y, w, h))), source[y:y + h, x:x + w])
    other = np.roll(source, 1, axis=1)
    np.testing.assert_array_equal(nuv.addition(source, other), np.round((source.astype(int) + other) / 2))


def test_gray_models():
    windows = np.lib.stride_tricks.sliding_window_view(GRAY, (3, 5))
    np.testing.assert_array_equal(nuv.filter.min(GRAY, (5, 3)), windows.min(axis=(2, 3)))
    np.testing.assert_array_equal(nuv.filter.max(GRAY, (5, 3)), windows.max(axis=(2, 3)))
    assert nuv.mean(GRAY) == [int(GRAY.sum()) // GRAY.size]
    assert nuv.minmax(GRAY) == ([GRAY.min()], [GRAY.max()])
    np.testing.assert_array_equal(nuv.inRange(GRAY, [50], [180]), np.where((GRAY >= 50) & (GRAY <= 180), 255, 0))
    blobs = np.zeros((20, 30), np.uint8)
    blobs[2:5, 3:9] = 9      # 18 pixels, centre (5, 3)
    blobs[10:18, 20:24] = 9  # 32 pixels, centre (21, 13)
    labels, count = nuv.labelmarkers(blobs)
    assert count == 2 and set(np.unique(labels)) == {0, 1, 2}
    assert nuv.labelmarkersinfo(labels, 1) == ([(5, 3), (21, 13)], [18, 32])
    assert nuv.labelmarkersinfo(labels, 20) == ([(21, 13)], [32])


def test_slots_give_the_same_bytes():
    nuv.ippInit()
    selected = nuv.jumpIndex()
    try:
        at = {}
        for slot in (0, selected):
            nuv.setJumpIndex(slot)
            assert nuv.jumpIndex() == slot
            at[slot] = nuv.thresholdGT(nuv.transpose(VIEW), 99, 3)
        np.testing.assert_array_equal(at[0], at[selected])
        np.testing.assert_array_equal(at[0], np.where(VIEW > 99, 3, VIEW).transpose(1, 0, 2))
    finally:
        nuv.setJumpIndex(selected)


def test_no_copies():
    frame = np.ascontiguousarray(np.tile(FRAME, (4, 4, 1)))
    address = frame.__array_interface__["data"][0]
    assert nuv.Image(frame).address == address
    assert nuv.Image(VIEW).address == VIEW.__array_interface__["data"][0]
    assert nuv.Image(VIEW[::-1]).address != VIEW[::-1].__array_interface__["data"][0]
    # The segmenter's result is the frame's own pixels with the records attached.
    segmenter = nuv.Segmenter()
    segmenter.setColorSegments([nuv.Segment("any")])
    result = segmenter.doSegmentation(frame)
    assert result.__array_interface__["data"][0] == address and not result.flags.writeable
    assert [s.name for s in nuv.segmentList(result)] == ["any"]
    # A computed result is a writable view of the result image's pixels.
    mirrored = nuv.mirrorVertical(frame)
    assert isinstance(mirrored.base, nuv.Image) and mirrored.flags.writeable and not mirrored.flags.owndata
    assert mirrored.__array_interface__["data"][0] == mirrored.base.address


def test_lifetimes():
    frame = FRAME.copy()
    gone = weakref.ref(frame)
    image = nuv.Image(frame)
    shared = nuv.copyRoi(image)  # the whole region: the same handle, the same pixels
    del frame
    gc.collect()
    assert gone() is not None
    del image
    gc.collect()
    np.testing.assert_array_equal(shared, FRAME)
    # The last handle goes on another thread; the array is given back there.
    worker = threading.Thread(target=lambda box: box.clear(), args=([shared],))
    del shared
    worker.start()
    worker.join()
    gc.collect()
    assert gone() is None
    result = nuv.transpose(FRAME.copy())[2:5]
    gc.collect()
    np.testing.assert_array_equal(result, FRAME.transpose(1, 0, 2)[2:5])


def test_log_as_warnings():
    with pytest.warns(nuv.NuvWarning, match="single channel"):
        assert nuv.canny(FRAME, 10, 20) is None
    with warnings.catch_warnings():
        warnings.simplefilter("error", nuv.NuvWarning)
        with pytest.raises(nuv.NuvWarning, match="not implemented"):
            nuv.convert(FRAME, nuv.HLS)
    assert nuv.canny(GRAY, 10, 20).shape == GRAY.shape


@pytest.mark.parametrize("bad", [GRAY.astype(np.float32), GRAY[0], np.zeros((4, 4, 2), np.uint8), [[1, 2]], None])
def test_refused_arrays(bad):
    with pytest.raises(TypeError, match="uint8 arrays"):
        nuv.mean(bad)


def test_refused_arguments():
    with pytest.raises(TypeError, match="format HSV has 3 channels"):
        nuv.Image(GRAY, format=nuv.HSV)
    with pytest.raises(TypeError, match="reads 4-channel"):
        nuv.BGRAtoBGR(FRAME)
    with pytest.raises(ValueError):
        nuv.mirror(FRAME, 3)
    with pytest.raises(IndexError):
        nuv.Segment().setDilate(3, 1)


def test_classes_from_pixels_and_text():
    ball = nuv.Segment("ball")
    assert ball.addColors(FRAME[:4, :4]) == 16 and ball.accepts(0, FRAME[0, 0, 0])
    again = nuv.segmentListfromString(nuv.toString([ball]))
    assert again == [ball] and again[0].name() == "ball"
    assert again[0].serializeColorIndex() == ball.serializeColorIndex()
