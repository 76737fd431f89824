"""Folders with the tests' token under the names of drivers, and scripts that see them (tests/platform/token)."""

import contextlib
import shutil

import harness

SLOT, PIN, ATR = "Aktiv Rutoken ECP 0", "12345678", "3B8B015275746F6B656E20445320C1"
# CKA_CLASS, CKA_VALUE, CKA_ID of PKCS#11, and the class of certificates.
CLASS, VALUE, IDENTIFIER, CERTIFICATE = "0", "11", "102", "01000000"


@contextlib.contextmanager
def drivers(bitness, token="", service=""):
    """A folder with a Rutoken, another maker's token and a card service; the first and the last fail as told."""
    modules = {name: ("testtoken", f"[token]\nslot={SLOT}\nmodel=Rutoken ECP\n{token}") for name in ("rtPKCS11ECP", "rtPKCS11")}
    modules["isbc_pkcs11_main"] = "testtoken", "[token]\nslot=ISBC 0\n"
    modules["winscard"] = "testcard", f"[{SLOT}]\natr={ATR}\n00CA01890E=0000000000019000\n[Empty 0]\nprotocol=1\n[service]\n{service}"
    with harness.folder() as folder:
        for module, (source, settings) in modules.items():
            shutil.copy(harness.BUILD / bitness / f"platform/{source}.dll", folder / f"{module}.dll")
            (folder / f"{module}.ini").write_text(settings, encoding="ascii")
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
