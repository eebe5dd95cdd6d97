"""Builds the wheel of the package: CMake compiles and installs it, and this packs what it installs.

The libraries lie in the wheel beside the modules, which find them there. pybind11, Highway, CMake and
a compiler come from the system (README.md). The environment's CMAKE_ARGS go to CMake.
"""

from __future__ import annotations

import base64
import hashlib
import os
import re
import shlex
import shutil
import subprocess
import sys
import sysconfig
import tomllib
import zipfile
from pathlib import Path

ROOT = Path(__file__).parents[1]
BUILD = ROOT / "build" / "wheel"


def version() -> str:
    text = (ROOT / "include/ky/version.h").read_text()
    return ".".join(re.findall(r"#define KY_VERSION_(?:MAJOR|MINOR|PATCH) (\d+)", text))


def compile_and_install(prefix: Path) -> None:
    subprocess.run(
        ["cmake", "-S", ROOT, "-B", BUILD, "-DCMAKE_BUILD_TYPE=Release", "-DKY_PYTHON=ON",
         "-DKY_TESTS=OFF", "-DKY_EXAMPLES=OFF", f"-DPython_EXECUTABLE={sys.executable}",
         "-DKY_PYTHON_DIR=.", "-DKY_PYTHON_RPATH=$ORIGIN", "-DCMAKE_INSTALL_LIBDIR=ky",
         *(["-GNinja"] if shutil.which("ninja") else []),
         *shlex.split(os.environ.get("CMAKE_ARGS", ""))], check=True)
    subprocess.run(["cmake", "--build", BUILD, "-j", str(os.cpu_count())], check=True)
    installed = (BUILD / "install_components.txt").read_text().split()
    for component in installed:
        subprocess.run(["cmake", "--install", BUILD, "--prefix", prefix, "--strip",
                        "--component", component], check=True)


def files_of(prefix: Path) -> dict[str, bytes]:
    """What goes into the wheel. A library is stored once, by the name that programs look for."""
    files = {}
    for path in sorted(p for p in prefix.rglob("*") if p.is_file()):
        is_versioned = re.search(r"\.so\.\d+\.", path.name)
        if not is_versioned and "__pycache__" not in path.parts:
            files[path.relative_to(prefix).as_posix()] = path.read_bytes()
    return files


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None) -> str:
    project = tomllib.loads((ROOT / "pyproject.toml").read_text())["project"]
    prefix = BUILD / "wheel"
    shutil.rmtree(prefix, ignore_errors=True)
    compile_and_install(prefix)
    files = files_of(prefix)

    python = f"cp{sys.version_info.major}{sys.version_info.minor}"
    tag = f"{python}-{python}-{re.sub('[-.]', '_', sysconfig.get_platform())}"
    info = f"{project['name']}-{version()}.dist-info"
    metadata = ["Metadata-Version: 2.1", f"Name: {project['name']}", f"Version: {version()}",
                f"Summary: {project['description']}", f"Requires-Python: {project['requires-python']}",
                *(f"Requires-Dist: {dependency}" for dependency in project["dependencies"])]
    wheel = ["Wheel-Version: 1.0", "Generator: ky", "Root-Is-Purelib: false", f"Tag: {tag}"]
    files[f"{info}/METADATA"] = "\n".join([*metadata, ""]).encode()
    files[f"{info}/WHEEL"] = "\n".join([*wheel, ""]).encode()
    record = [f"{name},sha256={digest(data)},{len(data)}" for name, data in files.items()]
    files[f"{info}/RECORD"] = "\n".join([*record, f"{info}/RECORD,,", ""]).encode()

    name = f"{project['name']}-{version()}-{tag}.whl"
    with zipfile.ZipFile(Path(wheel_directory) / name, "w", zipfile.ZIP_DEFLATED) as archive:
        for file, data in files.items():
            archive.writestr(file, data)
    return name


def digest(data: bytes) -> str:
    return base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()


def build_sdist(sdist_directory, config_settings=None) -> str:
    name = f"ky-{version()}"
    subprocess.run(["git", "-C", ROOT, "archive", f"--prefix={name}/", "-o",
                    Path(sdist_directory).resolve() / f"{name}.tar.gz", "HEAD"], check=True)
    return f"{name}.tar.gz"
