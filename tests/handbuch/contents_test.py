"""The handbook is whole: every chapter, every message of the library, every report with its picture, on one page.

contents_test.py SOURCE_DIRECTORY BUILD_DIRECTORY
"""

from __future__ import annotations

import html
import re
import subprocess
import sys
import unittest
from pathlib import Path

ROOT, BUILD = (Path(argument).resolve() for argument in sys.argv[1:3])
CHAPTERS = ROOT / "docs" / "handbuch"
PAGE = BUILD / "docs" / "handbuch"


def read(path: Path) -> str:
    return path.read_text("utf-8")


class Contents(unittest.TestCase):
    def test_the_index_links_every_chapter(self) -> None:
        linked = re.findall(r"^\d+\. \[[^\]]+\]\((\w+\.md)\)", read(CHAPTERS / "README.md"), re.MULTILINE)
        self.assertEqual(sorted(linked), sorted(file.name for file in CHAPTERS.glob("*.md") if file.name != "README.md"))

    def test_what_is_for_packages_runs_with_them(self) -> None:
        marked = re.findall(r"^```sh pakete=(\w+)$", read(CHAPTERS / "einrichten.md"), re.MULTILINE)
        self.assertEqual(["server", "alle", "entfernen"], marked)
        self.assertEqual(marked, re.findall(r"^handbook (\w+)$", read(ROOT / "tests" / "packages"), re.MULTILINE))
        for file in CHAPTERS.glob("*.md"):
            if file.name != "einrichten.md":
                self.assertNotIn("pakete=", read(file))

    def test_every_message_has_its_cause_and_way_out(self) -> None:
        chapter = read(CHAPTERS / "meldungen.md")
        rows = {
            number: html.unescape(row) for number, row in re.findall(r"^\| (\d+) \| (.*) \|$", chapter, re.MULTILINE)
        }
        definitions = read(ROOT / "src" / "frame" / "messages.def")
        own = {
            number: "".join(re.findall(r'"([^"]*)"', text))
            for number, text in re.findall(r"^VARK_MESSAGE\((\d+), \w+,\s*(.*?)_w\)$", definitions, re.MULTILINE | re.DOTALL)
        }
        self.assertGreater(len(own), 60)
        for number, text in own.items():
            self.assertIn(number, rows)
            cells = [cell.strip() for cell in rows[number].split(" | ")]
            self.assertEqual(text, cells[0], number)
            self.assertTrue(len(cells) == 3 and all(cells), number)
        statuses = re.findall(r'\{(3\d\d\d), "([^"]*)"_w\}', read(ROOT / "src" / "frame" / "message_texts.cpp"))
        self.assertGreater(len(statuses), 90)
        for number, text in statuses:
            self.assertEqual(text, rows[number].split(" | ")[0].strip(), number)

    def test_every_report_stands_with_a_picture(self) -> None:
        reports = subprocess.run(
            [BUILD / "vark", "bericht", "--hilfe"], capture_output=True, text=True, check=True
        ).stdout
        names = re.findall(r"^  ([a-z]+) +\S", reports.split("Befehle:")[1].split("\n\n")[0], re.MULTILINE)
        self.assertGreater(len(names), 15)
        chapter = read(CHAPTERS / "berichte.md")
        for name in names:
            self.assertIn(f"vark bericht {name} ", chapter)
            self.assertIn(f"(bilder/{name}.png)", chapter)

    @unittest.skipUnless((PAGE / "index.html").exists(), "the page was not built")
    def test_the_page_holds_every_chapter_and_picture(self) -> None:
        page = read(PAGE / "index.html")
        for file in CHAPTERS.glob("*.md"):
            if file.name != "README.md":
                self.assertIn(f'<h1 id="{file.stem}">', page)
        places = set(re.findall(r' id="([^"]*)"', page))
        for target in re.findall(r'href="#([^"]*)"', page):
            self.assertIn(target, places)
        for picture in re.findall(r'src="([^"]*)"', page):
            self.assertEqual(b"\x89PNG", (PAGE / picture).read_bytes()[:4], picture)
        self.assertNotIn("```", page)

    @unittest.skipUnless((PAGE / "index.html").exists(), "the page was not built")
    def test_the_page_shows_each_row_as_it_stands(self) -> None:
        cells = re.findall(r'<td data-head="Meldung">(.*?)</td>', read(PAGE / "index.html"))
        rows = re.findall(r"^\| \d+ \| (.*?) \|", read(CHAPTERS / "meldungen.md"), re.MULTILINE)
        self.assertGreater(len(rows), 150)
        shown = {html.unescape(re.sub(r"</?code>", "`", cell)) for cell in cells}
        for row in rows:
            self.assertIn(html.unescape(row), shown)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
