"""What the script tests share: running programs and scripts, cases side by side, and summing up."""

import concurrent.futures
import contextlib
import functools
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
# What tests import besides; no cache of it is to lie beside the sources.
sys.dont_write_bytecode = True
sys.path += [str(ROOT / "tools/lib"), str(ROOT / "tests/platform/judge")]
BUILD = pathlib.Path(os.environ.get("CORVANE_BUILD", ROOT / "build"))
PKI = ROOT / "tests/data/pki"
BITNESSES = ("x64", "x86")
JOBS = 2
# The host ends a hung script itself; this is for the case that it cannot.
LAST_RESORT_SECONDS = 180
# What Wine itself says when a process ends while one of its threads is only starting; the process ends as it should.
# The end may cut its words short.
DYING_THREAD = re.compile(r"^wine client error:.*\n?", re.MULTILINE)


class Outcome:
    """Exit status and output of one command, line ends unified."""

    def __init__(self, *command, cwd=None):
        words = [str(word) for word in command]
        try:
            done = subprocess.run(
                words, cwd=cwd, stdin=subprocess.DEVNULL, capture_output=True, timeout=LAST_RESORT_SECONDS
            )
            self.status, output, errors = done.returncode, done.stdout, done.stderr
        except subprocess.TimeoutExpired as expired:
            self.status, output, errors = "none (hung)", expired.stdout or b"", expired.stderr or b""
        self.output, self.all_errors = (
            text.decode("utf-8", "replace").replace("\r\n", "\n") for text in (output, errors)
        )
        self.errors = DYING_THREAD.sub("", self.all_errors)

    def __str__(self):
        parts = [f"status {self.status}"]
        parts += [f"{name}: {text.rstrip()}" for name, text in (("out", self.output), ("err", self.all_errors)) if text]
        return "; ".join(parts)

    def fault(self, output=None):
        """None when the command succeeded and, where `output` is given, printed just that; else the outcome."""
        return None if self.status == 0 and output in (None, self.output) else self


def must(fault):
    """Ends the case with that fault, if it is one."""
    if fault:
        raise AssertionError(str(fault))


@contextlib.contextmanager
def folder():
    """A new one, as long as it is needed."""
    with tempfile.TemporaryDirectory(prefix="corvane-") as name:
        yield pathlib.Path(name)


def windows(path):
    return "Z:" + str(path).replace("/", "\\")


def windows_program(*command, cwd=None):
    """The outcome of a command that runs one. See tests/platform/README.md for why a silent end is tried again."""
    outcome = Outcome(*command, cwd=cwd)
    if outcome.status == 1 and not outcome.output and not outcome.errors:
        print("ended with status 1 and not a word, run again:", *command, flush=True)
        outcome = Outcome(*command, cwd=cwd)
    return outcome


def wine(bitness, *command, cwd=None):
    return windows_program(ROOT / "tools/wine-run", bitness, *command, cwd=cwd)


def script(bitness, path, *arguments, options=(), cwd=None):
    return windows_program(
        ROOT / "tools/run-script", bitness, "--timeout", "150", *options, path, *arguments, cwd=cwd
    )


def test_script(bitness, path, *arguments, options=(), cwd=None):
    """A script that uses the checks of lib.js or lib.vbs."""
    library = pathlib.Path(__file__).with_name("lib" + path.suffix)
    return script(bitness, path, *arguments, options=("--include", library, *options), cwd=cwd)


@contextlib.contextmanager
def registry(*values):
    """Values of the prefix's registry that are there meanwhile: key, name, type, data."""
    try:
        for key, name, kind, data in values:
            must(wine("x64", "reg", "add", key, "/v", name, "/t", kind, "/d", data, "/f").fault())
        yield
    finally:
        for key, name, *_ in values:
            wine("x64", "reg", "delete", key, "/v", name, "/f")


def thumbprint(*certificate):
    """The SHA-1 digest of a certificate, which "openssl x509" reads with these options."""
    return Outcome("openssl", "x509", *certificate, "-noout", "-fingerprint", "-sha1").output.partition("=")[2].strip().replace(":", "")


def import_keys(bitness, *files):
    """Puts the keys of tests/data/pki into the stores of the Wine prefix."""
    fault = wine(bitness, BUILD / bitness / "pfximport.exe", "chain.pem", "--password", "corvane", *files, cwd=PKI).fault()
    if fault:
        sys.exit(f"the test keys could not be imported: {fault}")


def main(rows, once=()):
    """Runs the cases of both bitnesses and those that have none, or those whose name contains a word of the command line, and ends the program.

    A case is a row of a name, a function and arguments for it, behind the bitness in `rows`. The function returns None when its case
    passes, else what went wrong, which it may also raise as an AssertionError. Prints a line for each that fails and a summary. The
    status is not 0 either when no case was run.
    """
    cases = [(name, functools.partial(function, *rest)) for name, function, *rest in once]
    cases += [(f"{name} {bitness}", functools.partial(function, bitness, *rest)) for bitness in BITNESSES for name, function, *rest in rows]
    wanted = [case for case in cases if not sys.argv[1:] or any(word in case[0] for word in sys.argv[1:])]
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(JOBS) as pool:
        running = [(name, pool.submit(function)) for name, function in wanted]
        for name, result in running:
            try:
                problem = result.result()
            except AssertionError as error:
                problem = error
            if problem is not None:
                failed += 1
                print(f"FAIL {name}: {problem}", flush=True)
    print(f"{len(wanted) - failed} passed, {failed} failed")
    sys.exit(0 if wanted and failed == 0 else 1)
