"""The samples say the same in three languages, and the documentation shows what runs."""

from __future__ import annotations

import json
import os
import re
import subprocess
import sys
import tempfile
from datetime import date
from decimal import Decimal
from pathlib import Path
from typing import Iterator

import pytest

sys.path.insert(0, str(Path(__file__).resolve().parent.parent))

from support import (  # noqa: E402
    PROGRAMS,
    ROOT,
    compile_cpp,
    compile_pascal,
    make_books,
    need_nobody,
    run,
)


@pytest.fixture(scope="module")
def programs() -> Iterator[dict[str, list[object]]]:
    """The sample of each language, where every user may run it."""
    with tempfile.TemporaryDirectory(prefix="vark-samples-") as directory:
        place = Path(directory)
        place.chmod(0o755)
        compile_cpp(ROOT / "examples" / "offene_posten.cpp", place / "in_cpp")
        built = compile_pascal(ROOT / "examples" / "offene_posten.pas", place)
        assert built.returncode == 0, built.stdout
        yield {
            "python": [sys.executable, ROOT / "examples" / "offene_posten.py"],
            "cpp": [place / "in_cpp"],
            "pascal": [place / "offene_posten"],
        }


LANGUAGES = ["python", "cpp", "pascal"]


def due(books: Path) -> list[str]:
    """What is due, reckoned from the report."""
    command = ["bericht", "op", "--mandant", "1", "--art", "Debitor", "--json"]
    output = run(PROGRAMS / "vark", *command, books=books).stdout
    sums: dict[str, Decimal] = {}
    for row in json.loads(output, parse_float=Decimal)["rows"]:
        if row.get("kind", "line") != "line":
            continue
        termin = date(*reversed([int(part) for part in row["termin"].split(".")]))  # type: ignore[arg-type]
        if termin > date(1998, 4, 30):
            continue
        amount = row["betrag"] if row["waehrung"] == "DM" else row["betrag3"]
        who = f"{row['konto']};{row['name'][:25]}"
        sums[who] = sums.get(who, Decimal(0)) + amount
    return [f"{who};{amount:.2f}" for who, amount in sorted(sums.items())]


@pytest.mark.parametrize("language", LANGUAGES)
def test_a_sample_does_what_it_says(
    language: str, programs: dict[str, list[object]], tmp_path: Path
) -> None:
    books = tmp_path / "books"
    make_books(books)
    program = programs[language]
    done = run(*program, books=books)
    assert (done.returncode, done.stderr) == (0, "")
    wanted = due(books)
    assert len(wanted) > 3
    assert done.stdout.splitlines() == [*wanted, "gebucht"]
    stapel = run(PROGRAMS / "vark", "stapel", "--mandant", "1", "16", "--json", books=books)
    assert [each["beleg"] for each in json.loads(stapel.stdout)] == ["M-0498"]
    (tmp_path / "none").mkdir()
    refused = run(*program, books=tmp_path / "none")
    assert (refused.returncode, refused.stdout) == (1, "")
    assert "tolka.ini" in refused.stderr and "(-36)" in refused.stderr


@pytest.mark.parametrize("language", LANGUAGES)
def test_a_data_path_that_leads_nowhere_is_told(
    language: str, programs: dict[str, list[object]], tmp_path: Path
) -> None:
    (tmp_path / "vark.ini").write_text(f"[VARK]\nPfad={tmp_path}/da\n")
    refused = run(*programs[language], books=tmp_path)
    assert (refused.returncode, refused.stdout) == (1, "")
    assert "(-3)" in refused.stderr and "not found" in refused.stderr
    assert not (tmp_path / "da").exists()


@pytest.mark.parametrize("language", LANGUAGES)
def test_foreign_books_are_told_and_stay_as_they_are(
    language: str, programs: dict[str, list[object]], tmp_path: Path
) -> None:
    (tmp_path / "da").mkdir()
    (tmp_path / "da" / "books.mdb").write_bytes(b"These are no books." * 1000)
    (tmp_path / "vark.ini").write_text(f"[VARK]\nPfad={tmp_path}/da\n")
    refused = run(*programs[language], books=tmp_path)
    assert (refused.returncode, refused.stdout) == (1, "")
    assert "Not a btrieve file" in refused.stderr
    assert (tmp_path / "da" / "books.mdb").read_bytes() == b"These are no books." * 1000


@pytest.mark.parametrize("language", ["cpp", "pascal"])
def test_a_library_of_another_version_is_refused_by_the_loader(
    language: str, programs: dict[str, list[object]], tmp_path: Path
) -> None:
    (tmp_path / "libvark40.so.3").symlink_to(PROGRAMS / "libvark40.so.4")
    done = run(*programs[language], books=tmp_path, library=tmp_path)
    assert done.returncode == 127
    assert "libvark40.so.4: cannot open shared object file" in done.stderr


@pytest.mark.parametrize("language", LANGUAGES)
def test_books_that_one_may_not_enter_are_refused(language: str, programs: dict[str, list[object]]) -> None:
    need_nobody()
    with tempfile.TemporaryDirectory(prefix="vark-samples-") as directory:
        place = Path(directory)
        place.chmod(0o755)
        make_books(place / "books")
        program = programs[language]
        data = [path for path in (place / "books").iterdir() if path.is_dir()]
        for path in data:
            path.chmod(0o000)
        refused = run(*program, books=place / "books", nobody=True)
        assert (refused.returncode, refused.stdout) == (1, "")
        assert "(-3)" in refused.stderr
        for path in data:
            path.chmod(0o755)
        assert run(*program, books=place / "books").returncode == 0


@pytest.mark.parametrize("language", ["cpp", "pascal"])
def test_a_value_that_is_none_is_told_not_made_up(
    language: str, programs: dict[str, list[object]], tmp_path: Path
) -> None:
    strange = Path(os.environ["VARK_STRANGE_BOOKS"])
    done = run(*programs[language], books=tmp_path, library=strange.parent)
    assert (done.returncode, done.stdout) == (1, "")
    assert done.stderr.startswith("Offen: In den Büchern steht kein Betrag: „+00x,50“.")


def test_behind_a_value_that_is_none_others_follow(tmp_path: Path) -> None:
    source = tmp_path / "strange.pas"
    source.write_text(
        """program strange;
{$mode objfpc}{$H+}
uses vark40;
var
  Leser: TVarkPostenliste.TLeser;
begin
  Leser := TVarkBuecher.Create(1).OffenePosten(VARK_DEBITOR).GetEnumerator;
  try
    Leser.MoveNext;
  except
    on Fehler: EVarkValue do
      WriteLn(Fehler.Field);
  end;
  WriteLn(Leser.MoveNext, ' ', Leser.Current.Konto, ' ', Leser.Current.Offen:0:2, ' ', Leser.MoveNext);
end.
"""
    )
    assert compile_pascal(source, tmp_path).returncode == 0
    page = tmp_path / "strange.cpp"
    page.write_text(
        """#include <iostream>
#include <vark40.hpp>
int main()
{
    const auto books = vark40::Buecher::Oeffnen(1);
    for (const auto &posten : *books->OffenePosten(vark40::Kontoart::Debitor)) {
        std::cout << (posten ? posten->Konto + " " + posten->Offen.Text() : posten.error().Field) << '\\n';
    }
}
"""
    )
    compile_cpp(page, tmp_path / "strange_cpp")
    library = Path(os.environ["VARK_STRANGE_BOOKS"]).parent
    assert run(tmp_path / "strange", books=tmp_path, library=library).stdout == "Offen\nTRUE 10011 12.50 FALSE\n"
    assert run(tmp_path / "strange_cpp", books=tmp_path, library=library).stdout == "Offen\n10011 12,50\n"


def blocks(page: str, language: str) -> list[str]:
    text = (ROOT / "docs" / page).read_text("utf-8")
    return re.findall(rf"^```{language}\n(.*?)^```$", text, flags=re.DOTALL | re.MULTILINE)


@pytest.mark.parametrize(
    ("page", "language", "sample"),
    [("cpp.md", "cpp", "offene_posten.cpp"), ("pascal.md", "pascal", "offene_posten.pas")],
)
def test_a_page_shows_its_sample(page: str, language: str, sample: str) -> None:
    assert (ROOT / "examples" / sample).read_text("utf-8") in blocks(page, language)


def test_the_python_page_runs_from_top_to_bottom(tmp_path: Path) -> None:
    books = tmp_path / "books"
    make_books(books)
    script = tmp_path / "page.py"
    script.write_text(f"import os\nos.chdir({str(tmp_path)!r})\n" + "\n".join(blocks("python.md", "python")))
    done = run(sys.executable, script, books=books)
    assert (done.returncode, done.stderr) == (0, "")
    assert "10010" in done.stdout and (tmp_path / "bilanz.pdf").read_bytes().startswith(b"%PDF")


def test_the_cpp_page_compiles(tmp_path: Path) -> None:
    books = tmp_path / "books"
    make_books(books)
    (body,) = [block for block in blocks("cpp.md", "cpp") if "int main" not in block]
    source = tmp_path / "page.cpp"
    source.write_text(
        "#include <iostream>\n#include <vark40.hpp>\nusing namespace vark40;\n"
        "static int Tell(const Error &error) { std::cerr << error.Message; return 1; }\n"
        f"int main()\n{{\n{body}}}\n"
    )
    compile_cpp(source, tmp_path / "page")
    done = run(tmp_path / "page", books=books)
    assert (done.returncode, done.stderr) == (0, "")
    assert done.stdout


def test_an_ignored_result_does_not_pass_in_cpp(tmp_path: Path) -> None:
    def compiled(statement: str) -> "subprocess.CompletedProcess[str]":
        source = tmp_path / "ignored.cpp"
        source.write_text(f"#include <vark40.hpp>\nint main()\n{{\n    {statement}\n}}\n")
        command = ["c++", "-std=c++20", "-fsyntax-only", "-Werror", f"-I{ROOT / 'include'}"]
        return subprocess.run(
            [*command, f"-I{ROOT / 'bindings' / 'cpp'}", source], capture_output=True, text=True, timeout=300
        )

    assert compiled("return vark40::Buecher::Oeffnen(1) ? 0 : 1;").returncode == 0
    ignored = compiled("vark40::Buecher::Oeffnen(1);")
    assert ignored.returncode != 0 and "nodiscard" in ignored.stderr, ignored.stderr
