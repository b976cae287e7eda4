"""Runs the tutorial and holds its image against geometry and theory. tutorial_test.py TUTORIAL"""
import cmath
import math
import pathlib
import runpy
import sys
import tempfile

with tempfile.TemporaryDirectory() as name:
    sys.argv = [sys.argv[1], name]
    found = runpy.run_path(sys.argv[0])
    # The radar's numbers once more, from its description: 100 MHz, 9.63 GHz, first sample at 10 km.
    reflectors = [(150, 803, 120), (420, 1010, 80), (650, 761, 100)]
    for (line, sample, amplitude), peak in zip(reflectors, found["peaks"], strict=True):
        distance = 10e3 + sample * 299792458 / 2e8
        phase = cmath.phase(cmath.exp(-4j * math.pi * distance * 9.63e9 / 299792458))
        assert peak[:2] == (line, sample), peak
        assert abs(peak[2] / amplitude - 1) < 0.03, peak
        assert abs(math.remainder(peak[3] - phase, 2 * math.pi)) < 0.05, (peak, phase)
    # The correlation of 4 neighbours leaves, of a flat spectrum that fills 0.8 of the band, 3.55 looks
    # of 4; the slopes of a chirp's spectrum leave a little less.
    assert 11 < found["predicted"] < 12.6, found["predicted"]
    assert abs(found["after"] / found["predicted"] - 1) < 0.03, (found["after"], found["predicted"])
    assert abs(found["before"] - 1) < 0.02, found["before"]
    pictures = sorted(pathlib.Path(name).iterdir())
    assert len(pictures) == 7 and min(p.stat().st_size for p in pictures) > 10000, pictures
