"""nuv for NumPy: the library's front end over uint8 arrays.

Arrays of shape (h, w) are Gray, (h, w, 3) BGR and (h, w, 4) BGRA; nuv.Image(array, format=...,
roi=(x, y, w, h)) gives another format or a region of interest. Arrays whose strides fit a row
step are used in place; other layouts are copied. Results are arrays over the result's own
pixels, None where the library gives the null image. The library's log arrives as warnings of
the category nuv.NuvWarning.
"""

from ._nuv import *  # noqa: F401,F403
from ._nuv import filter, NuvWarning, __doc__ as _native_doc  # noqa: F401
