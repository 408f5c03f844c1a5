"""Runs every command of a chapter of the handbook, as a reader would.

run_chapter.py CHAPTER PROGRAMS: the blocks of the chapter run in order in one directory of their own.
run_chapter.py CHAPTER PROGRAMS TREE NAME: those that say "pakete=NAME", in the tree; the others leave them out.

  ```sh            commands; each has to end with 0, or the last one with 1 where the block says "ende=1"
  ```sh ort=baum   in a tree with its build
  ```sqlite in=B   what is typed at a terminal into the shell that `books sql B` starts
  ```text          right behind them: lines that they have written, in this order; "…" stands for anything
  ```ini datei=F   a file, likewise ```csv, ```sql

Prints what is not so; ends with 1 then.
"""

from __future__ import annotations

import os
import pty
import re
import select
import subprocess
import sys
import tempfile
import time
from pathlib import Path
from typing import NamedTuple

BLOCK = re.compile(r"^```(\w+)([^\n]*)\n(.*?)^```$", re.DOTALL | re.MULTILINE)
TIMEOUT_S = 300
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


def typed(program: list[str], lines: str, place: Path, environment: dict[str, str]) -> tuple[int, str]:
    """Exit code and output of a program at a terminal of its own, into which the lines are typed."""
    terminal, end = pty.openpty()
    # A terminal keeps what is typed ahead of its program.
    os.write(terminal, (lines + ".quit\n").encode("utf-8"))
    with subprocess.Popen(
        program, cwd=place, env=dict(environment, TERM="dumb"), stdin=end, stdout=end, stderr=end, start_new_session=True
    ) as running:
        os.close(end)
        written, latest = b"", time.monotonic() + TIMEOUT_S
        try:
            while select.select([terminal], [], [], latest - time.monotonic())[0]:
                written += os.read(terminal, 65536)
        except (OSError, ValueError):
            pass  # the other end is closed, or it is too late
        if time.monotonic() > latest:
            running.kill()
        os.close(terminal)
        return running.wait(), written.decode("utf-8", "replace")


def faults_of(chapter: Path, programs: Path, scratch: Path, tree: Path | None = None, packages: str | None = None) -> list[str]:
    faults, written = [], ""
    state, place = scratch / "state", scratch / "place"
    state.mkdir()
    place.mkdir()
    (state / "place").write_text(str(place))
    (state / "variables").write_text("")
    if tree is None:
        tree = scratch / "tree"
        tree.mkdir()
        (tree / "build").symlink_to(programs)
    environment = {
        "PATH": f"{programs}:{os.environ['PATH']}",
        "HOME": str(place),
        "LANG": "C.UTF-8",
        "VARK_UI": "headless",
    }
    blocks = [block for block in blocks_of(chapter.read_text("utf-8")) if block.marks.get("pakete") == packages]
    if not blocks:
        faults.append(f"{chapter.name}: no command for this")
    for block in blocks:
        where = f"{chapter.name}:{block.line}"
        if block.kind == "sh":
            is_in_tree = packages is not None or block.marks.get("ort") == "baum"
            commands = f"(cd {tree}\n{block.text})" if is_in_tree else block.text
            script = SHELL.format(state=state, commands=commands)
            done = subprocess.run(
                ["bash", "-c", script],
                env=environment,
                stdin=subprocess.DEVNULL,
                stdout=subprocess.PIPE,
                stderr=subprocess.STDOUT,
                timeout=TIMEOUT_S,
            )
            written = done.stdout.decode("utf-8", "replace")
            expected = int(block.marks.get("ende", "0"))
            if done.returncode != expected:
                faults.append(f"{where}: ended with {done.returncode} instead of {expected}\n{written}")
        elif block.kind == "sqlite":
            ended, written = typed(["books", "sql", block.marks["in"]], block.text, place, environment)
            if ended != 0 or "Error" in written:
                faults.append(f"{where}: ended with {ended}\n{written}")
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
    tree, packages = (Path(sys.argv[3]).resolve(), sys.argv[4]) if len(sys.argv) > 4 else (None, None)
    with tempfile.TemporaryDirectory() as scratch:
        faults = faults_of(chapter, programs, Path(scratch), tree, packages)
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
