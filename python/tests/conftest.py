import numpy as np
import pytest

import ky


@pytest.fixture
def random():
    return np.random.default_rng(1)


@pytest.fixture
def grey(random):
    return random.integers(0, 256, (37, 53), np.uint8)


@pytest.fixture
def parts():
    """A picture of two rectangles and a ring, on black."""
    picture = np.zeros((40, 50), np.uint8)
    picture[5:20, 8:30] = 200
    picture[8:12, 12:20] = 0  # a hole
    picture[30:33, 3:9] = 100
    picture[25:38, 35:45] = 150
    return picture


@pytest.fixture(autouse=True)
def degrees():
    yield
    ky.set_angle_unit(ky.ANGLE_DEGREES)
    ky.set_mmx(1)
