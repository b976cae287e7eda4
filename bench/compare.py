#!/usr/bin/env python3
"""compare.py OLD.json NEW.json: how the ratios to the peers have changed between two runs.

Rows whose ratio changed by more than a tenth are marked with + (slower) or - (faster): less is
within what one run differs from the next on a machine that has other things to do.
"""
import json
import sys


def ratios(path):
    with open(path, encoding="utf-8") as file:
        rows = json.load(file)["rows"]
        return {f"{row['work']}, {row['peer']}": row["ratio"] for row in rows}


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__.splitlines()[0])
    try:
        old, new = ratios(sys.argv[1]), ratios(sys.argv[2])
    except (OSError, ValueError, KeyError) as error:
        sys.exit(f"compare.py: {error!r}: expected two files that make bench has written")
    print(f"{'work':<52} {'old':>7} {'new':>7} {'change':>7}")
    for work, ratio in new.items():
        if work not in old:
            print(f"{work:<52} {'':>7} {ratio:7.2f}")
            continue
        change = ratio / old[work]
        mark = "+" if change > 1.1 else "-" if change < 1 / 1.1 else " "
        print(f"{work:<52} {old[work]:7.2f} {ratio:7.2f} {change:7.2f} {mark}")
    for work in sorted(old.keys() - new.keys()):
        print(f"{work:<52} {old[work]:7.2f} {'gone':>7}")


if __name__ == "__main__":
    main()
