# The type stubs of the package nuv, written by python/make_stubs.py from the module.
# Do not edit: run `make stubs` after changing the binding.
from typing import ClassVar, List, Optional, Tuple, overload

import numpy

from . import filter as filter

class Format:
    """Pixel formats; the numbers are stable."""
    FormatNone: ClassVar[Format]
    RGB: ClassVar[Format]
    BGR: ClassVar[Format]
    BGRA: ClassVar[Format]
    Gray: ClassVar[Format]
    FormatOther: ClassVar[Format]
    HSV: ClassVar[Format]
    YCbCr: ClassVar[Format]
    HLS: ClassVar[Format]
    __members__: ClassVar[dict]
    def __init__(self, value: int) -> None: ...
    def __int__(self) -> int: ...
    def __index__(self) -> int: ...
    def __eq__(self, other: object) -> bool: ...
    def __hash__(self) -> int: ...
    @property
    def name(self) -> str: ...
    @property
    def value(self) -> int: ...

FormatNone: Format

RGB: Format

BGR: Format

BGRA: Format

Gray: Format

FormatOther: Format

HSV: Format

YCbCr: Format

HLS: Format

class NuvWarning(UserWarning):
    """A line of nuv's log: a refused argument or an unsupported format."""

class Image:
    """A handle to an image's pixels and attachments."""
    def __init__(self, array: numpy.ndarray, format: Optional[Format] = ..., roi: Optional[Tuple[int, int, int, int]] = ...) -> None:
        """An image over the array's pixels, in the format given or the one its channels imply."""
    @property
    def address(self) -> int:
        """The address of the first pixel"""
    @property
    def step(self) -> int:
        """The distance of rows in bytes"""
    @property
    def width(self) -> int:
        """Pixels in a row"""
    @property
    def height(self) -> int:
        """Rows"""
    @property
    def channels(self) -> int:
        """Bytes a pixel"""
    @property
    def format(self) -> Format:
        """The pixel format"""
    @property
    def isNull(self) -> bool:
        """Whether the image has no pixels"""
    @property
    def roi(self) -> Tuple[int, int, int, int]:
        """(x, y, w, h), cut to the image; None resets to the whole image"""
    @roi.setter
    def roi(self, arg1: Optional[Tuple[int, int, int, int]]) -> None: ...
    def hasRoi(self) -> bool:
        """Whether a region of interest is set"""
    @property
    def array(self) -> numpy.ndarray | None:
        """The pixels as a read-only array, without copying"""
    def __repr__(self) -> str: ...

def lines(image: numpy.ndarray | Image) -> List[Tuple[int, int, int, int]]:
    """The overlay lines of a nuv.Image or of an array nuv returned, as (x0, y0, x1, y1)"""

def segmentList(image: numpy.ndarray | Image) -> List[nuv::core::image::Segment]:
    """The segment records of a nuv.Image or of an array nuv returned"""

def copyRoi(image: numpy.ndarray | Image) -> numpy.ndarray | None:
    """The region of interest of a 3-channel image."""

def mirrorHorizontal(image: numpy.ndarray | Image) -> numpy.ndarray | None:
    """The region upside down."""

def mirrorVertical(image: numpy.ndarray | Image) -> numpy.ndarray | None:
    """The region reversed left to right."""

def mirrorHorizontalAndVertical(image: numpy.ndarray | Image) -> numpy.ndarray | None:
    """The region turned by half a turn."""

def transpose(image: numpy.ndarray | Image) -> numpy.ndarray | None:
    """The region with rows and columns swapped."""

def mirror(image: numpy.ndarray | Image, axis: int) -> numpy.ndarray | None:
    """The region mirrored about axis 0 (upside down), 1 or 2 (both)."""

def addition(a: numpy.ndarray | Image, b: numpy.ndarray | Image) -> numpy.ndarray | None:
    """The rounded mean of two images of one description."""

def convert(image: numpy.ndarray | Image, format: Format) -> numpy.ndarray | None:
    """The region in another format; None where no conversion exists."""

def RGBtoBGR(image: numpy.ndarray | Image) -> numpy.ndarray | None:
    """RGB pixels with red and blue swapped, as BGR."""

def BGRtoRGB(image: numpy.ndarray | Image) -> numpy.ndarray | None:
    """BGR pixels with blue and red swapped, as RGB."""

def HSVtoRGB(image: numpy.ndarray | Image) -> numpy.ndarray | None:
    """HSV pixels as RGB."""

def HSVtoBGR(image: numpy.ndarray | Image) -> numpy.ndarray | None:
    """HSV pixels as BGR."""

def HLStoRGB(image: numpy.ndarray | Image) -> numpy.ndarray | None:
    """HLS pixels as RGB."""

def HLStoBGR(image: numpy.ndarray | Image) -> numpy.ndarray | None:
    """HLS pixels as BGR."""

def RGBtoHLS(image: numpy.ndarray | Image) -> numpy.ndarray | None:
    """RGB pixels as HLS."""

def RGBtoHSV(image: numpy.ndarray | Image) -> numpy.ndarray | None:
    """RGB pixels as HSV."""

def BGRtoHSV(image: numpy.ndarray | Image) -> numpy.ndarray | None:
    """BGR pixels as HSV."""

def RGBtoYCbCr(image: numpy.ndarray | Image) -> numpy.ndarray | None:
    """RGB pixels as YCbCr."""

def YCbCrToRGB(image: numpy.ndarray | Image) -> numpy.ndarray | None:
    """YCbCr pixels as RGB."""

def YCbCrToBGR(image: numpy.ndarray | Image) -> numpy.ndarray | None:
    """YCbCr pixels as BGR."""

def GrayToRGB(image: numpy.ndarray | Image) -> numpy.ndarray | None:
    """Gray pixels as RGB, the byte in all three channels."""

def GrayToBGR(image: numpy.ndarray | Image) -> numpy.ndarray | None:
    """Gray pixels as BGR (stamped RGB: the channels are equal)."""

def toGray(image: numpy.ndarray | Image) -> numpy.ndarray | None:
    """Three bytes a pixel read as R, G, B, as Gray."""

def BGRAtoBGR(image: numpy.ndarray | Image) -> numpy.ndarray | None:
    """BGRA pixels as BGR: alpha is dropped."""

def BGRAtoRGB(image: numpy.ndarray | Image) -> numpy.ndarray | None:
    """BGRA pixels as RGB: alpha is dropped, blue and red swapped."""

def thresholdLT(image: numpy.ndarray | Image, threshold: int, value: int) -> numpy.ndarray | None:
    """Bytes below the threshold become value."""

def thresholdGT(image: numpy.ndarray | Image, threshold: int, value: int) -> numpy.ndarray | None:
    """Bytes above the threshold become value."""

def inRange(image: numpy.ndarray | Image, lower: List[int], upper: List[int]) -> numpy.ndarray | None:
    """A Gray mask: 255 where every channel is in its bounds."""

def mean(image: numpy.ndarray | Image) -> List[int]:
    """The truncated mean of each channel of the region."""

def minmax(image: numpy.ndarray | Image) -> Tuple[List[int], List[int]]:
    """(min, max) per channel of the region."""

def canny(image: numpy.ndarray | Image, threshold1: int, threshold2: int) -> numpy.ndarray | None:
    """Canny edges of a one-channel region."""

def labelmarkers(image: numpy.ndarray | Image) -> Tuple[numpy.ndarray | None, int]:
    """(labels, number of components) of a Gray region."""

def labelmarkersinfo(labels: numpy.ndarray | Image, minSize: int) -> Tuple[List[Tuple[int, int]], List[int]]:
    """(centres, pixel counts) of the labels of at least minSize."""

def friendlyName(format: Format, channel: int = ...) -> str:
    """The format's name, or with a channel number that channel's name."""

class Segment:
    """A trained colour class of the segmenter."""
    @overload
    def __init__(self) -> None:
        """A class without name that accepts nothing."""
    @overload
    def __init__(self, name: str) -> None:
        """A class of this name that accepts nothing."""
    def name(self) -> str:
        """The class's name."""
    def setName(self, name: str) -> None:
        """Names the class."""
    def meanColor(self) -> Tuple[int, int, int, int]:
        """The mean colour of the trained pixels."""
    def setMeanColor(self, color: Tuple[int, int, int, int]) -> None:
        """Leaves the colour count alone, so a later addColor still averages with the old count."""
    def channelUsed(self, channel: int) -> bool:
        """Whether the channel takes part; a channel not used accepts every value."""
    def setChannelUsed(self, channel: int, used: bool) -> None:
        """Makes the channel take part or not."""
    def accepts(self, channel: int, value: int) -> bool:
        """Whether the class accepts this byte in this channel."""
    def getDilate(self, channel: int) -> int:
        """Pending dilation of a channel: positive grows the accepted set, negative shrinks it."""
    def setDilate(self, channel: int, amount: int) -> None:
        """Only stores the amount; applyDilation does the work."""
    def applyDilation(self) -> None:
        """Applies and clears the pending dilation of every channel."""
    def addColor(self, color: Tuple[int, int, int, int]) -> None:
        """Accepts the colour's r, g, b as channels 0, 1, 2 and folds it into the mean."""
    def addColors(self, pixels: numpy.ndarray, mask: Optional[numpy.ndarray] = ...) -> int:
        """addColor for every pixel of a (..., 3) array (where mask is not 0); the count."""
    def merge(self, other: Segment) -> None:
        """Unions the accepted values channel by channel; nothing else of the other segment counts."""
    def serializeColorIndex(self) -> str:
        """192 hexadecimal digits: channel 0, 1 and 2, 256 bits each."""
    def loadColorIndex(self, text: str) -> bool:
        """False, and nothing changed, unless the text is exactly 192 characters."""
    def serializeChannelsUsed(self) -> str:
        """The channel mask in decimal."""
    def loadChannelsUsed(self, text: str) -> bool:
        """Keeps the low three bits of the number; text that is no number gives 0."""
    def __eq__(self, arg0: Segment) -> bool:
        """Segments are the same class when their mean colours are equal; nothing else counts."""
    def __ne__(self, arg0: Segment) -> bool:
        """Whether the mean colours differ."""
    def __repr__(self) -> str: ...

def toString(segments: List[Segment]) -> str:
    """The text form of a list of classes."""

def segmentListfromString(text: str) -> List[Segment]:
    """The classes of a text form, as nuv_train writes it."""

class ImageSegment:
    """A region found by the segmenter."""
    @property
    def pixelCount(self) -> int:
        """The region's pixels; 0 if not found."""
    @property
    def color(self) -> Tuple[int, int, int, int]:
        """The class's mean colour."""
    @property
    def center(self) -> Tuple[int, int]:
        """The region's centre (x, y)."""
    @property
    def lines(self) -> List[Tuple[int, int, int, int]]:
        """The region's outline lines."""
    @property
    def segmentIndex(self) -> int:
        """The class's place in the list."""
    @property
    def name(self) -> str:
        """The class's name."""
    def __repr__(self) -> str: ...

class Segmenter:
    """Colour segmentation by trained classes."""
    def __init__(self) -> None:
        """A segmenter without classes."""
    def setColorSegments(self, segments: List[Segment]) -> None:
        """Compiles the classes into the table; only the first 32 take part."""
    def resetColorSegments(self) -> None:
        """No class is active any more; the names and colours stay but are not read."""
    def createSegmentList(self) -> List[ImageSegment]:
        """One default record per active class: the result for an image in which nothing was found."""
    def setupSegmentation(self, width: int, height: int) -> None:
        """Sizes the run arrays for frames of this size."""
    def doSegmentation(self, image: numpy.ndarray | Image) -> numpy.ndarray | None:
        """The image with one record per class attached (nuv.segmentList reads them), over the frame's own pixels when its rows are packed."""
    def segment(self, image: numpy.ndarray | Image) -> List[ImageSegment]:
        """The records doSegmentation attaches, one per class in configured order."""

class LineDetector:
    """One edge line in a band near the bottom of an image."""
    def __init__(self) -> None: ...
    class Dir:
        """The edges looked for."""
        Vertical: ClassVar[Dir]
        Horizontal: ClassVar[Dir]
        __members__: ClassVar[dict]
        def __init__(self, value: int) -> None: ...
        def __int__(self) -> int: ...
        def __index__(self) -> int: ...
        def __eq__(self, other: object) -> bool: ...
        def __hash__(self) -> int: ...
        @property
        def name(self) -> str: ...
        @property
        def value(self) -> int: ...
    Vertical: Dir
    Horizontal: Dir
    def setThreshold(self, threshold: int) -> None:
        """Edge strengths below the threshold are ignored; above 255 counts as 255."""
    def setSearchStart(self, rows: int) -> None:
        """Rows between the image's bottom and the band's lower end."""
    def setSearchHeight(self, rows: int) -> None:
        """The band's height in rows."""
    def findLine(self, image: numpy.ndarray | Image, dir: LineDetector.Dir) -> Tuple[numpy.ndarray | None, Optional[Tuple[int, int]]]:
        """(edge image, (x, y) of the line or None); the band and the cross ride on the edge image as lines."""

class HoughTransform:
    """Straight lines of a one-channel edge image. The working buffers are shared by all instances: one thread at a time."""
    def __init__(self) -> None: ...
    def setMaxLineCount(self, count: int) -> None:
        """The most lines one transform may report."""
    def setDelta(self, rho: float, theta: float) -> None:
        """The steps of the rho axis (pixels) and of the theta axis (radians)."""
    def setThreshold(self, threshold: int) -> None:
        """A line needs more votes than this."""
    def transform(self, image: numpy.ndarray | Image) -> numpy.ndarray | None:
        """The image with the strongest lines attached (nuv.lines reads them)."""
    @staticmethod
    def freeBuffer() -> None:
        """Releases the shared buffers; setMaxLineCount must be called again before transform."""

class MatchTemplate:
    """Where a template fits best in an image."""
    def __init__(self) -> None: ...
    def setImage(self, image: numpy.ndarray | Image) -> None:
        """The image the templates are searched in."""
    def match(self, template: numpy.ndarray | Image) -> Tuple[Tuple[int, int], float]:
        """((x, y) of the best fit's top-left corner, score in -1..1)"""

def ippInit() -> int:
    """Selects the best slot for this processor; the status."""

def ippInitCpu(cpuCode: int) -> int:
    """Forces the slot of a processor code, whatever the processor has; the status."""

def ippGetEnabledCpuFeatures() -> int:
    """The feature bits the selection works with."""

def ippGetCpuFeatures() -> int:
    """The processor's feature bits (ippCPUID_* of nuv/primitives.h)."""

def jumpIndex() -> int:
    """The slot every primitive jumps through: 0 until ippInit."""

def setJumpIndex(slot: int) -> None:
    """Sets the slot directly, as a host may (a slot the processor lacks crashes)."""

def init() -> None:
    """Registers the library's variant conversions; leaves the slot."""

def imread(path: str, color: bool = ...) -> numpy.ndarray:
    """A picture file as a BGR (or Gray) array."""

def imwrite(path: str, image: numpy.ndarray | Image) -> None:
    """Writes the image's region to a picture file."""
