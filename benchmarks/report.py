"""Writes the figures of two runs of ky_bench into docs/benchmarks.md, its picture, and README.md.

    ./dev bench --simd=FOLDER --target=avx2 --csv=avx2.csv
    ./dev bench --simd=FOLDER --csv=avx512.csv
    python3 benchmarks/report.py avx2.csv avx512.csv

What stands between <!-- figures --> and <!-- end of figures --> is replaced, and in README.md also
the numbers of its table. An operation that is slower than a peer needs its reason in WHY.
"""

import csv
import datetime
import math
import re
import subprocess
import sys
from collections import defaultdict
from pathlib import Path

ROOT = Path(__file__).parents[1]
SIZES = "640x480", "1920x1080", "4096x4096"
SMALL = "100x100"  # in the means only, and in a sentence
MIDDLE = SIZES[1]
PEERS = {"opencv": "OpenCV", "simd": "Simd"}
NOISE = 1.05

# The operations that the tables show. The means and the list of slower ones cover all operations.
SHOWN = {
    "operators": ["copy", "add", "subtract", "multiply", "divide", "scaled divide", "average", "and",
                  "max", "absolute difference", "greater", "add, constant", "C24 add"],
    "threshold": ["threshold", "automatic threshold, min residue", "colour box"],
    "lookup": ["ImgLut", "ImgGainOffset", "ImgUniformize, light", "ImgNormalize"],
    "histogram": ["ImgHistogram, noise", "ImgHistogram, scene", "ImgEqualize", "ImgProjectOnARow",
                  "ImgProjectOnAColumn"],
    "statistics": ["ImgPixelAverage", "ImgPixelStdDev", "ImgPixelStat", "ImgArea", "ImgRmsNoise",
                   "ImgWeighedMoments", "ImgBinaryMoments"],
    "convolution": ["uniform 3x3", "uniform 5x5", "binomial 3x3", "binomial 5x5", "binomial 7x7",
                    "sharpen by 4", "Sobel x", "Sobel modulus", "Laplacian 8", "kernel 3x3",
                    "kernel 5x5", "kernel 7x7", "kernel 3x3, float", "kernel 3x3, float, binomial",
                    "C24 binomial 3x3", "C24 Sobel x"],
    "neighbourhoods": ["uniform, half 10", "uniform, half 50", "Gaussian, half 5",
                       "Gaussian, half 15", "local deviation, half 10", "local threshold, half 15"],
    "gradient": ["gradient pair", "gradient length"],
    "morphology": ["dilate box 1", "dilate box 7", "dilate box 50", "dilate disk 7", "open box 3"],
    "shapes": ["dilate cross 15", "dilate ellipse 15"],
    "rank": ["median 3", "median 5", "median 15", "median 51", "distance Euclidean",
             "distance city block"],
    "geometry": ["turn by 15, 0 bits", "turn by 15, 8 bits", "turn by 90, 8 bits",
                 "C24 turn by 15, 8 bits", "warp by two tables", "mirror horizontally",
                 "mirror vertically"],
    "sizes": ["halve", "shrink to a third", "shrink to three quarters", "resize to three quarters"],
    "temporal": ["moving average of 4", "moving average of 10", "recursive average",
                 "recursive average, adaptive"],
    "conversion": ["ImgConvert C24 to BW8", "ImgConvert BW8 to C24", "ImgConvert BW8 to BW16",
                   "ImgConvertBayer"],
    "frequency": ["ImgSlowDFT, forward", "ImgComplexModulus"],
    "objects": ["objects, disks", "objects and labels, disks"],
    "contour": ["contour, comb with teeth downwards"],
    "vectors": ["segments, rows", "segments, slanted", "profile uniform, half width 5"],
}

# Why an operation cannot be faster, by what its name matches; the first match counts.
MEMORY = "Memory limits both libraries, and the ratio differs from run to run."
WHY = {
    r"^(C24 |BW16 |BW8, C24 |BW8 to C24 )?(copy|fill|add|subtract|multiply|and|or|xor|min|max|"
    r"average|greater|less|equal|absolute difference|invert)\b.*": MEMORY,
    r"^threshold|^set where|^median 3": MEMORY,
    r"^(get|set|swap) frame|^ImgProjectOnA|^ImgPixelAverage|^ImgLut": MEMORY,
    r"^halve": "At 640 x 480 on Zen 5 with AVX-512 its time is one of two, 0.005 or 0.009 ns a pixel, "
    "from run to run in the same memory; why is not known.",
    r"^ImgHistogram|^automatic threshold": "In the noise of these pictures every pixel "
    "increments a counter, and the processor makes one store a cycle; OpenCV and Simd meet the same "
    "limit.",
    r"^ImgPixelStat": "The mean is that of the rows' means: each row is summed up by itself, and divided.",
    r"^segments, columns": "Every pixel is in a cache line of its own, and both libraries wait for "
    "memory.",
    r"^objects and labels": "OpenCV's labels alone are compared with objects, their measures and "
    "labels.",
    r"^local deviation": "OpenCV adds up integral images in double precision; ours are exact.",
    r"^recursive average": "OpenCV blends with one weight; here the change depends on the "
    "difference, so that what moves is not blurred.",
}


def read(path):
    """The rows of a run, by operation and size, with numbers."""
    runs = {}
    with open(path, newline="") as file:
        for row in csv.DictReader(file):
            for name in ("plain", "accelerated", "opencv", "simd", "limit"):
                row[name] = float(row[name]) if row[name] else None
            runs[row["operation"], row["size"]] = row
    return runs


def ratio(row, peer):
    """How many times as fast as a peer; None where one is missing."""
    return row[peer] / row["accelerated"] if row and row[peer] and row["accelerated"] else None


def mean(ratios):
    return math.exp(sum(map(math.log, ratios)) / len(ratios)) if ratios else None


def number(value, digits=2):
    if value is None:
        return ""
    return f"{value:.0f}" if value >= 99.5 else f"{value:.{digits if value < 9.95 else 1}f}"


def line(cells):
    return "| " + " | ".join(cells) + " |"


def means(runs):
    """The lines of the table of means."""
    for name, run in runs.items():
        for peer, title in PEERS.items():
            ratios = {s: [r for (_, size), row in run.items() if size == s and (r := ratio(row, peer))]
                      for s in (SMALL, *SIZES)}
            if any(ratios.values()):
                yield line([f"{title}, {name}", str(max(map(len, ratios.values())))]
                           + [number(mean(r)) for r in ratios.values()])


def small(runs):
    """How many operations on small images are slower than a peer, and why."""
    counts = []
    for name, run in runs.items():
        for peer, title in PEERS.items():
            ratios = [r for (_, size), row in run.items() if size == SMALL and (r := ratio(row, peer))]
            if ratios:
                slow = sum(r < 1 / NOISE for r in ratios)
                counts.append(f"{slow} of {len(ratios)} operations take longer than {title}'s with {name}")
    return (f"At {SMALL}, by the same measure, {'; '.join(counts)}. In so small an image the fixed cost of a "
            "call (checks and scratch memory, 30 to 100 ns) and that of each row count as much as the pixels. "
            "Simd checks nothing.")


def table(run):
    """The lines of the table of an instruction set."""
    peers = [peer for peer in PEERS if any(row[peer] for row in run.values())]
    yield line(["Operation", f"ns, {MIDDLE}"]
               + [f"{PEERS[peer]}, {size}" for peer in peers for size in SIZES])
    yield line(["---"] * (2 + 3 * len(peers)))
    for family, operations in SHOWN.items():
        ratios = [[r for (_, size), row in run.items()
                   if row["family"] == family and size == s and (r := ratio(row, peer))]
                  for peer in peers for s in SIZES]
        count = max(map(len, ratios), default=0)
        if not count:
            continue
        yield line([f"**{family}, mean of {count}**", ""]
                   + [f"**{number(mean(r))}**" if r else "" for r in ratios])
        for operation in operations:
            rows = [run.get((operation, size)) for size in SIZES]
            if not any(rows):
                print(f"report.py: there is no operation '{operation}'", file=sys.stderr)
                continue
            ours = rows[1]["accelerated"] if rows[1] else None
            yield line([operation, number(ours, 3)]
                       + [number(ratio(row, peer)) for peer in peers for row in rows])


def slower(runs):
    """The lines of the operations that are slower than a peer, with the reasons."""
    found = defaultdict(list)
    for name, run in runs.items():
        for (operation, size), row in run.items():
            for peer, title in PEERS.items():
                fraction = ratio(row, peer) if size in SIZES else None
                if fraction and fraction < 1 / NOISE:
                    found[operation].append(f"{number(fraction)} of {title}, {name}, {size}")
    for operation, places in found.items():
        reason = next((text for pattern, text in WHY.items() if re.match(pattern, operation)), "")
        if not reason:
            print(f"report.py: no reason why this is slower: {operation}: {'; '.join(places)}",
                  file=sys.stderr)
        yield f"- {operation}: {'; '.join(places)}. {reason}".rstrip()


def picture(runs):
    """An SVG of the families: from the least to the greatest ratio to OpenCV, and the mean."""
    colors = ["#2a78b8", "#d9822b"]
    left, right, top, step, width = 130, 30, 40, 24, 760
    low, high = math.log2(0.5), math.log2(64)

    def x(value):
        place = (min(max(math.log2(value), low), high) - low) / (high - low)
        return left + place * (width - left - right)

    height = top + step * len(SHOWN) + 16
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" '
             f'font-family="sans-serif" font-size="12">',
             f'<rect width="{width}" height="{height}" fill="white"/>']
    for power in range(int(low), int(high) + 1):
        parts.append(f'<line x1="{x(2**power):.1f}" y1="{top - 8}" x2="{x(2**power):.1f}" '
                     f'y2="{height - 8}" stroke="{"#888" if power == 0 else "#ddd"}"/>')
        parts.append(f'<text x="{x(2**power):.1f}" y="{top - 12}" text-anchor="middle">'
                     f'{2**power:g}</text>')
    for i, (name, color) in enumerate(zip(runs, colors)):
        parts.append(f'<text x="{left + 110 * i}" y="14" fill="{color}">● {name}</text>')
    for i, family in enumerate(SHOWN):
        middle = top + step * (i + 0.5)
        parts.append(f'<text x="{left - 10}" y="{middle + 4:.1f}" text-anchor="end">{family}</text>')
        for k, (run, color) in enumerate(zip(runs.values(), colors)):
            ratios = [r for row in run.values() if row["family"] == family
                      and row["size"] == MIDDLE and (r := ratio(row, "opencv"))]
            if not ratios:
                continue
            y = middle - 4 + 8 * k
            parts.append(f'<line x1="{x(min(ratios)):.1f}" y1="{y:.1f}" x2="{x(max(ratios)):.1f}" '
                         f'y2="{y:.1f}" stroke="{color}" stroke-width="3" stroke-opacity="0.4"/>')
            parts.append(f'<circle cx="{x(mean(ratios)):.1f}" cy="{y:.1f}" r="4" fill="{color}"/>')
    return "\n".join(parts + ["</svg>", ""])


def first_line(command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout.splitlines()[0]


def replace_figures(path, text):
    page = path.read_text()
    path.write_text(re.sub(r"(<!-- figures -->\n).*?(<!-- end of figures -->)",
                           lambda match: match[1] + text + match[2], page, flags=re.S))


def update_readme(run):
    """The numbers of README's table, whose lines begin with the names of operations."""
    path = ROOT / "README.md"
    page = path.read_text()

    def renewed(match):
        row = run.get((match[1], MIDDLE))
        if row is None or not ratio(row, "opencv"):
            return match[0]
        return line([match[1], number(row["accelerated"], 3), number(row["opencv"], 3),
                     number(ratio(row, "opencv"))])

    path.write_text(re.sub(r"^\| ([^|]+?) \| [\d.]+ \| [\d.]+ \| [\d.]+ \|$", renewed, page, flags=re.M))


def main(avx2, avx512):
    runs = {"AVX2": read(avx2), "AVX-512": read(avx512)}
    day = datetime.date.fromtimestamp(Path(avx2).stat().st_mtime)
    about = dict(re.findall(r"^([a-z ]+?)\s*: (.*)$", Path("/proc/cpuinfo").read_text(), flags=re.M))
    processor = "{model name} (family {cpu family}, model {model})".format_map(about)
    counts = len({operation for run in runs.values() for operation, _ in run})
    text = f"""
Measured on {day} on one thread of an {processor} with {first_line(["g++", "--version"])}: {counts} operations, of
which the tables show the most usual ones.

Times as fast, in the geometric mean:

| Peer, our instruction set | operations | {" | ".join((SMALL, *SIZES))} |
|---|---|---|---|---|---|
{chr(10).join(means(runs))}

![Times as fast as OpenCV at {MIDDLE}, by family: the mean, and from the least to the greatest](pictures/benchmarks.svg)
"""
    for name, run in runs.items():
        text += f"\n## {name}\n\n" + "\n".join(table(run)) + "\n"
    text += ("\n## What is slower, and why\n\nBy more than 5 per cent, in these runs. Where no reason stands, "
             "none is known.\n\n") + "\n".join(slower(runs)) + f"\n\n{small(runs)}\n\n"
    replace_figures(ROOT / "docs/benchmarks.md", text)
    (ROOT / "docs/pictures/benchmarks.svg").write_text(picture(runs))
    all_means = "\n".join(means(runs))
    replace_figures(ROOT / "README.md", f"""
| Times as fast as, in the geometric mean | operations | {" | ".join((SMALL, *SIZES))} |
|---|---|---|---|---|---|
{all_means}

""")
    update_readme(runs["AVX2"])


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
