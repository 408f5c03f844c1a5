"""Makes the handbook's one HTML page and its pictures.

build_page.py CHAPTERS PROGRAMS PLACE: reads the chapters (*.md) of a directory in the order in which README.md links
them, has the programs make each picture by the command that stands above it, and writes index.html and bilder/.
"""

from __future__ import annotations

import html
import os
import re
import shlex
import subprocess
import sys
import tempfile
from pathlib import Path

import markdown

PICTURE = re.compile(r"^```sh\n([^`]*)```\n\n!\[[^\]]*\]\(bilder/(\w+)\.png\)", re.MULTILINE)
RESOLUTION = "110"  # dots per inch

STYLE = """
body { font: 16px/1.55 system-ui, sans-serif; color: #222; background: #fff; margin: 0; }
main { max-width: 52rem; margin: 0 auto; padding: 1rem; }
nav { font-size: 15px; border-bottom: 2px solid #ccc; padding-bottom: 1rem; column-count: 2; }
nav strong { display: block; column-span: all; }
nav .toc { break-inside: avoid; }
nav ul { margin: .2rem 0; padding-left: 1.2rem; }
h1 { font-size: 1.7rem; margin-top: 3.5rem; border-bottom: 2px solid #ccc; }
h2 { font-size: 1.3rem; margin-top: 2.2rem; }
h3 { font-size: 1.1rem; margin-top: 1.8rem; }
pre { background: #f4f4f2; padding: .6rem .8rem; overflow-x: auto; font-size: 13.5px; line-height: 1.4; }
pre:has(> .language-text) { background: #fff; border: 1px solid #ddd; }
code { font-family: ui-monospace, monospace; font-size: .92em; white-space: nowrap; }
pre code { font-size: 1em; white-space: inherit; }
td code { white-space: normal; overflow-wrap: anywhere; }
img { max-width: 100%; border: 1px solid #bbb; }
table { border-collapse: collapse; font-size: 14.5px; width: 100%; }
th, td { text-align: left; vertical-align: top; padding: .25rem .7rem .25rem 0; border-bottom: 1px solid #ddd; }
a { color: #0b57a4; }
@media screen and (max-width: 44rem) {
  nav { column-count: 1; }
  thead { display: none; }
  table, tbody, tr, td { display: block; }
  tr { border-bottom: 1px solid #ddd; padding: .4rem 0; }
  td { border: 0; padding: .1rem 0; }
  td:first-child { font-weight: bold; }
  td:not(:first-child)::before { content: attr(data-head) ": "; color: #666; }
}
@page { size: A4; margin: 18mm 16mm; }
@media print {
  body { font-size: 10.5pt; }
  main { padding: 0; }
  nav { break-after: page; }
  h1 { break-before: page; }
  h1, h2, h3, pre:has(+ p > img), p:has(+ pre + p > img) { break-after: avoid; }
  pre { white-space: pre-wrap; overflow-wrap: anywhere; font-size: 9pt; break-inside: avoid; }
  img { max-height: 20cm; }
  tr { break-inside: avoid; }
}
"""


def chapters_of(directory: Path) -> list[Path]:
    index = (directory / "README.md").read_text("utf-8")
    return [directory / name for name in re.findall(r"^\d+\. \[[^\]]*\]\((\w+\.md)\)", index, re.MULTILINE)]


def make_pictures(chapters: list[Path], programs: Path, place: Path) -> None:
    place.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory() as scratch:
        environment = dict(os.environ, VARK_CONFIG_DIR=scratch + "/buecher", VARK_UI="headless", VARK_HEUTE="30.06.1998")
        subprocess.run([programs / "books", "beispiel", "buecher"], cwd=scratch, stdout=subprocess.DEVNULL, check=True)
        for chapter in chapters:
            for commands, name in PICTURE.findall(chapter.read_text("utf-8")):
                words = shlex.split(commands.strip().splitlines()[-1])
                page = f"{name}.pdf"
                subprocess.run(
                    [programs / words[0], *words[1:], "--pdf", page], cwd=scratch, env=environment, check=True
                )
                subprocess.run(
                    ["pdftoppm", "-png", "-r", RESOLUTION, "-f", "1", "-singlefile", page, place / name],
                    cwd=scratch,
                    check=True,
                )


def with_heads(table: str) -> str:
    """A table each of whose cells names its column, for a screen too narrow to show them side by side."""
    heads = re.findall(r"<th[^>]*>(.*?)</th>", table)

    def named(row: re.Match[str]) -> str:
        names = iter(heads)
        return re.sub(r"<td", lambda cell: f'<td data-head="{html.escape(next(names))}"', row[0])

    return re.sub(r"<tr>.*?</tr>", named, table, flags=re.DOTALL)


def page_of(chapters: list[Path]) -> str:
    converter = markdown.Markdown(extensions=["tables", "fenced_code", "toc"], extension_configs={"toc": {"toc_depth": "1-2"}})
    bodies, contents = [], []
    for chapter in chapters:
        # What the tests want to know of a block is none of the reader's business.
        text = re.sub(r"^```(\w+) .*$", r"```\1", chapter.read_text("utf-8"), flags=re.MULTILINE)
        text = re.sub(r"\((\w+)\.md\)", r"(#\1)", text)
        body = converter.reset().convert(text)
        # Headings of two chapters may be the same.
        name = chapter.stem
        body = re.sub(r'<(h[2-6]) id="', rf'<\1 id="{name}-', body)
        body = re.sub(r'<h1 id="[^"]*"', f'<h1 id="{name}"', body, count=1)
        body = re.sub(r"<table>.*?</table>", lambda table: with_heads(table[0]), body, flags=re.DOTALL)
        contents.append(re.sub(r'href="#([^"]*)"', rf'href="#{name}-\1"', converter.toc))
        title = re.search(r"^# (.*)$", text, re.MULTILINE)
        assert title is not None, chapter
        contents[-1] = contents[-1].replace(contents[-1].split('"#')[1].split('"')[0], name, 1)
        bodies.append(body)
    return (
        '<!DOCTYPE html>\n<html lang="de">\n<head>\n<meta charset="utf-8">\n'
        '<meta name="viewport" content="width=device-width">\n'
        f"<title>{html.escape('VARK40: Handbuch')}</title>\n<style>{STYLE}</style>\n</head>\n<body>\n<main>\n"
        f"<nav>\n<strong>VARK40: Handbuch</strong>\n{''.join(contents)}</nav>\n" + "\n".join(bodies) + "\n</main>\n</body>\n</html>\n"
    )


def main() -> None:
    directory, programs, place = (Path(argument).resolve() for argument in sys.argv[1:4])
    chapters = chapters_of(directory)
    place.mkdir(parents=True, exist_ok=True)
    make_pictures(chapters, programs, place / "bilder")
    (place / "index.html").write_text(page_of(chapters), "utf-8")


if __name__ == "__main__":
    main()
