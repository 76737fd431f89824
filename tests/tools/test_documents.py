"""What the documents point at is there: files, programs, commands."""

import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCUMENTS = sorted([*ROOT.glob("*.md"), *ROOT.glob("docs/**/*.md"), *ROOT.glob("tests/**/*.md")])
LINK = re.compile(r"\]\(([^)\s]+)\)")
HEADING = re.compile(r"^#+ (.*)$", re.MULTILINE)
PATH = re.compile(r"(?<![\w./\\-])((?:src|tools|tests|docs|bench|examples|resources|cmake)/[\w./-]*[\w/])")


def leads(document, link):
    name, _, place = link.partition("#")
    target = document.parent / name if name else document
    if "://" in link or not target.exists() or not place:
        return "://" in link or target.exists()
    headings = HEADING.findall(target.read_text(encoding="utf-8"))
    return place in [re.sub(r"[^\w -]", "", each.lower()).replace(" ", "-") for each in headings]


class Documents(unittest.TestCase):
    def test_links_and_paths_lead_somewhere(self):
        for document in DOCUMENTS:
            text = document.read_text(encoding="utf-8")
            lost = [name for name in PATH.findall(text) if not (ROOT / name).exists()]
            lost += [link for link in LINK.findall(text) if not leads(document, link)]
            self.assertEqual(lost, [], document)


if __name__ == "__main__":
    unittest.main()
