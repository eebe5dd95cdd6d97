"""The programs of docs/python.md run, from the root of the project, and find what they show."""

import re
import subprocess
import sys
from pathlib import Path

import pytest

ROOT = Path(__file__).parents[2]
PROGRAMS = re.findall(r"```python\n(.*?)```", (ROOT / "docs/python.md").read_text(), re.S)


@pytest.mark.parametrize("index", range(len(PROGRAMS)))
def test_program(index, tmp_path):
    program = PROGRAMS[index].replace("docs/pictures/", f"{ROOT}/docs/pictures/")
    run = subprocess.run([sys.executable, "-B", "-c", program], cwd=tmp_path, capture_output=True,
                         text=True, env={"MPLBACKEND": "Agg", "MPLCONFIGDIR": str(tmp_path),
                                         "PYTHONPATH": ":".join(sys.path)})
    assert run.returncode == 0, run.stderr
    if index == 0:
        assert (tmp_path / "parts_found.png").stat().st_size > 10000
        assert len(run.stdout.splitlines()) == 11
