"""Reads the public headers: functions, enumerations, structs and constants with their comments.

The headers follow a fixed form (docs/architecture.md, "Its documentation"): a comment serves all
declarations up to the next blank line, and a comment that is followed by a blank line describes the
family.
"""

from __future__ import annotations

import re
from dataclasses import dataclass, field
from pathlib import Path


@dataclass
class Parameter:
    type: str  # as in the declaration, "float (&)[3]" for arrays
    name: str
    default: str | None = None


@dataclass
class Function:
    name: str
    returns: str
    parameters: list[Parameter]
    comment: str
    family: str  # the comments that describe its family
    header: str

    @property
    def signature(self) -> str:
        return f"{self.returns}({', '.join(parameter.type for parameter in self.parameters)})"


@dataclass
class Enumeration:
    name: str
    comment: str
    header: str
    values: list[tuple[str, int, str]] = field(default_factory=list)  # name, value, comment


@dataclass
class Field:
    type: str
    name: str
    default: str | None
    comment: str


@dataclass
class Struct:
    name: str
    comment: str
    fields: list[Field] = field(default_factory=list)


@dataclass
class Headers:
    functions: list[Function] = field(default_factory=list)
    enumerations: list[Enumeration] = field(default_factory=list)
    structs: list[Struct] = field(default_factory=list)
    constants: dict[str, int] = field(default_factory=dict)
    members: dict[str, str] = field(default_factory=dict)  # "KyKernel" or "KyKernel::SetGain" -> comment


def split_parameters(text: str) -> list[str]:
    """Splits at the commas that stand outside brackets."""
    parts, depth, start = [], 0, 0
    for i, c in enumerate(text):
        if c in "<(":
            depth += 1
        elif c in ">)":
            depth -= 1
        elif c == "," and depth == 0:
            parts.append(text[start:i])
            start = i + 1
    parts.append(text[start:])
    return [part.strip() for part in parts if part.strip()]


def parse_parameter(text: str) -> Parameter:
    text, _, default = (part.strip() for part in text.partition("="))
    array = re.fullmatch(r"(.*)\(&(\w+)\)(\[\d+\])", text)
    if array:
        return Parameter(f"{array[1].strip()} (&){array[3]}", array[2], default or None)
    match = re.fullmatch(r"(.*?)(\w+)", text)
    kind, name = match[1].strip(), match[2]
    if not kind:  # a parameter without a name
        kind, name = text, "value"
    return Parameter(kind, name, default or None)


FUNCTION = re.compile(r"(?:KY_API\s+)(.+?)\s*\b(\w+)\((.*)\)\s*(?:noexcept)?;$", re.S)
MEMBER = re.compile(r"(~?\w+)\(")


def fields_of(code: str, comment: str) -> list[Field]:
    """The fields that one declaration in a struct makes."""
    match = re.match(r"([\w:]+) (.*);", code.rstrip())
    if not match or match[1] in ("using", "static", "friend"):
        return []
    fields = []
    for one in split_parameters(match[2]):
        name, _, default = (part.strip() for part in one.partition("="))
        fields.append(Field(match[1], name, default or None, comment))
    return fields


class Reader:
    def __init__(self, headers: Headers, path: Path):
        self.headers = headers
        self.name = path.name
        self.lines = path.read_text().splitlines()
        self.family: list[str] = []
        self.comment: list[str] = []

    def read(self) -> None:
        fresh = False  # the line above is a comment
        i = 0
        while i < len(self.lines):
            line = self.lines[i]
            if line.startswith("///"):
                if not fresh:
                    self.comment = []
                self.comment.append(line[3:].removeprefix(" "))
                fresh = True
                i += 1
                continue
            if not line:
                if fresh and not self.comment[0].startswith("@file"):
                    self.family.append("\n".join(self.comment))
                self.comment = []
            fresh = False
            i = self.declaration(i) if line else i + 1

    def declaration(self, i: int) -> int:
        """Reads what begins in line i; returns the line after it."""
        line = self.lines[i]
        text = "\n".join(self.comment)
        if match := re.match(r"enum (\w+) : int \{", line):
            return self.enumeration(match[1], text, i + 1)
        if match := re.match(r"(?:struct|class) (?:KY_API )?(\w+)(?: : public [\w<> ]+)? \{$", line):
            return self.record(match[1], text, i + 1, line.startswith("struct"))
        if match := re.match(r"inline constexpr \w+ (\w+) = (\w+);", line):
            self.headers.constants[match[1]] = int(match[2].rstrip("uU"), 0)
            return i + 1
        if line.startswith("KY_API"):
            statement = line
            while not statement.endswith(";"):
                i += 1
                statement += " " + self.lines[i].strip()
            match = FUNCTION.match(statement)
            if match:
                parameters = [parse_parameter(p) for p in split_parameters(match[3])]
                self.headers.functions.append(
                    Function(match[2], match[1], parameters, text, "\n\n".join(self.family), self.name))
        return i + 1

    def enumeration(self, name: str, comment: str, i: int) -> int:
        result = Enumeration(name, comment, self.name)
        above: list[str] = []
        value = -1
        while not self.lines[i].startswith("}"):
            line = self.lines[i].strip()
            if line.startswith("///<"):  # goes on after the line above
                last = result.values[-1]
                result.values[-1] = (*last[:2], f"{last[2]} {line[4:].strip()}")
            elif line.startswith("///"):
                above.append(line[3:].strip())
            elif match := re.match(r"(\w+)(?: = (-?\w+))?,?(?:\s*///< ?(.*))?$", line):
                value = int(match[2], 0) if match[2] else value + 1
                result.values.append((match[1], value, match[3] or " ".join(above)))
                above = []
            i += 1
        self.headers.enumerations.append(result)
        return i + 1

    def record(self, name: str, comment: str, i: int, is_struct: bool) -> int:
        """Reads a struct's fields, or the comments of a class's members."""
        self.headers.members[name] = comment
        result = Struct(name, comment)
        above: list[str] = []
        fresh, public = False, is_struct
        while not self.lines[i].startswith("}"):
            line = self.lines[i].strip()
            if line.startswith("///") and not line.startswith("///<"):
                above = above + [line[3:].removeprefix(" ")] if fresh else [line[3:].removeprefix(" ")]
                fresh = True
                i += 1
                continue
            fresh = False
            if line in ("public:", "private:", "protected:"):
                public = line == "public:"
            elif not line:
                above = []
            elif public and not line.startswith("//"):
                code, _, after = line.partition("///<")
                while not code.rstrip().endswith((";", "}")) or code.count("{") > code.count("}"):
                    i += 1
                    more, _, comment_after = self.lines[i].strip().partition("///<")
                    code, after = f"{code} {more}", f"{after} {comment_after}"
                if (match := MEMBER.search(code)) and above:
                    self.headers.members.setdefault(f"{name}::{match[1]}", "\n".join(above))
                if is_struct and "(" not in code:
                    result.fields += fields_of(code, after.strip() or " ".join(above))
            i += 1
        if is_struct:
            self.headers.structs.append(result)
        return i + 1


def read_headers(paths: list[Path]) -> Headers:
    headers = Headers()
    for path in sorted(paths):
        Reader(headers, path).read()
    return headers
