"""Multilooks scenes on two workers, kills one at its work, and compares with the tool, scene by scene.

example_dask_multilook.py EXAMPLE TOOL
"""
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time

import numpy
from osgeo import gdal, osr

gdal.UseExceptions()
EXAMPLE, TOOL = sys.argv[1:]
random = numpy.random.default_rng(7)


def make_scene(path, kind, bands=1):
    """A raster whose sides are no multiples of the looks."""
    width, height = 1501, 1103
    file = gdal.GetDriverByName("GTiff").Create(str(path), width, height, bands, kind)
    reference = osr.SpatialReference()
    reference.ImportFromEPSG(32631)
    if kind == gdal.GDT_CInt16:
        file.SetProjection(reference.ExportToWkt())
        file.SetGeoTransform((500000, 10, 1, 5000000, 2, -20))
    elif kind == gdal.GDT_CFloat32:
        file.SetMetadata({"AREA_OR_POINT": "Point", "SARNUM_LOOKS": "2x1"})
        file.SetGCPs([gdal.GCP(5e5 + x, 5e6 - y, 0, x, y) for x in (0, 700) for y in (9, 801)], reference)
    else:
        file.GetRasterBand(1).SetNoDataValue(-99)
    for band in range(1, bands + 1):
        values = random.normal(0, 500, (height, width)) + 1j * random.normal(0, 500, (height, width))
        values[:50, ::7] = -99
        file.GetRasterBand(band).WriteArray(values if gdal.DataTypeIsComplex(kind) else values.real)


def make_scenes(folder):
    for name in ("integers0", "integers1", "integers2", "existing", "short"):
        make_scene(folder / f"{name}.tif", gdal.GDT_CInt16)
    make_scene(folder / "bands.tif", gdal.GDT_CFloat32, 3)
    make_scene(folder / "gaps.tif", gdal.GDT_Float32)
    os.truncate(folder / "short.tif", 4_000_000)
    gdal.GetDriverByName("GTiff").Create(str(folder / "unwritten.tif"), 99, 99, options=["SPARSE_OK=YES"])


def is_stopped(pid):
    return pathlib.Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()[0] == "T"


def kill_a_worker(run, out):
    """Kills a worker that has a file half written; gives its scene's output."""
    while run.poll() is None:
        for file in out.glob(".*.work/*.tmp"):
            pid = int(file.name.partition("-")[0])
            os.kill(pid, signal.SIGSTOP)
            while not is_stopped(pid):
                time.sleep(0.001)
            if file.exists():
                os.kill(pid, signal.SIGKILL)
                return out / file.parent.name[1:-len(".work")]
            os.kill(pid, signal.SIGCONT)
        time.sleep(0.001)
    raise AssertionError(f"no worker was found at work: {run.communicate()}")


def described(path, number):
    file = gdal.Open(str(path))
    band = file.GetRasterBand(number)
    points = [(round(p.GCPPixel, 9), round(p.GCPLine, 9), p.GCPX, p.GCPY) for p in file.GetGCPs()]
    return (file.GetGeoTransform(), file.GetProjection(), file.GetGCPProjection(), points,
            {**file.GetMetadata(), "SARNUM_SOURCE": "", "AREA_OR_POINT": ""}, str(band.GetNoDataValue()),
            band.ReadAsArray())


def serial(scene, number, folder):
    """What the tool makes of a band."""
    names = [str(folder / name) for name in ("band.vrt", "intensity.tif", "looks.tif")]
    gdal.Translate(names[0], str(scene), bandList=[number])
    for command in (["detect", *names[:2]], ["multilook", *names[1:], "--looks", "3x4"]):
        subprocess.run([TOOL, *command, "-q", "--overwrite"], check=True)
    return described(names[2], 1)


with tempfile.TemporaryDirectory() as name:
    folder = pathlib.Path(name)
    scenes, out = folder / "scenes", folder / "out"
    stale = out / ".gaps_3x4.tif.work"  # as a run that was killed leaves it
    scenes.mkdir()
    stale.mkdir(parents=True)
    (stale / "whole.tif").write_text("stale")
    (out / "existing_3x4.tif").write_text("mine")
    make_scenes(scenes)
    run = subprocess.Popen([sys.executable, EXAMPLE, scenes / "*.tif", out, "--looks", "3x4", "--rows", "60",
                            "--workers", "2"], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    try:
        killed = kill_a_worker(run, out)
        assert not killed.exists()
        complete = {file: file.read_bytes() for file in out.glob("*.tif")}
        printed, errors = run.communicate(timeout=100)
    finally:
        run.kill()
    assert run.returncode == 1 and printed == f"5 of 8 scenes are in '{out}'\n", printed + errors
    for told in ("existing_3x4.tif' exists; give --overwrite", "short.tif'", "unwritten.tif' is incomplete"):
        assert told in errors, errors
    good = ["bands", "gaps", "integers0", "integers1", "integers2"]
    assert sorted(os.listdir(out)) == sorted(f"{stem}_3x4.tif" for stem in [*good, "existing"])
    assert all(file.read_bytes() == content for file, content in complete.items())
    for stem, number in [(stem, 1) for stem in good] + [("bands", 2), ("bands", 3)]:
        parallel = described(out / f"{stem}_3x4.tif", number)
        numpy.testing.assert_equal(parallel, serial(scenes / f"{stem}.tif", number, folder), stem)
