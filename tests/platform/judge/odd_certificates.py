"""Certificates that are odd or damaged, made from the test's own: DER written by hand, and bytes changed anywhere."""

import base64
import json
import random

from judge import tlv as der

BASIC = bytes.fromhex("0603551D13")  # object identifiers of RFC 5280, encoded
USAGE = bytes.fromhex("0603551D0F")
PURPOSES = bytes.fromhex("0603551D25")
POLICIES = bytes.fromhex("0603551D20")
ACCESS = bytes.fromhex("06082B06010505070101")
OCSP = bytes.fromhex("06082B06010505073001")


def indefinite(identifier, *parts):
    return bytes([identifier, 0x80]) + b"".join(parts) + b"\0\0"


def long_form(identifier, contents):
    return bytes([identifier, 0x84]) + len(contents).to_bytes(4, "big") + contents


def extension(oid, value, critical=b""):
    return der(0x30, oid, critical, der(0x04, value))


def certificate(*extensions, wrap=der, sequence=der, names=der(0x30), dates=None, number=der(0x02, b"\1")):
    algorithm = der(0x30, bytes.fromhex("06092A864886F70D01010B0500"))
    key = der(0x30, der(0x30, bytes.fromhex("06092A864886F70D0101010500")),
              der(0x03, b"\0", der(0x30, der(0x02, b"\x40" * 64), der(0x02, b"\3"))))
    dates = dates or der(0x30, der(0x17, b"200101000000Z"), der(0x17, b"491231235959Z"))
    listed = wrap(0xA3, der(0x30, *extensions)) if extensions else b""
    body = sequence(0x30, der(0xA0, der(0x02, b"\2")), number, algorithm, names, dates, names, key, listed)
    return sequence(0x30, body, algorithm, der(0x03, b"\0" * 65))


def name(oid, value):
    return der(0x30, der(0x31, der(0x30, oid, value)))


def expect(usages=(), purposes=(), policies=()):
    return json.dumps({"extendedKeyUsages": purposes, "keyUsages": usages, "policies": policies}, separators=(",", ":"))


def odd():
    """(name, extensions expected or nothing, DER)"""
    signing = der(0x03, b"\7\x80")
    usage = extension(USAGE, signing)
    policy = extension(POLICIES, der(0x30, der(0x30, bytes.fromhex("06022A03"))))
    purpose = extension(PURPOSES, der(0x30, bytes.fromhex("06022A03")))
    long_arc = der(0x06, b"\x2A" + b"\x81" * 30000 + b"\1")
    good = ("digitalSignature",)
    yes = expect(good)
    yield "plain", yes, certificate(usage)
    yield "critical as 01", yes, certificate(extension(USAGE, signing, der(0x01, b"\1")))
    yield "critical as FALSE", yes, certificate(extension(USAGE, signing, der(0x01, b"\0")))
    yield "unused bits that are set", yes, certificate(extension(USAGE, der(0x03, b"\7\xFF")))
    yield "bytes after a value", yes, certificate(extension(USAGE, signing + b"\5\0"))
    yield "bytes after the certificate", yes, certificate(usage) + b"\0\0\0"
    yield "long length of a value", yes, certificate(extension(USAGE, long_form(0x03, b"\7\x80")))
    yield "indefinite list of purposes", expect((), ("1.2.3",)), certificate(
        extension(PURPOSES, indefinite(0x30, bytes.fromhex("06022A03"))))
    yield "indefinite wrapper", None, certificate(usage, wrap=indefinite)
    yield "indefinite throughout", None, certificate(usage, sequence=indefinite)
    yield "an odd usage beside others", expect((), ("1.2.3",), ("1.2.3",)), certificate(
        extension(USAGE, der(0x03)), purpose, policy)
    yield "an odd purpose beside others", expect(good, (), ("1.2.3",)), certificate(
        usage, extension(PURPOSES, der(0x30, long_arc)), policy)
    yield "one long arc", yes, certificate(extension(long_arc, b""), usage)
    yield "many long arcs", yes, certificate(usage, *[extension(der(0x06, b"\x2A" + b"\x81" * 126 + b"\1"), b"")] * 500)
    yield "an extension nested deeply", yes, certificate(usage, extension(BASIC, b"\x30\x80" * 5000))
    yield "an extension of nothing", None, certificate(extension(USAGE, b""), extension(ACCESS, b""))
    yield "an empty identifier of an extension", None, certificate(extension(der(0x06), b""), usage)
    url = der(0x86, b"http://ocsp.example")
    yield "an empty access method", None, certificate(extension(ACCESS, der(0x30, der(0x30, der(0x06), url))))
    yield "an empty address", None, certificate(extension(ACCESS, der(0x30, der(0x30, OCSP, der(0x86)))))
    yield "an address that is a name", None, certificate(
        extension(ACCESS, der(0x30, der(0x30, OCSP, der(0xA4, der(0x30))))))
    yield "an empty access list", None, certificate(extension(ACCESS, der(0x30)))
    yield "an address of 100 KB", None, certificate(
        extension(ACCESS, der(0x30, der(0x30, OCSP, der(0x86, b"h" * 100000)))))
    for kind, value in (("empty text", der(0x0C)), ("broken UTF-8", der(0x0C, b"\xC3\x28\xFF")),
                        ("odd UTF-16", der(0x1E, b"\0a\0")), ("a NUL", der(0x13, b"a\0b")), ("a number", der(0x02, b"\1")),
                        ("100 KB", der(0x0C, b"n" * 100000))):
        yield "a name of " + kind, None, certificate(usage, names=name(bytes.fromhex("0603550403"), value))
    yield "an attribute without identifier", None, certificate(usage, names=name(der(0x06), der(0x0C, b"x")))
    yield "an empty serial number", None, certificate(usage, number=der(0x02))
    yield "a serial number of 10 KB", None, certificate(usage, number=der(0x02, b"\x55" * 10000))
    for first, last in ((b"00010101000000Z", b"99991231235959Z"), (b"16010101000000Z", b"99990230000000Z")):
        yield "dates " + first.decode(), None, certificate(usage, dates=der(0x30, der(0x18, first), der(0x18, last)))


def damaged(originals):
    choose = random.Random(1)
    for index in range(170):
        content = bytearray(choose.choice(originals))
        for _ in range(choose.choice((1, 1, 2, 5))):
            content[choose.randrange(len(content))] = choose.choice((0, 1, 6, 0x30, 0x7F, 0x80, 0x84, 0xFF))
        yield f"damaged {index}", None, bytes(content)


def write(path, originals):
    """The file that odd.js reads: of all of them together some 200."""
    with open(path, "w", encoding="utf-8", newline="\n") as file:
        for what, extensions, content in (*odd(), *damaged(originals)):
            file.write(f"{what}\t{extensions or ''}\t{base64.b64encode(content).decode()}\n")
