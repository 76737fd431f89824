"""tools/make-reference: what it makes of a small library, and what it refuses."""

import importlib.machinery
import importlib.util
import pathlib
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
LOADER = importlib.machinery.SourceFileLoader("make_reference", str(ROOT / "tools" / "make-reference"))
SPEC = importlib.util.spec_from_loader("make_reference", LOADER)
make_reference = importlib.util.module_from_spec(SPEC)
LOADER.exec_module(make_reference)

IDL = """
import "oaidl.idl"; // [object] interface INotOne
/* interface INeither { */
typedef [uuid(1)] enum Place { [helpstring("The user's own.")] placeUser = 2, placeMachine } Place;
typedef enum { flagOne = 0x10 } Flags;
interface IBox;
[object, dual, helpstring("inner")] interface IBox : IDispatch
{
    [propget, id(DISPID_VALUE), helpstring("The ball at index. Fails with E_GONE.")]
    HRESULT Item([in] unsigned long index, [out, retval] IBall** ball);
    [propget, id(1), helpstring("The lid.")] HRESULT Lid([out, retval] VARIANT_BOOL* lid);
    [propput, id(1), helpstring("The lid.")] HRESULT Lid([in] VARIANT_BOOL lid);
    [id(2), helpstring("Puts a ball in; \\"late\\", "
                       "or not, by Flags.")]
    HRESULT Put([in] IBall* ball, [in, defaultvalue(0)] VARIANT_BOOL late, [in, optional] VARIANT where,
                [in, defaultvalue("a, b")] BSTR name, [in] enum Place place,
                [in] IDispatch* pCallback, [in] IDispatch* other);
    [propget, id(-4), helpstring("For each.")] HRESULT _NewEnum([out, retval] IUnknown** each);
}
[object, dual] interface IBall : IDispatch {}
[uuid(400DBEE6-1592-44DE-B52E-67E8789466C4), version(2.9)] library Things
{
    importlib("stdole2.tlb");
    [uuid(A6C3-1), helpstring("Holds balls.")] coclass Box { interface IBall; [default] interface IBox; };
    [uuid(A6C3-2), helpstring("A ball.")] coclass Ball { [default] interface IBall; };
}
""".replace("[object, dual", "[object, dual, uuid(E81D-9)")

# 1000 + 512 is 0x5E8, 18 + 512 is 0x212.
ERRORS = """
inline constexpr ErrorDescriptor E_GONE{18, "E_GONE", L"Нет: шара"};
inline constexpr ErrorDescriptor E_LAST{1000, "E_LAST", L"E_LAST"};
"""


class Pages(unittest.TestCase):
    def test_a_member_reads_as_a_script_author_writes_it(self):
        pages = make_reference.make_pages(IDL, ERRORS)
        self.assertEqual(sorted(pages), ["Ball.md", "Box.md", "README.md", "errors.md"])
        for line in [
            "`Item(index: number): Ball`",
            "property, read only · dispatch id 0",
            "The ball at index. Fails with [E_GONE](errors.md).",
            "`Lid: Boolean`",
            "property, read and write · dispatch id 1",
            '`Put(ball: Ball, [late: Boolean = false], [where: value], [name: string = "a, b"], place: Place, '
            "pCallback: function, other: object)`",
            'Puts a ball in; "late", or not, by Flags.',
            "`_NewEnum: object`",
            "| 2 | placeUser | The user's own. |",
            "| 3 | placeMachine |  |",
            "| 0x10 | flagOne |  |",
            "Takes or returns: [Ball](Ball.md)",
            "ProgID `VetrelCorvane2.Box` · CLSID `{A6C3-1}` · interface `IBox` `{E81D-9}`",
        ]:
            self.assertIn(line, pages["Box.md"].splitlines())
        self.assertEqual(pages["Box.md"].count("The lid."), 1)
        self.assertIn("| 18 | E_GONE | 0x80040212 | Нет: шара |", pages["errors.md"])
        self.assertIn("| 1000 | E_LAST | 0x800405E8 | E_LAST |", pages["errors.md"])

    def test_what_a_page_cannot_be_made_of_is_refused(self):
        for what, idl, errors in [
            ("has no helpstring", IDL.replace('helpstring("For each.")', "restricted"), ERRORS),
            ("share a dispatch id", IDL.replace("id(2)", "id(1)"), ERRORS),
            ("has no dispatch id", IDL.replace("id(2), ", ""), ERRORS),
            ("no script author's word for the type 'FILETIME'", IDL.replace("BSTR", "FILETIME"), ERRORS),
            ("line 10: found 'int' where 'HRESULT'", IDL.replace("HRESULT Item", "int Item"), ERRORS),
            ("a line that this script does not understand", IDL, ERRORS.replace(', L"E_LAST"', ", LAST")),
        ]:
            with self.subTest(what), self.assertRaisesRegex((make_reference.PageError, make_reference.idl.IdlError), what):
                make_reference.make_pages(idl, errors)

    def test_pages_out_of_date_are_told_apart(self):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            pages = {"A.md": "one\n", "B.md": "two\n"}
            for page, text in pages.items():
                (folder / page).write_text(text, encoding="utf-8")
            self.assertEqual(make_reference.differences(pages, folder), "")
            self.assertIn("-two\n+2", make_reference.differences({**pages, "B.md": "2\n"}, folder))
            self.assertIn("+three", make_reference.differences({**pages, "C.md": "three\n"}, folder))
            self.assertIn("-two", make_reference.differences({"A.md": "one\n"}, folder))


if __name__ == "__main__":
    unittest.main()
