"""Pictures in files, compared with what Pillow writes and reads."""

import os
from pathlib import Path

import numpy as np
import pytest
from PIL import Image

import ky

files = pytest.importorskip("ky.files")


@pytest.mark.parametrize("name", ["a.png", "a.pgm", "a.ppm"])
def test_pictures_go_to_files_and_back(tmp_path, random, name):
    path = tmp_path / name
    grey = random.integers(0, 256, (30, 40), np.uint8)[3:20, 5:37]
    deep = random.integers(0, 65536, (17, 9), np.uint16)
    color = random.integers(0, 256, (7, 13, 3), np.uint8)
    for picture, kind in [(grey, ky.BW8), (deep, ky.BW16), (color, ky.C24)]:
        if name.endswith(".ppm" if picture.ndim == 2 else ".pgm"):
            continue
        for place in (path, str(path), os.fsencode(path)):
            assert files.save(picture, place) is None
            np.testing.assert_array_equal(np.asarray(Image.open(path)), picture)
            loaded = files.load(place, kind)
            assert loaded.dtype == picture.dtype and loaded.flags.writeable
            np.testing.assert_array_equal(loaded, picture)
            path.unlink()


def test_types_of_pixels(tmp_path, random):
    color = random.integers(0, 256, (12, 31, 3), np.uint8)
    Image.fromarray(color).save(tmp_path / "color.png")
    data = (tmp_path / "color.png").read_bytes()
    for kind in (ky.BW8, ky.C24):
        expected = color if kind is ky.C24 else ky.convert(color, destination=kind)
        np.testing.assert_array_equal(files.load(tmp_path / "color.png", kind), expected)
        for buffer in (data, bytearray(data), memoryview(data), np.frombuffer(data, np.uint8)):
            np.testing.assert_array_equal(files.decode(buffer, type=kind), expected)
    assert files.decode(data, ky.BW16).dtype == np.uint16


def test_names_that_are_no_text(tmp_path, grey):
    name = os.fsencode(tmp_path) + b"/\xff\xfe.png"
    files.save(grey, name)
    np.testing.assert_array_equal(files.load(os.fsdecode(name), ky.BW8), grey)
    with pytest.raises(ValueError, match="null"):
        files.load("a\0.png", ky.BW8)


def test_refusals(tmp_path, grey):
    with pytest.raises(ky.Error, match="there is no such file") as failure:
        files.load(tmp_path / "none.png", ky.BW8)
    assert (failure.value.code, failure.value.trace) == (ky.ERROR_FILE_OPEN, ("ImgLoad (BW8)",))
    with pytest.raises(ky.Error) as failure:
        files.decode(b"\x89PNG\r\n\x1a\n", ky.C24)
    assert failure.value.trace == ("ImgDecode (C24)",)
    with pytest.raises(ky.Error, match="path ends neither in .png nor in .pgm") as failure:
        files.save(grey, tmp_path / "a.bmp")
    assert failure.value.code == ky.ERROR_FILE_FORMAT and not list(Path(tmp_path).iterdir())
    with pytest.raises(TypeError, match="type must be ky.BW8 or ky.BW16 or ky.C24, not ky.BW1$"):
        files.load("a.png", ky.BW1)
    with pytest.raises(TypeError, match="needs the argument 'type'"):
        files.load("a.png")
    with pytest.raises(TypeError, match="path must be a path, not int"):
        files.save(grey, 3)
    with pytest.raises(TypeError, match=r"source must be .*, not an array \(37, 53\) of float64"):
        files.save(grey / 2, "a.png")
