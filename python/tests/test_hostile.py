"""Arguments that nobody would pass on purpose: an exception, or a result, but never a crash."""

import pickle
import subprocess
import sys

import numpy as np
import pytest

import ky

PROGRAM = """
import inspect, os, resource, sys
import numpy as np
import ky

resource.setrlimit(resource.RLIMIT_AS, (3 << 30, 3 << 30))
os.chdir(sys.argv[3])  # where files may be saved
random = np.random.default_rng(int(sys.argv[1]))
memory = random.integers(0, 256, 60000, np.uint8)

def array():
    kind = random.choice(["u1", "u1", "u1", "u2", "u4", "i4", "?", "c8", "f4", ">u2"])
    h, w = random.integers(0, 24, 2)
    shape = random.choice([0, 1, 2, 3])
    whole = memory.view(kind) if kind != "?" else memory.view(bool)
    channels = int(random.choice([3, 3, 4, 2]))
    if shape == 0:
        return whole[: h * w].reshape(h, w).copy()
    if shape == 1:
        return whole[: 30 * 40].reshape(30, 40)[h // 2 : h, w // 2 : w].copy()[:: random.choice([1, 1, -1, 2])]
    if shape == 2:
        return whole[: h * w * channels].reshape(h, w, channels).copy()
    return whole[: random.choice([0, 1, 9, 256, 256, 8191])].copy()

grey = memory[:900].reshape(30, 30)
path = ky.contour(np.pad(np.full((9, 9), 200, np.uint8), 3), 1, 3, 3, 0, 100, 0)
objects = ky.find_objects(grey, 100, 255, 0)
things = [None, "text", b"bytes", 1.5, (1, 2, 3), (4, 5), [0] * 9, path, path[:0], objects, objects[0],
          ky.ObjectLimits(), ky.Kernel(), ky.Kernel(ky.KERNEL_SOBEL_X), ky.ColorMatrix.luma(), ky.BW16,
          ky.Kernel([[1, 1], [0, 1]]), ky.image_to_path(grey, path), float("nan"), 1e30]
numbers = [0, 0, 1, 1, 2, 3, 4, 5, 8, 9, -1, -4, 100, 128, 255, 256, 2**31 - 1, -(2**31), 2**40]

def argument():
    p = random.random()
    if p < 0.5:
        return array()
    if p < 0.88:
        return numbers[random.integers(len(numbers))]
    return things[random.integers(len(things))]

calls = [f for n, f in sorted(vars(ky).items()) if inspect.isbuiltin(f)]
failures = {}
done = 0
for round in range(int(sys.argv[2])):
    for call in calls:
        arguments = [argument() for _ in range(random.integers(0, 9))]
        named = {"destination": argument()} if random.random() < 0.3 else {}
        if random.random() < 0.5:  # as it is meant, but for the values
            names = [line for line in call.__doc__.splitlines() if line.startswith(call.__name__ + "(")]
            text = names[random.integers(len(names))] if names else str(inspect.signature(call))
            names = text[text.index("(") + 1 : text.rindex(")")].split(", *")[0].split(", ")
            images = {"source", "a", "b", "image", "destination", "light", "dark", "reference", "roi", "labels"}
            arguments = [grey[: random.integers(0, 30), : random.integers(1, 30)].copy() if name in images
                         and random.random() < 0.8 else numbers[random.integers(16)] if random.random() < 0.8
                         else argument() for name in names if name]
        try:
            call(*arguments, **named)
            done += 1
        except (TypeError, ValueError, ky.Error, MemoryError) as error:
            failures[type(error).__name__] = failures.get(type(error).__name__, 0) + 1
assert done > 5 * len(calls), done
print("done", done, failures)
"""


def test_keywords_that_are_no_text():
    with pytest.raises(TypeError, match="has no argument"):
        ky.threshold(**{"\ud800": 1})


def test_hostile_calls(tmp_path):
    run = subprocess.run([sys.executable, "-c", PROGRAM, "1", "60", tmp_path], capture_output=True,
                         text=True, timeout=300)
    assert run.returncode == 0, run.stderr[-2000:]
    assert "done" in run.stdout


def test_objects_that_no_constructor_has_made(grey):
    color = np.stack([grey] * 3, 2)

    def new(kind):
        return kind.__new__(kind)

    class Early(ky.MovingAverage):
        def __init__(self):
            self.reset()

    for call in (
            lambda: new(ky.Kernel).coefficients, lambda: pickle.dumps(new(ky.Kernel)),
            lambda: ky.convol_kernel(grey, new(ky.Kernel)), lambda: new(ky.MovingAverage).average(grey),
            lambda: new(ky.Pyramid).build(grey), lambda: new(ky.ColorMatrix).transform((1, 2, 3)),
            lambda: ky.get_component(color, 0, new(ky.ColorLookup)), lambda: new(ky.PixelType).name, Early):
        with pytest.raises(TypeError, match="__init__ of its class has not run"):
            call()
    average = new(ky.MovingAverage)
    average.__init__(2, grey.shape[1], grey.shape[0])
    np.testing.assert_array_equal(average.average(grey), grey)
