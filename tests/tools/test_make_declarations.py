"""tools/lib/make-declarations: what it declares of a small library, and when it leaves a file alone."""

import pathlib
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
IDL = """
[object] interface IBall : IDispatch { HRESULT Roll(void); }
[object] interface IBox : IBall
{
    [propget, id(DISPID_VALUE)] HRESULT Item([in] unsigned long index, [out, retval] IBall** ball);
    [propput, id(1)] HRESULT Lid([in, defaultvalue(0)] VARIANT_BOOL lid);
    [propget, id(1)] HRESULT Lid([out, retval] VARIANT_BOOL* lid);
    [propputref, id(2)] HRESULT Key([in] IDispatch* key);
}
"""
BOX = [
    "HRESULT STDMETHODCALLTYPE get_Item(unsigned long index, ::IBall** ball) override;",
    "HRESULT STDMETHODCALLTYPE put_Lid(VARIANT_BOOL lid) override;",
    "HRESULT STDMETHODCALLTYPE get_Lid(VARIANT_BOOL* lid) override;",
    "HRESULT STDMETHODCALLTYPE putref_Key(IDispatch* key) override;",
]


# IDispatch has seven methods, IBall one, and two stand before the getter of the lid.
MEMBERS = """    {L"item", 0, INVOKE_PROPERTYGET, 0, VT_EMPTY},
    {L"lid", 1, INVOKE_PROPERTYPUT | INVOKE_PROPERTYGET, 10, VT_BOOL},
    {L"key", 2, INVOKE_PROPERTYPUTREF, 0, VT_EMPTY},
"""


class Declarations(unittest.TestCase):
    def make(self, text):
        source = pathlib.Path(self.folder, "box.idl")
        source.write_text(text, "utf-8")
        command = [ROOT / "tools/lib/make-declarations", source, self.folder]
        return subprocess.run(command, capture_output=True, text=True)

    def test_files(self):
        with tempfile.TemporaryDirectory() as self.folder:
            self.assertEqual(self.make(IDL).returncode, 0)
            box, ball = (pathlib.Path(self.folder, name) for name in ("IBox.h", "IBall.h"))
            self.assertEqual(box.read_text("utf-8").splitlines()[1:], BOX)
            self.assertIn(MEMBERS, pathlib.Path(self.folder, "members.h").read_text("utf-8"))
            before = box.stat().st_mtime_ns
            self.assertEqual(self.make(IDL.replace("Roll", "Stop")).returncode, 0)
            self.assertIn("Stop() override;", ball.read_text("utf-8"))
            self.assertEqual(box.stat().st_mtime_ns, before, "what includes it need not be compiled anew")
            broken = self.make("interface IBox : IDispatch { HRESULT Item(")
            self.assertEqual(broken.returncode, 1)
            self.assertIn("line 1", broken.stderr)


if __name__ == "__main__":
    unittest.main()
