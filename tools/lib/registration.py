"""What the registration of the component is made of, read from the type library's source.

The same keys and values that the DLL itself writes when regsvr32 asks it to; an installer writes them without it.
"""

import pathlib
import re
from dataclasses import dataclass

import idl

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
COMPONENT = "VetrelCorvane2"
# Safe for scripting, safe for initializing.
CATEGORIES = ("{7DD95801-9882-11CF-9FA9-00AA006C42C4}", "{7DD95802-9882-11CF-9FA9-00AA006C42C4}")
# Registered, but no class of the type library: nobody creates it. Its version is its own.
BASE_STREAM = ("BaseStream", "2F8ACEEF-B79D-4836-8E23-B8A101DD158C", "2.9.0")
# The system's marshalling of interfaces by their type library.
AUTOMATION_PROXY = "{00020424-0000-0000-C000-000000000046}"
DISK_IMAGE = "8"  # LIBFLAG_FHASDISKIMAGE


@dataclass(frozen=True)
class Entry:
    """A value below Software\\Classes; `name` is "" for the key's own text. Without a value it is the key alone."""

    key: str
    name: str = ""
    value: str | None = None


def project_version():
    """The product's version, from the one place that states it."""
    text = (ROOT / "CMakeLists.txt").read_text("utf-8")
    return re.search(r"^project\(\w+ VERSION (\d+\.\d+\.\d+\.\d+)", text, re.MULTILINE).group(1)


def class_entries(name, clsid, version, product_version, library_id, dll):
    prog_id, clsid = f"{COMPONENT}.{name}", "{" + clsid + "}"
    key, versioned = f"CLSID\\{clsid}", f"{prog_id}.{version}"
    yield Entry(key, "", prog_id)
    yield Entry(f"{key}\\InprocServer32", "", dll)
    yield Entry(f"{key}\\InprocServer32", "ThreadingModel", "Both")
    yield Entry(f"{key}\\ProgID", "", versioned)
    yield Entry(f"{key}\\VersionIndependentProgID", "", prog_id)
    yield Entry(f"{key}\\TypeLib", "", library_id)
    yield Entry(f"{key}\\Version", "", product_version)
    yield Entry(f"{key}\\Programmable")
    for category in CATEGORIES:
        yield Entry(f"{key}\\Implemented Categories\\{category}")
    for each in (prog_id, versioned):
        yield Entry(each, "", prog_id)
        yield Entry(f"{each}\\CLSID", "", clsid)
    yield Entry(f"{prog_id}\\CurVer", "", versioned)


def entries(arch, version, dll, folder):
    """The entries of one bitness; `dll` and `folder` are the texts that stand for the DLL and the folder it lies in."""
    library = idl.parse((ROOT / "resources" / f"{COMPONENT}.idl").read_text("utf-8"))
    library_id = "{" + library.attributes["uuid"] + "}"
    major, minor, patch, _ = version.split(".")
    classes = [(each.name, each.attributes["uuid"], f"{major}.{minor}.{patch}") for each in library.coclasses]
    for name, clsid, class_version in [*classes, BASE_STREAM]:
        yield from class_entries(name, clsid, class_version, version, library_id, dll)

    key = f"TypeLib\\{library_id}\\{major}.{minor}"
    yield Entry(key, "", library.attributes["helpstring"])
    yield Entry(f"{key}\\0\\{'win64' if arch == 'x64' else 'win32'}", "", dll)
    yield Entry(f"{key}\\FLAGS", "", DISK_IMAGE)
    yield Entry(f"{key}\\HELPDIR", "", folder)
    for interface in library.interfaces.values():
        if "uuid" not in interface.attributes or "oleautomation" not in interface.attributes:
            continue
        key = f"Interface\\{{{interface.attributes['uuid']}}}"
        yield Entry(key, "", interface.name)
        for proxy in ("ProxyStubClsid", "ProxyStubClsid32"):
            yield Entry(f"{key}\\{proxy}", "", AUTOMATION_PROXY)
        yield Entry(f"{key}\\TypeLib", "", library_id)
        yield Entry(f"{key}\\TypeLib", "Version", f"{major}.{minor}")
