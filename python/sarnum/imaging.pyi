from collections.abc import Sequence
from os import PathLike
from typing import Any

import numpy as np
from numpy.typing import NDArray

from .fft import _Progress

def multilook(
    image: NDArray[Any], looks_across: int, looks_down: int, out: NDArray[np.float32] | None = None, *,
    progress: _Progress = None,
) -> NDArray[np.float32]: ...
def multilook_file(
    output_path: str | bytes | PathLike[str], input_path: str | bytes | PathLike[str],
    looks_across: int, looks_down: int, *,
    creation_options: Sequence[str] = (), progress: _Progress = None,
) -> None: ...
