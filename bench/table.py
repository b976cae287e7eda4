#!/usr/bin/env python3
"""table.py ALL.json PART.json ...: what the benchmarks have written, as one table and one file.

Adds what follows from several rows: geometric means over lengths, how a ratio grows from a
short length to a long one, and what a call costs.
"""
import json
import math
import sys

LAYOUTS = {"double split": 0.75, "float split": 0.75, "float interleaved": 1.1}
MEANS = {f"{transform} {layout}": ("FFTW", target)
         for transform in ("fft_Fast", "ifft_Fast") for layout, target in LAYOUTS.items()}
MEANS |= {"fft double": ("libm+table", 0.7), "member fft double": ("libm+table", 0.7)}
GROWTHS = [(f"fft_Fast {layout} 2^24 : 2^10", f"fft_Fast planned {layout}/24",
            f"fft_Fast {layout}/10") for layout in LAYOUTS] + [
    ("FFT_2D int16 8192 : 1024", "FFT_2D int16/8192x8192", "FFT_2D int16/1024x1024")]
LARGEST_GROWTH = 1.1
CALLS = "1000 calls of sarnum_transform/6"  # microseconds of it are nanoseconds a call


def derived(rows):
    """Rows without times: of geometric means and of growths."""
    ratios = {}
    for row in rows:
        ratios.setdefault(row["work"], row["ratio"])
    for name, (peer, target) in MEANS.items():
        of_lengths = [ratios[work] for m in range(6, 21) if (work := f"{name}/{m}") in ratios]
        if of_lengths:
            mean = math.exp(sum(map(math.log, of_lengths)) / len(of_lengths))
            yield {"work": f"{name}, mean of 6 … 20", "peer": peer, "ratio": mean, "target": target}
    for name, long, short in GROWTHS:
        if long in ratios and short in ratios:
            yield {"work": f"growth {name}", "peer": "FFTW", "ratio": ratios[long] / ratios[short],
                   "target": LARGEST_GROWTH}
    for row in rows:
        if row["work"] == CALLS:
            yield {"work": "sarnum_transform of 2^6 beyond fft_Fast, ns", "peer": "fft_Fast",
                   "ratio": row["ours_us"] - row["peer_us"], "target": 30.0}


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    rows, about = [], {}
    for path in sys.argv[2:]:
        with open(path, encoding="utf-8") as file:
            part = json.load(file)
        rows += part.pop("rows")
        about.update(part)
    rows += derived(rows)
    print(f"\n{'work':<44} {'ours, us':>12} {'peer, us':>12}  {'peer':<20} {'ratio':>6} {'target':>7}")
    for row in rows:
        target = f"{row['target']:7.2f}" if "target" in row else ""
        missed = " missed" if "target" in row and row["ratio"] > row["target"] else ""
        times = [f"{row[side]:12.2f}" if side in row else 12 * " " for side in ("ours_us", "peer_us")]
        print(f"{row['work']:<44} {times[0]} {times[1]}  {row['peer']:<20} "
              f"{row['ratio']:6.2f} {target}{missed}")
    with open(sys.argv[1], "w", encoding="utf-8") as file:
        json.dump({**about, "rows": rows}, file, indent=1)


if __name__ == "__main__":
    main()
