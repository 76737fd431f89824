"""Certificates that are odd: DER written by hand."""

import base64
import json

from judge import tlv as der

BASIC = bytes.fromhex("0603551D13")  # object identifiers of RFC 5280, encoded
USAGE = bytes.fromhex("0603551D0F")
PURPOSES = bytes.fromhex("0603551D25")
POLICIES = bytes.fromhex("0603551D20")
ACCESS = bytes.fromhex("06082B06010505070101")
OCSP = bytes.fromhex("06082B06010505073001")


def indefinite(identifier, *parts):
    return bytes([identifier, 0x80]) + b"".join(parts) + b"\0\0"


def extension(oid, value, critical=b""):
    return der(0x30, oid, critical, der(0x04, value))


def certificate(*extensions, sequence=der, names=der(0x30), dates=None):
    algorithm = der(0x30, bytes.fromhex("06092A864886F70D01010B0500"))
    key = der(0x30, der(0x30, bytes.fromhex("06092A864886F70D0101010500")),
              der(0x03, b"\0", der(0x30, der(0x02, b"\x40" * 64), der(0x02, b"\3"))))
    dates = dates or der(0x30, der(0x17, b"200101000000Z"), der(0x17, b"491231235959Z"))
    number = der(0x02, b"\1")
    body = sequence(0x30, der(0xA0, der(0x02, b"\2")), number, algorithm, names, dates, names, key, der(0xA3, der(0x30, *extensions)))
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
    # critical as 01, unused bits that are set, bytes after the value and after the certificate
    lenient = extension(USAGE, der(0x03, b"\7\xFF") + b"\5\0", der(0x01, b"\1"))
    yield "lenient", yes, certificate(lenient) + b"\0\0\0"
    yield "indefinite list of purposes", expect((), ("1.2.3",)), certificate(
        extension(PURPOSES, indefinite(0x30, bytes.fromhex("06022A03"))))
    yield "indefinite throughout", None, certificate(usage, sequence=indefinite)
    yield "an odd usage beside others", expect((), ("1.2.3",), ("1.2.3",)), certificate(
        extension(USAGE, der(0x03)), purpose, policy)
    yield "an odd purpose beside others", expect(good, (), ("1.2.3",)), certificate(
        usage, extension(PURPOSES, der(0x30, long_arc)), policy)
    yield "one long arc", yes, certificate(extension(long_arc, b""), usage)
    yield "an extension nested deeply", yes, certificate(usage, extension(BASIC, b"\x30\x80" * 5000))
    url = der(0x86, b"http://ocsp.example")
    yield "an empty access method", None, certificate(extension(ACCESS, der(0x30, der(0x30, der(0x06), url))))
    yield "an empty address", None, certificate(extension(ACCESS, der(0x30, der(0x30, OCSP, der(0x86)))))
    yield "an address that is a name", None, certificate(
        extension(ACCESS, der(0x30, der(0x30, OCSP, der(0xA4, der(0x30))))))
    yield "an empty access list", None, certificate(extension(ACCESS, der(0x30)))
    for kind, value in (("empty text", der(0x0C)), ("broken UTF-8", der(0x0C, b"\xC3\x28\xFF")),
                        ("a NUL", der(0x13, b"a\0b")), ("a number", der(0x02, b"\1"))):
        yield "a name of " + kind, None, certificate(usage, names=name(bytes.fromhex("0603550403"), value))
    for first, last in ((b"00010101000000Z", b"99991231235959Z"), (b"16010101000000Z", b"99990230000000Z")):
        yield "dates " + first.decode(), None, certificate(usage, dates=der(0x30, der(0x18, first), der(0x18, last)))


def write(path):
    """The file that odd.js reads."""
    with open(path, "w", encoding="utf-8", newline="\n") as file:
        for what, extensions, content in odd():
            file.write(f"{what}\t{extensions or ''}\t{base64.b64encode(content).decode()}\n")
