"""What the module takes, what it refuses, and that nothing it refuses was touched."""
import numpy as np
import pytest
from hypothesis import given, settings, strategies as st

from sarnum import fft, filters, imaging, linalg, numeric

settings.register_profile("repeatable", deadline=None, derandomize=True, database=None, max_examples=400)
settings.load_profile("repeatable")

Z = np.zeros(8, np.complex64)
X = np.zeros(8)
M = np.eye(3)
READ_ONLY = Z.copy()
READ_ONLY.setflags(write=False)
UNALIGNED = np.zeros(65, np.uint8)[1:].view(np.complex64)
LONG = np.zeros((3, 4), np.longdouble)

REFUSED = [
    (TypeError, "pass a NumPy array", lambda: fft.forward([1, 2])),
    (TypeError, "float64 .* im is missing", lambda: fft.forward(X)),
    (TypeError, "complex64 or complex128 array, or the parts", lambda: fft.tables(3).__enter__().forward(X)),
    (TypeError, ">c8", lambda: fft.forward(Z.astype(">c8"))),
    (TypeError, "im is a float32", lambda: fft.forward(X, X.astype(np.float32))),
    (TypeError, "strides .* not contiguous: .* numpy.ascontiguousarray", lambda: fft.forward(Z[::2])),
    (TypeError, "not aligned", lambda: fft.forward(UNALIGNED)),
    (TypeError, "longdouble", lambda: linalg.change_row(np.zeros((3, 4)), 0, 0)),
    (TypeError, "astype", lambda: linalg.solve(M * 1j, [1, 2, 3])),
    (TypeError, "astype", lambda: numeric.mean([2**60])),
    (TypeError, "astype", lambda: numeric.mean(np.longdouble([1]))),
    (TypeError, "unsigned", lambda: fft.forward_2d(np.zeros((2, 2, 2), np.uint16))),
    (TypeError, "abs", lambda: imaging.multilook(np.zeros((4, 4), complex), 2, 2)),
    (TypeError, "astype", lambda: imaging.multilook(np.zeros((4, 4)), 2, 2)),
    (TypeError, "complex64", lambda: fft.inverse_2d(np.zeros((4, 4)))),
    (TypeError, "complex128", lambda: fft.forward_2d(np.zeros((4, 4)), np.zeros((4, 4), np.complex64))),
    (TypeError, "float64", lambda: filters.keep_peak_band(X.astype("f"), X.astype("f"))),
    (TypeError, "size", lambda: fft.CVeryFastFT(2).forward_2d_rect(np.zeros(20))),
    (TypeError, "progress", lambda: fft.forward_2d(np.zeros((4, 4)), progress=3)),
    (TypeError, "masked", lambda: numeric.mean(np.ma.masked_less([1.0, 2.0], 1.5))),
    (TypeError, "masked", lambda: imaging.multilook(np.ma.masked_less(np.ones((4, 4), "f"), 1.5), 2, 2)),
    (ValueError, "lines overlap", lambda: fft.forward(np.lib.stride_tricks.as_strided(Z, (3, 4), (8, 8)))),
    (ValueError, "overlaps", lambda: fft.forward((rows := np.zeros((3, 8)))[:2], rows[1:])),
    (ValueError, "read-only", lambda: fft.forward(READ_ONLY)),
    (ValueError, "empty", lambda: fft.forward(np.zeros((3, 0), np.complex64))),
    (ValueError, "empty", lambda: numeric.mean([])),
    (ValueError, "power of two", lambda: fft.forward(np.zeros(6, np.complex64))),
    (ValueError, "power of two", lambda: fft.inverse_2d(np.zeros((4, 3), complex))),
    (ValueError, "power of two", lambda: fft.inverse_2d(np.zeros((3, 4), complex))),
    (ValueError, "has no axis", lambda: fft.forward(np.zeros((), np.complex64))),
    (ValueError, "overlaps", lambda: fft.forward(X, X)),
    (ValueError, "shape", lambda: fft.forward(X, np.zeros((2, 8)))),
    (ValueError, "rows and columns", lambda: fft.forward_2d(X)),
    (ValueError, r"shape \(4, 8\)", lambda: fft.forward_2d(np.zeros((3, 5)), np.zeros((4, 4), complex))),
    (ValueError, "shares memory", lambda: imaging.multilook(M := np.zeros((4, 4), "f"), 1, 1, M)),
    (ValueError, "looks_down is 37", lambda: imaging.multilook(np.zeros((4, 4), "f"), 1, 37)),
    (ValueError, "looks_across is 0", lambda: imaging.multilook(np.zeros((4, 4), "f"), 0, 1)),
    (ValueError, "20", lambda: fft.CVeryFastFT(2).forward_2d_rect(np.zeros(19, "f"))),
    (ValueError, "exponent is 31", lambda: fft.CVeryFastFT(31)),
    (ValueError, "m is -1", lambda: fft.tables(-1)),
    (ValueError, "the tables serve 2", lambda: fft.tables(2).__enter__().forward(Z)),
    (ValueError, "bits is 32", lambda: fft.bit_reverse(1, 32)),
    (ValueError, "n is 0", lambda: numeric.kaiser(0, 1.0)),
    (ValueError, "lag is 3", lambda: numeric.correlate([1, 2, 3], [1], 3)),
    (ValueError, "not 3", lambda: numeric.cross([1, 2], [1, 2, 3])),
    (ValueError, "count is 0", lambda: numeric.resample([1], 0)),
    (ValueError, "last axis of 2", lambda: numeric.parts(np.zeros(3), pairs=True)),
    (ValueError, "square", lambda: linalg.inverse(np.zeros((2, 3)))),
    (ValueError, "more than 5", lambda: linalg.solve_small(np.eye(6), np.zeros(6))),
    (ValueError, "outside the matrix", lambda: linalg.change_row(LONG, 3, 0)),
    (ValueError, "order is -1", lambda: linalg.CLagrangeInterpolation2D(-1, [0], [0], [0])),
    (ValueError, "by is -9", lambda: filters.shift(Z, by=-9)),
    (ValueError, "longer", lambda: fft.CFFTClass.synthesize([1] * 9, [1] * 9, X.astype("f"), X.astype("f"))),
    (np.linalg.LinAlgError, "pivot", lambda: linalg.inverse(np.zeros((2, 2)))),
    (np.linalg.LinAlgError, "line", lambda: linalg.plane(np.zeros((3, 3)))),
    (OSError, "nowhere.tif", lambda: imaging.multilook_file("out.tif", "nowhere.tif", 2, 2)),
    (ValueError, "is the input", lambda: imaging.multilook_file("a.tif", "a.tif", 2, 2)),
    (ValueError, "zero byte", lambda: imaging.multilook_file("a\0b", "a.tif", 2, 2)),
]


@pytest.mark.parametrize("error, text, call", REFUSED)
def test_refusals_name_fault_and_remedy(error, text, call):
    with pytest.raises(error, match=text) as caught:
        call()
    assert type(caught.value) is error


LAYOUTS = {
    "plain": lambda a: a,
    "every second row": lambda a: np.repeat(a, 2, 0)[::2],
    "upside down": lambda a: a[::-1].copy()[::-1],
    "view": lambda a: np.pad(a, [(1, 1)] * a.ndim)[(slice(1, -1),) * a.ndim],
    "every second column": lambda a: np.repeat(a, 2, -1)[..., ::2],
    "transposed": lambda a: np.ascontiguousarray(a.T).T,
    "read-only": lambda a: np.frombuffer(a.tobytes(), a.dtype).reshape(a.shape) if a.dtype != object else a,
}
ONE = {"forward": fft.forward, "inverse": fft.inverse, "shift": lambda z: filters.shift(z, by=1),
       "forward_2d": lambda z: fft.forward_2d(z, z), "inverse_2d": lambda z: fft.inverse_2d(z, z)}
TWO = {"forward": fft.forward, "inverse": fft.inverse, "member": fft.CFFTClass.forward,
       "centred": fft.CFFTClass.forward_centred, "shift": lambda re, im: filters.shift(re, im, by=1),
       "keep": filters.keep_peak_band, "remove": filters.remove_peak_band}
TYPES = ["c8", "c16", "f4", "f8", "i2", "u1", ">c8", ">f8", "O", "longdouble", "f2", "?"]


@given(st.data())
def test_in_place_gives_the_values_of_a_plain_copy_or_refuses_untouched(data):
    draw = data.draw
    table = draw(st.sampled_from([ONE, TWO]))
    call = table[draw(st.sampled_from(sorted(table)))]
    shape = tuple(draw(st.lists(st.sampled_from([1, 2, 4, 8, 3, 0]), min_size=1, max_size=3)))
    random = np.random.default_rng(draw(st.integers(0, 99)))
    kind = draw(st.sampled_from(TYPES))
    plain = [(random.normal(size=shape) * 50).astype(kind)
             for _ in range(1 if table is ONE else 2)]
    laid = [LAYOUTS[draw(st.sampled_from(sorted(LAYOUTS)))](a.copy()) for a in plain]
    try:
        call(*laid)
    except (TypeError, ValueError):
        assert all(np.array_equal(a, b) for a, b in zip(laid, plain))
    else:
        call(*plain)
        assert all(a.tobytes() == b.tobytes() for a, b in zip(laid, plain))
        assert plain[0].dtype.kind in "fc" and plain[0].size > 0
