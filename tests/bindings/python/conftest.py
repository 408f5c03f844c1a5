"""Sample books for the tests, and programs beside them.

The library binds itself to one installation for the life of a process: the tests of one run share the books,
and what needs other ones runs in a process of its own.
"""

from __future__ import annotations

import json
import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path
from typing import Any, Iterator, Optional

import pytest

sys.path.insert(0, str(Path(__file__).resolve().parent.parent))

import support  # noqa: E402
from support import PROGRAMS, make_books  # noqa: E402


@pytest.fixture(scope="session", autouse=True)
def books() -> Iterator[Path]:
    """The sample books that this process works in."""
    directory = Path(tempfile.mkdtemp(prefix="vark-python-"))
    make_books(directory)
    os.environ["VARK_CONFIG_DIR"] = str(directory)
    os.environ["VARK_UI"] = "headless"
    yield directory
    shutil.rmtree(directory)


@pytest.fixture
def place() -> Iterator[Path]:
    """A directory that every user can enter."""
    directory = Path(tempfile.mkdtemp(prefix="vark-python-"))
    directory.chmod(0o755)
    yield directory
    shutil.rmtree(directory)


def vark(*arguments: str) -> str:
    """What the command line prints, which works in the same books."""
    output = subprocess.run([PROGRAMS / "vark", *arguments], check=True, stdout=subprocess.PIPE).stdout
    return output.decode("utf-8")


def stapel(number: int) -> list[Any]:
    """The bookings of a Stapel of Mandant 1 as a tool reads them from the files."""
    rows: list[Any] = json.loads(vark("stapel", "--mandant", "1", str(number), "--json"))
    return rows


def run(script: str, config: Path, *, nobody: bool = False, library: Optional[str] = None) -> str:
    """What a program of its own prints, on the installation whose ini files lie in `config`."""
    if nobody:
        support.need_nobody()
    found = [] if library is None else [f"VARK40_LIBRARY={library}"]
    done = support.run("env", *found, sys.executable, "-c", script, books=config, nobody=nobody)
    assert done.returncode == 0, done.stderr
    return done.stdout
