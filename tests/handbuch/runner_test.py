"""The runner of the chapters finds what is not so."""

from __future__ import annotations

import tempfile
import unittest
from pathlib import Path

from run_chapter import faults_of


class Runner(unittest.TestCase):
    def faults(self, chapter: str) -> list[str]:
        with tempfile.TemporaryDirectory() as scratch:
            file = Path(scratch) / "chapter.md"
            file.write_text(chapter, "utf-8")
            return faults_of(file, Path(scratch), Path(scratch))

    def test_good_commands_have_no_fault(self) -> None:
        self.assertEqual([], self.faults("```sh\necho eins; echo zwei\n```\n\n```text\neins\nz…i\n```\n"))

    def test_a_command_that_fails_is_found_wherever_it_stands(self) -> None:
        self.assertIn("ended with 1", self.faults("```sh\nfalse\necho gut\n```\n")[0])
        self.assertIn("ended with 0 instead of 1", self.faults("```sh ende=1\ntrue\n```\n")[0])
        self.assertEqual([], self.faults("```sh ende=3\nexit 3\n```\n"))

    def test_a_line_that_is_not_written_is_found(self) -> None:
        self.assertIn("not written: drei", self.faults("```sh\necho eins\n```\n\n```text\ndrei\n```\n")[0])
        order = "```sh\necho eins; echo zwei\n```\n\n```text\nzwei\neins\n```\n"
        self.assertIn("not written: eins", self.faults(order)[0])

    def test_files_variables_and_the_directory_go_on(self) -> None:
        chapter = (
            "```csv datei=a/b.csv\nx;y\n```\n\n```sh\nexport WORT=hier\ncd a\n```\n\n"
            '```sh\necho "$WORT"\ncat b.csv\n```\n\n```text\nhier\nx;y\n```\n'
        )
        self.assertEqual([], self.faults(chapter))

    def test_a_block_that_nobody_runs_is_found(self) -> None:
        self.assertIn("nobody runs", self.faults("```bash\nls\n```\n")[0])


if __name__ == "__main__":
    unittest.main()
