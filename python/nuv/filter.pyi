# The type stubs of the package nuv, written by python/make_stubs.py from the module.
# Do not edit: run `make stubs` after changing the binding.
from typing import ClassVar, List, Optional, Tuple, overload

import numpy

import nuv

class PredefindedFilter_t:
    """The predefined filters."""
    PredefindedFilterNone: ClassVar[PredefindedFilter_t]
    PredefindedFilterSobelHoriz3x3: ClassVar[PredefindedFilter_t]
    PredefindedFilterSobelVert3x3: ClassVar[PredefindedFilter_t]
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

PredefindedFilterNone: PredefindedFilter_t

PredefindedFilterSobelHoriz3x3: PredefindedFilter_t

PredefindedFilterSobelVert3x3: PredefindedFilter_t

def friendlyName(type: PredefindedFilter_t) -> str:
    """The name of a predefined filter."""

def filter(image: numpy.ndarray | nuv.Image, type: PredefindedFilter_t, border: bool) -> numpy.ndarray | None:
    """The predefined filter over the region, with replicated borders if border is true."""

def sobelHoriz3x3(image: numpy.ndarray | nuv.Image, border: bool) -> numpy.ndarray | None:
    """The horizontal 3x3 Sobel operator saturated to a byte: bright below dark."""

def sobelVert3x3(image: numpy.ndarray | nuv.Image, border: bool) -> numpy.ndarray | None:
    """The vertical 3x3 Sobel operator saturated to a byte: bright left of dark."""

def replicateBorder(image: numpy.ndarray | nuv.Image, kernel: List[int]) -> numpy.ndarray | None:
    """The region grown by the kernel's reach, (width, height, anchor x, anchor y), with its edge pixels repeated."""

def min(image: numpy.ndarray | nuv.Image, mask: Tuple[int, int]) -> numpy.ndarray | None:
    """The minimum over a (w, h) mask where it fits in the region."""

def max(image: numpy.ndarray | nuv.Image, mask: Tuple[int, int]) -> numpy.ndarray | None:
    """The maximum over a (w, h) mask where it fits in the region."""
