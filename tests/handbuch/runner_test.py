"""The runner of the chapters finds what is not so."""

from __future__ import annotations

import tempfile
import unittest
from pathlib import Path

from run_chapter import faults_of


class Runner(unittest.TestCase):
    def faults(
        self, chapter: str, tree: Path | None = None, packages: str | None = None, program: str = ""
    ) -> list[str]:
        with tempfile.TemporaryDirectory() as scratch:
            file, books = Path(scratch) / "chapter.md", Path(scratch) / "books"
            file.write_text(chapter, "utf-8")
            books.write_text(program)
            books.chmod(0o755)
            return faults_of(file, Path(scratch), Path(scratch), tree, packages)

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

    def test_what_is_for_packages_runs_in_the_tree_and_there_alone(self) -> None:
        chapter = "```sh pakete=alle\nls\n```\n\n```text pakete=alle\nmarke\n```\n\n```sh\ntrue\n```\n"
        self.assertEqual([], self.faults(chapter))
        with tempfile.TemporaryDirectory() as tree:
            (Path(tree) / "marke").touch()
            self.assertEqual([], self.faults(chapter, Path(tree), "alle"))
            (Path(tree) / "marke").unlink()
            self.assertIn("not written: marke", self.faults(chapter, Path(tree), "alle")[0])
            self.assertIn("no command for this", self.faults(chapter, Path(tree), "keine")[0])

    def test_the_tree_has_its_build(self) -> None:
        self.assertEqual([], self.faults("```sh ort=baum\nls build/chapter.md\n```\n\n```sh\n! ls build\n```\n"))

    def test_lines_are_typed_at_a_terminal(self) -> None:
        books = "#!/bin/bash\ntest -t 0 -a -t 1\necho $1 $2\nwhile read -r a; do echo got $a; done <<<$(head -2)\n"
        shell = "```sqlite in=b\n.mode box\n```\n\n```text\nsql b\ngot .mode box\ngot .quit\n```\n"
        self.assertEqual([], self.faults(shell, program=books))
        self.assertIn("ended with 5", self.faults(shell, program="#!/bin/bash\nexit 5\n")[0])
        self.assertIn("Error", self.faults(shell, program=books + "echo Error: near\n")[0])

    def test_a_block_that_nobody_runs_is_found(self) -> None:
        self.assertIn("nobody runs", self.faults("```bash\nls\n```\n")[0])


if __name__ == "__main__":
    unittest.main()
