"""Arrays as images: where they lie, what is refused, what is made."""

import re

import numpy as np
import pytest

import ky

# One call a type of pixels; all change every pixel of a random picture.
FILTERS = [
    (np.uint8, (), lambda a, **k: ky.convol_sobel(a, **k)),
    (np.uint8, (3,), lambda a, **k: ky.dilate_box(a, 2, **k)),
    (np.uint8, (3,), lambda a, **k: ky.convol_gaussian(a, 3, 1, **k)),
    (np.uint16, (), lambda a, **k: ky.convert(a, 3, **({"destination": ky.BW8} | k))),
    (np.uint32, (), lambda a, **k: ky.convert(a, **({"destination": ky.BW16} | k))),
]


def picture(random, dtype, channels, shape=(40, 50)):
    return random.integers(0, np.iinfo(dtype).max, shape + channels, dtype, endpoint=True)


@pytest.mark.parametrize("dtype, channels, call", FILTERS)
def test_slices_are_regions_of_interest(random, dtype, channels, call):
    whole = picture(random, dtype, channels)
    for rows, columns in [((3, 30), (7, 41)), ((0, 1), (0, 50)), ((2, 9), (4, 5)), ((5, 5), (1, 8))]:
        part = whole[slice(*rows), slice(*columns)]
        expected = call(part.copy())
        np.testing.assert_array_equal(call(part), expected)
        # Into a part of another picture, whose other pixels stay.
        target = np.full(whole.shape[:2] + expected.shape[2:], 77, expected.dtype)
        destination = target[slice(*rows), slice(*columns)]
        assert call(part, destination=destination) is destination
        np.testing.assert_array_equal(destination, expected)
        destination[...] = 77
        assert (target == 77).all()


def test_in_place_and_overlap(grey):
    expected = ky.convol_sobel(grey)
    image = grey.copy()
    assert ky.convol_sobel(image, destination=image) is image
    np.testing.assert_array_equal(image, expected)
    # A destination that lies two rows and a column further on in the same picture.
    image = grey.copy()
    expected = ky.erode_box(image[:-2, :-1].copy(), 1)
    ky.erode_box(image[:-2, :-1], 1, destination=image[2:, 1:])
    np.testing.assert_array_equal(image[2:, 1:], expected)
    assert (image[:2] == grey[:2]).all() and (image[:, 0] == grey[:, 0]).all()


def test_any_row_stride():
    memory = np.arange(2000, dtype=np.uint8)
    for stride in (7, 8, 13, 100):
        view = np.lib.stride_tricks.as_strided(memory, (9, 7), (stride, 1))
        np.testing.assert_array_equal(ky.convol_sobel(view), ky.convol_sobel(view.copy()))
    # Rows of one pixel, and a single row, whatever their strides are.
    np.testing.assert_array_equal(ky.oper(ky.OPER_INVERT, memory[:30].reshape(10, 3)[:, 1:2])[:, 0],
                                  255 - memory[1:30:3])
    assert ky.count(memory[:20].reshape(2, 10)[::5], 3) == 1


GREY = np.zeros((6, 8), np.uint8)


@pytest.mark.parametrize("source, came", [
    (GREY.astype(np.float64), "float64"), (GREY.astype(np.int8), "int8"), (GREY[0], r"\(8,\)"),
    (GREY.astype(bool), "bool"), (GREY[:, :, None], r"\(6, 8, 1\)"), (GREY.tolist(), "list"),
    (None, "NoneType"), (b"abc", "bytes"), (GREY.astype("u2").astype(">u2"), ">u2"),
    (GREY[:, ::2], r"\(8, 2\)"), (GREY[::-1], r"\(-8, 1\)"), (GREY[:, ::-1], r"\(8, -1\)"),
    (GREY.T, r"\(1, 8\)"), (np.broadcast_to(GREY[0], (6, 8)), r"\(0, 1\)"),
    (np.zeros((6, 3, 8), np.uint8).transpose(0, 2, 1), "strides")])
def test_refused_sources(source, came):
    with pytest.raises(TypeError, match=rf"(?s)convol_sobel\(\): source must be .*{came}"):
        ky.convol_sobel(source)


def test_refused_destinations(grey):
    locked = grey.copy()
    locked.flags.writeable = False
    ky.convol_sobel(locked)
    with pytest.raises(ValueError, match="destination is read-only"):
        ky.convol_sobel(grey, destination=locked)
    with pytest.raises(TypeError, match="destination must be an array .* of uint8, not .*uint16"):
        ky.convol_sobel(grey, destination=grey.astype(np.uint16))
    with pytest.raises(ky.Error) as failure:
        ky.convol_sobel(grey, destination=np.zeros((5, 5), np.uint8))
    assert failure.value.code == ky.ERROR_SIZE_MISMATCH
    misaligned = np.zeros(2 * 12 + 1, np.uint8)[1:].view(np.uint16).reshape(3, 4)
    assert misaligned.flags.aligned is False
    with pytest.raises(TypeError, match="aligned"):
        ky.pixel_max(misaligned)


def test_arguments_are_checked(grey):
    for call, text in [
        (lambda: ky.dilate_box(), "dilate_box.. needs the argument 'source'"),
        (lambda: ky.dilate_box(grey, 1, 1, 1), "takes 3 positional arguments, not 4"),
        (lambda: ky.dilate_box(grey, 1, width=1), "has no argument 'width'"),
        (lambda: ky.dilate_box(grey, 1, half_width=1), "two values for 'half_width'"),
        (lambda: ky.dilate_box(grey, 1.5), "half_width must be an integer, not float"),
        (lambda: ky.dilate_box(grey, "1"), "half_width must be an integer, not str"),
        (lambda: ky.convol_kernel(grey, 1), "kernel must be a ky.Kernel, not int"),
        (lambda: ky.normalize(grey, 1j, 1), "new_mean must be a number, not complex"),
        (lambda: ky.oper(ky.OPER_ADD, (1, 2), grey), "a must be"),
        (lambda: ky.convert(grey), "needs the argument 'destination'"),
        (lambda: ky.resize(grey), "needs destination: an array, or the shape")]:
        with pytest.raises(TypeError, match=text):
            call()
    for call in (lambda: ky.count(grey, 256), lambda: ky.count(grey, -1),
                 lambda: ky.dilate_box(grey, 2**40), lambda: ky.resize(grey, destination=(-1, 5)),
                 lambda: ky.threshold(grey, 2**32)):
        with pytest.raises(ValueError, match="must be from"):
            call()
    # Modes and hostile sizes wrap as in the library, which judges them.
    assert ky.dilate_box(grey, -1).min() == grey.max()
    assert ky.dilate_box(grey, np.int16(1), True).shape == grey.shape


def test_new_destinations(grey, random):
    assert ky.halve(grey).shape == (18, 26)
    assert ky.resize(grey, destination=(10, 20)).shape == (10, 20)
    assert ky.copy(7, destination=(2, 3)).tolist() == [[7] * 3] * 2
    assert ky.distance(grey).dtype == np.uint16
    assert ky.distance(grey, destination=ky.BW32).dtype == np.uint32
    table = np.zeros((5, 6), np.uint16)
    assert ky.warp(grey, table, table, 0, 0).shape == (5, 6)
    assert ky.warp(grey, np.zeros((50, 60), np.uint32)).shape == grey.shape
    color = random.integers(0, 256, (9, 7, 3), np.uint8)
    assert ky.get_frame(grey, 0).shape == (18, 53) and ky.get_frame(grey, 1).shape == (19, 53)
    # What a call leaves alone is 0, or the source's where that is meant.
    assert ky.set_component(grey, 1)[:, :, 1].tolist() == grey.tolist()
    assert ky.set_component(grey, 1)[:, :, ::2].any() == np.False_
    np.testing.assert_array_equal(ky.realign_frame(color, 1, 0)[::2], color[::2])
    np.testing.assert_array_equal(ky.swap_frames(grey)[-1], grey[-1])


@pytest.mark.parametrize("a", ["BW8", "BW16", "BW32", "C15", "C16", "C24", "C24A"])
@pytest.mark.parametrize("b", ["BW8", "BW16", "BW32", "C15", "C16", "C24", "C24A"])
def test_conversions(grey, a, b):
    if a == b:
        return
    first = grey if a == "BW8" else ky.convert(grey, destination=getattr(ky, a))
    second = ky.convert(first, destination=getattr(ky, b))
    assert second.shape[:2] == grey.shape and second.dtype == getattr(ky, b).dtype
    back = second if b == "BW8" else ky.convert(second, destination=ky.BW8)
    assert np.abs(back.astype(int) - grey).max() <= (7 if "C1" in a + b else 0)


def test_masks_of_bits(grey, parts):
    bits = ky.threshold(grey, 100, destination=ky.BW1)
    np.testing.assert_array_equal(bits, grey >= 100)
    np.testing.assert_array_equal(ky.threshold(bits, 3, 9), np.where(grey >= 100, 9, 3))
    into = np.ones((41, 60), bool)
    view = into[2:39, 3:56]
    assert ky.threshold(grey, 200, destination=view) is view
    assert into.sum() == 41 * 60 - 37 * 53 + (grey >= 200).sum()
    a = ky.find_objects(parts, 50, 255, ky.CONNEXITY_8)
    b = ky.find_objects(parts >= 50, ky.CONNEXITY_8, levels=parts)
    assert a.tobytes() == b.tobytes() and len(a) == 3


def test_empty_arrays():
    for shape in ((0, 0), (0, 5), (5, 0)):
        assert ky.convol_sobel(np.zeros(shape, np.uint8)).shape == shape
        assert ky.dilate_box(np.zeros(shape + (3,), np.uint8), 3).shape == shape + (3,)
        assert ky.histogram(np.zeros(shape, np.uint8)).sum() == 0


def test_new_destinations_are_written_completely(random):
    """calls.toml knows every call that keeps some of its destination."""
    grey = random.integers(0, 256, (16, 16), np.uint8)
    color = random.integers(0, 256, (16, 16, 3), np.uint8)
    other = {"lookup": grey, "light": grey, "dark": grey, "kernel": ky.Kernel(ky.KERNEL_UNIFORM_3X3),
             "pattern": ky.Kernel(ky.KERNEL_PATTERN_1), "shape": ky.Kernel(ky.KERNEL_RING_3X3),
             "labels": grey.astype(np.uint32), "table": np.zeros(256, np.uint8), "interpolation": 4,
             "objects": ky.find_objects(grey, 0, 99, 0), "scale_x": 0.5, "scale_y": 2}
    keeping, tried = set(), 0
    for name, function in vars(ky).items():
        text = getattr(function, "__text_signature__", None)
        lines = ([text.replace("($module, ", "").removesuffix(")")] if text
                 else re.findall(rf"^{name}\((.*)\)$", function.__doc__ or "", re.M))
        for line in (line for line in lines if line.endswith("destination=None")):
            names = [n for n in re.split(", ", line.split("*")[0].rstrip(", ")) if n and "=" not in n]
            for image in (grey, color, grey.astype(np.uint16), grey.astype(np.uint32)):
                given = [other.get(n, image if n in ("source", "a", "b") else 1) for n in names]
                try:
                    shape = function(*given).shape
                    black = function(*given, destination=np.zeros(shape, function(*given).dtype))
                    white = function(*given, destination=np.full(shape, 255, black.dtype))
                except (TypeError, ky.Error):
                    continue
                tried += 1
                if (black != white).any():
                    keeping.add(name)
    assert tried > 150
    assert keeping <= {"realign_frame", "rebuild_frame", "swap_frames", "set_component", "get_frame",
                       "draw_objects"}
    for operation in range(35):
        for a, b in ((grey, grey), (color, color), (grey, color), (3, grey)):
            try:
                first = ky.oper(operation, a, b)
            except ky.Error:
                continue
            black = ky.oper(operation, a, b, destination=np.zeros_like(first))
            white = ky.oper(operation, a, b, destination=np.full_like(first, 255))
            assert (first == black).all() and ((black == white).all() or operation in (21, 22, 34))
