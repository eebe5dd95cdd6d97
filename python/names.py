"""How names of the library are spelled in Python."""

from __future__ import annotations

import re


def snake(name: str) -> str:
    """ImgSetRecursiveAverageLUT -> img_set_recursive_average_lut."""
    name = re.sub(r"(?<=[a-z0-9])(?=[A-Z])|(?<=[A-Z])(?=[A-Z][a-z])", "_", name)
    return name.lower()


def function(name: str) -> str:
    return snake(re.sub(r"^(Img|Clr|Ky)(?=[A-Z])", "", name))


def constant(name: str) -> str:
    return re.sub(r"^(KY|IMG)_", "", name)


def record(name: str) -> str:
    return name.removeprefix("Ky")


def enumeration(name: str) -> str:
    """ARITH_LOGIC_OPERATIONS -> ArithLogicOperations."""
    return "".join(part.capitalize() for part in constant(name).split("_"))


CODE = re.compile(r'"[^"]*"|\b[A-Za-z]\w*\b')


def prose(text: str, known: dict[str, str]) -> str:
    """Spells the names that a comment mentions as Python does; `known` maps C++ names to Python's.

    Traces, which stand in quotation marks, stay.
    """

    def spell(match: re.Match) -> str:
        word = match[0]
        if word not in known and re.match("(Img|Clr)[A-Z]", word):  # part of a name, "ImgConvol..."
            return function(word)
        return known.get(word, word)

    return CODE.sub(spell, text)
