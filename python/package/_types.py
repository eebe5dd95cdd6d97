"""The classes that are written in Python."""

import numpy as np


class Error(RuntimeError):
    """What a call of the library fails with.

    code is the number of ky.Errors, text what is wrong and where, trace the names of the routines
    that failed, innermost first.
    result is what the call returns where it fails after its work, by ky.ERROR_PATH_STOPPED (106).
    """

    def __init__(self, code, text, trace=(), result=None):
        super().__init__(text)
        self.code = code
        self.text = text
        self.trace = tuple(trace)
        self.result = result

    def __reduce__(self):
        return Error, (self.code, self.text, self.trace, self.result)


class Path(np.ndarray):
    """Positions (n, 2), or records with x and y; closed tells whether the last joins the first."""

    closed = False

    def __array_finalize__(self, source):
        # Copies of a whole path are as closed as it is; a part is not.
        if source is not None and source.shape == self.shape and getattr(source, "closed", False):
            self.closed = True

    def __reduce__(self):
        make, arguments, state = super().__reduce__()
        return make, arguments, (state, self.closed)

    def __setstate__(self, state):
        super().__setstate__(state[0])
        self.closed = state[1]


def points(array, dtype, function, parameter):
    """Makes records with x and y of positions (n, 2)."""
    if dtype.names is None:
        result = np.ascontiguousarray(array, dtype)
        same = np.array_equal(result, array)
    else:
        result = np.zeros(len(array), dtype)
        result["x"], result["y"] = array[:, 0], array[:, 1]
        same = dtype["x"].kind == "f" or (
            np.array_equal(result["x"], array[:, 0]) and np.array_equal(result["y"], array[:, 1])
        )
    if not same:
        raise ValueError(f"{function}(): {parameter} has coordinates that do not fit {dtype}")
    return result
