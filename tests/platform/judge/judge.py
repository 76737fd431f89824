"""What the tests of messages share: keys and certificates, and OpenSSL's verdicts."""

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

PKI = pathlib.Path(
    subprocess.run([ROOT / "tests/platform/prepare"], check=True, stdout=subprocess.PIPE, text=True).stdout.strip()
)


def openssl(*words):
    return harness.Outcome("openssl", *words).fault()


def key_of(name):
    return PKI / f"{name}.key"


def certificate_of(name):
    return PKI / f"{name}.pem"


def same(file, content):
    return None if file.read_bytes() == content.read_bytes() else f"{file.name} has another content"


def verify(message, content, detached):
    """What OpenSSL has against a signed message."""
    out = message.with_suffix(".out")
    return openssl("cms", "-verify", "-binary", "-inform", "DER", "-purpose", "any", "-CAfile", PKI / "roots.pem",
                   "-in", message, "-out", out, *(("-content", content) if detached else ())) or same(out, content)


def sign(message, content, names, *options):
    signers = [word for name in names for word in ("-signer", certificate_of(name), "-inkey", key_of(name))]
    return openssl("cms", "-sign", "-binary", "-outform", "DER", "-in", content, "-out", message, *signers, *options)


def decrypt(message, content, name):
    """What OpenSSL has against an enveloped message for that recipient, among others."""
    out = message.with_suffix(f".{name}")
    return openssl("cms", "-decrypt", "-binary", "-inform", "DER", "-in", message, "-out", out,
                   "-recip", certificate_of(name), "-inkey", key_of(name)) or same(out, content)


def encrypt(message, content, names, cipher, *options):
    return openssl("cms", "-encrypt", "-binary", "-outform", "DER", cipher, *options, "-in", content, "-out", message,
                   *map(certificate_of, names))
