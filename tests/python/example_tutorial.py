"""Runs the tutorial and holds its image against geometry and theory. example_tutorial.py TUTORIAL"""
import cmath
import math
import os
import runpy
import sys
import tempfile

with tempfile.TemporaryDirectory() as folder:
    sys.argv = [sys.argv[1], folder]
    found = runpy.run_path(sys.argv[0])
    # The radar's numbers once more, from its description: 100 MHz, 9.63 GHz, first sample at 10 km.
    reflectors = [(150, 803, 120), (420, 1010, 80), (650, 761, 100)]
    for (line, sample, amplitude), peak in zip(reflectors, found["peaks"], strict=True):
        distance = 10e3 + sample * 299792458 / 2e8
        ratio = cmath.rect(*peak[2:]) / cmath.rect(amplitude, -4 * math.pi * distance * 9.63e9 / 299792458)
        assert peak[:2] == (line, sample) and abs(ratio - 1) < 0.05, (peak, ratio)
    # The correlation of 4 neighbours leaves, of a flat spectrum that fills 0.8 of the band, 3.55 looks
    # of 4; the slopes of a chirp's spectrum leave a little less.
    assert 11 < found["predicted"] < 12.6, found["predicted"]
    assert abs(found["after"] / found["predicted"] - 1) < 0.03, (found["after"], found["predicted"])
    assert abs(found["before"] - 1) < 0.02, found["before"]
    sizes = [entry.stat().st_size for entry in os.scandir(folder)]
    assert len(sizes) == 7 and min(sizes) > 10000, sizes
