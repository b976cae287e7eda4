#!/usr/bin/env python3
"""table.py ALL.json PART.json ...: what the benchmarks have written, as one table and one file."""
import json
import sys


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    rows = []
    for path in sys.argv[2:]:
        with open(path, encoding="utf-8") as file:
            rows += json.load(file)["rows"]
    print(f"\n{'work':<40} {'ours, us':>12} {'peer, us':>12}  {'peer':<14} {'ratio':>6} {'target':>7}")
    for row in rows:
        target = f"{row['target']:7.2f}" if "target" in row else ""
        missed = " missed" if "target" in row and row["ratio"] > row["target"] else ""
        print(f"{row['work']:<40} {row['ours_us']:12.2f} {row['peer_us']:12.2f}  {row['peer']:<14} "
              f"{row['ratio']:6.2f} {target}{missed}")
    with open(sys.argv[1], "w", encoding="utf-8") as file:
        json.dump({"rows": rows}, file, indent=1)


if __name__ == "__main__":
    main()
