"""Values against NumPy, SciPy and GDAL, with the differences that the docstrings state."""
import numpy as np
import pytest
from hypothesis import given, settings, strategies as st
from osgeo import gdal, gdal_array
from scipy import special
from scipy.signal import windows

from sarnum import fft, filters, imaging, linalg, numeric

gdal.UseExceptions()
settings.register_profile("repeatable", deadline=None, derandomize=True, database=None, max_examples=60)
settings.load_profile("repeatable")

lines = st.builds(
    lambda seed, rows, m: np.random.default_rng(seed).normal(size=(2, rows, 2**m)),
    st.integers(0, 1000), st.integers(1, 4), st.integers(0, 11))


def error(ours, exact):
    return np.linalg.norm(ours - exact) / np.linalg.norm(exact)


def pair(call, re, im, kind):
    re, im = re.astype(kind), im.astype(kind)
    call(re, im)
    return re + 1j * im


def whole(call, re, im, kind):
    z = (re + 1j * im).astype(kind)
    call(z)
    return z


@given(lines)
def test_lines_are_those_of_numpy(parts):
    re, im = parts
    n = re.shape[-1]
    z = re + 1j * im
    forward, inverse = np.fft.fft(z), np.fft.ifft(z)
    centred = np.fft.fftshift(forward, axes=-1)
    double, single = 1e-15 * 12, 1e-7 * 12
    member = fft.CFFTClass
    with fft.tables(n.bit_length() - 1) as t:
        for ours, exact, bound in [
            (pair(fft.forward, re, im, "f8"), forward, double), (whole(fft.forward, re, im, "c16"), forward, double),
            (pair(fft.forward, re, im, "f4"), forward, single), (whole(fft.forward, re, im, "c8"), forward, single),
            (pair(fft.inverse, re, im, "f8"), n * inverse, single), (whole(fft.inverse, re, im, "c16"), n * inverse, single),
            (pair(fft.inverse, re, im, "f4"), inverse, single), (whole(fft.inverse, re, im, "c8"), inverse, single),
            (pair(t.forward, re, im, "f8"), forward, double), (whole(t.forward, re, im, "c16"), forward, double), (whole(t.forward, re, im, "c8"), forward, single),
            (pair(t.inverse, re, im, "f8"), inverse, double), (whole(t.inverse, re, im, "c16"), inverse, double), (whole(t.inverse, re, im, "c8"), inverse, single),
            (pair(member.forward, re, im, "f4"), forward, single), (pair(member.inverse, re, im, "f8"), n * inverse, single),
            (pair(member.forward_centred, re, im, "f8"), centred, double),
        ]:
            assert error(ours, exact) < bound
    assert np.array_equal(whole(fft.forward, re, im, "c16"), pair(fft.forward, re, im, "f8"))
    assert np.array_equal(whole(fft.inverse, re, im, "c16"), pair(fft.inverse, re, im, "f8"))


def test_synthesis_compresses_a_line():
    random = np.random.default_rng(2)
    replica = np.zeros(256, complex)
    replica[:40] = np.exp(1j * np.pi * np.arange(40) ** 2 / 40)
    line = np.roll(replica, 100) + 0.01 * random.normal(size=256)
    h = np.fft.fft(replica)
    re, im = line.real.astype("f"), line.imag.astype("f")
    fft.CFFTClass.synthesize(h.real.astype("f"), h.imag.astype("f"), re, im)
    compressed = np.conj(np.roll((re + 1j * im)[::-1], 1)) / 256
    assert error(compressed, np.fft.ifft(np.fft.fft(line) * np.conj(h))) < 1e-5


@pytest.mark.parametrize("kind", ["u1", "i1", "u2", "i2", "u4", "i4", "f4", "f8", "c8", "c16", "pairs"])
@given(st.integers(0, 999), st.integers(1, 20), st.integers(1, 20), st.booleans())
def test_rasters_are_those_of_numpy_through_any_rows(kind, seed, height, width, centred):
    random = np.random.default_rng(seed)
    samples = random.integers(0, 100, size=(2 * height, width + 3, 2))
    image = samples.astype("i2") if kind == "pairs" else (samples[..., 0] + (1j * samples[..., 1] if "c" in kind else 0)).astype(kind)
    view = image[::-2, 1:width + 1]
    exact = view @ [1, 1j] if kind == "pairs" else view
    shape = [1 << fft.ceil_power_of_two(size) for size in (height, width)]
    spectrum = np.fft.fft2(exact, shape) / np.prod(shape)
    ours = fft.forward_2d(view, centred=centred)
    assert ours.dtype == ("c16" if kind in ("f8", "c16") else "c8")
    assert np.allclose(ours, np.fft.fftshift(spectrum) if centred else spectrum, rtol=0, atol=1e-4)
    back = fft.inverse_2d(fft.forward_2d(view))
    assert np.allclose(back[:height, :width], exact, rtol=0, atol=1e-3)


def test_blocks_overlap_rows():
    block = np.random.default_rng(3).normal(size=20).astype("f")
    expected = np.zeros(20, "f")
    rows = [slice(4 * k, 4 * k + 8) for k in range(4)]
    for row in rows:
        expected[row] = (np.fft.fft(block[row].view("c8")) / 4).astype("c8").view("f")
    for c in range(4):
        column = np.array([expected[row].view("c8")[c] for row in rows])
        for row, value in zip(rows, np.fft.fft(column) / 4):
            expected[row].view("c8")[c] = value
    dst = np.zeros(20, "f")
    fft.CVeryFastFT(2).forward_2d_rect(block, dst)
    assert np.allclose(dst, expected, atol=1e-6)


@pytest.mark.parametrize("n", [1, 2, 7, 64])
def test_windows_are_those_of_scipy_but_for_phase_and_factor(n):
    assert np.allclose(numeric.hanning(n), 2 * windows.hann(n, sym=False) if n > 1 else 0)
    assert np.allclose(numeric.hamming(n, 0.6), 1.2 - windows.general_hamming(n, 0.6, sym=False) if n > 1 else 1)
    assert np.allclose(numeric.kaiser(n, 8.0), windows.kaiser(n, 8.0, sym=False) if n > 1 else 1 / special.i0(8.0), atol=1e-8)
    assert np.allclose(numeric.kaiser(n, 5.0, np.arange(n + 1)), windows.kaiser(n + 1, 5.0), atol=1e-8)
    assert numeric.hanning(64, 32) == 2.0


vectors = st.builds(lambda seed, n: np.random.default_rng(seed).normal(size=(3, n)), st.integers(0, 999), st.integers(1, 50))


@given(vectors)
def test_numeric_functions_are_those_of_numpy(abc):
    a, b, c = abc
    n = len(a)
    z = a + 1j * b
    full = np.correlate(np.tile(z, 3), z, "full")
    for ours, theirs in [
        (numeric.minimum(a, b), np.minimum(a, b)), (numeric.maximum(a, 0), np.maximum(a, 0)),
        (numeric.minimum_abs(a, b), np.where(abs(a) < abs(b), a, b)), (numeric.maximum_abs(a, b), np.where(abs(a) > abs(b), a, b)),
        (numeric.sign(a), np.sign(a)), (numeric.square(a), a * a), (numeric.cube(a), a**3),
        (numeric.power(abs(a), b), abs(a) ** b), (numeric.radians(a), np.radians(a)), (numeric.degrees(a), np.degrees(a)),
        (numeric.modulus(a, abs(b)), np.mod(a, abs(b))), (numeric.wrap_angle(a), np.mod(a, 2 * np.pi)),
        (numeric.direction(a, b), np.mod(np.arctan2(a, b), 2 * np.pi)), (numeric.log2(abs(a)), np.log2(abs(a))),
        (numeric.next_power_of_two(n), max(2, 1 << (n - 1).bit_length())), (numeric.bessel_i0(a), special.i0(a)),
        (numeric.min_value(a), a.min()), (numeric.max_value(a), a.max()), (numeric.min_index(a), n - 1),
        (numeric.max_index(a), a.argmax()), (numeric.min_abs_index(a), abs(a).argmin()), (numeric.max_abs_index(a), abs(a).argmax()),
        (numeric.min_abs_value(a), a[abs(a).argmin()]), (numeric.max_abs_value(a), a[abs(a).argmax()]),
        (numeric.sum(a), a.sum()), (numeric.mean(a), a.mean()), (numeric.magnitude(a), np.linalg.norm(a)),
        (numeric.resample(a, 2 * n), np.interp(np.linspace(0, n - 1, 2 * n), np.arange(n), a)),
        (numeric.add(a, b), a + b), (numeric.subtract(a, b), a - b), (numeric.multiply_constant(3, a), 3 * a),
        (numeric.normalize(a), a / np.linalg.norm(a)), (numeric.dot(a, b), a @ b), (linalg.multiply_elements(a, b), a * b),
        (numeric.angle(a, b) if n > 1 else 0, np.arccos(a @ b / np.linalg.norm(a) / np.linalg.norm(b)) if n > 1 else 0),
        (numeric.correlate(a, c[:1]), a * c[0]), (numeric.correlate(z, z), abs(full[2 * n - 1 - (n - 1):2 * n - 1 + n])),
        (numeric.correlate(a, b, 0), a @ b), (numeric.correlate(np.pad(a, (0, n - 1)), b)[:2 * n - 1], np.correlate(a, b, "full")),
        (numeric.amplitude(z.astype("c8")), abs(z.astype("c8").astype("c16"))),
        (numeric.parts(z)[1], b), (numeric.parts(a.astype("f4"))[0], a.astype("f4")),
        (fft.bit_reverse(np.arange(8), 3), [0, 4, 2, 6, 1, 5, 3, 7]),
    ]:
        assert np.allclose(ours, theirs, rtol=1e-7, atol=1e-7)
    assert np.allclose(numeric.cross([1, 2, 3], [3, 1, 2]), np.cross([1, 2, 3], [3, 1, 2]))
    assert numeric.add(a, b, a) is a


@given(st.integers(0, 999), st.integers(1, 30))
def test_linear_algebra_is_that_of_numpy(seed, n):
    random = np.random.default_rng(seed)
    a, b = random.normal(size=(n, n)), random.normal(size=n)
    small = a[:5, :5] + 9 * np.eye(min(n, 5))
    scale = np.linalg.cond(a)
    assert error(linalg.solve(a, b), np.linalg.solve(a, b)) < 1e-14 * scale
    assert np.isclose(linalg.log_abs_determinant(a) * np.log(2.71828), np.linalg.slogdet(a)[1], atol=1e-13 * scale)
    assert error(linalg.inverse(a, bordered=True), np.linalg.inv(a)) < 1e-13 * scale
    assert error(linalg.inverse(a)[:, :-1], np.linalg.inv(a)[:, :-1]) < 1e-13 * scale if n > 1 else True
    assert np.allclose(linalg.matrix_multiply(a, a[:, :2]), a @ a[:, :2])
    assert np.allclose(linalg.solve_small(small, b[:5]), np.linalg.solve(small, b[:5]))
    x, y = random.uniform(-1, 1, size=(2, 40))
    assert np.allclose(linalg.fit_polynomial(x, y, 4), np.polyfit(x, y, 3)[::-1])
    z = 1 + 2 * x - 3 * y + x * y
    assert np.allclose(linalg.fit_surface(x, y, z, 2), [1, 2, -3, 0, 1, 0], atol=1e-9)
    surface = linalg.CLagrangeInterpolation2D(2, x, y, z)
    assert np.allclose(surface(x, y), z) and np.allclose(surface.coefficients, [1, -3, 2, 0, 1, 0], atol=1e-9)
    surface.coefficients[0] += 1
    assert np.isclose(surface(0.5, 0.5), 1.75) and surface.order == 2 and surface.success
    assert np.allclose(linalg.plane(np.c_[x, y, 1 + 2 * x - 3 * y][:3]), [2, -3, 1])
    system = np.array([[1, 2, 0], [-3, 4, 1]], np.longdouble)
    linalg.change_row(system, 0, 0)
    assert system[0, 0] == -3 and system[1, 0] == 1


def test_filters_and_noise():
    re, im = np.cos(2 * np.pi * np.arange(64) * 5 / 64), np.zeros(64)
    re += 4
    assert np.allclose(filters.remove_peak_band(re, im)[2], 64 * np.sqrt(0.5), rtol=1e-5)
    assert np.allclose(re, 64 * np.cos(2 * np.pi * np.arange(64) * 5 / 64), atol=1e-3)
    filters.keep_peak_band(re, im)
    assert abs(re).max() < 1e-9  # a tone is no band
    z = np.arange(12).reshape(2, 6).astype("c8")
    filters.shift(z, by=-2)
    assert np.array_equal(z.real, np.roll(np.arange(12).reshape(2, 6), -2, axis=1))
    filters.seed_noise(7)
    noise = filters.noise(1.0, 4.0, (100, 100))
    filters.seed_noise(7)
    assert filters.noise(1.0, 4.0) == noise[0, 0] and abs(noise.mean() - 1) < 0.1 and abs(noise.std() - 2) < 0.1


@given(st.integers(0, 999), st.integers(1, 40), st.integers(1, 40), st.integers(1, 9), st.integers(1, 9),
       st.sampled_from(["f4", "u2", "i2", "u1"]))
def test_multilook_of_arrays_and_of_files_is_one(seed, height, width, across, down, kind):
    image = (np.random.default_rng(seed).exponential(size=(2 * height, width + 1)) * 60).astype(kind)[::2, 1:]
    looks = imaging.multilook(image, across, down)
    gdal_array.SaveArray(np.ascontiguousarray(image), "/vsimem/in.tif", "GTiff")
    imaging.multilook_file("/vsimem/out.tif", "/vsimem/in.tif", across, down, creation_options=["COMPRESS=DEFLATE"])
    assert np.array_equal(gdal.Open("/vsimem/out.tif").ReadAsArray(), looks)
    rows, columns = height - height % down, width - width % across
    if rows and columns:
        means = image[:rows, :columns].reshape(rows // down, down, columns // across, across).mean((1, 3), dtype="f8")
        assert np.allclose(looks[:rows // down, :columns // across], means, rtol=1e-6)


def test_multilook_is_the_average_of_gdal():
    image = np.random.default_rng(1).exponential(size=(128, 256)).astype("f")
    theirs = gdal.Translate("", gdal_array.OpenArray(image), format="MEM", width=64, height=64, resampleAlg="average")
    assert np.allclose(imaging.multilook(image, 4, 2), theirs.ReadAsArray(), rtol=1e-5)
