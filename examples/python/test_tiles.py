"""tiles.py: equal to the whole, within its memory, and no further reach than needed."""

import os
import subprocess
import sys
from pathlib import Path

import numpy as np
import pytest

pytest.importorskip("dask.array")

import tiles

HERE = Path(__file__).parent


def filtered(tmp_path, picture, **options):
    np.save(tmp_path / "in.npy", picture)
    tiles.process(tmp_path / "in.npy", tmp_path / "out.npy", **options)
    return np.load(tmp_path / "out.npy")


@pytest.fixture(scope="module")
def picture():
    random = np.random.default_rng(3)
    picture = random.integers(0, 256, (611, 437), np.uint8)
    picture[200:400] //= 4  # tiles that differ
    return picture


@pytest.mark.parametrize("tile", [37, 100, 256, 1000])
def test_tiles_are_the_whole(tmp_path, picture, tile):
    np.testing.assert_array_equal(filtered(tmp_path, picture, tile=tile), tiles.apply_filters(picture))


def test_the_reach_is_as_far_as_the_filters_look(tmp_path):
    """Column 60, the last of its tile, depends on column 60 + REACH.

    The Gaussian looks from there to column 64; the opening at 64, beside a dark band, to column 94;
    and there the median is dark only if column 96 is, too.
    """
    assert tiles.REACH == 96 - 60
    picture = np.full((61, 122), 100, np.uint8)
    picture[:, 61:64] = picture[:, 94:96] = 0
    whole = tiles.apply_filters(picture)
    np.testing.assert_array_equal(filtered(tmp_path, picture, tile=61), whole)
    near = filtered(tmp_path, picture, tile=61, reach=tiles.REACH - 1)
    assert not np.array_equal(near, whole)


def test_files_that_are_no_grey_picture_are_refused(tmp_path):
    for array in (np.zeros((4, 5, 3), np.uint8), np.zeros((4, 5), np.uint16)):
        with pytest.raises(ValueError, match="no grey picture"):
            filtered(tmp_path, array)


def test_memory_goes_with_a_row_of_tiles(tmp_path):
    """64 million pixels, of which a row of tiles has 4 million, beside what Python and Dask need."""
    script = (
        "import resource, sys, tiles\n"
        "tiles.process('small.npy', 'out.npy', 256)\n"
        "before = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss\n"
        "tiles.process('large.npy', 'out.npy', 512)\n"
        "print(resource.getrusage(resource.RUSAGE_SELF).ru_maxrss - before)\n"
    )
    tiles.draw(tmp_path / "small.npy", 512)
    tiles.draw(tmp_path / "large.npy", 8000)
    path = os.pathsep.join([str(HERE), *sys.path])
    run = subprocess.run(
        [sys.executable, "-c", script],
        cwd=tmp_path,
        env={**os.environ, "PYTHONPATH": path},
        capture_output=True,
        text=True,
        check=True,
    )
    assert int(run.stdout) < 48 * 1024  # KiB
