"""What the tests of messages and requests share: keys and certificates, an authority, and OpenSSL's verdicts.

Where OpenSSL has no GOST engine, messages that the engine once made (tests/data/signers) show that the component and the
system judge rightly, and it is they who judge what is made with GOST keys.
"""

import os
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[3]
sys.path.insert(0, str(ROOT / "tests/scripts"))
import harness  # noqa: E402
from harness import must  # noqa: E402

# The keys would be in the way of tests that count certificates.
os.environ.setdefault("CORVANE_PREFIX", "platform")
os.environ["OPENSSL_CONF"] = str(ROOT / "tests/platform/pki/openssl.cnf")
KINDS = ("rsa", "gost2001", "gost256", "gost512")
DIGESTS = {"rsa": "sha256", "gost2001": "md_gost94", "gost256": "md_gost12_256", "gost512": "md_gost12_512"}
hasEngine = subprocess.run(["openssl", "engine", "gost"], capture_output=True).returncode == 0
PKI = pathlib.Path(
    subprocess.run([ROOT / "tests/platform/prepare"], check=True, stdout=subprocess.PIPE, text=True).stdout.strip()
)


class Der:
    """A value within bytes, in definite lengths."""

    def __init__(self, whole, begin=0):
        self.tag, self.begin = whole[begin], begin
        length, self.start = whole[begin + 1], begin + 2
        if length >= 0x80:
            self.start += length - 0x80
            length = int.from_bytes(whole[begin + 2 : self.start], "big")
        self.end, self.whole = self.start + length, whole

    def parts(self):
        at, found = self.start, []
        while at < self.end:
            found.append(Der(self.whole, at))
            at = found[-1].end
        return found

    def __bytes__(self):
        return self.whole[self.begin : self.end]


def tlv(tag, *bodies):
    body = b"".join(map(bytes, bodies))
    length = len(body).to_bytes(4, "big").lstrip(b"\0")
    return bytes([tag]) + (bytes([len(body)]) if len(body) < 0x80 else bytes([0x80 + len(length)]) + length) + body


def openssl(*words):
    return harness.Outcome("openssl", *words).fault()


def key_of(name):
    return PKI / f"{name}.key"


def certificate_of(name):
    return PKI / f"{name}.pem"


def same(file, content):
    return None if file.read_bytes() == content.read_bytes() else f"{file.name} has another content"


def is_beyond_openssl(message):
    """Whether it has identifiers of GOST (1.2.643...), which OpenSSL does not know here."""
    content = message.read_bytes()
    return not hasEngine and any(start in content for start in (b"\x06\x06\x2a\x85\x03\x02\x02", b"\x06\x08\x2a\x85\x03\x07\x01"))


def can_sign(names):
    return hasEngine or all(name.startswith("rsa") for name in names)


def verify(message, content, detached):
    """What OpenSSL has against a signed message."""
    out = message.with_suffix(".out")
    return None if is_beyond_openssl(message) else openssl(
        "cms", "-verify", "-binary", "-inform", "DER", "-purpose", "any", "-CAfile", PKI / "roots.pem",
        "-in", message, "-out", out, *(("-content", content) if detached else ())) or same(out, content)


def sign(message, content, names, *options):
    signers = [word for name in names for word in ("-signer", certificate_of(name), "-inkey", key_of(name))]
    return openssl("cms", "-sign", "-binary", "-outform", "DER", "-in", content, "-out", message, *signers, *options)


def decrypt(message, content, name):
    """What OpenSSL has against an enveloped message for that recipient, among others."""
    out = message.with_suffix(f".{name}")
    return None if is_beyond_openssl(message) else openssl(
        "cms", "-decrypt", "-binary", "-inform", "DER", "-in", message, "-out", out,
        "-recip", certificate_of(name), "-inkey", key_of(name)) or same(out, content)


def encrypt(message, content, names, cipher, *options):
    return openssl("cms", "-encrypt", "-binary", "-outform", "DER", cipher, *options, "-in", content, "-out", message,
                   *map(certificate_of, names))


def issue(authority, request, answer):
    """What an authority of that kind has against a request; where nothing, the answer is its certificate with the extensions
    that the request asks for."""
    if is_beyond_openssl(request):
        return issue_unseen(request, answer)
    fault = openssl("x509", "-req", "-inform", "DER", "-in", request, "-CA", certificate_of(f"{authority}-root"), "-CAkey",
                    key_of(f"{authority}-root"), "-CAcreateserial", "-CAserial", answer.with_suffix(".srl"), "-days", "30",
                    "-copy_extensions", "copyall", "-outform", "DER", "-out", answer)
    # This one's status is 0 either way.
    judged = harness.Outcome("openssl", "req", "-verify", "-inform", "DER", "-in", request, "-noout")
    return fault or (None if "verify OK" in judged.output + judged.all_errors else judged)


def issue_unseen(request, answer):
    """The authority of RSA certifies a key that OpenSSL does not know, so it cannot look at the request's signature."""
    root, body, signature = (answer.with_suffix(end) for end in (".root", ".body", ".signature"))
    must(openssl("x509", "-in", certificate_of("rsa-root"), "-outform", "DER", "-out", root))
    _, _, algorithm, issuer, validity, *_ = Der(root.read_bytes()).parts()[0].parts()
    _, name, key, attributes = Der(request.read_bytes()).parts()[0].parts()
    # RFC 2985, 5.4.2
    [extensions] = [value for each in attributes.parts() for identifier, value in [each.parts()]
                    if bytes(identifier).hex() == "06092a864886f70d01090e"]
    body.write_bytes(tlv(0x30, tlv(0xA0, tlv(2, b"\2")), tlv(2, b"\1", os.urandom(7)), algorithm, issuer, validity, name, key,
                         tlv(0xA3, *extensions.parts())))
    must(openssl("dgst", "-sha256", "-sign", key_of("rsa-root"), "-out", signature, body))
    answer.write_bytes(tlv(0x30, body.read_bytes(), algorithm, tlv(3, b"\0", signature.read_bytes())))


def damaged(path, at=-1, name=None):
    """A copy with one bit changed, of its last byte where nothing else is said: the signature's, in a request and in a
    message."""
    content = bytearray(path.read_bytes())
    content[at] ^= 1
    copy = path.with_name(name or "damaged-" + path.name)
    copy.write_bytes(content)
    return copy


if __name__ == "__main__":
    issue_unseen(*map(pathlib.Path, sys.argv[1:]))
