"""The chapter on hosts: every command of it runs and writes what stands below it."""

from __future__ import annotations

import os
import re
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent))

from support import PROGRAMS, ROOT  # noqa: E402

CHAPTER = (ROOT / "docs" / "handbuch" / "wirtsprogramme.md").read_text("utf-8")


def test_every_command_runs_and_writes_what_is_shown(tmp_path: Path) -> None:
    # A tree with a build of its own, so that nothing is left in the real one.
    for name in ("include", "examples", "bindings", "report-engine", "window-system"):
        (tmp_path / name).symlink_to(ROOT / name)
    (tmp_path / "build" / "demo").mkdir(parents=True)
    for path in PROGRAMS.iterdir():
        if path.name.startswith("lib") or path.name in ("books", "vark", "templates", "rs-pages"):
            (tmp_path / "build" / path.name).symlink_to(path)
    blocks = re.findall(r"^```(sh|text)\n(.*?)^```$", CHAPTER, flags=re.DOTALL | re.MULTILINE)
    script, wanted = ["set -e"], []
    for kind, text in blocks:
        if kind == "sh":
            script += ["echo =====", text]
            wanted.append("")
        else:
            wanted[-1] = text
    environment = dict(os.environ, VARK_UI="headless")
    environment.pop("VARK40_LIBRARY", None)
    done = subprocess.run(
        ["bash", "-c", "\n".join(script)], cwd=tmp_path, env=environment, capture_output=True, timeout=300
    )
    written = done.stdout.decode("utf-8").split("=====\n")[1:]
    assert done.returncode == 0, done.stderr.decode("utf-8", "replace")
    assert written == wanted
    assert (tmp_path / "build" / "demo" / "bilanz.pdf").read_bytes().startswith(b"%PDF")


def test_the_messages_that_it_explains_are_said() -> None:
    quoted = re.findall(r"^\| „(.*?)“", CHAPTER, flags=re.MULTILINE)
    assert len(quoted) > 5
    sources = [path for path in (ROOT / "bindings").rglob("*") if path.suffix in (".py", ".hpp", ".pas")]
    texts = "".join(path.read_text("utf-8") for path in [*sources, *(ROOT / "src" / "frame").glob("*.cpp")])
    for message in quoted:
        assert message in texts or message.endswith("cannot open shared object file"), message
