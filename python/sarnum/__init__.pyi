from . import fft as fft, filters as filters, imaging as imaging, linalg as linalg, numeric as numeric

__all__ = ["build_info", "fft", "filters", "imaging", "linalg", "numeric"]
__version__: str

def build_info() -> tuple[str, str]: ...
