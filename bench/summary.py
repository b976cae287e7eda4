#!/usr/bin/env python3
"""summary.py ALL.json: the table of docs/performance.md, a line for each kind of work.

Of what was measured for several sizes, it shows the least and the greatest ratio.
"""
import json
import sys


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__.splitlines()[0])
    with open(sys.argv[1], encoding="utf-8") as file:
        rows = json.load(file)["rows"]
    groups = {}
    for row in rows:
        name, _, size = row["work"].partition("/")
        groups.setdefault((name, row["peer"], row.get("target")), []).append((size, row["ratio"]))
    print("| work | sizes | peer | ratio | to reach |\n|---|---|---|---|---|")
    for (name, peer, target), sizes in groups.items():
        ratios = [ratio for _, ratio in sizes]
        span = " … ".join(dict.fromkeys((f"{min(ratios):.2f}", f"{max(ratios):.2f}")))
        first, last = sizes[0][0], sizes[-1][0]
        print(f"| {name} | {' … '.join(dict.fromkeys((first, last)))} | {peer} | {span} | "
              f"{'' if target is None else f'{target:.2f}'} |")


if __name__ == "__main__":
    main()
