"""One studio session: the frames, the classes with their history, the settings, and the one
browser tab allowed to change them. Every method runs under the session's lock, since the
library's segmenter serves one thread at a time."""
import os
import threading
import time

import numpy as np

import nuv

from . import segmentation as seg
from .classes import History, Sample, StudioError, accepted
from .operations import OPERATIONS, number
from .source import cv2

OTHER_TAB = ("This session is open in another browser tab. Work there, or take the session "
             "over here: the other tab then stops changing it. Nothing is lost; the classes "
             "live in the server.")
TAB_TIMEOUT = 20.0  # seconds without a sign from the owning tab before another may claim


class Session:
    def __init__(self, source, classes=(), out_path="classes.txt", dilate=3):
        self.lock = threading.RLock()
        self.source = source
        self.frame_index = 0
        self.history = History(classes)
        self.min_run = "auto"
        self.out_path = os.path.abspath(out_path)
        self.dilate = dilate
        self.version = 0
        self._owner = None
        self._seen = 0.0
        self._cache = None
        self.slot = nuv.jumpIndex()

    # ------------------------------------------------------------------ the owning tab
    def claim(self, tab, force=False):
        with self.lock:
            now = time.monotonic()
            if self._owner not in (None, tab) and not force and now - self._seen < TAB_TIMEOUT:
                raise StudioError(OTHER_TAB, 409)
            self._owner, self._seen = tab, now

    def require_owner(self, tab):
        if tab is None or tab != self._owner:
            raise StudioError(OTHER_TAB, 409)
        self._seen = time.monotonic()

    def ping(self, tab):
        with self.lock:
            if tab == self._owner:
                self._seen = time.monotonic()
            return {"owner": tab == self._owner}

    # ------------------------------------------------------------------ changes
    def apply(self, tab, op, body):
        with self.lock:
            action = OPERATIONS.get(op)
            if action is None:
                raise StudioError(f"No operation {op}.", 404)
            self.require_owner(tab)
            reply = action(self, body)
            self.version += 1
            return reply if reply is not None else self.state()

    def change(self, classes):
        self.history.push(classes)

    def classes_list(self):
        return list(self.history.classes)

    def pick(self, body):
        classes = self.classes_list()
        if not classes:
            raise StudioError("There is no class yet: add one first.")
        index = number(body, "index", 0, len(classes) - 1)
        return classes, index

    def frame(self):
        return self.source.frame(self.frame_index)

    def sample(self, body):
        frame = self.frame()
        height, width = frame.shape[:2]
        if "rect" in body:
            rect = body["rect"]
            if (not isinstance(rect, list) or len(rect) != 4
                    or not all(isinstance(v, int) and not isinstance(v, bool) for v in rect)):
                raise StudioError("A rectangle is [x, y, width, height] in whole pixels.")
            x, y, w, h = rect
            if w < 1 or h < 1 or x < 0 or y < 0 or x + w > width or y + h > height:
                raise StudioError(f"The rectangle {x},{y},{w},{h} does not lie inside the "
                                  f"picture ({width} x {height}); nothing was added.")
            pixels = frame[y:y + h, x:x + w].reshape(-1, 3)
            return Sample("rect", f"{x},{y},{w},{h}", self.frame_index, pixels.copy())
        return self.stroke(body.get("stroke"), frame)

    def stroke(self, stroke, frame):
        if not isinstance(stroke, dict):
            raise StudioError("A sample is a 'rect' or a 'stroke'.")
        radius = number(stroke, "radius", 0, 200)
        points = stroke.get("points")
        if (not isinstance(points, list) or not 1 <= len(points) <= 20000 or not all(
                isinstance(p, list) and len(p) == 2 and all(isinstance(v, int) for v in p)
                and all(-100000 < v < 100000 for v in p) for p in points)):
            raise StudioError("A stroke is 1 to 20000 points [x, y] in whole pixels.")
        mask = brush(frame.shape[:2], points, radius)
        count = int(np.count_nonzero(mask))
        if count == 0:
            raise StudioError("The stroke touches no pixel of the picture; nothing was added.")
        x, y = points[0]
        where = f"{len(points)} points from {x},{y}, radius {radius}"
        return Sample("stroke", where, self.frame_index, frame[mask > 0].copy())

    # ------------------------------------------------------------------ what the page sees
    def state(self):
        with self.lock:
            if self._cache is None or self._cache[0] != self.version:
                self._cache = (self.version,) + self._compute() + ({},)
            return dict(self._cache[1], version=self.version,
                        undo=self.history.can_undo(), redo=self.history.can_redo())

    def _compute(self):
        frame = self.frame()
        classes = self.history.classes
        segments = [c.segment() for c in classes]
        masks = [accepted(s) for s in segments]
        active = seg.active(segments)
        run = seg.natural_run(frame.shape[1]) if self.min_run == "auto" else self.min_run
        result = {"run": run, "ms": None, "regions": [None] * len(classes)}
        if active:
            found, ms = seg.segment(frame, [segments[i] for i in active], run)
            result["ms"] = round(ms, 3)
            for i, record in zip(active, found):
                result["regions"][i] = seg.region(record)
        codes = seg.classify(frame, [masks[i] for i in active])
        means = [tuple(s.meanColor()[:3]) for s in segments]
        return {
            "source": {"kind": self.source.kind, "name": self.source.name,
                       "width": frame.shape[1], "height": frame.shape[0],
                       "count": self.source.count, "fps": self.source.fps,
                       "frame": self.frame_index},
            "slot": self.slot, "palette": seg.PALETTE, "out": self.out_path,
            "settings": {"minRun": self.min_run, "natural": seg.natural_run(frame.shape[1]),
                         "dilate": self.dilate},
            "classes": [self._describe(c, s, m, i in active)
                        for i, (c, s, m) in enumerate(zip(classes, segments, masks))],
            "result": result,
            "overlaps": seg.overlaps([masks[i] for i in active], codes,
                                     [classes[i].name for i in active]),
            "sameMean": [[classes[a].name, classes[b].name] for a in active for b in active
                         if a < b and means[a] == means[b]],
            "histogram": seg.histograms(frame.reshape(-1, 3)),
        }, (codes, active)

    @staticmethod
    def _describe(cls, segment, masks, active):
        pixels = [s.pixels for s in cls.samples]
        return {
            "name": cls.name, "dilate": cls.dilate, "channels": cls.channels,
            "loaded": cls.loaded is not None, "edits": len(cls.edits), "active": active,
            "mean": list(segment.meanColor()[:3]),
            "masks": ["".join("1" if v else "0" for v in m) for m in masks],
            "samples": [{"kind": s.kind, "where": s.where, "frame": s.frame,
                         "count": len(s.pixels)} for s in cls.samples],
            "histogram": seg.histograms(np.concatenate(pixels) if pixels else
                                        np.zeros((0, 3), np.uint8)),
        }

    def frame_pixels(self):
        """The frame as RGBA bytes, row after row, which the page draws as they are."""
        with self.lock:
            return cv2.cvtColor(self.frame(), cv2.COLOR_BGR2RGBA).tobytes()

    def layer_pixels(self, what):
        """The classified pixels or the overlaps of the current frame, as an RGBA layer
        over it."""
        if what not in ("classified", "overlaps"):
            raise StudioError("The layers are 'classified' and 'overlaps'.", 404)
        with self.lock:
            self.state()
            _, _, (codes, active), layers = self._cache
            if what not in layers:
                layers[what] = seg.overlay(codes, active, what).tobytes()
            return layers[what]

    def text(self):
        """The classes in the library's text form, as nuv_train writes them."""
        classes = self.history.classes
        if not classes:
            raise StudioError("There is no class to save: add one first.")
        segments = [c.segment() for c in classes]
        for c, s in zip(classes, segments):
            if not accepted(s).any(axis=1).all():
                raise StudioError(f"The class {c.name} takes no colour, so the segmenter could "
                                  "never find it: give it pixels or delete it. Nothing was "
                                  "saved.")
        return nuv.toString(segments) + "\n"


def brush(shape, points, radius):
    """The pixels no farther than the radius from the path through the points."""
    height, width = shape
    mask = np.zeros(shape, bool)
    for (px, py), (qx, qy) in zip(points, points[1:] or points):
        x0, x1 = max(0, min(px, qx) - radius), min(width - 1, max(px, qx) + radius)
        y0, y1 = max(0, min(py, qy) - radius), min(height - 1, max(py, qy) + radius)
        if x0 > x1 or y0 > y1:
            continue
        ys, xs = np.mgrid[y0:y1 + 1, x0:x1 + 1]
        dx, dy = qx - px, qy - py
        # The nearest point of the segment to each pixel, as a fraction of the way along it.
        t = np.clip(((xs - px) * dx + (ys - py) * dy) / max(1, dx * dx + dy * dy), 0, 1)
        near = (xs - px - t * dx) ** 2 + (ys - py - t * dy) ** 2 <= radius * radius
        mask[y0:y1 + 1, x0:x1 + 1] |= near
    return mask

