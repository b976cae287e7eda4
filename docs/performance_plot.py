#!/usr/bin/env python3
"""performance_plot.py TRANSFORMS.json > docs/images/performance.svg

Draws the time of the table-driven transforms over that of FFTW, for each length, from what
make bench has written.
"""
import json
import re
import sys

WIDTH, HEIGHT, LEFT, RIGHT, TOP, BOTTOM = 720, 400, 60, 170, 40, 50
SERIES = {"double split": "#1b6ca8", "float split": "#c0392b", "float interleaved": "#3c8d40"}


def points(path):
    """For each layout, (m, ratio) in ascending m."""
    found = {layout: [] for layout in SERIES}
    with open(path, encoding="utf-8") as file:
        for row in json.load(file)["rows"]:
            match = re.fullmatch(r"fft_Fast (\w+ \w+)/(\d+)", row["work"])
            if match and match[1] in found:
                found[match[1]].append((int(match[2]), row["ratio"]))
    return {layout: sorted(line) for layout, line in found.items()}


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__.splitlines()[0])
    lines = points(sys.argv[1])
    highest = max(1.5, *(ratio for line in lines.values() for _, ratio in line))
    lengths = [m for line in lines.values() for m, _ in line]
    if not lengths:
        sys.exit("performance_plot.py: the file has no rows of fft_Fast")
    first, last = min(lengths), max(lengths)

    def x(m):
        return LEFT + (m - first) / max(last - first, 1) * (WIDTH - LEFT - RIGHT)

    def y(ratio):
        return HEIGHT - BOTTOM - ratio / highest * (HEIGHT - TOP - BOTTOM)

    def text(at_x, at_y, words, anchor="middle", colour="#333"):
        print(f'<text x="{at_x:.1f}" y="{at_y:.1f}" text-anchor="{anchor}" fill="{colour}">{words}</text>')

    print(f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" '
          'font-family="sans-serif" font-size="13">')
    print(f'<rect width="{WIDTH}" height="{HEIGHT}" fill="white"/>')
    text(LEFT, 22, "Time of fft_Fast ÷ time of FFTW (lower is faster)", "start")
    for tenth in range(0, int(highest * 4) + 1):
        ratio = tenth / 4
        strong = ratio == 1.0
        print(f'<line x1="{LEFT}" x2="{WIDTH - RIGHT}" y1="{y(ratio):.1f}" y2="{y(ratio):.1f}" '
              f'stroke="{"#333" if strong else "#ddd"}"/>')
        text(LEFT - 8, y(ratio) + 4, f"{ratio:.2f}", "end")
    for m in range(first, last + 1, 2):
        text(x(m), HEIGHT - BOTTOM + 20, str(m))
    text((LEFT + WIDTH - RIGHT) / 2, HEIGHT - 10, "m (length 2^m)")
    if first <= 20 < last:
        print(f'<line x1="{x(20.5):.1f}" x2="{x(20.5):.1f}" y1="{TOP}" y2="{HEIGHT - BOTTOM}" '
              'stroke="#999" stroke-dasharray="4 4"/>')
        text(x(20.5) - 6, TOP + 14, "plans measured", "end", "#666")
        text(x(20.5) + 6, TOP + 14, "guessed", "start", "#666")
    for number, (layout, colour) in enumerate(SERIES.items()):
        line = lines[layout]
        path = " ".join(f"{x(m):.1f},{y(ratio):.1f}" for m, ratio in line)
        print(f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="2"/>')
        for m, ratio in line:
            print(f'<circle cx="{x(m):.1f}" cy="{y(ratio):.1f}" r="3" fill="{colour}">'
                  f"<title>{layout}, m = {m}: {ratio:.2f}</title></circle>")
        at_y = TOP + 20 + 22 * number
        print(f'<line x1="{WIDTH - RIGHT + 15}" x2="{WIDTH - RIGHT + 40}" y1="{at_y - 4}" '
              f'y2="{at_y - 4}" stroke="{colour}" stroke-width="2"/>')
        text(WIDTH - RIGHT + 46, at_y, layout, "start", colour)
    print("</svg>")


if __name__ == "__main__":
    main()
