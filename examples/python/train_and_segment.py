#!/usr/bin/python3
"""Trains colour classes from rectangles of a picture, as nuv_train does, and segments the
picture mirrored left to right: each class is found again at its mirrored place.

    PYTHONPATH=<build>/python /usr/bin/python3 train_and_segment.py data/frame.png

nuv.imread decodes the picture (through OpenCV's codecs) into a BGR array; the library itself
reads no file format.
"""
import sys

import nuv

# name: (x, y, width, height), the rectangles of the README's nuv_train line
RECTANGLES = {
    "ball": (140, 270, 60, 60),
    "box": (380, 110, 120, 80),
    "disc": (450, 340, 40, 40),
    "bar": (285, 394, 30, 10),
    "cone": (130, 110, 40, 30),
}


def train(picture, dilate=3):
    classes = []
    for name, (x, y, w, h) in RECTANGLES.items():
        segment = nuv.Segment(name)
        # Channels are the picture's bytes in order: B, G, R.
        segment.addColors(picture[y:y + h, x:x + w])
        for channel in range(3):
            segment.setDilate(channel, dilate)
        segment.applyDilation()
        classes.append(segment)
    return classes


def main(path):
    nuv.ippInit()
    picture = nuv.imread(path)
    classes = train(picture)
    print(f"{len(classes)} classes trained from {path}, slot {nuv.jumpIndex()}")

    segmenter = nuv.Segmenter()
    # Through the text form, as a classes file would bring them.
    segmenter.setColorSegments(nuv.segmentListfromString(nuv.toString(classes)))
    mirrored = nuv.mirrorVertical(picture)
    width = picture.shape[1]
    missing = 0
    for found in segmenter.segment(mirrored):
        x, y, w, h = RECTANGLES[found.name]
        inside = width - x - w <= found.center[0] < width - x and y <= found.center[1] < y + h
        missing += not inside
        print(f"{found.name:5} {found.pixelCount:6} pixels, centre {found.center}, "
              f"{len(found.lines)} runs{'' if inside else ', NOT where it was trained'}")
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1] if len(sys.argv) > 1 else "data/frame.png"))
