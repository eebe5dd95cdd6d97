"""Image processing for machine vision on NumPy arrays.

Arrays (h, w) of uint8, uint16 or uint32 are grey pictures, arrays (h, w, 3) of uint8 colours, arrays
(h, w) of bool masks, and arrays (h, w) of complex64 spectra. They are used where they lie, so that
slices of rows and columns are regions of interest:

    edges = ky.convol_sobel(picture)
    ky.dilate_box(picture[10:50, 20:80], 3, destination=result[10:50, 20:80])

Results are new arrays unless destination= is given: an array, which may be the source; the shape
(h, w) of a new one; or a type of pixels, such as ky.BW16, where there are several. Numbers are
returned, several as a tuple. Calls that fail raise ky.Error. Other threads run during every call.
"""

from ._core import *
from ._constants import *
from ._records import *
from ._types import Error, Path
from . import _core

__version__ = _core.get_version()
