"""Colour classes as the studio edits them, and their undo history.

A class is kept as what was done to it (pixels given, dilation, ranges switched on or off by
hand, a record loaded from a file) rather than as its masks alone, so that removing one
contribution rebuilds the masks the library would compute without it. Every class is an
immutable value; a change makes a new list of classes, which the history keeps.
"""
from dataclasses import dataclass, field, replace
from typing import Optional, Tuple

import numpy as np

import nuv

MAX_CLASSES = 32  # the segmenter's masks are 32-bit words
FORBIDDEN_IN_NAMES = ";\n\r\t"  # ";" separates the fields of a saved record


class StudioError(Exception):
    """A request the studio refuses, with the message the person sees."""

    def __init__(self, message, status=400):
        super().__init__(message)
        self.status = status


@dataclass(frozen=True)
class Sample:
    """Pixels given to a class: a rectangle or a stroke on one frame."""
    kind: str
    where: str  # how the page describes it
    frame: int
    pixels: np.ndarray = field(compare=False, repr=False)  # (n, 3) uint8, in raster order


@dataclass(frozen=True)
class Loaded:
    """A record of a class file: the starting point of a class."""
    argb: int
    index: str  # 192 hexadecimal digits


@dataclass(frozen=True)
class Edit:
    """A range of one channel switched on or off by hand, after the dilation."""
    channel: int
    low: int
    high: int
    on: bool


@dataclass(frozen=True)
class ColourClass:
    name: str
    dilate: int = 0
    channels: int = 7
    loaded: Optional[Loaded] = None
    samples: Tuple[Sample, ...] = ()
    edits: Tuple[Edit, ...] = ()

    def segment(self):
        """The library's segment for this class, built the way nuv_train builds one."""
        segment = nuv.Segment(self.name)
        if self.loaded:
            segment.setMeanColor(self.loaded.argb)
            segment.loadColorIndex(self.loaded.index)
        for sample in self.samples:
            segment.addColors(sample.pixels)
        if self.dilate:
            for channel in range(3):
                segment.setDilate(channel, self.dilate)
            segment.applyDilation()
        if self.edits:
            masks = masks_of(segment.serializeColorIndex())
            for edit in self.edits:
                masks[edit.channel, edit.low:edit.high + 1] = edit.on
            segment.loadColorIndex(index_of(masks))
        segment.loadChannelsUsed(str(self.channels))
        return segment


def masks_of(index):
    """The 3 x 256 booleans of a 192-digit colour index: per channel eight words, values
    0..31 first, the lowest value in the word's lowest bit."""
    words = np.array([int(index[i:i + 8], 16) for i in range(0, 192, 8)], dtype=np.uint32)
    bits = (words[:, None] >> np.arange(32, dtype=np.uint32)) & 1
    return bits.reshape(3, 256).astype(bool)


def index_of(masks):
    words = (masks.reshape(24, 32).astype(np.uint64) << np.arange(32, dtype=np.uint64)).sum(1)
    return "".join(f"{int(w):08x}" for w in words)


def accepted(segment):
    """What the segmenter's table takes from this class: an unused channel takes every value."""
    masks = masks_of(segment.serializeColorIndex())
    for channel in range(3):
        if not segment.channelUsed(channel):
            masks[channel] = True
    return masks


def check_name(name, classes, skip=None):
    name = name.strip() if isinstance(name, str) else ""
    if not name:
        raise StudioError("A class needs a name.")
    if len(name) > 40:
        raise StudioError("A class name has at most 40 characters.")
    if any(c in FORBIDDEN_IN_NAMES for c in name):
        raise StudioError("A class name cannot hold ';' or line breaks: ';' separates the "
                          "fields of a saved class.")
    if any(c.name == name for i, c in enumerate(classes) if i != skip):
        raise StudioError(f"There is a class named {name} already.")
    return name


def from_text(text):
    """The classes of a file in the text form, or a StudioError saying why not."""
    if not text.strip():
        raise StudioError("The class file is empty.")
    try:
        segments = nuv.segmentListfromString(text.strip())
    except Exception as error:  # the library's "Bad conversion"
        raise StudioError("The class file does not parse: a record's second field, the mean "
                          f"colour, is not a number ({error}). Nothing was changed.")
    if not segments:
        raise StudioError("The class file holds no class record the library reads (each is "
                          "name;colour;192 hexadecimal digits;channels). Nothing was changed.")
    if len(segments) > MAX_CLASSES:
        raise StudioError(f"The class file holds {len(segments)} classes; the segmenter takes "
                          f"at most {MAX_CLASSES}. Nothing was changed.")
    return tuple(
        ColourClass(name=s.name(), channels=int(s.serializeChannelsUsed()),
                    loaded=Loaded(argb_of(s.meanColor()), s.serializeColorIndex()))
        for s in segments)


def argb_of(color):
    r, g, b, a = color
    return (a << 24) | (r << 16) | (g << 8) | b


def with_sample(cls, sample):
    return replace(cls, samples=cls.samples + (sample,))


class History:
    """Every state of the class list, with a place in it: undo and redo move the place."""

    LIMIT = 1000

    def __init__(self, classes=()):
        self._states = [tuple(classes)]
        self._place = 0

    @property
    def classes(self):
        return self._states[self._place]

    def push(self, classes):
        del self._states[self._place + 1:]
        self._states.append(tuple(classes))
        if len(self._states) > self.LIMIT:
            del self._states[0]
        self._place = len(self._states) - 1

    def can_undo(self):
        return self._place > 0

    def can_redo(self):
        return self._place + 1 < len(self._states)

    def undo(self):
        if not self.can_undo():
            raise StudioError("Nothing to undo.", 409)
        self._place -= 1

    def redo(self):
        if not self.can_redo():
            raise StudioError("Nothing to redo.", 409)
        self._place += 1
