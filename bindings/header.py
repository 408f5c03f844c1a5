"""What include/vark40.h declares, for whoever makes or checks declarations of another language from it.

The header is plain C of one form, and what has another form here is refused rather than skipped: a `Strange`
names the text that was not understood.
"""

from __future__ import annotations

import re
from dataclasses import dataclass
from pathlib import Path
from typing import Dict, List, Optional, Tuple

HEADER = Path(__file__).resolve().parent.parent / "include" / "vark40.h"

NUMBERS = {"int32_t", "uint32_t", "uint8_t", "uintptr_t", "intptr_t"}
HANDLE = "VarkWindow"


class Strange(Exception):
    """Text of the header that has no known form."""


@dataclass(frozen=True)
class Field:
    """A member of a structure: `count` is None for what is no array; `inner` has the members of its own."""

    name: str
    type: str
    count: Optional[int]
    inner: Tuple["Field", ...] = ()


@dataclass(frozen=True)
class Structure:
    name: str
    fields: Tuple[Field, ...]
    is_packed: bool


@dataclass(frozen=True)
class Enumeration:
    name: str
    values: Tuple[Tuple[str, int], ...]

    @property
    def prefix(self) -> str:
        """What all names begin with, up to an underscore."""
        names = [name for name, _ in self.values]
        words = names[0].split("_")[:-1]
        while not all(name.startswith("_".join(words) + "_") for name in names):
            words.pop()
        return "_".join(words) + "_"


@dataclass(frozen=True)
class Parameter:
    """`is_pointer` with `is_const`: read by the call; without: written."""

    name: str
    type: str
    is_pointer: bool
    is_const: bool


@dataclass(frozen=True)
class Function:
    name: str
    result: str
    parameters: Tuple[Parameter, ...]


@dataclass(frozen=True)
class Interface:
    enumerations: Tuple[Enumeration, ...]
    structures: Tuple[Structure, ...]
    functions: Tuple[Function, ...]
    comments: Dict[str, str]  # what stands right above a structure or enumeration, without line breaks


def read(path: Path = HEADER) -> Interface:
    """What the header at `path` declares."""
    whole = path.read_text(encoding="utf-8")
    text = re.sub(r"/\*.*?\*/", " ", whole, flags=re.DOTALL)
    return Interface(_enumerations(text), _structures(text), _functions(text), _comments(whole))


def _comments(text: str) -> Dict[str, str]:
    comment = r"/\*((?:(?!\*/).)*)\*/\n(?:enum|typedef struct) (\w+)"
    tables = r":\n(?: \*   .*\n)+"
    return {
        name: " ".join(re.sub(r"\n \*", " ", re.sub(tables, ".\n", body)).split())
        for body, name in re.findall(comment, text, flags=re.DOTALL)
    }


def _enumerations(text: str) -> Tuple[Enumeration, ...]:
    found = []
    for name, body in re.findall(r"\benum\s+(\w+)\s*\{(.*?)\}\s*;", text, flags=re.DOTALL):
        values = []
        entries: List[str] = [part.strip() for part in body.split(",") if part.strip()]
        for entry in entries:
            match = re.fullmatch(r"(\w+)\s*=\s*(-?(?:0x[0-9A-Fa-f]+|\d+))", entry)
            if match is None:
                raise Strange(f"enum {name}: {entry}")
            values.append((match[1], int(match[2], 0)))
        found.append(Enumeration(name, tuple(values)))
    return tuple(found)


def _fields(structure: str, body: str) -> Tuple[Field, ...]:
    fields: List[Field] = []
    rest = body.strip()
    while rest:
        inner = re.match(r"struct\s*\{([^{}]*)\}\s*(\w+)\s*;\s*", rest)
        if inner is not None:
            fields.append(Field(inner[2], "struct", None, _fields(structure, inner[1])))
            rest = rest[inner.end():]
            continue
        plain = re.match(r"(\w+)\s+(\w+)(?:\[(\d+)\])?\s*;\s*", rest)
        if plain is None:
            raise Strange(f"struct {structure}: {rest.splitlines()[0]}")
        fields.append(Field(plain[2], plain[1], int(plain[3]) if plain[3] else None))
        rest = rest[plain.end():]
    return tuple(fields)


def _structures(text: str) -> Tuple[Structure, ...]:
    pack = r"#pragma pack\(push, 1\).*?#pragma pack\(pop\)"
    packed = [match.span() for match in re.finditer(pack, text, flags=re.DOTALL)]
    found = []
    for match in re.finditer(r"typedef\s+struct\s+(\w+)\s*\{((?:[^{}]|\{[^{}]*\})*)\}\s*(\w+)\s*;", text):
        name, body, again = match.groups()
        if name != again:
            raise Strange(f"typedef struct {name} … {again}")
        is_packed = any(begin < match.start() < end for begin, end in packed)
        found.append(Structure(name, _fields(name, body), is_packed))
    if text.count("typedef struct") != len(found):
        raise Strange("a structure of another form")
    return tuple(found)


def _parameter(function: str, text: str) -> Parameter:
    match = re.fullmatch(r"(const\s+)?(\w+)\s*(\*?)\s*(\w+)", text.strip())
    if match is None:
        raise Strange(f"{function}: {text}")
    return Parameter(match[4], match[2], bool(match[3]), bool(match[1]))


def _functions(text: str) -> Tuple[Function, ...]:
    found = []
    pattern = r"\b(\w+)\s+VARK_CALL\s+(VARK_\w+)\s*\(([^)]*)\)\s*;"
    for result, name, list_ in re.findall(pattern, text):
        parameters = [] if list_.strip() == "void" else list_.split(",")
        found.append(Function(name, result, tuple(_parameter(name, each) for each in parameters)))
    if text.count("VARK_CALL VARK_") != len(found):
        raise Strange("a function of another form")
    return tuple(found)
