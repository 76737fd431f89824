"""Folders with the tests' token under the names of drivers, and scripts that see them (tests/platform/token)."""

import contextlib
import pathlib
import shutil
import tempfile

import harness

SLOT, PIN = "Aktiv Rutoken ECP 0", "12345678"
# CKA_CLASS, CKA_VALUE, CKA_ID of PKCS#11, and the class of certificates.
CLASS, VALUE, IDENTIFIER, CERTIFICATE = "0", "11", "102", "01000000"


def add_module(folder, source, name, **settings):
    """A copy of a stand-in with its settings beside it."""
    shutil.copy(source, folder / f"{name}.dll")
    text = "".join(f"[{section}]\n" + "".join(f"{key}={value}\n" for key, value in pairs.items())
                   for section, pairs in settings.items())
    (folder / f"{name}.ini").write_text(text.replace("_", " "), encoding="ascii")


@contextlib.contextmanager
def drivers(bitness):
    """A folder with a Rutoken, another maker's token and a card service."""
    platform = harness.BUILD / bitness / "platform"
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        card = {"Aktiv_Rutoken_ECP_0": {"00CA01890E": "0000000000019000"}}
        add_module(folder, platform / "testcard.dll", "winscard", **card)
        for driver in ("rtPKCS11ECP", "rtPKCS11"):
            add_module(folder, platform / "testtoken.dll", driver, token={"slot": SLOT, "model": "Rutoken ECP"})
        add_module(folder, platform / "testtoken.dll", "isbc_pkcs11_main", token={"slot": "ISBC 0"})
        yield folder


def run(bitness, folder, script, *arguments, options=(), cwd=None):
    """A script with the drivers of the folder on the search path and its card service."""
    return harness.windows_program(
        "env", f"WINEPATH={harness.windows(folder)}", harness.ROOT / "tools/run-script", bitness, "--timeout", "150",
        "--with", folder / "winscard.dll", *options, script, *arguments, cwd=cwd)


def certificates(folder):
    """What certificates lie on the token that keys are made on: pairs of identifier and value."""
    text = (folder / "rtPKCS11ECP.objects").read_text(encoding="ascii")
    objects = (dict(line.partition(" ")[::2] for line in part.splitlines()) for part in text.split("\n\n") if part.strip())
    return [(bytes.fromhex(each[IDENTIFIER]).decode(), bytes.fromhex(each[VALUE]))
            for each in objects if each[CLASS].startswith(CERTIFICATE)]
