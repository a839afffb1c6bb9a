"""Where the frames come from: one picture, or the frames of a video file."""
import os
from collections import OrderedDict

import numpy as np

from .classes import StudioError

try:  # OpenCV's Python binding decodes videos and uploaded pictures
    import cv2
except ImportError:  # pragma: no cover - a picture file still opens through nuv.imread
    cv2 = None

import nuv


def decode_picture(data):
    """A BGR array of an encoded picture, or a StudioError."""
    if cv2 is None:
        raise StudioError("Opening pictures from the page needs python3-opencv.")
    picture = cv2.imdecode(np.frombuffer(data, np.uint8), cv2.IMREAD_COLOR)
    if picture is None or picture.size == 0:
        raise StudioError("That file is not a picture OpenCV can read; the picture in view "
                          "stays.")
    return check_size(np.ascontiguousarray(picture))


def check_size(frame):
    # A run of the segmenter holds at most 65535 pixels.
    if frame.shape[1] > 65535:
        raise StudioError("Pictures wider than 65535 pixels are beyond the segmenter.")
    return frame


class Picture:
    kind = "picture"

    def __init__(self, name, frame):
        self.name = name
        self.count = 1
        self.fps = 0.0
        self._frame = frame

    @classmethod
    def open(cls, path):
        try:
            frame = nuv.imread(path)
        except ValueError:
            raise StudioError(f"Cannot read the picture {path}: not a file OpenCV decodes.")
        return cls(os.path.basename(path), check_size(frame))

    def frame(self, index):
        return self._frame


class Video:
    """Frames decoded on demand; the last few stay, so stepping back is cheap."""
    kind = "video"
    KEEP = 48

    def __init__(self, path):
        if cv2 is None:
            raise StudioError("Videos need python3-opencv.")
        self.name = os.path.basename(path)
        self._capture = cv2.VideoCapture(path)
        self._next = 0
        self._kept = OrderedDict()
        first = self._read(0) if self._capture.isOpened() else None
        if first is None:
            raise StudioError(f"Cannot read the video {path}: OpenCV decodes no frame of it.")
        self.count = max(1, int(self._capture.get(cv2.CAP_PROP_FRAME_COUNT)))
        self.fps = float(self._capture.get(cv2.CAP_PROP_FPS) or 0.0)

    def _read(self, index):
        if index != self._next:
            self._capture.set(cv2.CAP_PROP_POS_FRAMES, index)
        ok, frame = self._capture.read()
        self._next = index + 1
        if not ok or frame is None:
            return None
        frame = check_size(np.ascontiguousarray(frame))
        self._kept[index] = frame
        while len(self._kept) > self.KEEP:
            self._kept.popitem(last=False)
        return frame

    def frame(self, index):
        if index in self._kept:
            self._kept.move_to_end(index)
            return self._kept[index]
        frame = self._read(index)
        if frame is None:
            # The container's count was too high: the last frame read is the real end.
            self.count = max(1, min(self.count, index))
            raise StudioError(f"The video ends before frame {index + 1}.")
        return frame


def open_source(image=None, video=None):
    if video:
        return Video(video)
    return Picture.open(image)
