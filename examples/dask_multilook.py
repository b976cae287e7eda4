#!/usr/bin/python3
"""Detects and multilooks many radar scenes on the processes of one or many machines.

    dask_multilook.py scenes/*.tif looks/ --looks 4x4
    dask_multilook.py huge.tif looks/ --looks 8x2 --scheduler tcp://10.0.0.1:8786

Each scene becomes OUTPUT_FOLDER/NAME_4x4.tif, a GeoTIFF of 32-bit floats with as many bands: what
`sarnum detect` and then `sarnum multilook` make of each band. A scene is cut into tasks by its bands
and, where it is huge, by rows; each reads a few rows at a time, so memory does not grow with the
scene. Dask hands the tasks to its workers and repeats those of a worker that died.

No file is ever seen half written. All tasks of a scene write into one hidden folder beside the
output, each its own file, under a name of its own until it is whole. What is there need not be made
again: a repeated task does only what is missing. This program alone moves the finished scene to its
name and removes the folder, whatever happened; if it is killed itself, its next run does so.

Exit status: 0, or 1 when a scene failed (the others are done), or 2 when the arguments are at fault.
"""
import argparse
import contextlib
import dataclasses
import glob
import logging
import os
import pathlib
import re
import shutil
import signal
import sys
import threading
import uuid

import numpy
import sarnum
from dask.distributed import Client, KilledWorker, LocalCluster, as_completed, progress
from osgeo import gdal

PIXELS_AT_ONCE = 1 << 20  # that a task holds in memory
PIXELS_OF_A_TASK = 1 << 26
# Items that the mean of pixels makes untrue, or may.
OUTDATED = re.compile("^(STATISTICS_|TIFFTAG_MINSAMPLE|TIFFTAG_MAXSAMPLE|SARNUM_LOOKS)|SPACING|LOOKS|RESOLUTION$|"
                      "PIXEL_?SIZE|SAMPLING_|LINE_?TIME|TIME_?INTERVAL|IMAGE_SIZE|LINE_LENGTH", re.IGNORECASE)
CACHE = 1 << 26  # bytes that GDAL keeps of a file, beside what a row of its tiles needs


class SceneError(Exception):
    """What is wrong with a scene, in one line that says what to do."""


@dataclasses.dataclass(frozen=True)
class Scene:
    """What a worker must know: a file all of whose bands have one size."""

    path: pathlib.Path
    output: pathlib.Path
    across: int
    down: int
    detect: str
    creation_options: tuple

    @property
    def work(self):
        return self.output.with_name(f".{self.output.name}.work")

    @property
    def whole(self):
        return self.work / "whole.tif"

    def part(self, band, first):
        return self.work / f"band{band}_row{first}.tif"


# --- On the workers ------------------------------------------------------------------------------


def one_line(error):
    return " ".join(str(error).split()) or type(error).__name__


def opened(path):
    gdal.UseExceptions()
    try:
        file = gdal.Open(os.fspath(path))
    except RuntimeError as error:
        raise SceneError(f"cannot open '{path}': {one_line(error)}") from None
    if file.RasterCount == 0:
        raise SceneError(f"'{path}' holds no raster band; name one of its parts (see gdalinfo)")
    return file


def reduced(size, looks):
    return -(-size // looks)


def is_complex(band):
    return gdal.DataTypeIsComplex(band.DataType)


def lost_nodata(scene, band):
    """The nodata value, where detected samples could no longer be told from it by theirs."""
    nodata = band.GetNoDataValue()
    changes = scene.detect == "intensity" or scene.detect == "amplitude" and is_complex(band)
    return nodata if nodata and changes else None


def nodata_values(nodata):
    """The value as declared, and as a 32-bit float holds it."""
    is_float = abs(nodata) <= numpy.finfo(numpy.float32).max
    return [nodata, float(numpy.float32(nodata))] if is_float else [nodata]


def detected(scene, band, pixels):
    """Pixels, which are read as doubles, to samples that can be averaged."""
    samples = pixels
    if scene.detect == "intensity":
        re, im = sarnum.numeric.parts(pixels)
        samples = re * re + im * im
    elif is_complex(band):
        samples = sarnum.numeric.amplitude(pixels)
    nodata = lost_nodata(scene, band)
    if nodata is not None:
        samples = numpy.where(numpy.isin(pixels, nodata_values(nodata)), numpy.nan, samples)
    with numpy.errstate(over="ignore"):
        return samples.astype(numpy.float32)


def averaged(scene, number, first, last):
    """The output rows first ... last of a band, some rows at a time: (band, row, means)."""
    file = opened(scene.path)
    band = file.GetRasterBand(number)
    top, bottom = first * scene.down, min(last * scene.down, file.RasterYSize)
    coverage = band.GetDataCoverageStatus(0, top, file.RasterXSize, bottom - top)[0]
    if coverage & gdal.GDAL_DATA_COVERAGE_STATUS_EMPTY and band.GetNoDataValue() is None:
        raise SceneError(f"'{scene.path}' is incomplete: parts of it are missing; copy or make it again")
    row_of_blocks = file.RasterXSize * band.GetBlockSize()[1] * gdal.GetDataTypeSize(band.DataType) // 8
    gdal.SetCacheMax(CACHE + row_of_blocks)
    step = scene.down * max(1, PIXELS_AT_ONCE // (file.RasterXSize * scene.down))
    for y in range(top, bottom, step):
        try:
            pixels = band.ReadAsArray(0, y, file.RasterXSize, min(step, bottom - y),
                                      buf_type=gdal.GDT_CFloat64 if is_complex(band) else gdal.GDT_Float64)
        except RuntimeError as error:
            raise SceneError(f"cannot read '{scene.path}': {one_line(error)}; copy or make it again") from None
        means = sarnum.imaging.multilook(detected(scene, band, pixels), scene.across, scene.down)
        yield number, y // scene.down, means


def joined(scene, parts):
    """The same of all parts, which other tasks have written."""
    for band, first in parts:
        file = opened(scene.part(band, first))
        step = max(1, PIXELS_AT_ONCE // file.RasterXSize)
        for y in range(0, file.RasterYSize, step):
            count = min(step, file.RasterYSize - y)
            yield band, first + y, file.GetRasterBand(1).ReadAsArray(0, y, file.RasterXSize, count)


def describe(target, scene):
    """Gives the output the georeferencing of its scene, with larger pixels."""
    source = opened(scene.path)
    transform = source.GetGeoTransform(can_return_null=True)
    points = source.GetGCPs()
    if transform:
        looks = (1, scene.across, scene.down) * 2
        target.SetGeoTransform([number * n for number, n in zip(transform, looks)])
    elif points:
        for point in points:
            point.GCPPixel /= scene.across
            point.GCPLine /= scene.down
        target.SetGCPs(points, source.GetGCPSpatialRef())
    if source.GetSpatialRef() and (transform or not points):
        target.SetSpatialRef(source.GetSpatialRef())
    items = source.GetMetadata()
    kept = {name: text for name, text in items.items() if not OUTDATED.search(name)}
    if not transform and points:
        # GDAL 3.6 moves the control points of a file that it creates for values at points.
        kept.pop("AREA_OR_POINT", None)
    before = re.fullmatch(r"(\d+)x(\d+)", items.get("SARNUM_LOOKS", "1x1"))
    looks = {"SARNUM_LOOKS": f"{int(before[1]) * scene.across}x{int(before[2]) * scene.down}"} if before else {}
    quantity = {} if scene.detect == "none" else {"SARNUM_QUANTITY": scene.detect}
    target.SetMetadata(kept | quantity | looks | {
        "SARNUM_SOURCE": os.fspath(scene.path),
        "SARNUM_VERSION": sarnum.__version__,
    })
    for number in range(1, source.RasterCount + 1):
        band = source.GetRasterBand(number)
        if band.GetNoDataValue() is not None:
            lost = lost_nodata(scene, band) is not None
            target.GetRasterBand(number).SetNoDataValue(numpy.nan if lost else band.GetNoDataValue())


def write(target, width, height, blocks, first=0, count=1, options=(), scene=None):
    """Makes a GeoTIFF of (band, row, samples), its rows counted from `first`: whole, or not at all."""
    temporary = target.with_name(f"{os.getpid()}-{uuid.uuid4().hex}.tmp")
    gdal.UseExceptions()
    try:
        file = gdal.GetDriverByName("GTiff").Create(
            os.fspath(temporary), width, height, count, gdal.GDT_Float32,
            ["BIGTIFF=IF_SAFER", "INTERLEAVE=BAND", *options])
        if scene:
            describe(file, scene)
        for band, row, samples in blocks:
            file.GetRasterBand(1 if scene is None else band).WriteArray(samples, 0, row - first)
        file.FlushCache()
        file = None
        file = opened(temporary)  # a close that failed shows here only
        for band in range(1, count + 1):
            file.GetRasterBand(band).ReadAsArray(0, height - 1, width, 1)
        file = None
        os.replace(temporary, target)
    finally:
        gdal.DontUseExceptions()  # closing what could not be written fails too
        file = None
        temporary.unlink(missing_ok=True)


def make_part(scene, width, band, first, last):
    write(scene.part(band, first), width, last - first, averaged(scene, band, first, last), first)


def make_whole(scene, width, height, bands, parts):
    blocks = joined(scene, parts) if parts else averaged(scene, 1, 0, height)
    write(scene.whole, width, height, blocks, 0, bands, scene.creation_options, scene)


def attempt(target, make, scene, *arguments, after=()):
    """A task: makes its file unless it is there. Gives nothing, or what went wrong in one line.

    A scene whose folder is gone is finished, for better or worse: its tasks are repeated only because
    the worker that knew their results has died.
    """
    failure = next(filter(None, after), None)
    failed = scene.work / "failed"
    if failure or target.exists() or not scene.work.is_dir():
        return failure
    if failed.exists():  # the worker that knew why may have died
        return failed.read_text(encoding="utf-8")
    try:
        make(scene, *arguments)
    except SceneError as error:
        failure = str(error)
    except (RuntimeError, OSError, ValueError, TypeError, MemoryError) as error:
        failure = f"cannot write '{scene.output}': {one_line(error)}; see whether its disk is full"
    if failure and scene.work.is_dir():
        failed.write_text(failure, encoding="utf-8", errors="replace")  # the other tasks of the scene can be left undone
    return failure


# --- Where the program runs ------------------------------------------------------------------------


def tell(line):
    print(f"dask_multilook: {line}", file=sys.stderr)


def submit(client, scene, rows_of_a_task):
    """Hands the scene's tasks to Dask; the last one, which is given back, waits for the others."""
    file = opened(scene.path)
    for number in range(1, file.RasterCount + 1):
        band = file.GetRasterBand(number)
        if scene.detect == "none" and is_complex(band):
            raise SceneError(f"'{scene.path}' holds complex pixels, which cannot be averaged; leave out "
                             "--detect none")
        if scene.detect == "intensity" and not is_complex(band):
            tell(f"warning: band {number} of '{scene.path}' holds real values, which are taken as amplitudes "
                 "and squared; --detect none averages them as they are")
        if band.GetScale() not in (None, 1) or band.GetOffset() not in (None, 0):
            raise SceneError(f"'{scene.path}' has a scale or an offset, which would be lost; first run: "
                             "gdal_translate -unscale")
        if band.GetMetadataItem("PIXELTYPE", "IMAGE_STRUCTURE") == "SIGNEDBYTE":
            raise SceneError(f"'{scene.path}' holds signed bytes; first run: gdal_translate -ot Int16")
    width, height = reduced(file.RasterXSize, scene.across), reduced(file.RasterYSize, scene.down)
    step = rows_of_a_task or max(1, PIXELS_OF_A_TASK // (file.RasterXSize * scene.down))
    shutil.rmtree(scene.work, ignore_errors=True)
    scene.work.mkdir()
    parts = [(band, first) for band in range(1, file.RasterCount + 1) for first in range(0, height, step)]
    parts = [] if len(parts) == 1 else parts
    # Each task has a key of its own (pure=False): equal ones of another run are none of ours.
    made = [client.submit(attempt, scene.part(band, first), make_part, scene, width, band, first,
                          min(first + step, height), pure=False) for band, first in parts]
    return client.submit(attempt, scene.whole, make_whole, scene, width, height, file.RasterCount, parts,
                         after=made, pure=False)


def companions(output):
    """Files that GDAL would read with the output: not those of another one."""
    return [pathlib.Path(f"{output}{suffix}") for suffix in (".aux.xml", ".ovr", ".msk")]


def check_output(scene, overwrite):
    for path in [scene.output, *companions(scene.output)]:
        if path.exists() and not overwrite:
            raise SceneError(f"'{path}' exists; give --overwrite to replace it")


def publish(scene, overwrite):
    check_output(scene, overwrite)  # it may have appeared meanwhile
    os.replace(scene.whole, scene.output)
    for path in companions(scene.output):
        path.unlink(missing_ok=True)


def run(client, scenes, rows_of_a_task, overwrite, show_progress, clean):
    """Works on all scenes; gives one line for each that failed. What is pushed to `clean` is called
    when no worker is left."""
    failures, futures = [], {}
    for scene in scenes:
        try:
            check_output(scene, overwrite)
            clean.callback(shutil.rmtree, scene.work, ignore_errors=True)
            futures[submit(client, scene, rows_of_a_task)] = scene
        except (SceneError, RuntimeError, OSError) as error:
            failures.append(str(error))
    # All futures are held to the end, or the bar could not find them.
    bar = threading.Thread(target=progress, args=(list(futures),), daemon=True)
    if show_progress and futures:
        bar.start()
    for future in as_completed(futures):
        scene = futures[future]
        try:
            failure = future.result()
            if not failure:
                publish(scene, overwrite)
        except (SceneError, OSError) as error:
            failure = str(error)
        except KilledWorker:
            failure = f"'{scene.path}': three workers died in one of its tasks; see their logs and memory"
        except Exception as error:  # of Dask, or what a worker lacks
            failure = f"'{scene.path}': {one_line(error)}"
        failures += [failure] if failure else []
        shutil.rmtree(scene.work, ignore_errors=True)
    if bar.ident:
        bar.join(timeout=5)
    return failures


def looks(text):
    across, _, down = text.lower().partition("x")
    if not (across.isdecimal() and down.isdecimal() and int(across) > 0 and 0 < int(down) <= 36):
        raise argparse.ArgumentTypeError(f"'{text}': give ACROSSxDOWN, e.g. 4x4, at most 36 down")
    return int(across), int(down)


def arguments():
    parser = argparse.ArgumentParser(description="Detects and multilooks many scenes on Dask.")
    parser.add_argument("inputs", nargs="+", metavar="INPUT",
                        help="rasters that GDAL reads; a pattern in quotes is expanded here")
    parser.add_argument("folder", metavar="OUTPUT_FOLDER", help="made if it is not there")
    parser.add_argument("--looks", type=looks, required=True, metavar="ACROSSxDOWN")
    parser.add_argument("--detect", choices=("intensity", "amplitude", "none"), default="intensity",
                        help="what is averaged (default: %(default)s; none: real samples as they are)")
    cluster = parser.add_mutually_exclusive_group()
    cluster.add_argument("--scheduler", metavar="ADDRESS",
                         help="of a cluster whose workers see all files by the same names as this machine")
    cluster.add_argument("--workers", type=int, default=os.cpu_count(), metavar="N",
                         help="processes of a cluster on this machine (default: %(default)s)")
    parser.add_argument("--rows", type=int, metavar="N",
                        help="output rows of a task (default: so many that it reads 64 million pixels)")
    parser.add_argument("--co", action="append", default=[], metavar="NAME=VALUE",
                        help="creation option of GeoTIFF; may be repeated")
    parser.add_argument("--overwrite", action="store_true", help="replace outputs that exist")
    parser.add_argument("--progress", action="store_true", default=sys.stdout.isatty(),
                        help="show Dask's bar though this is no terminal")
    parser.add_argument("-q", "--quiet", action="store_true", help="neither bar nor summary")
    given = parser.parse_args()
    if given.workers < 1 or given.rows is not None and given.rows < 1:
        parser.error("--workers and --rows are at least 1")
    names = [name for text in given.inputs
             for name in ([text] if os.path.exists(text) else sorted(glob.glob(text)) or [text])]
    scenes = {}
    for name in names:
        path = pathlib.Path(os.path.abspath(name))
        across, down = given.looks
        output = pathlib.Path(os.path.abspath(given.folder)) / f"{path.stem}_{across}x{down}.tif"
        if output in scenes:
            parser.error(f"'{scenes[output].path}' and '{path}' would become one file, '{output}'; "
                         "work on them in two runs")
        scenes[output] = Scene(path, output, across, down, given.detect, tuple(given.co))
    read = {os.path.realpath(scene.path) for scene in scenes.values()}
    for output in scenes:
        if os.path.realpath(output) in read:
            parser.error(f"'{output}' is to be read and to be written; choose another folder")
    return given, list(scenes.values())


def main():
    given, scenes = arguments()
    signal.signal(signal.SIGTERM, signal.default_int_handler)  # batch systems end programs by it
    try:
        os.makedirs(given.folder, exist_ok=True)
        with contextlib.ExitStack() as clean, contextlib.ExitStack() as stack:
            cluster = given.scheduler or stack.enter_context(LocalCluster(
                n_workers=given.workers, threads_per_worker=1, memory_limit=0,
                dashboard_address="127.0.0.1:0", silence_logs=logging.ERROR))
            client = stack.enter_context(Client(cluster, timeout=10))
            client.wait_for_workers(1, timeout=60)
            failures = run(client, scenes, given.rows, given.overwrite, given.progress and not given.quiet,
                           clean)
    except (OSError, TimeoutError) as error:
        tell(f"no work could be done: {error}")
        return 1
    except KeyboardInterrupt:
        tell("interrupted")
        return 1
    for failure in failures:
        tell(failure)
    if not given.quiet:
        print(f"{len(scenes) - len(failures)} of {len(scenes)} scenes are in '{given.folder}'")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
