#!/usr/bin/env python3
"""python_bench.py OUT.json: the Python module beside numpy.fft, scipy.fft and NumPy.

Needs the module on PYTHONPATH. Each result is compared with the peer's before it is timed; ours and
the peer's runs alternate, and the least time of each counts. Transforms in place start from the
same lines each time, which are copied outside the clock.
"""
import json
import sys
import time

import numpy
import scipy.fft

import sarnum

REPETITIONS = 7


def seconds(call):
    start = time.perf_counter()
    call()
    return time.perf_counter() - start


def row(work, ours, result, peer_name, peer, bound, prepare=lambda: None):
    """result() gives what ours() has computed, to be compared with what peer() returns."""
    prepare()
    ours()
    theirs = peer()
    if not numpy.linalg.norm(result() - theirs) <= bound * numpy.linalg.norm(theirs):
        sys.exit(f"python_bench.py: {work}: the results differ from those of {peer_name}")
    times = []
    for _ in range(REPETITIONS):
        prepare()
        times.append((seconds(ours), seconds(peer)))
    least = [min(side) * 1e6 for side in zip(*times)]
    print(f"{work:<50} {least[0]:12.0f} {least[1]:12.0f}  {peer_name:<10} "
          f"{least[0] / least[1]:6.2f}", flush=True)
    return {"work": work, "ours_us": least[0], "peer": peer_name, "peer_us": least[1],
            "ratio": least[0] / least[1]}


def lines(random, rows, columns):
    """Transforms of the rows of an image, in each layout."""
    z = random.normal(size=(rows, columns)) + 1j * random.normal(size=(rows, columns))
    z64 = z.astype(numpy.complex64)
    work, work64, re, im = z.copy(), z64.copy(), z.real.copy(), z.imag.copy()

    def prepare():
        work[...], work64[...], re[...], im[...] = z, z64, z.real, z.imag

    with sarnum.fft.tables(columns.bit_length() - 1) as tables:
        for name, ours, result, source, bound in (
                ("forward complex64", lambda: sarnum.fft.forward(work64), lambda: work64, z64, 1e-5),
                ("tables complex64", lambda: tables.forward(work64), lambda: work64, z64, 1e-5),
                ("forward complex128", lambda: sarnum.fft.forward(work), lambda: work, z, 1e-12),
                ("tables complex128", lambda: tables.forward(work), lambda: work, z, 1e-12),
                ("tables float64 pair", lambda: tables.forward(re, im), lambda: re + 1j * im, z, 1e-12)):
            for peer_name, peer in (("numpy.fft", numpy.fft.fft), ("scipy.fft", scipy.fft.fft)):
                yield row(f"Python {name}/{rows}x{columns}", ours, result, peer_name,
                          lambda: peer(source), bound, prepare)


def rasters(random, size):
    """Two-dimensional transforms; the peers are told to divide as ours do."""
    image = random.normal(size=(size, size)).astype(numpy.float32)
    z = (image + 1j * image[::-1]).astype(numpy.complex64)
    out = numpy.empty_like(z)
    for name, source in (("float32", image), ("complex64", z)):
        for peer_name, peer in (("numpy.fft", numpy.fft.fft2), ("scipy.fft", scipy.fft.fft2)):
            yield row(f"Python forward_2d {name}/{size}x{size}",
                      lambda: sarnum.fft.forward_2d(source, out), lambda: out, peer_name,
                      lambda: peer(source, norm="forward"), 1e-5)


def looks(random, size):
    image = random.exponential(size=(size, size)).astype(numpy.float32)
    for count in (4, 2):
        tiles = image.reshape(size // count, count, size // count, count)
        out = numpy.empty((size // count, size // count), numpy.float32)
        yield row(f"Python multilook {count}x{count}/{size}x{size}",
                  lambda: sarnum.imaging.multilook(image, count, count, out), lambda: out,
                  "NumPy", lambda: tiles.mean(axis=(1, 3)), 1e-6)


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__.splitlines()[0])
    random = numpy.random.default_rng(1)
    rows = [*lines(random, 2048, 2048), *rasters(random, 2048), *looks(random, 8192)]
    with open(sys.argv[1], "w", encoding="utf-8") as file:
        json.dump({"rows": rows}, file, indent=1)


if __name__ == "__main__":
    main()
