"""Names, docstrings and stubs; tables and threads; Python's lock; progress."""
import ast
import doctest
import inspect
import os
import pathlib
import pickle
import re
import subprocess
import sys
import threading
import time

import numpy as np
import pytest

import sarnum
from sarnum import fft, imaging, linalg, numeric

SOURCES = pathlib.Path(os.environ["SARNUM_SOURCE_DIR"])
MODULES = [fft, sarnum.filters, imaging, linalg, numeric]
# What Python has no use for, docs/python.md says why.
NOT_BOUND = {"CVeryFastFT::AllocateDataMemory", "CVeryFastFT::FreeDataMemory",
             "CLagrangeInterpolation2D::CalculateCoefficients"}


def documented(thing):
    """The docstrings of what is in a module or class."""
    for name in vars(thing):
        if not name.startswith("_") or name == "__call__":
            member = getattr(thing, name)
            yield member.__doc__ or ""
            if isinstance(member, type):
                yield from documented(member)


def test_every_exported_name_stands_in_a_docstring():
    texts = [sarnum.build_info.__doc__, *(text for module in MODULES for text in documented(module))]
    named = {name for text in texts for names in re.findall(r"\(C\+\+:([^)]*)\)", text)
             for name in re.findall(r"[\w:]*\w", names)}
    exported = set()
    for line in (SOURCES / "tests/package/sarnum.symbols").read_text().splitlines():
        name = line.partition("(")[0]
        owner, _, member = name.rpartition("::")
        # Functions in C, which have a version, are another interface to the same routines.
        if not re.search(r" for |~|operator|@", name) and owner != member:
            exported.add(name)
    assert exported - named == NOT_BOUND


def names(body):
    return {node.name: names(node.body) if isinstance(node, ast.ClassDef) else {}
            for node in body if isinstance(node, (ast.ClassDef, ast.FunctionDef)) and node.name != "_Bar"}


def public(thing):
    return {name: public(value) if isinstance(value, type) else {} for name, value in vars(thing).items()
            if (callable(value) or isinstance(value, (property, staticmethod)))
            and (not name.startswith("_") or name in ("__init__", "__call__", "__enter__", "__exit__"))}


@pytest.mark.parametrize("module", MODULES, ids=lambda m: m.__name__)
def test_stubs_have_the_names_of_the_module_and_its_arguments(module):
    stub = pathlib.Path(sarnum.__file__).with_name(module.__name__.rpartition(".")[2] + ".pyi")
    body = ast.parse(stub.read_text()).body
    assert names(body) == public(module)
    for node in body:
        if isinstance(node, ast.FunctionDef):
            arguments = [argument.arg for argument in node.args.args + node.args.kwonlyargs]
            assert arguments == list(inspect.signature(getattr(module, node.name)).parameters)


@pytest.mark.parametrize("module", MODULES, ids=lambda m: m.__name__)
def test_docstrings_are_true_and_functions_can_be_pickled(module):
    finder = doctest.DocTestFinder(exclude_empty=True)
    for test in finder.find(module, module.__name__):
        assert doctest.DocTestRunner().run(test).failed == 0
    for name in public(module):
        assert pickle.loads(pickle.dumps(getattr(module, name))) is getattr(module, name)


def test_main_prints_version_and_level():
    printed = subprocess.run([sys.executable, "-m", "sarnum"], capture_output=True, text=True, check=True).stdout
    assert printed == "sarnum {} ({})\n".format(*sarnum.build_info())
    assert f" VERSION {sarnum.__version__}\n" in (SOURCES / "CMakeLists.txt").read_text()


def test_tables_refuse_what_they_do_not_serve():
    z = np.ones(8, np.complex64)
    outer = fft.tables(3)
    with pytest.raises(RuntimeError, match="enter their context"):
        outer.forward(z)
    with outer:
        for other in (outer, fft.tables(4)):
            with pytest.raises(RuntimeError):
                other.__enter__()
        with fft.tables(3) as inner:
            pass
        with pytest.raises(RuntimeError):
            inner.forward(z)
        outer.forward(z)
    assert z[0] == 8
    with fft.tables(4) as other:
        other.forward(np.ones(16, np.complex64))


def test_threads_share_tables_and_never_get_wrong_numbers():
    wrong, refused, right = [], [], []

    def work(m):
        for _ in range(30):
            lines = np.tile(np.arange(2**m, dtype=np.complex64), (20, 1))
            try:
                with fft.tables(m) as t:
                    t.forward(lines)
            except RuntimeError:
                refused.append(m)
                continue
            good = np.allclose(lines, np.fft.fft(np.arange(2**m)), rtol=1e-4, atol=1)
            (right if good else wrong).append(m)

    threads = [threading.Thread(target=work, args=(m,)) for m in (12, 12, 11, 10)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert right and not wrong and len(right) + len(refused) == 120


def test_daemon_threads_do_not_keep_python_from_ending():
    program = """if True:
        import threading, numpy, sarnum
        started = threading.Event()
        def work():
            while True:
                sarnum.fft.forward_2d(numpy.zeros((256, 256), "f"), progress=lambda *_: started.set())
        for _ in range(3):
            threading.Thread(target=work, daemon=True).start()
        started.wait()"""
    assert subprocess.run([sys.executable, "-c", program], timeout=60).returncode == 0


LONG_CALLS = {
    "forward": lambda: fft.forward(np.zeros((64, 2**16)), np.zeros((64, 2**16))),
    "forward_2d": lambda: fft.forward_2d(np.zeros((2048, 4096))),
    "inverse_2d": lambda: fft.inverse_2d(np.zeros((2048, 2048), complex)),
    "multilook": lambda: imaging.multilook(np.zeros((8192, 8192), np.uint8), 4, 4),
    "correlate": lambda: numeric.correlate(np.zeros(8000), np.zeros(8000)),
    "power": lambda: numeric.power(np.full(10**7, 2.0), 3.5),
    "solve": lambda: linalg.solve(np.random.default_rng(1).normal(size=(900, 900)), np.zeros(900)),
}


@pytest.mark.parametrize("name", LONG_CALLS)
def test_other_threads_run_meanwhile(name):
    slices = []
    thread = threading.Thread(target=LONG_CALLS[name])
    thread.start()
    while thread.is_alive():
        start = time.perf_counter()
        time.sleep(0.001)
        slices.append(time.perf_counter() - start)
    assert max(slices) < sum(slices) / 2


class Bar:
    total = steps = 0

    def update(self, steps):
        self.steps += steps


def test_progress_is_told_and_its_exception_surfaces_after_the_work(tmp_path):
    image = np.random.default_rng(1).exponential(size=(300, 50)).astype("f")
    path = tmp_path / "image.tif"
    imaging.multilook_file(path, make_raster(tmp_path / "in.tif", image), 1, 1)
    works = {
        "forward_2d": (lambda out, p: fft.forward_2d(image, out, progress=p), (512, 64), "c8", 576),
        "inverse_2d": (lambda out, p: fft.inverse_2d(np.ones((64, 8), "c8"), out, progress=p), (64, 8), "c8", 72),
        "multilook": (lambda out, p: imaging.multilook(image, 3, 2, out, progress=p), (150, 17), "f4", 150),
        "file": (lambda out, p: imaging.multilook_file(tmp_path / "out.tif", path, 3, 2, progress=p), (1,), "f4", 150),
    }
    for work, shape, kind, total in works.values():
        whole, out, calls, bar = np.zeros(shape, kind), np.zeros(shape, kind), [], Bar()

        def stop(done, of):
            calls.append((done, of))
            raise KeyError("stop")

        work(whole, lambda done, of: calls.append((done, of)))
        assert calls[-1] == (total, total) and calls == sorted(set(calls)) and 30 < len(calls) <= 101
        calls.clear()
        with pytest.raises(KeyError, match="stop"):
            work(out, stop)
        assert len(calls) == 1 and np.array_equal(out, whole)
        work(out, bar)
        assert (bar.steps, bar.total) == (total, total)


def make_raster(path, samples):
    from osgeo import gdal, gdal_array
    gdal.UseExceptions()
    gdal_array.SaveArray(samples, str(path), "GTiff")
    return path
