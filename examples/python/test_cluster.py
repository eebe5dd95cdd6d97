"""cluster.py: what is measured, failing pictures, dying workers."""

import csv
import os
import signal
import time
from functools import partial
from pathlib import Path

import numpy as np
import pytest

distributed = pytest.importorskip("distributed")

from PIL import Image

import cluster


@pytest.fixture(scope="module")
def client():
    with distributed.Client(
        n_workers=2, threads_per_worker=1, dashboard_address=None, silence_logs=50
    ) as client:
        yield client


def draw(folder, count):
    """Pictures with 1, 2, ... disks on each."""
    folder.mkdir(exist_ok=True)
    y, x = np.ogrid[:100, :300]
    for n in range(count):
        picture = np.full((100, 300), 30, np.uint8)
        for i in range(n % 5 + 1):
            picture[(x - 30 - 60 * i) ** 2 + (y - 50) ** 2 < 15**2] = 200
        Image.fromarray(picture).save(folder / f"{n:03}.png")


def rows_of(result):
    with open(result, newline="") as file:
        return list(csv.DictReader(file))


def test_a_folder(client, tmp_path):
    draw(tmp_path / "pictures", 7)
    (tmp_path / "pictures" / "notes.txt").write_text("no picture")
    failures = cluster.measure_folder(client, tmp_path / "pictures", tmp_path / "result.csv")
    assert failures == {}
    rows = rows_of(tmp_path / "result.csv")
    assert [row["picture"] for row in rows] == [
        f"{n:03}.png" for n in range(7) for _ in range(n % 5 + 1)
    ]
    last = [row for row in rows if row["picture"] == "004.png"][4]
    assert last["object"] == "5"
    assert float(last["x"]) == pytest.approx(270, abs=0.1)
    assert float(last["y"]) == pytest.approx(50, abs=0.1)
    assert int(last["area"]) == pytest.approx(np.pi * 15**2, rel=0.05)


def test_pictures_that_fail_are_reported(client, tmp_path):
    draw(tmp_path / "pictures", 6)
    (tmp_path / "pictures" / "002.png").write_text("no picture")
    os.truncate(tmp_path / "pictures" / "004.png", 60)
    failures = cluster.measure_folder(client, tmp_path / "pictures", tmp_path / "result.csv")
    assert [Path(path).name for path in sorted(failures)] == ["002.png", "004.png"]
    assert {row["picture"] for row in rows_of(tmp_path / "result.csv")} == {
        "000.png",
        "001.png",
        "003.png",
        "005.png",
    }


def slowly(path):
    time.sleep(0.05)
    return cluster.measure(path)


def test_a_killed_worker_loses_and_doubles_nothing(client, tmp_path):
    draw(tmp_path / "pictures", 40)
    paths = sorted(str(path) for path in (tmp_path / "pictures").iterdir())
    pids = client.run(os.getpid)
    seen = []
    for path, outcome in cluster.measured(client, paths, slowly):
        seen.append(path)
        assert not isinstance(outcome, BaseException), outcome
        assert len(outcome) == int(Path(path).stem) % 5 + 1
        if len(seen) == 10:
            os.kill(next(iter(pids.values())), signal.SIGKILL)
    assert sorted(seen) == paths
    client.wait_for_workers(2)  # its nanny starts another
    assert set(client.run(os.getpid).values()) != set(pids.values())


def deadly(poison, path):
    if path == poison:
        os.kill(os.getpid(), signal.SIGKILL)
    return cluster.measure(path)


def test_a_picture_that_kills_its_workers_is_reported(client, tmp_path):
    draw(tmp_path / "pictures", 6)
    poison = str(tmp_path / "pictures" / "003.png")
    failures = cluster.measure_folder(
        client, tmp_path / "pictures", tmp_path / "result.csv", partial(deadly, poison)
    )
    assert list(failures) == [poison]
    assert isinstance(failures[poison], distributed.scheduler.KilledWorker)
    assert len({row["picture"] for row in rows_of(tmp_path / "result.csv")}) == 5
