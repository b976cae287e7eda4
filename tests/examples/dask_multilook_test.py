"""Multilooks scenes on two workers, kills one at its work, and compares with the tool, scene by scene.

dask_multilook_test.py EXAMPLE TOOL
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


def make_scene(path, kind, bands, draw):
    """A raster whose sides are no multiples of the looks."""
    width, height = 1501, 1103
    file = gdal.GetDriverByName("GTiff").Create(str(path), width, height, bands, kind)
    map_reference = osr.SpatialReference()
    map_reference.ImportFromEPSG(32631)
    if kind == gdal.GDT_CInt16:
        file.SetProjection(map_reference.ExportToWkt())
        file.SetGeoTransform((500000, 10, 1, 5000000, 2, -20))
    elif kind == gdal.GDT_CFloat32:
        file.SetGCPs([gdal.GCP(500000 + x, 5000000 - y, 0, x, y) for x in (0, 700) for y in (9, 801)],
                     map_reference)
    else:
        file.GetRasterBand(1).SetNoDataValue(-99)
    for band in range(1, bands + 1):
        file.GetRasterBand(band).WriteArray(draw((height, width)))


def make_scenes(folder):
    random = numpy.random.default_rng(7)

    def complex_numbers(shape):
        return 500 * (random.standard_normal(shape) + 1j * random.standard_normal(shape))

    def amplitudes(shape):
        values = random.rayleigh(1, shape)
        values[:50, ::7] = -99
        return values

    for k in range(3):
        make_scene(folder / f"integers{k}.tif", gdal.GDT_CInt16, 1, lambda s: complex_numbers(s).round())
    make_scene(folder / "bands.tif", gdal.GDT_CFloat32, 3, complex_numbers)
    make_scene(folder / "gaps.tif", gdal.GDT_Float32, 1, amplitudes)
    make_scene(folder / "existing.tif", gdal.GDT_CInt16, 1, complex_numbers)
    make_scene(folder / "short.tif", gdal.GDT_CInt16, 1, complex_numbers)
    os.truncate(folder / "short.tif", 4_000_000)
    gdal.GetDriverByName("GTiff").Create(str(folder / "unwritten.tif"), 99, 99, options=["SPARSE_OK=YES"])


def stop(pid):
    """Whether the process could be stopped: it does nothing any more."""
    try:
        os.kill(pid, signal.SIGSTOP)
        while pathlib.Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()[0] != "T":
            time.sleep(0.001)
        return True
    except (OSError, IndexError):
        return False


def kill_a_worker(run, out):
    """Kills a worker that has a file half written; gives its scene's output."""
    while run.poll() is None:
        for file in out.glob(".*.work/*.tmp"):
            pid = int(file.name.partition("-")[0])
            if stop(pid):
                if file.exists():
                    os.kill(pid, signal.SIGKILL)
                    return out / file.parent.name[1:-len(".work")]
                os.kill(pid, signal.SIGCONT)
        time.sleep(0.001)
    raise AssertionError(f"no worker was found at work: {run.communicate()}")


def described(path, numbers):
    file = gdal.Open(str(path))
    points = [(p.GCPPixel, p.GCPLine, p.GCPX, p.GCPY) for p in file.GetGCPs()]
    kept = {item: text for item, text in file.GetMetadata().items() if item != "SARNUM_SOURCE"}
    bands = [file.GetRasterBand(number) for number in numbers]
    return (file.GetGeoTransform(), file.GetProjection(), file.GetGCPProjection(), points, kept,
            [numpy.float64(band.GetNoDataValue() or 0) for band in bands],
            [band.ReadAsArray() for band in bands])


def serial(scene, number, folder):
    """What the tool makes of a band."""
    names = [str(folder / name) for name in ("band.vrt", "intensity.tif", "looks.tif")]
    gdal.Translate(names[0], str(scene), bandList=[number])
    for command in (["detect", *names[:2]], ["multilook", *names[1:], "--looks", "3x4"]):
        subprocess.run([TOOL, *command, "-q", "--overwrite"], check=True)
    return described(names[2], [1])


def main():
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        scenes, out = folder / "scenes", folder / "out"
        scenes.mkdir()
        out.mkdir()
        make_scenes(scenes)
        (out / "existing_3x4.tif").write_text("mine")
        (out / ".gaps_3x4.tif.work").mkdir()  # as a run that was killed leaves it
        (out / ".gaps_3x4.tif.work" / "whole.tif").write_text("stale")
        run = subprocess.Popen([sys.executable, EXAMPLE, str(scenes / "*.tif"), str(out), "--looks", "3x4", "--rows", "60",
                                "--workers", "2"], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        try:
            killed = kill_a_worker(run, out)
            assert not killed.exists()
            complete = {file: file.read_bytes() for file in out.glob("*.tif")}
            printed, errors = run.communicate(timeout=100)
        finally:
            run.kill()
        told = [line for line in errors.splitlines() if line.startswith("dask_multilook: ") and "warning" not in line]
        assert run.returncode == 1 and len(told) == 3, errors
        assert any("existing_3x4.tif' exists; give --overwrite" in line for line in told), errors
        assert any("short.tif'" in line for line in told), errors
        assert any("unwritten.tif' is incomplete" in line for line in told), errors
        assert printed == f"5 of 8 scenes are in '{out}'\n", printed

        assert sorted(os.listdir(out)) == sorted(
            f"{file.stem}_3x4.tif" for file in scenes.iterdir() if file.stem not in ("short", "unwritten")), os.listdir(out)
        for file, content in complete.items():
            assert file.read_bytes() == content, file
        for scene in scenes.iterdir():
            if scene.stem not in ("short", "unwritten", "existing"):
                for number in range(1, 4 if scene.stem == "bands" else 2):
                    parallel = described(out / f"{scene.stem}_3x4.tif", [number])
                    numpy.testing.assert_equal(parallel, serial(scene, number, folder), str(scene))


main()
