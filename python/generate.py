"""Writes what the public headers say about the calls, as C++, Python and type stubs.

    generate.py --headers DIRECTORY --calls FILE --stub FILE --output DIRECTORY --package DIRECTORY

makes the core's module, which has the calls of all headers but those of the optional libraries.
With --module NAME it makes the module of an optional library, from the header of that name.

From the types of a function's parameters follows what they are in Python:

- const KyROI<T>*, const KyImage<T>*: an array that is read
- KyROI<T>* destination: an array that is written and returned, made where the caller passes none
- any other KyROI<T>*: an array that is changed where it lies
- KyImage<T>*: an array that the call makes and returns; where overloads differ in nothing else, the
  caller passes the type of its pixels
- numbers, enumerations, colours by value: the same; T& and T (&)[n]: returned
- vectors: arrays, which calls.toml says to be read (in), written (out) or both
- structs: dataclasses where they are passed alone, structured arrays in vectors
- const void*, and a std::size_t after it: bytes, or another buffer
- const char* path: the name of a file, as Python's own functions take it; any other: a string
"""

from __future__ import annotations

import argparse
import re
import sys
import tomllib
from dataclasses import dataclass
from pathlib import Path

import names
from headers import Enumeration, Function, Headers, Parameter, Struct, read_headers

# Structs of pixels, memory and files, which are no records in Python.
NO_RECORDS = {"KyPixelBuffer", "KyC24", "KyC15", "KyC16", "KyC24A", "KyComplex64", "KyMaskRun",
              "VectorFileHeader"}

OPTIONAL = {"frequency", "drawing", "files"}  # libraries, and the names of their headers

ARRAYS = {"BW1": "Bits", "BW8": "Gray8", "BW16": "Gray16", "BW32": "Gray32", "C24": "Color",
          "C24A": "ColorAlpha", "C15": "Packed15", "C16": "Packed16", "Complex64": "Complex"}
NUMBERS = {"int": "int", "unsigned": "int", "unsigned int": "int", "float": "float",
           "double": "float", "bool": "bool", "KyBW8": "int", "KyBW16": "int", "KyBW32": "int",
           "std::int32_t": "int", "std::uint32_t": "int", "std::uint64_t": "int"}
# The binding's own types of parameters, and what functions get of them.
PASSED = {"FilePath": "{0}.text", "const Bytes*": "{0}->data, static_cast<std::size_t>({0}->size)"}


@dataclass
class Argument:
    """A parameter as Python sees it."""

    type: str  # that C++ holds it as
    name: str
    flags: list[str]
    annotation: str
    default: str | None  # as Python spells it
    value: str | None  # as C++ does
    elements: str | None = None

    def has(self, flag: str) -> bool:
        return flag in self.flags


@dataclass
class Call:
    function: Function
    options: dict
    arguments: list[Argument]
    returns: str

    def parameters(self) -> list[Argument]:
        """In the order of a Python signature."""
        taken = [a for a in self.arguments if a.has("kTaken")]
        return [a for a in taken if not a.has("kKeywordOnly")] + [
            a for a in taken if a.has("kKeywordOnly")]

    def key(self) -> tuple:
        """Calls of one key differ in the types of their arguments only."""
        return tuple((a.name, a.default, a.has("kKeywordOnly")) for a in self.parameters())


class Generator:
    def __init__(self, headers: Headers, options: dict, module: str):
        self.headers = headers
        self.module = module
        self.own_header = f"{module}.h" if module else ""
        self.enumerators = {n: v for e in headers.enumerations for n, v, _ in e.values}
        self.enumerations = {e.name for e in headers.enumerations}
        self.structs = {s.name: s for s in headers.structs
                        if s.fields and s.name not in NO_RECORDS}
        self.calls: dict[str, list[Call]] = {}
        for function in headers.functions:
            if module_of(function) != (f"ky.{module}" if module else "ky"):
                continue
            option = options.get(function.name, {})
            if not any(part in function.signature for part in option.get("skip", [])):
                self.calls.setdefault(names.function(function.name), []).append(self.call(function, option))
        self.known = {p.name: names.snake(p.name) for f in headers.functions for p in f.parameters}
        self.known |= {f.name: names.snake(f.name) for s in self.structs.values() for f in s.fields}
        self.known |= {f.name: f"{module_of(f)}.{names.function(f.name)}" for f in headers.functions}
        self.known |= {n: f"ky.{names.constant(n)}" for n in self.enumerators}
        self.known |= {n: f"ky.{names.constant(n)}" for n in headers.constants}
        self.known |= {e: f"ky.{names.enumeration(e)}" for e in self.enumerations}
        self.known |= {s: f"ky.{names.record(s)}" for s in self.records()}
        self.known |= {c: f"ky.{c[2:]}" for c in ("KyKernel", "KyMovingAverage", "KyPyramid",
                                                  "KyColorLookup", "KyColorMatrix")}

    # What the parameters become.

    def call(self, function: Function, option: dict) -> Call:
        parameters = parameters_of(function)
        arguments = []
        for i, parameter in enumerate(parameters):
            flags = self.flags(function, option, parameter, i)
            default, value = self.default(parameter.default)
            if default is not None and "kTaken" in flags and "kOptional" not in flags:
                flags.append("kOptional")
            if "kMade" in flags and "kOptional" in flags:
                default = "None"
            elements = option.get("elements", {})
            rest = [p.type for p in parameters[i + 1:]]
            element = elements.get(", ".join([parameter.name, *rest[-1:]]), elements.get(parameter.name))
            name, annotation = parameter.name, self.annotation(parameter.type, "kMade" in flags)
            if is_image(parameter) and "kTaken" in flags:
                name, annotation = "type", "PixelType"
            arguments.append(Argument(parameter.type, names.snake(name), flags, annotation, default,
                                      value, element))
        if not any(a.has("kReturned") for a in arguments):
            for a in arguments:
                if re.fullmatch(r"KyROI<\w+>\*", a.type):
                    a.flags.append("kReturned")
        results = ["Array" if a.annotation == "PixelType" else a.annotation.split(" | ")[0]
                   for a in arguments if a.has("kReturned")]
        if function.returns not in ("KY_ERRORS", "void") or option.get("status") == "kept":
            results.insert(0, "int" if function.returns == "KY_ERRORS" else self.annotation(function.returns))
        returns = ("None" if not results else results[0] if len(results) == 1
                   else f"tuple[{', '.join(results)}]")
        return Call(function, option, arguments, returns)

    def flags(self, function: Function, option: dict, parameter: Parameter, i: int) -> list[str]:
        kind, name = parameter.type, parameter.name
        if name in option.get("inout", []):
            return ["kTaken", "kReturned"]
        if re.fullmatch(r"KyROI<\w+>\*", kind):
            if name != "destination":
                return ["kTaken"]
            if i == 0:
                return ["kTaken", "kReturned"]
            flags = ["kTaken", "kReturned", "kKeywordOnly", "kMade"]
            return flags if option.get("destination") == "required" else [*flags, "kOptional"]
        if is_image(parameter):
            return ["kTaken", "kReturned"] if self.is_chosen_by_image(function) else ["kReturned"]
        if re.fullmatch(r"Ky\w*Vector\*", kind):
            if name in option.get("out", []):
                return ["kReturned"]
            if name in option.get("in", []):
                return ["kTaken"]
            sys.exit(f"calls.toml: {function.name}: is {name} read (in) or written (out, inout)?")
        if ("&" in kind) and not kind.startswith("const"):
            return ["kReturned"]
        return ["kTaken"]

    def is_chosen_by_image(self, function: Function) -> bool:
        """Whether another overload differs in nothing but the image that it makes."""
        def key(of: Function) -> list[str]:
            return [of.name, *("image" if is_image(p) else p.type for p in of.parameters)]
        return sum(key(other) == key(function) for other in self.headers.functions) > 1

    def default(self, text: str | None) -> tuple[str | None, str | None]:
        if text is None:
            return None, None
        if text == "nullptr":
            return "None", "0"
        if text in self.enumerators or text in self.headers.constants:
            return names.constant(text), f"static_cast<double>({text})"
        return {"true": "True", "false": "False"}.get(text, text.rstrip("fuU")), text

    def annotation(self, kind: str, made: bool = False) -> str:
        if image := re.search(r"(?:ROI|Image)<Ky(\w+)>\*", kind):
            array = ARRAYS[image[1]]
            return f"{array} | PixelType | Shape | None" if made else array
        bare = kind.removeprefix("const ").rstrip("&*").strip()
        if array := re.fullmatch(r"(\w+) \(&\)\[(\d)\]", bare):
            one = NUMBERS[array[1]]
            return f"tuple[{', '.join([one] * int(array[2]))}]" if "const" not in kind else "Sequence[float]"
        if bare in NUMBERS:
            return NUMBERS[bare]
        if bare in self.enumerations:
            return "int"
        if bare == "KyC24":
            return "Rgb"
        if bare == "cairo_t":
            return "Any"  # a cairo.Context
        if bare == "Bytes":
            return "Buffer"
        if bare == "FilePath":
            return "FilePath"
        if bare == "char":
            return "str | None"
        if bare in self.structs and "*" in kind:
            return "np.void"
        if bare in self.structs or bare in ("KyKernel", "KyColorLookup"):
            return names.record(bare)
        if bare.endswith("PathVector"):
            return "Path"
        if bare.endswith("Vector"):
            return "Array"
        return "Any"

    def records(self) -> list[str]:
        """The structs that are passed alone."""
        used = {p.type.removeprefix("const ").rstrip("&") for f in self.headers.functions
                for p in f.parameters if p.type.endswith("&")}
        return [name for name in self.structs if name in used]

    # Texts.

    def signature(self, call: Call, typed: bool) -> str:
        parts, keyword_only = [], False
        for a in call.parameters():
            if a.has("kKeywordOnly") and not keyword_only:
                parts.append("*")
                keyword_only = True
            text = a.name
            annotation = a.annotation
            if a.default == "None" and "None" not in annotation:
                annotation += " | None"
            if typed:
                text += f": {annotation}"
            if a.default is not None:
                text += f" = {a.default}" if typed else f"={a.default}"
            parts.append(text)
        return ", ".join(parts)

    def prose(self, text: str) -> str:
        # A type of pixels that stands alone is one that the caller names.
        return re.sub(f"`Ky({'|'.join(ARRAYS)})`", r"`ky.\1`", names.prose(text, self.known))

    def documentation(self, name: str, calls: list[Call]) -> str:
        signatures = list(dict.fromkeys(self.signature(call, False) for call in calls))
        if len(signatures) == 1:
            text = f"{name}($module, {signatures[0]})\n--\n\n".replace(", )", ")")
        else:
            text = "\n".join(f"{name}({s})" for s in signatures) + "\n\n"
        comments = list(dict.fromkeys(c.function.comment for c in calls if c.function.comment))
        families = list(dict.fromkeys(c.function.family for c in calls if c.function.family))
        return text + self.prose("\n\n".join(comments + families))

    # Outputs.

    def parameter(self, a: Argument) -> str:
        parts = [f'"{a.name}"', " | ".join(a.flags)]
        if a.value is not None or a.elements is not None:
            parts.append(a.value or "0")
        if a.elements is not None:
            parts.append(f'"{a.elements}"')
        return "{" + ", ".join(parts) + "}"

    def overload(self, call: Call) -> str:
        function = call.function
        types = [a.type for a in call.arguments]
        by = call.options.get("by", function.name)
        passed = [(PASSED.get(t, "{0}") if by == function.name else "{0}").format(f"a{i}")
                  for i, t in enumerate(types)]
        kept = call.options.get("status") == "kept"
        returns = "int" if kept and function.returns == "KY_ERRORS" else function.returns
        if returns != function.returns or passed != [f"a{i}" for i in range(len(types))]:
            taken = ", ".join(f"{t} a{i}" for i, t in enumerate(types))
            target = f"+[]({taken}) -> {returns} {{ return {by}({', '.join(passed)}); }}"
        else:
            target = f"&{by}"
        text = f"MakeOverload<{', '.join([returns, *types])}>({target}, {{"
        text += ", ".join(self.parameter(a) for a in call.arguments) + "}"
        size = call.options.get("size", "")
        if isinstance(size, dict):
            size = next((v for k, v in size.items() if k in function.signature), "")
        size = {"half": "kHalf", "frame": "kFrame", "table": "kTable", "given": "kGiven"}.get(
            size, "kSource")
        contents = {"zero": "kZero", "source": "kSource",
                    "operation": "kByOperation"}.get(call.options.get("new", ""), "kAny")
        checked = not kept and (returns == "KY_ERRORS" or not function.name.startswith("Ky"))
        if (size, contents, checked) != ("kSource", "kAny", True):
            text += f", Sizing::{size}, Contents::{contents}, {str(checked).lower()}"
        return text + ")"

    def functions(self, part: int, parts: int) -> str:
        """One of several files, which take about as long to compile."""
        chosen = list(self.calls)
        step = -(-len(chosen) // parts)
        lines = ['#include "records.h"', *self.includes(), "", "namespace ky::python {", "",
                 f"void AddPart{part}(std::vector<Named>& functions) {{"]
        for name in chosen[part * step:(part + 1) * step]:
            calls = self.calls[name]
            lines.append(f"  functions.push_back({{\"{name}\", "
                         f"{raw(self.documentation(name, calls))}, {{")
            lines += [f"      {self.overload(call)}," for call in calls]
            lines.append("  }});")
        return "\n".join([*lines, "}", "", "}  // namespace ky::python", ""])

    def includes(self) -> list[str]:
        """The header of the optional library and, where there is one, the binding's for its types."""
        if not self.module:
            return []
        own = Path(__file__).parent / "src" / self.own_header
        return [f'#include "ky/{self.own_header}"', *([f'#include "{own.name}"'] if own.exists() else [])]

    def table(self, parts: int) -> str:
        """The parts, and the comments of the members of classes."""
        lines = ['#include "overload.h"', "", "#include <cstring>", "",
                 "namespace ky::python {", ""]
        lines += [f"void AddPart{i}(std::vector<Named>& functions);" for i in range(parts)]
        lines += ["", "std::vector<Named> Functions() {", "  std::vector<Named> functions;"]
        lines += [f"  AddPart{i}(functions);" for i in range(parts)]
        lines += ["  return functions;", "}", ""]
        if self.module:
            return "\n".join([*lines, "}  // namespace ky::python", ""])
        lines += ["const char* DocumentationOf(const char* name);", "",
                  "const char* DocumentationOf(const char* name) {",
                  "  static const struct {", "    const char* name;", "    const char* text;",
                  "  } kTexts[] = {"]
        for name, comment in self.headers.members.items():
            if re.match(r"Ky(Kernel|ColorLookup|ColorMatrix|MovingAverage|Pyramid)\b", name):
                lines.append(f"      {{\"{name}\", {raw(self.prose(comment))}}},")
        lines += ['      {"", ""}};', "  for (const auto& entry : kTexts)",
                  "    if (std::strcmp(entry.name, name) == 0) return entry.text;",
                  '  return "";', "}", "", "}  // namespace ky::python", ""]
        return "\n".join(lines)

    def record_fields(self) -> str:
        lines = ["#pragma once", "", '#include "overload.h"', "", "namespace ky::python {", ""]
        for struct in self.structs.values():
            fields = ", ".join(f'"{names.snake(f.name)}"' for f in struct.fields)
            members = [f.name for f in struct.fields]
            lines += [
                "template <>", f"struct Fields<{struct.name}> {{",
                f'  static constexpr const char* kName = "{names.record(struct.name)}";',
                f'  static constexpr const char* kExpected = "a ky.{names.record(struct.name)}";',
                f"  static constexpr const char* kNames[] = {{{fields}}};",
                f"  static auto Tie({struct.name}& record) {{",
                # Does not compile unless these are all fields.
                f"    auto& [{', '.join(members)}] = record;",
                f"    return std::tie({', '.join(members)});",
                "  }", "};"]
        return "\n".join([*lines, "", "}  // namespace ky::python", ""])

    def constants(self) -> str:
        lines = ['"""The enumerations and constants of the library; generated."""', "",
                 "from enum import IntEnum", ""]
        for e in self.headers.enumerations:
            lines += ["", f"class {names.enumeration(e.name)}(IntEnum):",
                      docstring(self.prose(e.comment), 4), ""]
            lines += [f"    {names.constant(n)} = {v}" for n, v, _ in e.values] + [""]
        lines += [""]
        for e in self.headers.enumerations:
            lines += [f"{names.constant(n)} = {names.enumeration(e.name)}.{names.constant(n)}"
                      for n, _, _ in e.values]
        lines += [f"{names.constant(n)} = {v}" for n, v in self.headers.constants.items()]
        return "\n".join([*lines, ""])

    def dataclasses(self) -> str:
        lines = ['"""The records that calls take and return; generated."""', "",
                 "from dataclasses import dataclass", ""]
        limits = {"INT_MAX": "2147483647", "true": "True", "false": "False"}
        for struct in (self.structs[name] for name in self.records()):
            lines += ["", "@dataclass", f"class {names.record(struct.name)}:",
                      docstring(self.prose(struct.comment), 4), ""]
            for f in struct.fields:
                default = "" if f.default is None else f" = {limits.get(f.default, f.default)}"
                lines.append(f"    {names.snake(f.name)}: {NUMBERS[f.type]}{default}"
                             + (f"  # {self.prose(f.comment)}" if f.comment else ""))
            lines.append("")
        return "\n".join(lines)

    def optional_module(self) -> str:
        """The Python module of an optional library."""
        lines = [f'"""The optional library ky::{self.module}."""', "",
                 f"from ._{self.module} import *"]
        for e in self.headers.enumerations:
            if e.header == self.own_header:
                constants = [names.enumeration(e.name), *(names.constant(n) for n, _, _ in e.values)]
                lines.append(f"from ._constants import {', '.join(constants)}")
        return "\n".join([*lines, ""])

    def optional_stub(self) -> str:
        types = sorted({*ARRAYS.values(), "Array", "Buffer", "FilePath", "Path", "PixelType", "Shape"})
        lines = ["# Generated from the public header.", "from typing import Any, overload", "",
                 f"from . import {', '.join(types)}", *self.optional_module().splitlines()[3:], ""]
        for name, calls in self.calls.items():
            lines += self.stub_of(name, calls) + [""]
        return "\n".join(lines)

    def stub(self, head: str) -> str:
        lines = [head.rstrip(), ""]
        for e in self.headers.enumerations:
            lines += [f"class {names.enumeration(e.name)}(IntEnum):"]
            lines += [f"    {names.constant(n)} = {v}" for n, v, _ in e.values] + [""]
            lines += [f"{names.constant(n)}: {names.enumeration(e.name)}" for n, _, _ in e.values]
            lines += [""]
        lines += [f"{names.constant(n)}: int" for n in self.headers.constants] + [""]
        for struct in (self.structs[name] for name in self.records()):
            lines += ["@dataclass", f"class {names.record(struct.name)}:"]
            lines += [f"    {names.snake(f.name)}: {NUMBERS[f.type]}"
                      + ("" if f.default is None else " = ...") for f in struct.fields] + [""]
        for name, calls in self.calls.items():
            lines += self.stub_of(name, calls) + [""]
        return "\n".join(lines)

    def stub_of(self, name: str, calls: list[Call]) -> list[str]:
        # One signature for each way to call; their types are joined where nothing else differs.
        variants: dict[str, str] = {}
        for call in calls:
            variants.setdefault(self.signature(call, True), call.returns)
        lines = []
        for signature, returns in variants.items():
            if len(variants) > 1:
                lines.append("@overload")
            lines.append(f"def {name}({signature}) -> {returns}: ...")
        return lines


def module_of(function: Function) -> str:
    name = function.header.removesuffix(".h")
    return f"ky.{name}" if name in OPTIONAL else "ky"


def is_image(parameter: Parameter) -> bool:
    return re.fullmatch(r"KyImage<\w+>\*", parameter.type) is not None


def parameters_of(function: Function) -> list[Parameter]:
    """The parameters by the types that the binding holds them as."""
    result: list[Parameter] = []
    for p in function.parameters:
        if p.type == "const void*":
            result.append(Parameter("const Bytes*", p.name))
        elif (p.type, p.name) == ("const char*", "path"):
            result.append(Parameter("FilePath", p.name))
        elif p.type != "std::size_t" or result[-1].type != "const Bytes*":
            result.append(p)
    return result


def raw(text: str) -> str:
    return f'R"doc({text})doc"'


def docstring(text: str, indent: int) -> str:
    body = ("\n" + " " * indent).join(text.splitlines())
    return " " * indent + f'"""{body}"""'


def write(path: Path, text: str) -> None:
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text)


def main() -> None:
    parser = argparse.ArgumentParser()
    parser.add_argument("--headers", type=Path, required=True)
    parser.add_argument("--calls", type=Path, required=True)
    parser.add_argument("--stub", type=Path, required=True, help="what a stub begins with")
    parser.add_argument("--output", type=Path, required=True)
    parser.add_argument("--package", type=Path, required=True)
    parser.add_argument("--parts", type=int, default=1)
    parser.add_argument("--module", default="", help="an optional library")
    arguments = parser.parse_args()
    headers = read_headers(list(arguments.headers.glob("*.h")))
    generator = Generator(headers, tomllib.loads(arguments.calls.read_text()),
                          arguments.module)
    for part in range(arguments.parts):
        write(arguments.output / f"functions_{part}.cpp", generator.functions(part, arguments.parts))
    write(arguments.output / "table.cpp", generator.table(arguments.parts))
    write(arguments.output / "records.h", generator.record_fields())
    if arguments.module:
        write(arguments.package / f"{arguments.module}.py", generator.optional_module())
        write(arguments.package / f"{arguments.module}.pyi", generator.optional_stub())
        return
    write(arguments.package / "_constants.py", generator.constants())
    write(arguments.package / "_records.py", generator.dataclasses())
    write(arguments.package / "__init__.pyi", generator.stub(arguments.stub.read_text()))


if __name__ == "__main__":
    main()
