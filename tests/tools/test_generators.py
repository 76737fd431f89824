"""What tools/make-reference and tools/make-typings refuse, since no page or declaration can be made of it; what they make of the
type library, the step "reference" and tests/scripts/languages-test compare."""

import importlib.machinery
import importlib.util
import pathlib
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
LOADER = importlib.machinery.SourceFileLoader("make_typings", str(ROOT / "tools" / "make-typings"))
make_typings = importlib.util.module_from_spec(importlib.util.spec_from_loader("make_typings", LOADER))
LOADER.exec_module(make_typings)
make_reference = make_typings.make_reference
IDL = make_reference.IDL.read_text(encoding="utf-8")
ERRORS = (ROOT / "src/core/errors.h").read_text(encoding="utf-8")


def pages(text, errors=ERRORS):
    return make_reference.make_pages(text, errors)


def typings(text):
    return make_typings.Typings(make_typings.idl.parse(text), "1.2.3.4").text()


# What makes it, what of the type library becomes what, and how it is refused.
REFUSED = [
    (pages, "helpstring", "restricted", "has no helpstring"),
    (pages, "id(2)", "id(1)", "share a dispatch id"),
    (pages, "id(2), ", "", "has no dispatch id"),
    (pages, "[in] BSTR", "[in] FILETIME", "no script author's word for the type 'FILETIME'"),
    (pages, "HRESULT ", "int ", "found 'int' where 'HRESULT'"),
    (typings, "VARIANT silent", "VARIANT quiet", "what quiet is"),
    (typings, "VARIANT maxSize", "double maxSize", "no value that is maxSize any more"),
    (typings, "double val", "hyper* val, [in] CY price", "no type of TypeScript for 'CY'"),
    (typings, "AddStream on another thread; later calls pCallback(undefined",
     "AddStream on another thread; later calls pCallback(binary", "AddStreamAsync: the helpstring"),
    (typings, "HRESULT GetSHA256(", "HRESULT Sha256(", "no method GetSHA256 tells"),
]  # fmt: skip


class Refusals(unittest.TestCase):
    def test_what_does_not_fit_is_refused(self):
        errors = make_typings.TypingsError, make_reference.PageError, make_reference.idl.IdlError
        for make, old, new, message in REFUSED:
            with self.subTest(message):
                self.assertIn(old, IDL)
                with self.assertRaisesRegex(errors, message):
                    make(IDL.replace(old, new))
        with self.assertRaisesRegex(errors, "a line that this script does not understand"):
            pages(IDL, ERRORS + "inline constexpr ErrorDescriptor E_LAST{1000, LAST};\n")

    def test_a_comment_cannot_be_ended(self):
        self.assertEqual(make_typings.comment("", "a */ b"), "/** a * / b */\n")

    def test_pages_out_of_date_are_told_apart(self):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            for page, text in (("A.md", "one\n"), ("B.md", "two\n")):
                (folder / page).write_text(text, encoding="utf-8")
            for found, told in (({"B.md": "2\n"}, "-two\n+2"), ({"B.md": "two\n", "C.md": "three\n"}, "+three"), ({}, "-two")):
                self.assertIn(told, make_reference.differences({"A.md": "one\n", **found}, folder))


if __name__ == "__main__":
    unittest.main()
