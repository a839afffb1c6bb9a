"""One studio session: the frames, the classes with their history, the settings, and the one
browser tab allowed to change them. Every method runs under the session's lock, since the
library's segmenter serves one thread at a time."""
import os
import tempfile
import threading
import time
from dataclasses import replace

import numpy as np

import nuv

from . import segmentation as seg
from .classes import (Edit, MAX_CLASSES, ColourClass, History, Sample, StudioError, accepted,
                      check_name, from_text, with_sample)
from .source import Picture, cv2, decode_picture

OTHER_TAB = ("This session is open in another browser tab. Work there, or take the session "
             "over here: the other tab then stops changing it. Nothing is lost; the classes "
             "live in the server.")
TAB_TIMEOUT = 20.0  # seconds without a sign from the owning tab before another may claim


def number(body, key, low, high):
    value = body.get(key)
    if not isinstance(value, int) or isinstance(value, bool) or not low <= value <= high:
        raise StudioError(f"'{key}' must be a whole number from {low} to {high}.")
    return value


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
        mask = np.zeros(frame.shape[:2], np.uint8)
        for p, q in zip(points, points[1:] + points[-1:]):
            cv2.line(mask, tuple(p), tuple(q), 255, 2 * radius + 1)
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

    def frame_png(self):
        with self.lock:
            return png(self.frame())

    def overlay_png(self, what):
        """The classified pixels or the overlaps of the current frame, as a transparent
        layer over it."""
        if what not in ("classified", "overlaps"):
            raise StudioError("The layers are 'classified' and 'overlaps'.", 404)
        with self.lock:
            self.state()
            _, _, (codes, active), pictures = self._cache
            if what not in pictures:
                pictures[what] = png(seg.overlay(codes, active, what))
            return pictures[what]

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


def png(picture):
    ok, data = cv2.imencode(".png", picture, [cv2.IMWRITE_PNG_COMPRESSION, 1])
    return data.tobytes()


# ---------------------------------------------------------------------- the operations
def add_class(s, body):
    classes = s.classes_list()
    if len(classes) >= MAX_CLASSES:
        raise StudioError(f"The segmenter takes at most {MAX_CLASSES} classes.")
    classes.append(ColourClass(check_name(body.get("name"), classes), dilate=s.dilate))
    s.change(classes)


def rename_class(s, body):
    classes, i = s.pick(body)
    classes[i] = replace(classes[i], name=check_name(body.get("name"), classes, skip=i))
    s.change(classes)


def delete_class(s, body):
    classes, i = s.pick(body)
    del classes[i]
    s.change(classes)


def move_class(s, body):
    # The earlier class wins pixels that two classes take, so the order matters.
    classes, i = s.pick(body)
    j = number(body, "to", 0, len(classes) - 1)
    classes.insert(j, classes.pop(i))
    s.change(classes)


def add_sample(s, body):
    classes, i = s.pick(body)
    classes[i] = with_sample(classes[i], s.sample(body))
    s.change(classes)


def remove_sample(s, body):
    classes, i = s.pick(body)
    samples = classes[i].samples
    if not samples:
        raise StudioError(f"The class {classes[i].name} has no pixels given to remove.")
    k = number(body, "sample", 0, len(samples) - 1)
    classes[i] = replace(classes[i], samples=samples[:k] + samples[k + 1:])
    s.change(classes)


def set_dilate(s, body):
    classes, i = s.pick(body)
    classes[i] = replace(classes[i], dilate=number(body, "dilate", -255, 255))
    s.change(classes)


def edit_mask(s, body):
    classes, i = s.pick(body)
    channel = number(body, "channel", 0, 2)
    low, high = number(body, "low", 0, 255), number(body, "high", 0, 255)
    if not isinstance(body.get("on"), bool):
        raise StudioError("'on' is true (take the range) or false (drop it).")
    edit = Edit(channel, min(low, high), max(low, high), body["on"])
    classes[i] = replace(classes[i], edits=classes[i].edits + (edit,))
    s.change(classes)


def use_channel(s, body):
    classes, i = s.pick(body)
    bit = 1 << number(body, "channel", 0, 2)
    used = body.get("used")
    if not isinstance(used, bool):
        raise StudioError("'used' is true or false.")
    channels = classes[i].channels | bit if used else classes[i].channels & ~bit
    classes[i] = replace(classes[i], channels=channels)
    s.change(classes)


def undo(s, body):
    s.history.undo()


def redo(s, body):
    s.history.redo()


def load_classes(s, body):
    text = body.get("text")
    if not isinstance(text, str):
        raise StudioError("'text' holds the class file's text.")
    s.change(from_text(text))


def save_classes(s, body):
    text = s.text()
    folder = os.path.dirname(s.out_path)
    try:
        # Written beside the file and renamed over it, so a failed write leaves the old one.
        handle, temporary = tempfile.mkstemp(dir=folder, prefix=".nuv_studio_")
        with os.fdopen(handle, "w") as out:
            out.write(text)
        os.replace(temporary, s.out_path)
    except OSError as error:
        raise StudioError(f"Cannot write {s.out_path}: {error.strerror}. The classes are "
                          "still here; save again once the folder is writable.", 500)
    return {"saved": s.out_path, "text": text}


def set_frame(s, body):
    index = number(body, "frame", 0, s.source.count - 1)
    s.source.frame(index)  # a frame past the video's real end is refused here
    s.frame_index = index


def set_run(s, body):
    run = body.get("minRun")
    if run not in ("auto", 2, 4):
        raise StudioError("The segmenter's minimum run is 2 or 4 ('auto' picks it by the "
                          "frame's width, as the segmenter does).")
    s.min_run = run


def open_picture(s, body):
    s.source = Picture(body["name"], decode_picture(body["data"]))
    s.frame_index = 0


OPERATIONS = {
    "class/add": add_class, "class/rename": rename_class, "class/delete": delete_class,
    "class/move": move_class, "class/sample": add_sample, "class/unsample": remove_sample,
    "class/dilate": set_dilate, "class/mask": edit_mask, "class/channel": use_channel,
    "undo": undo, "redo": redo, "classes/load": load_classes, "classes/save": save_classes,
    "frame": set_frame, "settings": set_run, "picture": open_picture,
}
