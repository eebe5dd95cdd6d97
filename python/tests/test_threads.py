"""The interpreter's lock, and objects that several threads share."""

import subprocess
import sys
import threading
import time
from concurrent.futures import ThreadPoolExecutor

import numpy as np

import ky


def test_other_threads_run_during_a_call(random):
    picture = random.integers(0, 256, (2000, 2000), np.uint8)
    ticks = []
    stop = threading.Event()

    def tick():
        while not stop.is_set():
            ticks.append(time.perf_counter())

    thread = threading.Thread(target=tick)
    thread.start()
    try:
        start = time.perf_counter()
        for _ in range(3):
            ky.convol_gaussian(picture, 40)
        end = time.perf_counter()
    finally:
        stop.set()
        thread.join()
    # Were the lock held, the other thread would run between the calls only.
    within = [t for t in ticks if start < t < end]
    assert np.diff([start, *within, end]).max() < (end - start) / 4


def test_threads_get_the_results_of_one(random):
    pictures = random.integers(0, 256, (16, 200, 300), np.uint8)
    target = np.zeros_like(pictures)

    def work(i):
        return ky.median(pictures[i], 3, destination=target[i])

    with ThreadPoolExecutor(4) as pool:
        list(pool.map(work, range(16)))
    np.testing.assert_array_equal(target, [ky.median(picture, 3) for picture in pictures])


DAEMONS = """
import threading, time
import numpy as np
import ky

picture = np.zeros((2000, 2000), np.uint8)
average, pyramid = ky.MovingAverage(3, 2000, 2000), ky.Pyramid(5)

def work():
    while True:
        ky.convol_gaussian(picture, 20)
        average.average(picture)
        pyramid.build(picture)

for _ in range(3):
    threading.Thread(target=work, daemon=True).start()
time.sleep(0.3)
"""


def test_the_interpreter_ends_during_a_call():
    run = subprocess.run([sys.executable, "-c", DAEMONS], capture_output=True, text=True, timeout=60)
    assert (run.returncode, run.stderr) == (0, "")


def test_objects_shared_by_threads(random):
    # Nothing is promised but that results have one of the possible values and nothing breaks.
    pictures = random.integers(0, 256, (4, 50, 60), np.uint8)
    kernel, average = ky.Kernel(np.ones((9, 9)), gain=1 / 81), ky.MovingAverage(3, 60, 50)
    pyramid = ky.Pyramid(3)

    def work(i):
        for n in range(60):
            kernel.set_size_x(1 + (n + i) % 9)
            ky.convol_kernel(pictures[i], kernel)
            average.average(pictures[i])
            if n % 10 == i:
                average.reset()
            pyramid.build(pictures[i][: 20 + 7 * i])
            level = pyramid.get_level(2)
            assert level.shape[1] == 15 and level.sum() > 0
            assert pyramid.get_num_levels() == 3 and pyramid.get_image_type() == 1
        return True

    with ThreadPoolExecutor(4) as pool:
        assert all(pool.map(work, range(4)))
