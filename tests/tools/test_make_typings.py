"""tools/make-typings: what it refuses, since its tables and its rules no longer fit the type library."""

import importlib.machinery
import importlib.util
import pathlib
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
LOADER = importlib.machinery.SourceFileLoader("make_typings", str(ROOT / "tools" / "make-typings"))
make_typings = importlib.util.module_from_spec(importlib.util.spec_from_loader("make_typings", LOADER))
LOADER.exec_module(make_typings)
IDL = make_typings.make_reference.IDL.read_text(encoding="utf-8")

REFUSED = [
    ("a new VARIANT", "VARIANT silent", "VARIANT quiet", "what quiet is"),
    ("a VARIANT that is gone", "VARIANT maxSize", "double maxSize", "no value that is maxSize any more"),
    ("a new type", "double val", "hyper* val, [in] CY price", "no type of TypeScript for 'CY'"),
    ("another result than the method that waits", "AddStream on another thread; later calls pCallback(undefined",
     "AddStream on another thread; later calls pCallback(binary", "AddStreamAsync: the helpstring"),
    ("no method that waits", "HRESULT GetSHA256(", "HRESULT Sha256(", "no method GetSHA256 tells"),
]  # fmt: skip


class Refusals(unittest.TestCase):
    def test_what_does_not_fit_is_refused(self):
        for name, old, new, message in REFUSED:
            with self.subTest(name):
                self.assertIn(old, IDL)
                with self.assertRaisesRegex(make_typings.TypingsError, message):
                    make_typings.Typings(make_typings.idl.parse(IDL.replace(old, new)), "1.2.3.4").text()

    def test_a_comment_cannot_be_ended(self):
        self.assertEqual(make_typings.comment("", "a */ b"), "/** a * / b */\n")


if __name__ == "__main__":
    unittest.main()
