"""What the documents point at is there: files, programs, commands."""

import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCUMENTS = sorted([*ROOT.glob("*.md"), *ROOT.glob("docs/**/*.md"), *ROOT.glob("tests/**/*.md")])
LINK = re.compile(r"\]\(([^)#\s]+)(?:#[^)]*)?\)")
PATH = re.compile(r"(?<![\w./\\-])((?:src|tools|tests|docs|bench|examples|resources|cmake)/[\w./-]*[\w/])")
COMMAND = re.compile(r"(?:`|^    )make ([a-z]+)", re.MULTILINE)


class Documents(unittest.TestCase):
    def missing(self, pattern, resolve):
        """What the pattern finds in the documents and `resolve` does not find on disk."""
        for document in DOCUMENTS:
            for name in set(pattern.findall(document.read_text(encoding="utf-8"))):
                if not resolve(document, name):
                    yield f"{document.relative_to(ROOT)}: {name}"

    def test_links_lead_to_files(self):
        resolve = lambda document, name: "://" in name or (document.parent / name).exists()
        self.assertEqual(list(self.missing(LINK, resolve)), [])

    def test_paths_exist(self):
        self.assertEqual(list(self.missing(PATH, lambda _, name: (ROOT / name).exists())), [])

    def test_make_knows_the_commands(self):
        targets = set(re.findall(r"^([a-z]+):", (ROOT / "Makefile").read_text(encoding="utf-8"), re.MULTILINE))
        self.assertEqual(list(self.missing(COMMAND, lambda _, name: name in targets)), [])


if __name__ == "__main__":
    unittest.main()
