"""Compares ky with OpenCV, both called from Python, in one thread; ./dev bench --python runs it.

Prints a table for docs/python.md: microseconds a call, the least of many, results in new arrays.
"""

import argparse
import math
import time
from concurrent.futures import ThreadPoolExecutor

import cv2
import numpy as np

import ky


def picture(width, height):
    """Smooth ground, bright disks, and noise."""
    random = np.random.default_rng(1)
    y, x = np.mgrid[:height, :width]
    levels = 60 + 30 * np.sin(x / 70) * np.cos(y / 50)
    for _ in range(60):
        cx, cy, r = random.integers(0, width), random.integers(0, height), random.integers(4, 25)
        levels[(x - cx) ** 2 + (y - cy) ** 2 < r * r] = random.integers(150, 240)
    return np.clip(levels + random.normal(0, 4, levels.shape), 0, 255).astype(np.uint8)


def operations(a):
    """Name, call of ky, call of OpenCV."""
    b = np.ascontiguousarray(a[::-1])
    color = np.ascontiguousarray(np.stack([a, b, a[:, ::-1]], 2))
    height, width = a.shape
    table = (255 - np.arange(256)).astype(np.uint8)
    mask = np.where(a > 130, 255, 0).astype(np.uint8)
    box = {n: np.ones((2 * n + 1, 2 * n + 1), np.uint8) for n in (1, 3, 7)}
    half = (height // 2, width // 2)
    shrunk = (height * 2 // 5, width * 2 // 5)
    rotation = cv2.getRotationMatrix2D((width / 2, height / 2), 10, 1)

    def sobel():
        x = cv2.convertScaleAbs(cv2.Sobel(a, cv2.CV_16S, 1, 0))
        return cv2.add(x, cv2.convertScaleAbs(cv2.Sobel(a, cv2.CV_16S, 0, 1)))

    return [
        ("sum, saturated", lambda: ky.oper(ky.OPER_ADD, a, b), lambda: cv2.add(a, b)),
        ("difference, absolute", lambda: ky.oper(ky.OPER_ABS_DIFFERENCE, a, b), lambda: cv2.absdiff(a, b)),
        ("threshold", lambda: ky.threshold(a, 130),
         lambda: cv2.threshold(a, 129, 255, cv2.THRESH_BINARY)),
        ("threshold by least variance", lambda: ky.threshold(a, ky.THRESHOLD_MIN_RESIDUE),
         lambda: cv2.threshold(a, 0, 255, cv2.THRESH_OTSU)),
        ("lookup table", lambda: ky.lut(a, table), lambda: cv2.LUT(a, table)),
        ("mean 3 x 3", lambda: ky.convol_uniform3x3(a), lambda: cv2.blur(a, (3, 3))),
        ("mean 15 x 15", lambda: ky.convol_uniform(a, 7), lambda: cv2.blur(a, (15, 15))),
        ("Gaussian 3 x 3", lambda: ky.convol_gaussian3x3(a), lambda: cv2.GaussianBlur(a, (3, 3), 0)),
        ("Gaussian 5 x 5", lambda: ky.convol_gaussian5x5(a), lambda: cv2.GaussianBlur(a, (5, 5), 0)),
        ("Sobel, both directions", lambda: ky.convol_sobel(a), sobel),
        ("median 3 x 3", lambda: ky.median(a), lambda: cv2.medianBlur(a, 3)),
        ("median 5 x 5", lambda: ky.median(a, 2), lambda: cv2.medianBlur(a, 5)),
        ("erosion 3 x 3", lambda: ky.erode_box(a, 1), lambda: cv2.erode(a, box[1])),
        ("dilation 15 x 15", lambda: ky.dilate_box(a, 7), lambda: cv2.dilate(a, box[7])),
        ("opening 7 x 7", lambda: ky.open_box(a, 3),
         lambda: cv2.morphologyEx(a, cv2.MORPH_OPEN, box[3])),
        ("histogram", lambda: ky.histogram(a), lambda: cv2.calcHist([a], [0], None, [256], [0, 256])),
        ("mean and deviation", lambda: ky.pixel_std_dev(a), lambda: cv2.meanStdDev(a)),
        ("objects, labels and measures", lambda: ky.find_objects(
            mask, 255, 255, ky.CONNEXITY_8, labels=np.empty(a.shape, np.uint32)),
         lambda: cv2.connectedComponentsWithStats(mask, connectivity=8)),
        ("colours to grey levels", lambda: ky.convert(color, destination=ky.BW8),
         lambda: cv2.cvtColor(color, cv2.COLOR_RGB2GRAY)),
        ("means of areas, to 2 / 5", lambda: ky.shrink(a, destination=shrunk),
         lambda: cv2.resize(a, shrunk[::-1], interpolation=cv2.INTER_AREA)),
    ]


def measure(calls, seconds):
    """The least time of each call in microseconds; they take turns, so that both meet the same noise."""
    best, counts = [math.inf] * len(calls), [1] * len(calls)
    end = time.perf_counter() + seconds
    while time.perf_counter() < end:
        for i, call in enumerate(calls):
            start = time.perf_counter()
            for _ in range(counts[i]):
                call()
            best[i] = min(best[i], (time.perf_counter() - start) / counts[i])
            counts[i] = max(1, min(20, int(0.0005 / best[i])))
    return [1e6 * b for b in best]


def overhead(seconds):
    """Microseconds on a picture of one pixel: for a number, and into a given and a new array."""
    one = np.zeros((1, 1), np.uint8)
    return measure([lambda: ky.count(one, 0), lambda: ky.convol_sobel(one, destination=one),
                    lambda: ky.convol_sobel(one)], seconds)


def two_threads(seconds):
    """How much faster two threads filter pictures than one."""
    a = picture(1920, 1080)
    results = [np.empty_like(a) for _ in range(8)]
    pool = ThreadPoolExecutor(2)

    def work(result):
        for _ in range(3):
            ky.median(a, 2, destination=result)

    one, two = measure([lambda: [work(r) for r in results],
                        lambda: list(pool.map(work, results))], seconds)
    return one / two


def main():
    parser = argparse.ArgumentParser(prog="./dev bench --python", description=__doc__)
    parser.add_argument("--seconds", type=float, default=1, help="for each row and size")
    parser.add_argument("--sizes", default="640x480,1920x1080")
    arguments = parser.parse_args()
    cv2.setNumThreads(1)
    sizes = [tuple(map(int, size.split("x"))) for size in arguments.sizes.split(",")]
    rows, ratios = {}, {size: [] for size in sizes}
    for size in sizes:
        for name, ours, theirs in operations(picture(*size)):
            first, second = measure([ours, theirs], arguments.seconds)
            ratios[size].append(second / first)
            rows.setdefault(name, []).append(f"{first:.0f} | {second:.0f} | {second / first:.1f}")
    print("| | " + " | ".join(f"ky, {w} x {h} | OpenCV | ratio" for w, h in sizes) + " |")
    print("|---|" + "---:|" * (3 * len(sizes)))
    for name, cells in rows.items():
        print(f"| {name} | {' | '.join(cells)} |")
    means = [math.exp(sum(map(math.log, ratios[size])) / len(ratios[size])) for size in sizes]
    print("| **geometric mean** | " + " | ".join(f"| | **{mean:.1f}**" for mean in means) + " |")
    print("\noverhead of a call: number {:.2f}, array {:.2f}, new array {:.2f} us".format(
        *overhead(arguments.seconds)))
    print(f"two threads: {two_threads(5 * arguments.seconds):.2f} times one")


if __name__ == "__main__":
    main()
