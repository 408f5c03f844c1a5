"""The interface as C, C++, Python and Pascal have it is one: what a C compiler makes of include/vark40.h."""

from __future__ import annotations

import ctypes
import os
import re
import subprocess
import sys
from importlib.machinery import SourceFileLoader
from importlib.util import module_from_spec, spec_from_loader
from pathlib import Path
from types import ModuleType
from typing import Callable, Iterator, List

import pytest

ROOT = Path(os.environ["VARK_SOURCE"])
PROGRAMS = Path(os.environ["VARK_PROGRAMS"])
sys.path.insert(0, str(ROOT / "bindings"))

import header  # noqa: E402

from vark40 import declarations  # noqa: E402

INTERFACE = header.read()
Rows = List[str]


def declare() -> ModuleType:
    """The program bindings/declare."""
    loader = SourceFileLoader("declare", str(ROOT / "bindings" / "declare"))
    found = spec_from_loader("declare", loader)
    assert found is not None
    module = module_from_spec(found)
    loader.exec_module(module)
    return module


def outputs(*command: object) -> Rows:
    done = subprocess.run([str(word) for word in command], capture_output=True, text=True, timeout=120)
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout.splitlines()


def members(structure: header.Structure) -> Iterator[str]:
    """Paths to the members of a structure, those of members too, and of an array its second element."""

    def of(fields: tuple[header.Field, ...], prefix: str) -> Iterator[str]:
        for field in fields:
            yield prefix + field.name
            yield from of(field.inner, f"{prefix}{field.name}.")
            if field.count:
                yield f"{prefix}{field.name}[1]"

    return of(structure.fields, "")


# Each language tells sizes, offsets and values by a program made from the names alone.


def in_c(place: Path) -> Rows:
    lines = ["#include <vark40.h>", "#include <stddef.h>", "#include <stdio.h>", "int main(void)", "{"]
    for structure in INTERFACE.structures:
        lines.append(f'printf("{structure.name} %zu\\n", sizeof({structure.name}));')
        for path in members(structure):
            at = f"offsetof({structure.name}, {path})"
            size = f"sizeof((({structure.name} *)0)->{path})"
            lines.append(f'printf("{structure.name}.{path} %zu %zu\\n", {at}, {size});')
    for enumeration in INTERFACE.enumerations:
        lines += [f'printf("{name} %d\\n", {name});' for name, _ in enumeration.values]
    lines += ["return 0;", "}"]
    source = place / "tell.c"
    source.write_text("\n".join(lines))
    outputs("cc", "-std=c11", "-I", ROOT / "include", source, "-o", place / "tell_c")
    return outputs(place / "tell_c")


def in_cpp(place: Path) -> Rows:
    joined = declare().joined
    lines = ["#include <vark40.hpp>", "#include <cstdio>", "int main()", "{"]
    for structure in INTERFACE.structures:
        lines.append(f'std::printf("{structure.name} %zu\\n", sizeof({structure.name}));')
        for path in members(structure):
            at = f"offsetof({structure.name}, {path})"
            size = f"sizeof(static_cast<{structure.name} *>(nullptr)->{path})"
            lines.append(f'std::printf("{structure.name}.{path} %zu %zu\\n", {at}, {size});')
    for enumeration in INTERFACE.enumerations:
        kind = f"vark40::{enumeration.name[len('Vark'):]}"
        for name, _ in enumeration.values:
            value = f"static_cast<int>({kind}::{joined(name[len(enumeration.prefix):])})"
            lines.append(f'std::printf("{name} %d\\n", {value});')
    lines.append("}")
    source = place / "tell.cpp"
    source.write_text("\n".join(lines))
    # The functions of the header are inline, so their calls are looked for even where nothing uses them.
    outputs("c++", "-std=c++20", "-I", ROOT / "include", "-I", ROOT / "bindings" / "cpp", source,
            PROGRAMS / "libvark40.so", "-o", place / "tell_cpp")  # fmt: skip
    return outputs("env", f"LD_LIBRARY_PATH={PROGRAMS}", place / "tell_cpp")


def in_python(_: Path) -> Rows:
    def place_of(kind: type, path: str) -> tuple[int, int]:
        offset, size = 0, ctypes.sizeof(kind)
        for word in path.split("."):
            name, _, index = word.partition("[")
            field = getattr(kind, name)
            offset, size = offset + field.offset, field.size
            kind = dict(entry[:2] for entry in kind._fields_)[name]  # type: ignore[attr-defined]
            if index:
                size = ctypes.sizeof(kind._type_)  # type: ignore[attr-defined]
                offset += size
        return offset, size

    rows = []
    for structure in INTERFACE.structures:
        kind = getattr(declarations, structure.name)
        rows.append(f"{structure.name} {ctypes.sizeof(kind)}")
        for path in members(structure):
            rows.append(f"{structure.name}.{path} {' '.join(str(number) for number in place_of(kind, path))}")
    for enumeration in INTERFACE.enumerations:
        numbers = getattr(declarations, enumeration.name[len("Vark"):])
        for name, _value in enumeration.values:
            rows.append(f"{name} {int(numbers[name[len(enumeration.prefix):]])}")
    return rows


def in_pascal(place: Path) -> Rows:
    lines = ["program tell;", "{$mode objfpc}", "uses vark40;", "begin"]
    for structure in INTERFACE.structures:
        kind = f"T{structure.name}"
        lines.append(f"  WriteLn('{structure.name} ', SizeOf({kind}));")
        for path in members(structure):
            at = f"PtrUInt(@P{structure.name}(nil)^.{path})"
            size = f"SizeOf(P{structure.name}(nil)^.{path})"
            lines.append(f"  WriteLn('{structure.name}.{path} ', {at}, ' ', {size});")
    for enumeration in INTERFACE.enumerations:
        lines += [f"  WriteLn('{name} ', {name});" for name, _ in enumeration.values]
    # Linked, so that a name that the library lacks is found.
    for function in INTERFACE.functions:
        lines.append(f"  if @{function.name} = nil then Halt(1);")
    lines.append("end.")
    source = place / "tell.pas"
    source.write_text("\n".join(lines))
    units = ROOT / "bindings" / "pascal"
    outputs("fpc", "-v0", f"-Fu{units}", f"-Fl{PROGRAMS}", f"-FU{place}", f"-FE{place}", source)
    return outputs("env", f"LD_LIBRARY_PATH={PROGRAMS}", place / "tell")


@pytest.fixture(scope="module")
def c_rows(tmp_path_factory: pytest.TempPathFactory) -> Rows:
    return in_c(tmp_path_factory.mktemp("c"))


@pytest.mark.parametrize("tell", [in_cpp, in_python, in_pascal])
def test_sizes_offsets_and_values_are_those_of_c(
    c_rows: Rows, tell: Callable[[Path], Rows], tmp_path: Path
) -> None:
    assert tell(tmp_path) == c_rows


def test_every_member_is_known(c_rows: Rows) -> None:
    # A packed structure is as large as its members, so none is missing from the rows.
    sizes = {row.split()[0]: [int(number) for number in row.split()[1:]] for row in c_rows}
    assert len(INTERFACE.structures) == 6
    for structure in INTERFACE.structures:
        if structure.is_packed:
            names = [f"{structure.name}.{field.name}" for field in structure.fields]
            assert sum(sizes[name][1] for name in names) == sizes[structure.name][0]


def test_functions_are_those_of_the_library() -> None:
    exported = {line.split()[2] for line in outputs("nm", "-D", "--defined-only", PROGRAMS / "libvark40.so")}
    declared = {function.name for function in INTERFACE.functions}
    assert len(declared) == 47
    assert exported == declared == set(declarations.PROTOTYPES)


# The same with the fields as arguments, or without what is new in Ex: no language needs them twice.
OTHER_FORMS = {
    "VARK_BuchungEinfuegenDirekt",
    "VARK_BuchungEinfuegenDirektEx",
    "VARK_SplitStart",
    "VARK_SplitEinfuegen",
    "VARK_PekoDirekt",
}

WRAPPERS = {
    # A message loop is the host's own in C++ and Pascal.
    "cpp/vark40.hpp": {"VARK_IsMessage"},
    "pascal/vark40.pas": {"VARK_IsMessage"},
    " ".join(f"python/vark40/_{name}.py" for name in ("books", "reports", "library", "thread")): set(),
}


@pytest.mark.parametrize("files", WRAPPERS)
def test_no_language_leaves_a_function_out(files: str) -> None:
    text = "".join((ROOT / "bindings" / name).read_text("utf-8") for name in files.split())
    used = set(re.findall(r"\bVARK_[A-Z][A-Za-z]+[a-z]\w*\b|\bVARK_GUV\b", text))
    declared = {function.name for function in INTERFACE.functions}
    assert declared - used == OTHER_FORMS | WRAPPERS[files]


# ---- What is made from the header ----


def test_what_is_made_from_the_header_is_up_to_date() -> None:
    assert outputs(sys.executable, ROOT / "bindings" / "declare", "--check") == []


CHANGES = {
    "a new function": ("int32_t VARK_CALL VARK_St", "void VARK_CALL VARK_N(int32_t x);\nint32_t VARK_CALL VARK_St"),
    "a new argument": ("VARK_SplitEnde(int32_t post,", "VARK_SplitEnde(int32_t post, int32_t more,"),
    "a new field": ("int32_t Anzahl;", "int32_t Anzahl; int32_t Mehr;"),
    "a wider field": ("char Beleg[9];", "char Beleg[10];"),
    "another type": ("uint8_t Kennzeichen;", "int32_t Kennzeichen;"),
    "fields in another order": ("int32_t Wert1;", "int32_t Wert3;"),
    "a new value": ("VARK_DEBITOR = 4,", "VARK_DEBITOR = 4, VARK_ANDERES = 32,"),
    "another value": ("VARK_OHNE_KONTO = 16", "VARK_OHNE_KONTO = 17"),
}  # fmt: skip


@pytest.mark.parametrize("change", CHANGES)
def test_each_language_lags_behind_a_changed_header(change: str, tmp_path: Path) -> None:
    program = declare()
    before, after = CHANGES[change]
    text = (ROOT / "include" / "vark40.h").read_text("utf-8")
    assert before in text
    changed = tmp_path / "vark40.h"
    changed.write_text(text.replace(before, after), "utf-8")
    interface = header.read(changed)
    assert program.python(interface) != program.PYTHON.read_text("utf-8")
    assert program.pascal(interface) != program.PASCAL.read_text("utf-8")
    if change == "a new value":  # all the rest of C++ is the header itself
        assert program.cpp(interface, program.CPP.read_text("utf-8")) != program.CPP.read_text("utf-8")


@pytest.mark.parametrize(
    ("before", "after"),
    [
        ("int32_t Anzahl;", "int32_t Anzahl, Mehr;"),
        ("VARK_GUT = 1,", "VARK_GUT = 1 << 0,"),
        ("VARK_Status(void)", "VARK_Status(int (*f)(void))"),
        ("typedef struct BuchungEingabe {", "typedef struct {"),
    ],
)
def test_what_has_another_form_is_refused_not_skipped(before: str, after: str, tmp_path: Path) -> None:
    text = (ROOT / "include" / "vark40.h").read_text("utf-8")
    assert before in text
    changed = tmp_path / "vark40.h"
    changed.write_text(text.replace(before, after), "utf-8")
    with pytest.raises(header.Strange):
        header.read(changed)


def test_a_result_without_a_text_is_refused(tmp_path: Path) -> None:
    text = (ROOT / "include" / "vark40.h").read_text("utf-8")
    changed = tmp_path / "vark40.h"
    changed.write_text(text.replace("VARK_GUT = 1,", "VARK_GUT = 1, VARK_FEHLER_NEU = -99,"), "utf-8")
    program = declare()
    with pytest.raises(program.header.Strange, match="-99"):
        program.python(header.read(changed))
