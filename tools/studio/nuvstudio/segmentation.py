"""The segmenter's answer for one frame, and what the page draws from the class table."""
import time

import numpy as np

import nuv

from .classes import accepted

PALETTE = ["#ff3b30", "#34c759", "#0a84ff", "#ffcc00", "#af52de", "#ff9500", "#5ac8fa",
           "#ff2d55", "#a2845e", "#30d158", "#64d2ff", "#bf5af2"]


def natural_run(width):
    """The minimum run the segmenter chooses by itself for frames of this width."""
    return 4 if width > 349 else 2


def segment(frame, segments, run):
    """The records of the segmenter for this frame with this minimum run, and the time per
    frame of doSegmentation at the selected slot (median of a few calls)."""
    segmenter = nuv.Segmenter()
    segmenter.setColorSegments(segments)
    # The segmenter reads its minimum run before it sizes itself for a new frame size, and
    # sizing picks 2 up to a width of 349 and 4 beyond: a sizing for such a width just before
    # the frame gives that run to the frame.
    segmenter.setupSegmentation(349 if run == 2 else 350, 0)
    found = segmenter.segment(frame)
    return found, time_per_frame(segmenter, frame)


def time_per_frame(segmenter, frame, repeats=5):
    times = []
    for _ in range(repeats):
        start = time.perf_counter()
        segmenter.doSegmentation(frame)
        times.append(time.perf_counter() - start)
    return sorted(times)[len(times) // 2] * 1000.0


def region(record):
    """What the page draws of a class's largest region."""
    if record.pixelCount == 0:
        return {"pixelCount": 0, "center": None, "lines": [], "box": None}
    lines = [(x0, y, x1) for x0, y, x1, _ in record.lines]
    xs0, ys, xs1 = zip(*lines)
    box = [min(xs0), min(ys), max(xs1) - min(xs0) + 1, max(ys) - min(ys) + 1]
    return {"pixelCount": record.pixelCount, "center": list(record.center), "lines": lines,
            "box": box}


def table(masks):
    """The segmenter's table: entry (channel, value) has bit k when class k takes the value."""
    codes = np.zeros((3, 256), np.uint32)
    for k, m in enumerate(masks):
        codes |= m.astype(np.uint32) << np.uint32(k)
    return codes


def classify(frame, masks):
    """Per pixel, the bits of the classes whose three channels all take it."""
    codes = table(masks)
    return codes[0][frame[..., 0]] & codes[1][frame[..., 1]] & codes[2][frame[..., 2]]


def overlaps(masks, codes, names):
    """Pairs of classes that take common colours: how many colours, and how many pixels of
    this frame both claim (the earlier class in the list gets them)."""
    pairs = []
    for a in range(len(masks)):
        for b in range(a + 1, len(masks)):
            per_channel = [int(np.count_nonzero(masks[a][c] & masks[b][c])) for c in range(3)]
            colours = per_channel[0] * per_channel[1] * per_channel[2]
            if colours == 0:
                continue
            both = np.uint32((1 << a) | (1 << b))
            pixels = int(np.count_nonzero((codes & both) == both))
            pairs.append({"a": names[a], "b": names[b], "colours": colours,
                          "perChannel": per_channel, "pixels": pixels})
    return pairs


def overlay(codes, colours, what):
    """An RGBA layer: the classified pixels tinted in their winning class's colour (colours[k]
    is the palette place of bit k), or the pixels that two classes take, in magenta."""
    out = np.zeros(codes.shape + (4,), np.uint8)
    if what == "overlaps":
        out[(codes & (codes - np.uint32(1))) != 0] = (255, 0, 255, 230)
        return out
    for k in reversed(range(len(colours))):  # the lowest bit wins, as in the segmenter
        rgb = PALETTE[colours[k] % len(PALETTE)]
        rgba = (int(rgb[1:3], 16), int(rgb[3:5], 16), int(rgb[5:7], 16), 120)
        out[(codes >> np.uint32(k)) & 1 == 1] = rgba
    return out


def active(segments):
    """Indexes of the classes the segmenter can find: each used channel takes some value."""
    return [i for i, s in enumerate(segments) if accepted(s).any(axis=1).all()]


def histograms(pixels):
    """Per channel, how many of these (n, 3) pixels have each value."""
    if pixels.size == 0:
        return [[0] * 256 for _ in range(3)]
    return [np.bincount(pixels[:, c], minlength=256).tolist() for c in range(3)]
