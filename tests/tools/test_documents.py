"""What the documents point at is there: files, programs, commands."""

import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCUMENTS = sorted([*ROOT.glob("*.md"), *ROOT.glob("docs/**/*.md"), *ROOT.glob("tests/**/*.md")])
LINK = re.compile(r"\]\(([^)\s]+)\)")
HEADING = re.compile(r"^#+ (.*)$", re.MULTILINE)
PATH = re.compile(r"(?<![\w./\\-])((?:src|tools|tests|docs|bench|examples|resources|cmake)/[\w./-]*[\w/])")


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


if __name__ == "__main__":
    unittest.main()
