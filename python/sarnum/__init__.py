"""Numerical routines for radar (SAR) images, on NumPy arrays.

sarnum.fft      transforms of lines and of rasters, and their tables
sarnum.numeric  functions of numbers, vectors and pixels, windows, correlation
sarnum.linalg   linear systems, least-squares fits, interpolation
sarnum.filters  spectral filters, circular shifts, noise
sarnum.imaging  multilooking of arrays and of raster files

The library's C++ headers are the manual; each docstring names the function or class that it calls.
"""
import functools as _functools
import sys as _sys

from ._sarnum import build_info, fft, filters, imaging, linalg, numeric

__all__ = ["build_info", "fft", "filters", "imaging", "linalg", "numeric"]
__version__ = build_info()[0]


def _named(module, name, compiled):
    """What users find as module.name: a function that can be pickled by this name, as Dask does."""
    if isinstance(compiled, type):
        compiled.__module__ = module.__name__
        return compiled

    @_functools.wraps(compiled)
    def call(*args, **kwargs):
        return compiled(*args, **kwargs)

    call.__module__, call.__qualname__ = module.__name__, name
    return call


# The submodules are compiled into one file: let `import sarnum.fft` find them.
for _module in (fft, filters, imaging, linalg, numeric):
    _module.__name__ = __name__ + "." + _module.__name__.rpartition(".")[2]
    _sys.modules[_module.__name__] = _module
    for _name, _compiled in list(vars(_module).items()):
        if callable(_compiled):
            setattr(_module, _name, _named(_module, _name, _compiled))
