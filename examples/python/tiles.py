#!/usr/bin/env python3
"""Filters a picture that does not fit into memory, tile by tile in all cores.

    tiles.py SOURCE.npy RESULT.npy            filters a grey picture, (h, w) of uint8
    tiles.py --draw 40000 SOURCE.npy RESULT.npy  draws one of 40000 x 40000 pixels first

Pictures are NumPy files, whose pixels lie at known places, so that tiles can be read and written
alone. Dask cuts the picture into tiles and gives each as many pixels of its neighbours as the
filters reach; the result is that of the whole picture, byte for byte. Memory goes with the size of a
row of tiles, not with that of the picture.
"""

import argparse
import resource
import sys
import time

import dask
import dask.array
import numpy as np

import ky

# The filters, and how far each looks: a result depends on no pixel further away. An opening looks
# twice as far as its element, because it dilates what has been eroded.
FILTERS = (
    (lambda tile: ky.median(tile, 2), 2),
    (lambda tile: ky.white_top_hat(tile, 15), 2 * 15),
    (lambda tile: ky.convol_gaussian(tile, 4), 4),
)
REACH = sum(reach for _, reach in FILTERS)


def apply_filters(tile):
    """The filtered tile, a new array."""
    for call, _ in FILTERS:
        tile = call(tile)
    return tile


class Picture:
    """A picture in a file, which is mapped only while part of it is read or written."""

    def __init__(self, path, shape=None):
        """Opens a picture, or makes an empty one of the given shape."""
        mode = "r" if shape is None else "w+"
        pixels = np.lib.format.open_memmap(path, mode, np.uint8, shape)
        if pixels.ndim != 2 or pixels.dtype != np.uint8 or not pixels.flags.c_contiguous:
            raise ValueError(f"{path} is no grey picture (h, w) of uint8 in rows")
        self.path = path
        self.shape, self.dtype, self.ndim = pixels.shape, pixels.dtype, pixels.ndim

    def __getitem__(self, where):
        return np.array(np.lib.format.open_memmap(self.path, "r")[where])

    def __setitem__(self, where, pixels):
        np.lib.format.open_memmap(self.path, "r+")[where] = pixels


def process(source, result, tile=2048, reach=REACH, workers=None):
    """Filters the picture `source` into the file `result`, both paths.

    `reach` is how many pixels of its neighbours a tile gets.
    """
    picture = Picture(source)
    # Tiles below the reach would need pixels of more than the next tiles.
    tiles = dask.array.from_array(picture, chunks=max(tile, reach), meta=np.empty((0, 0), np.uint8))
    filtered = dask.array.map_overlap(
        apply_filters,
        tiles,
        depth=reach,
        boundary="none",  # along the border of the picture, the filters see that border
        dtype=np.uint8,
        meta=np.empty((0, 0), np.uint8),
    )
    output = Picture(result, picture.shape)
    # ky lets other threads run during its calls. Parts of the file never overlap: no lock. One row
    # of tiles after the other, so that dask does not read ahead through the whole picture.
    with dask.config.set(scheduler="threads", num_workers=workers):
        top = 0
        for row, height in enumerate(filtered.chunks[0]):
            strip = (slice(top, top + height), slice(None))
            dask.array.store(filtered.blocks[row], output, regions=strip, lock=False)
            top += height


def draw(path, size):
    """Draws a picture of size x size pixels: blobs of light on noise, a strip of rows at a time."""
    picture = Picture(path, (size, size))
    random = np.random.default_rng(1)
    x = np.arange(size)
    for top in range(0, size, 256):
        y = np.arange(top, min(top + 256, size))[:, np.newaxis]
        light = 60 + 40 * np.sin(x / 170) * np.cos(y / 230)
        spots = 90 * ((x % 61 < 9) & (y % 47 < 7))
        noise = random.integers(0, 30, (len(y), size))
        picture[top : top + 256] = (light + spots + noise).astype(np.uint8)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--draw", type=int, metavar="SIZE", help="draw SIZE x SIZE pixels first")
    parser.add_argument("--tile", type=int, default=2048, help="rows and columns of a tile")
    parser.add_argument("--workers", type=int, help="threads; all cores unless given")
    parser.add_argument("source")
    parser.add_argument("result")
    options = parser.parse_args()
    try:
        if options.draw:
            draw(options.source, options.draw)
        start = time.monotonic()
        process(options.source, options.result, options.tile, workers=options.workers)
    except (OSError, ValueError, ky.Error) as error:
        sys.exit(f"{parser.prog}: {error}")
    peak = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024
    print(f"{time.monotonic() - start:.1f} s, at most {peak:.0f} MiB of memory")


if __name__ == "__main__":
    main()
