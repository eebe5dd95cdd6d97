"""What there is: nothing that the library exports is missing, nothing lacks documentation."""

import ast
import inspect
import re
import subprocess
from pathlib import Path

import pytest

import ky

ROOT = Path(__file__).parents[2]


def snake(name):
    # Written by hand for the awkward ones; the others by their capitals.
    special = {"ImgSetRecursiveAverageLUT": "set_recursive_average_lut", "KyGetMMX": "get_mmx",
               "KySetMMX": "set_mmx", "ImgProjectOnARow": "project_on_a_row",
               "ImgProjectOnAColumn": "project_on_a_column", "ImgConvertTo422": "convert_to422",
               "ImgConvertFrom422": "convert_from422",
               "ImgSlowDFT": "slow_dft", "ImgFastDFT": "fast_dft"}
    words = re.findall(r"[A-Z][a-z0-9]*", re.sub("^(Img|Clr|Ky)", "", name))
    words = "_".join(words).lower()
    return special.get(name, words)


def exported(*names):
    """The names of the functions that the libraries, which this process has loaded, export."""
    maps = Path("/proc/self/maps").read_text()
    libraries = set(re.findall(rf"\S*/libky(?:{'|'.join(names)})\.so\S*", maps))
    assert len(libraries) == len(names)
    symbols = "".join(
        subprocess.run(["nm", "-DC", "--defined-only", library], check=True, capture_output=True,
                       text=True).stdout for library in libraries)
    return set(re.findall(r" T ((?:Ky|Img|Clr)\w+)\(", symbols))


def test_every_exported_function_is_there():
    names = exported("base", "color", "image")
    assert len(names) > 170
    assert sorted(name for name in names if not callable(getattr(ky, snake(name), None))) == []
    # And none that is not exported, but for those that stand for members of vectors.
    functions = {n for n, f in vars(ky).items() if inspect.isbuiltin(f)}
    assert functions - {snake(name) for name in names} == {"load_vector", "save_vector"}


@pytest.mark.parametrize("library", ["frequency", "drawing", "files"])
def test_optional_libraries(library):
    module = pytest.importorskip(f"ky.{library}")
    functions = {n for n, f in vars(module).items() if inspect.isbuiltin(f)}
    assert functions == {snake(name) for name in exported(library)} != set()
    stub = ast.parse(Path(module.__file__).with_suffix(".pyi").read_text())
    assert functions == {n.name for n in stub.body if isinstance(n, ast.FunctionDef)}
    for name in functions:
        assert getattr(module, name).__module__ == f"ky.{library}"


def test_every_call_of_the_registry_is_there():
    text = "".join(path.read_text() for path in (ROOT / "tests/registry").glob("*.inc")
                   if path.stem not in ("frequency", "drawing", "files"))
    calls = re.findall(r"^KY_(?:CALL|UTILITY)\((\w+)", text, re.M)
    assert len(set(calls)) > 170
    assert all(callable(getattr(ky, snake(name))) for name in calls)
    for owner, method in re.findall(r"^KY_METHOD\((\w+), (\w+)", text, re.M):
        assert callable(getattr(getattr(ky, owner[2:]), snake(method)))


def test_documentation_and_signatures():
    for name, function in vars(ky).items():
        if not inspect.isbuiltin(function):
            continue
        assert len(function.__doc__) > 30, name
        assert "Img" not in re.sub(r'"[^"]*"', "", function.__doc__), name
        assert function.__module__ == "ky"
    assert str(inspect.signature(ky.pixel_stat)) == "(source)"
    assert list(inspect.signature(ky.dilate_box).parameters) == [
        "source", "half_width", "half_height", "destination"]
    for kind in (ky.Kernel, ky.MovingAverage, ky.Pyramid, ky.ObjectLimits, ky.ThresholdModes):
        assert kind.__doc__


def test_stub():
    stub = ast.parse(Path(ky.__file__).with_suffix(".pyi").read_text())
    names = {node.name for node in stub.body if isinstance(node, (ast.FunctionDef, ast.ClassDef))}
    names |= {node.target.id for node in stub.body if isinstance(node, ast.AnnAssign)}
    public = {n for n, v in vars(ky).items() if not n.startswith("_") and not inspect.ismodule(v)}
    assert public - names - {"dataclass", "IntEnum"} == set()
    for node in stub.body:
        if isinstance(node, ast.FunctionDef) and "$module" in (getattr(ky, node.name).__text_signature__ or ""):
            taken = [a.arg for a in node.args.args + node.args.kwonlyargs]
            assert taken == list(inspect.signature(getattr(ky, node.name)).parameters), node.name
    for kind in (ky.Kernel, ky.MovingAverage, ky.Pyramid, ky.ColorLookup, ky.ColorMatrix):
        body = next(n for n in stub.body if isinstance(n, ast.ClassDef) and n.name == kind.__name__)
        members = {n.name for n in body.body if isinstance(n, ast.FunctionDef)}
        assert {n for n in vars(kind) if not n.startswith("_")} == members - {"__init__"}


def test_constants():
    assert ky.OPER_ADD == 2 and ky.OPER_ADD.name == "OPER_ADD"
    assert ky.THRESHOLD_MIN_RESIDUE == -4 and ky.ERROR_NO_IMAGE == 1400
    assert ky.HALF_HEIGHT_AS_WIDTH == 0xFFFFFFFF and ky.KERNEL_SOBEL_X == 4
    assert ky.BAYER_BG == 3
    assert ky.Errors(1403).name == "ERROR_SIZE_MISMATCH"
