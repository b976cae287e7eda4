"""Numerical routines for radar (SAR) images, on NumPy arrays.

sarnum.fft      transforms of lines and of rasters, and their tables
sarnum.numeric  functions of numbers, vectors and pixels, windows, correlation
sarnum.linalg   linear systems, least-squares fits, interpolation
sarnum.filters  spectral filters, circular shifts, noise
sarnum.imaging  multilooking of arrays and of raster files

The library's C++ headers are the manual; each docstring names the function or class that it calls.
"""
import sys as _sys

from ._sarnum import build_info, fft, filters, imaging, linalg, numeric

__all__ = ["build_info", "fft", "filters", "imaging", "linalg", "numeric"]
__version__ = build_info()[0]

# The submodules are compiled into one file: let `import sarnum.fft` find them, and let all that is
# in them name the place where users see it.
for _module in (fft, filters, imaging, linalg, numeric):
    _module.__name__ = __name__ + "." + _module.__name__.rpartition(".")[2]
    _sys.modules[_module.__name__] = _module
    for _thing in vars(_module).values():
        if isinstance(_thing, type):
            _thing.__module__ = _module.__name__
del _module, _thing
