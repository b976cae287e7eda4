#!/usr/bin/env python3
"""tool_bench.py SARNUM FOLDER OUT.json: the tool as a whole process beside GDAL's and NumPy.

The inputs, some 1.6 GB, are made in FOLDER and removed again; reading them once before the clock
starts leaves them in the page cache. Ours and the peer's runs alternate; the least time of each
counts. The results are compared before they are timed.
"""
import json
import pathlib
import subprocess
import sys
import time

import numpy
from osgeo import gdal

gdal.UseExceptions()
REPETITIONS = 7

DETECT = """
import sys, numpy
from osgeo import gdal
z = gdal.Open(sys.argv[1]).ReadAsArray()
out = gdal.GetDriverByName("GTiff").Create(sys.argv[2], z.shape[1], z.shape[0], 1, gdal.GDT_Float32)
out.GetRasterBand(1).WriteArray(z.real ** 2 + z.imag ** 2)
"""


def make(path, width, height, data_type, samples):
    raster = gdal.GetDriverByName("GTiff").Create(str(path), width, height, 1, data_type)
    for row in range(0, height, samples.shape[0]):
        raster.GetRasterBand(1).WriteArray(samples, 0, row)


def seconds(command):
    start = time.perf_counter()
    subprocess.run(command, check=True)
    return time.perf_counter() - start


def row(work, ours, peer_name, peer, outputs, target):
    """Both commands write a raster; the two must agree to float rounding."""
    seconds(ours), seconds(peer)
    mine, theirs = (gdal.Open(str(path)).ReadAsArray() for path in outputs)
    if not numpy.allclose(mine, theirs, rtol=1e-5, atol=0.0):
        sys.exit(f"tool_bench.py: {work}: the results differ")
    times = [(seconds(ours), seconds(peer)) for _ in range(REPETITIONS)]
    least = [min(side) * 1e6 for side in zip(*times)]
    print(f"{work:<40} {least[0]:12.0f} {least[1]:12.0f}  {peer_name:<10} "
          f"{least[0] / least[1]:6.2f} {target:7.2f}", flush=True)
    return {"work": work, "ours_us": least[0], "peer": peer_name, "peer_us": least[1],
            "ratio": least[0] / least[1], "target": target}


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__.splitlines()[0])
    sarnum, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    names = ("intensity.tif", "slc.tif", "ours.tif", "peer.tif")
    intensity, slc, ours, peer = (folder / name for name in names)
    random = numpy.random.default_rng(1)
    try:
        make(intensity, 16384, 16384, gdal.GDT_Float32,
             random.exponential(size=(512, 16384)).astype(numpy.float32))
        parts = random.normal(scale=100.0, size=(2, 512, 16384)).round().astype(numpy.float32)
        make(slc, 16384, 8192, gdal.GDT_CInt16, parts[0] + 1j * parts[1])
        rows = [
            row("sarnum multilook 4x4/16384",
                [sarnum, "multilook", "-q", "--overwrite", intensity, ours, "--looks", "4x4"],
                "GDAL", ["gdal_translate", "-q", "-outsize", "4096", "4096", "-r", "average",
                         intensity, peer], (ours, peer), 0.7),
            row("sarnum detect/16384x8192",
                [sarnum, "detect", "-q", "--overwrite", slc, ours],
                "NumPy", [sys.executable, "-c", DETECT, slc, peer], (ours, peer), 0.8),
        ]
    finally:
        for path in (intensity, slc, ours, peer):
            path.unlink(missing_ok=True)
    with open(sys.argv[3], "w", encoding="utf-8") as file:
        json.dump({"rows": rows}, file, indent=1)


if __name__ == "__main__":
    main()
