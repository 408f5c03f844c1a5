"""What the tests of several languages share: programs of the build, sample books, compilers."""

from __future__ import annotations

import os
import subprocess
from pathlib import Path

import pytest

ROOT = Path(os.environ["VARK_SOURCE"])
PROGRAMS = Path(os.environ["VARK_PROGRAMS"])  # where the build has put library and tools


def make_books(directory: Path) -> None:
    subprocess.run(
        [PROGRAMS / "books", "beispiel", directory, "--ersetzen"], check=True, stdout=subprocess.DEVNULL
    )


def compile_pascal(source: Path, place: Path) -> "subprocess.CompletedProcess[str]":
    """Builds a program into `place`."""
    command = ["fpc", "-v0wne", "-Sew", f"-Fu{ROOT / 'bindings' / 'pascal'}", f"-Fl{PROGRAMS}"]
    return subprocess.run(
        [*command, f"-FU{place}", f"-FE{place}", str(source)], capture_output=True, text=True, timeout=300
    )


def compile_cpp(source: Path, program: Path) -> None:
    """Builds a program as a host with the installed header and library would."""
    includes = [f"-I{ROOT / 'include'}", f"-I{ROOT / 'bindings' / 'cpp'}"]
    subprocess.run(
        ["c++", "-std=c++20", *includes, source, PROGRAMS / "libvark40.so", "-o", program], check=True
    )


def run(
    *command: object, books: Path, library: Path = PROGRAMS, nobody: bool = False
) -> "subprocess.CompletedProcess[str]":
    """Runs a program in the books whose ini files lie in `books`; `nobody`: as a user without rights."""
    environment = dict(os.environ, VARK_CONFIG_DIR=str(books), VARK_UI="headless")
    environment["LD_LIBRARY_PATH"] = str(library)
    user = {"user": 65534, "group": 65534} if nobody and os.geteuid() == 0 else {}
    return subprocess.run(
        [str(word) for word in command], env=environment, capture_output=True, text=True, timeout=120, **user
    )


def need_nobody() -> None:
    """Skips a test where a user without rights could not even read the library."""
    library = PROGRAMS / "libvark40.so.4"
    done = run("test", "-r", library, "-a", "-r", ROOT / "bindings", books=ROOT, nobody=True)
    if done.returncode != 0:
        pytest.skip("the tree is not readable by everybody")
