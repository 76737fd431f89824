"""What the tests of messages and requests share: keys and certificates, an authority, and OpenSSL's verdicts.

Where OpenSSL has no GOST engine, libgcrypt judges messages and answers requests with GOST keys by way of tests/platform
(msgtool), and messages that the engine once made (tests/data/pki-gost) take the place of new ones.
"""

import os
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[3]
sys.path.insert(0, str(ROOT / "tests/scripts"))
import harness  # noqa: E402

# The keys would be in the way of tests that count certificates.
os.environ.setdefault("CORVANE_PREFIX", "platform")
os.environ["OPENSSL_CONF"] = str(ROOT / "tests/platform/pki/openssl.cnf")
KINDS = ("rsa", "gost2001", "gost256", "gost512")
DIGESTS = {"rsa": "sha256", "gost2001": "md_gost94", "gost256": "md_gost12_256", "gost512": "md_gost12_512"}

GOST = ROOT / "tests/data/pki-gost"
hasEngine = subprocess.run(["openssl", "engine", "gost"], capture_output=True).returncode == 0

PKI = pathlib.Path(
    subprocess.run([ROOT / "tests/platform/prepare"], check=True, stdout=subprocess.PIPE, text=True).stdout.strip()
)


def must(fault):
    if fault:
        raise AssertionError(fault)


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
    bytes = message.read_bytes()
    return not hasEngine and any(start in bytes for start in (b"\x06\x06\x2a\x85\x03\x02\x02", b"\x06\x08\x2a\x85\x03\x07\x01"))


def ask_libgcrypt(*words):
    folder = harness.BUILD / "x64/platform"
    return harness.wine("x64", folder / "msgtool.exe", harness.windows(folder / "msgstandin.dll"), *words).fault()


def can_sign(names):
    return hasEngine or all(name.startswith("rsa") for name in names)


def verify(message, content, detached):
    """What OpenSSL has against a signed message."""
    if is_beyond_openssl(message):
        return ask_libgcrypt("verify", message, content if detached else "-")
    out = message.with_suffix(".out")
    return openssl("cms", "-verify", "-binary", "-inform", "DER", "-purpose", "any", "-CAfile", PKI / "roots.pem",
                   "-in", message, "-out", out, *(("-content", content) if detached else ())) or same(out, content)


def sign(message, content, names, *options):
    signers = [word for name in names for word in ("-signer", certificate_of(name), "-inkey", key_of(name))]
    return openssl("cms", "-sign", "-binary", "-outform", "DER", "-in", content, "-out", message, *signers, *options)


def decrypt(message, content, name):
    """What OpenSSL has against an enveloped message for that recipient, among others."""
    out = message.with_suffix(f".{name}")
    if is_beyond_openssl(message):
        return ask_libgcrypt("decrypt", out, message, f"Leaf {name}") or same(out, content)
    return openssl("cms", "-decrypt", "-binary", "-inform", "DER", "-in", message, "-out", out,
                   "-recip", certificate_of(name), "-inkey", key_of(name)) or same(out, content)


def encrypt(message, content, names, cipher, *options):
    return openssl("cms", "-encrypt", "-binary", "-outform", "DER", cipher, *options, "-in", content, "-out", message,
                   *map(certificate_of, names))


def issue(authority, request, answer):
    """What an authority of that kind has against a request; where nothing, the answer is its certificate with the extensions
    that the request asks for."""
    if is_beyond_openssl(request):
        return ask_libgcrypt("issue", answer, request, f"Leaf {authority}-1")
    fault = openssl("x509", "-req", "-inform", "DER", "-in", request, "-CA", certificate_of(f"{authority}-root"), "-CAkey",
                    key_of(f"{authority}-root"), "-CAcreateserial", "-CAserial", answer.with_suffix(".srl"), "-days", "30",
                    "-copy_extensions", "copyall", "-outform", "DER", "-out", answer)
    # This one's status is 0 either way.
    judged = harness.Outcome("openssl", "req", "-verify", "-inform", "DER", "-in", request, "-noout")
    return fault or (None if "verify OK" in judged.output + judged.all_errors else judged)


def damaged(path, at=-1, name=None):
    """A copy with one bit changed, of its last byte where nothing else is said: the signature's, in a request and in a
    message."""
    content = bytearray(path.read_bytes())
    content[at] ^= 1
    copy = path.with_name(name or "damaged-" + path.name)
    copy.write_bytes(content)
    return copy
