#!/usr/bin/env python3
"""Draws how the first initialise of a process grows, one SVG file a series.

    build/bench/bin/tav_bench --benchmark_filter=InitializeBy --benchmark_format=json \
        | scripts/draw-growth.py docs

Both axes are logarithmic. The exponent is that of the time above the time of the smallest size, by
least squares over the sizes from a tenth of the largest on; below them the constant is all there is
to see.
"""
import json
import math
import sys

SERIES = {
    "InitializeByModels": ("models", "description files"),
    "InitializeByBridges": ("bridges", "bridges on the bus"),
    "InitializeByNames": ("names", "names of absent devices"),
    "InitializeByDevices": ("devices", "devices found"),
}
WIDTH, HEIGHT, LEFT, RIGHT, TOP, BOTTOM = 560, 360, 70, 20, 40, 50


def read(stream):
    """The best processor time in milliseconds of each size of each series."""
    points = {}
    for run in json.load(stream)["benchmarks"]:
        name, _, size = run["name"].partition("/")
        if name in SERIES and run.get("run_type") == "iteration":
            sizes = points.setdefault(name, {})
            size = int(size.split("/")[0])
            time = run["processor_s"] * 1000
            sizes[size] = min(time, sizes.get(size, time))
    return {name: sorted(sizes.items()) for name, sizes in points.items()}


def exponent(points):
    smallest = points[0][1]
    largest = points[-1][0]
    upper = [(math.log(n), math.log(t - smallest)) for n, t in points[1:]
             if n >= largest / 10 and t > smallest]
    count = len(upper)
    mean_x = sum(x for x, _ in upper) / count
    mean_y = sum(y for _, y in upper) / count
    return (sum((x - mean_x) * (y - mean_y) for x, y in upper)
            / sum((x - mean_x) ** 2 for x, _ in upper))


def draw(points, label):
    shown = [(n, t) for n, t in points if n > 0]
    low_x, high_x = math.floor(math.log10(shown[0][0])), math.ceil(math.log10(shown[-1][0]))
    times = [t for _, t in shown]
    low_y, high_y = math.floor(math.log10(min(times))), math.ceil(math.log10(max(times)))

    def x(n):
        return LEFT + (math.log10(n) - low_x) / (high_x - low_x) * (WIDTH - LEFT - RIGHT)

    def y(t):
        return HEIGHT - BOTTOM - (math.log10(t) - low_y) / (high_y - low_y) * (HEIGHT - TOP - BOTTOM)

    out = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" '
           'font-family="sans-serif" font-size="12">',
           f'<rect width="{WIDTH}" height="{HEIGHT}" fill="white"/>',
           f'<text x="{WIDTH / 2}" y="22" text-anchor="middle" font-size="14">First initialise by '
           f'{label}: exponent {exponent(points):.2f}</text>']
    for power in range(low_x, high_x + 1):
        at = x(10 ** power)
        out.append(f'<line x1="{at:.1f}" y1="{TOP}" x2="{at:.1f}" y2="{HEIGHT - BOTTOM}" '
                   'stroke="#ddd"/>')
        out.append(f'<text x="{at:.1f}" y="{HEIGHT - BOTTOM + 16}" text-anchor="middle">'
                   f'{10 ** power:,}</text>')
    for power in range(low_y, high_y + 1):
        at = y(10 ** power)
        out.append(f'<line x1="{LEFT}" y1="{at:.1f}" x2="{WIDTH - RIGHT}" y2="{at:.1f}" '
                   'stroke="#ddd"/>')
        out.append(f'<text x="{LEFT - 6}" y="{at + 4:.1f}" text-anchor="end">'
                   f'{10.0 ** power:g} ms</text>')
    path = " ".join(f"{x(n):.1f},{y(t):.1f}" for n, t in shown)
    out.append(f'<polyline points="{path}" fill="none" stroke="#0057a3" stroke-width="2"/>')
    for n, t in shown:
        out.append(f'<circle cx="{x(n):.1f}" cy="{y(t):.1f}" r="3.5" fill="#0057a3">'
                   f'<title>{n:,}: {t:.3g} ms</title></circle>')
    # What grows in proportion, through the largest size.
    n, t = shown[-1]
    least = max(shown[0][0], n * 10 ** low_y / t)
    out.append(f'<line x1="{x(least):.1f}" y1="{y(t * least / n):.1f}" x2="{x(n):.1f}" '
               f'y2="{y(t):.1f}" stroke="#a33" stroke-dasharray="4 4"/>')
    out.append(f'<text x="{WIDTH / 2}" y="{HEIGHT - 12}" text-anchor="middle">{label} (dashed: in '
               'proportion)</text>')
    out.append("</svg>")
    return "\n".join(out) + "\n"


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: draw-growth.py FOLDER < benchmarks.json")
    for name, points in read(sys.stdin).items():
        short, label = SERIES[name]
        with open(f"{sys.argv[1]}/growth-{short}.svg", "w", encoding="utf-8") as file:
            file.write(draw(points, label))
        print(f"{label}: exponent {exponent(points):.2f}, "
              + ", ".join(f"{n:,}: {t:.3g} ms" for n, t in points))


main()
