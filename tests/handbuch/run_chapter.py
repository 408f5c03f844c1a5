"""Runs every command of a chapter of the handbook, as a reader would.

run_chapter.py CHAPTER PROGRAMS: the blocks of the chapter run in order in one directory of their own.

  ```sh            commands; each has to end with 0, or the last one with 1 where the block says "ende=1"
  ```text          right behind them: lines that they have written, in this order; "…" stands for anything
  ```ini datei=F   a file, likewise ```csv, ```sql

Prints what is not so; ends with 1 then.
"""

from __future__ import annotations

import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path
from typing import NamedTuple

BLOCK = re.compile(r"^```(\w+)([^\n]*)\n(.*?)^```$", re.DOTALL | re.MULTILINE)
# What a block leaves behind goes on in the next one.
SHELL = 'set -e; cd "$(cat {state}/place)"; . {state}/variables\ntrap "export -p >{state}/variables; pwd >{state}/place" EXIT\n{commands}'


class Block(NamedTuple):
    kind: str
    marks: dict[str, str]
    text: str
    line: int


def blocks_of(chapter: str) -> list[Block]:
    blocks = []
    for found in BLOCK.finditer(chapter):
        marks = dict(mark.split("=", 1) for mark in found[2].split())
        blocks.append(Block(found[1], marks, found[3], chapter.count("\n", 0, found.start()) + 1))
    return blocks


def missing_line(wanted: str, written: str) -> str | None:
    """The first wanted line that does not follow in what was written; None where all do."""
    at = 0
    lines = [line.rstrip() for line in written.splitlines()]
    for line in wanted.splitlines():
        pattern = re.compile(".*".join(re.escape(part) for part in line.strip().split("…")))
        while at < len(lines) and not pattern.fullmatch(lines[at].strip()):
            at += 1
        if at == len(lines):
            return line
        at += 1
    return None


def faults_of(chapter: Path, programs: Path, scratch: Path) -> list[str]:
    faults, written = [], ""
    state, place = scratch / "state", scratch / "place"
    state.mkdir()
    place.mkdir()
    (state / "place").write_text(str(place))
    (state / "variables").write_text("")
    environment = {
        "PATH": f"{programs}:{os.environ['PATH']}",
        "HOME": str(place),
        "LANG": "C.UTF-8",
        "VARK_UI": "headless",
    }
    for block in blocks_of(chapter.read_text("utf-8")):
        where = f"{chapter.name}:{block.line}"
        if block.kind == "sh":
            script = SHELL.format(state=state, commands=block.text)
            done = subprocess.run(
                ["bash", "-c", script], env=environment, stdin=subprocess.DEVNULL, capture_output=True, timeout=300
            )
            written = (done.stdout + done.stderr).decode("utf-8", "replace")
            expected = int(block.marks.get("ende", "0"))
            if done.returncode != expected:
                faults.append(f"{where}: ended with {done.returncode} instead of {expected}\n{written}")
        elif block.kind == "text":
            line = missing_line(block.text, written)
            if line is not None:
                faults.append(f"{where}: not written: {line}\n{written}")
        elif "datei" in block.marks:
            file = place / block.marks["datei"]
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(block.text, "utf-8")
        else:
            faults.append(f"{where}: a block that nobody runs")
    return faults


def main() -> int:
    chapter, programs = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()
    with tempfile.TemporaryDirectory() as scratch:
        faults = faults_of(chapter, programs, Path(scratch))
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
