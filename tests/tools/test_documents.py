"""What the documents point at is there: files, programs, commands."""

import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCUMENTS = sorted([*ROOT.glob("*.md"), *ROOT.glob("docs/**/*.md"), *ROOT.glob("tests/**/*.md")])
LINK = re.compile(r"\]\(([^)\s]+)\)")
HEADING = re.compile(r"^#+ (.*)$", re.MULTILINE)
PATH = re.compile(r"(?<![\w./\\-])((?:src|tools|tests|docs|bench|examples|resources|cmake)/[\w./-]*[\w/])")
# An error as scripts see it, its number in brackets before its text, which "..." may cut short; and one by its number.
ERROR = re.compile(r"\[(\d+)\] ([А-Я][^`|(\n\"]*)")
ERROR_NUMBER = re.compile(r"(?:\berror|\bошибк[а-я]+) (\d+)\b")
DESCRIPTOR = re.compile(r'\{(\d+), "\w+", L"([^"]*)"\}')


class Documents(unittest.TestCase):
    def missing(self, pattern, resolve):
        """What the pattern finds in the documents and `resolve` does not find on disk."""
        for document in DOCUMENTS:
            for name in set(pattern.findall(document.read_text(encoding="utf-8"))):
                if not resolve(document, name):
                    yield f"{document.relative_to(ROOT)}: {name}"

    def test_links_lead_to_files_and_headings(self):
        def resolve(document, link):
            name, _, place = link.partition("#")
            target = document.parent / name if name else document
            if "://" in link or not target.exists() or not place:
                return "://" in link or target.exists()
            headings = HEADING.findall(target.read_text(encoding="utf-8"))
            return place in [re.sub(r"[^\w -]", "", each.lower()).replace(" ", "-") for each in headings]

        self.assertEqual(list(self.missing(LINK, resolve)), [])

    def test_paths_exist(self):
        self.assertEqual(list(self.missing(PATH, lambda _, name: (ROOT / name).exists())), [])

    def test_errors_are_those_of_the_table(self):
        errors = dict(DESCRIPTOR.findall((ROOT / "src/core/errors.h").read_text(encoding="utf-8")))

        def resolve(_, found):
            shown, dots, _ = found[1].rstrip().partition("...")
            text = errors.get(found[0], "")
            return text.startswith(shown.rstrip()) if dots else text == shown

        self.assertEqual(list(self.missing(ERROR, resolve)), [])
        self.assertEqual(list(self.missing(ERROR_NUMBER, lambda _, number: number in errors)), [])


if __name__ == "__main__":
    unittest.main()
