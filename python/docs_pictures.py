"""Draws the pictures of docs/python.md: a tray of parts, and what the first program there makes of it.

    PYTHONPATH=build/release/python python3 python/docs_pictures.py
"""

import os
import re
import subprocess
import sys
from pathlib import Path

import numpy as np
from PIL import Image

import ky

ROOT = Path(__file__).parents[1]
WIDTH, HEIGHT, SCALE = 640, 420, 4


def tray():
    """Washers, plates with holes and bars, drawn four times as large, on ground under uneven light."""
    y, x = np.mgrid[: HEIGHT * SCALE, : WIDTH * SCALE] / SCALE
    parts = np.zeros(x.shape, np.uint8)
    for cx, cy, radius, hole in [(90, 90, 42, 18), (230, 80, 34, 15), (90, 220, 30, 13),
                                 (560, 330, 44, 20), (360, 345, 26, 0), (470, 70, 22, 0)]:
        distance = np.hypot(x - cx, y - cy)
        parts[(distance < radius) & (distance >= hole)] = 255
    for cx, cy, length, width, angle, holes in [(230, 210, 60, 24, 25, (-30, 30)),
                                                (380, 150, 70, 16, -35, ()),
                                                (560, 150, 48, 30, 70, (-22, 0, 22)),
                                                (200, 340, 84, 14, 8, (-60,)),
                                                (440, 260, 40, 26, -10, (0,))]:
        c, s = np.cos(np.radians(angle)), np.sin(np.radians(angle))
        u, v = (x - cx) * c + (y - cy) * s, (y - cy) * c - (x - cx) * s
        inside = (np.abs(u) < length) & (np.abs(v) < width)
        for place in holes:
            inside &= np.hypot(u - place, v) >= 8
        parts[inside] = 255
    parts[np.hypot(x - 628, y - 220) < 30] = 255  # one that the picture cuts off
    coverage = ky.shrink(parts, destination=(HEIGHT, WIDTH)) / 255
    y, x = np.mgrid[:HEIGHT, :WIDTH]
    light = 0.55 + 0.45 * np.exp(-(((x - 200) / 420) ** 2 + ((y - 120) / 330) ** 2))
    levels = (60 + 130 * coverage) * light
    levels += np.random.default_rng(7).normal(0, 3, levels.shape)
    for cx, cy in np.random.default_rng(3).integers((10, 10), (WIDTH - 10, HEIGHT - 10), (40, 2)):
        levels[cy : cy + 3, cx : cx + 2] += 40  # dirt
    return np.clip(levels, 0, 255).astype(np.uint8)


def main():
    pictures = ROOT / "docs/pictures"
    Image.fromarray(tray()).save(pictures / "parts.png", optimize=True)
    program = re.search(r"```python\n(.*?)```", (ROOT / "docs/python.md").read_text(), re.S)[1]
    program = program.replace('"parts_found.png", dpi=150', '"docs/pictures/parts_found.png", dpi=110')
    subprocess.run([sys.executable, "-c", program], check=True, cwd=ROOT,
                   env={**os.environ, "MPLBACKEND": "Agg"})


if __name__ == "__main__":
    main()
