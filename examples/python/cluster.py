#!/usr/bin/env python3
"""Measures the objects of a folder of pictures by many processes, here or on other machines.

    cluster.py FOLDER RESULT.csv                     as many processes here as there are cores
    cluster.py --address tcp://10.0.0.7:8786 FOLDER RESULT.csv
                                                     the workers of a scheduler (dask-scheduler),
                                                     which see the folder under the same path

RESULT.csv has a line for each object: picture, number, centre, size, area, mean level. Pictures that
cannot be measured are reported in the end, with the reason, and the others are not held up. A picture
whose worker dies goes to another one; no picture is lost, none is measured twice in the result. One
that takes workers down whenever it is tried is reported as a failure.
"""

import argparse
import csv
import logging
import sys
from pathlib import Path

import distributed
import numpy as np
from PIL import Image

COLUMNS = ("picture", "object", "x", "y", "width", "height", "area", "mean_level")
SUFFIXES = {".png", ".pgm", ".ppm", ".jpg", ".jpeg", ".tif", ".tiff", ".bmp"}


def measure(path):
    """The objects of a picture that are brighter than the rest: a row for each, see COLUMNS."""
    import ky  # the workers load it, not whoever hands out the work

    with Image.open(path) as image:
        picture = np.asarray(image.convert("L"))
    smooth = ky.convol_gaussian5x5(picture)
    threshold = ky.auto_threshold(smooth, ky.THRESHOLD_MIN_RESIDUE)
    objects = ky.find_objects(smooth, threshold, 255, ky.CONNEXITY_8, levels=picture)
    objects = ky.select_objects(objects, ky.ObjectLimits(min_area=50))
    name = Path(path).name
    return [
        (
            name,
            number,
            round(o["sum_x"] / o["area"], 2),
            round(o["sum_y"] / o["area"], 2),
            o["width"].item(),
            o["height"].item(),
            o["area"].item(),
            round(o["sum_levels"] / o["area"], 2),
        )
        for number, o in enumerate(objects, 1)
    ]


def measured(client, paths, work=measure):
    """Measures pictures on the workers; yields (path, rows or the exception) as they are done.

    Every path comes once, whatever happens to the workers.
    """
    futures = client.map(work, paths, pure=False)
    names = {future.key: path for future, path in zip(futures, paths)}
    done = distributed.as_completed(futures, with_results=True, raise_errors=False)
    suspects = []
    for future, result in done:
        path, error = names[future.key], future.exception() if future.status == "error" else None
        if isinstance(error, distributed.scheduler.KilledWorker):
            suspects.append(path)
        else:
            yield path, result if error is None else error
        future.release()
    # What waited on the workers that a picture has taken down is suspected with it. One at a time
    # tells which picture it was.
    for path in sorted(suspects):
        future = client.submit(work, path, pure=False)
        error = future.exception()
        yield path, future.result() if error is None else error


class Bar:
    """A progress bar on the terminal; nothing where standard error is none."""

    def __init__(self, total):
        self.total = total

    def show(self, count, failures):
        if not sys.stderr.isatty():
            return
        filled = "#" * (40 * count // max(self.total, 1))
        failed = f", {failures} failed" if failures else ""
        print(f"\r[{filled:<40}] {count}/{self.total}{failed}", end="", file=sys.stderr)
        if count == self.total:
            print(file=sys.stderr)


def measure_folder(client, folder, result, work=measure):
    """Measures the pictures of a folder into a CSV file. Returns the failures: {path: exception}."""
    paths = sorted(str(p) for p in Path(folder).iterdir() if p.suffix.lower() in SUFFIXES)
    bar = Bar(len(paths))
    rows, failures = {}, {}
    for path, outcome in measured(client, paths, work):
        (failures if isinstance(outcome, BaseException) else rows)[path] = outcome
        bar.show(len(rows) + len(failures), len(failures))
    with open(result, "w", newline="") as file:
        writer = csv.writer(file)
        writer.writerow(COLUMNS)
        for path in sorted(rows):
            writer.writerows(rows[path])
    return failures


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--address", help="of a scheduler; processes on this machine unless given")
    parser.add_argument("--workers", type=int, help="how many processes; as many as cores")
    parser.add_argument("folder")
    parser.add_argument("result")
    options = parser.parse_args()
    if options.address:
        client = distributed.Client(options.address)
    else:
        client = distributed.Client(
            n_workers=options.workers,
            threads_per_worker=1,
            dashboard_address=None,
            silence_logs=logging.CRITICAL,  # failures are reported in the end
        )
    with client:
        failures = measure_folder(client, options.folder, options.result)
    for path, error in sorted(failures.items()):
        print(f"{path}: {error}", file=sys.stderr)
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
