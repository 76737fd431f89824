"""What the script tests share: running cases side by side and summing up."""

import concurrent.futures
import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
BITNESSES = ("x64", "x86")
JOBS = 2
# The host ends a hung script itself; this is for the case that it cannot.
LAST_RESORT_SECONDS = 180


class Outcome:
    """Exit status and output of one command, line ends unified."""

    def __init__(self, command, cwd=None):
        try:
            done = subprocess.run(
                [str(word) for word in command],
                cwd=cwd,
                stdin=subprocess.DEVNULL,
                stdout=subprocess.PIPE,
                stderr=subprocess.PIPE,
                timeout=LAST_RESORT_SECONDS,
            )
            self.status, output, errors = done.returncode, done.stdout, done.stderr
        except subprocess.TimeoutExpired as expired:
            self.status, output, errors = "none (hung)", expired.stdout or b"", expired.stderr or b""
        self.output = output.decode("utf-8", "replace").replace("\r\n", "\n")
        self.errors = errors.decode("utf-8", "replace").replace("\r\n", "\n")

    def __str__(self):
        parts = [f"status {self.status}"]
        parts += [f"{name}: {text.rstrip()}" for name, text in (("out", self.output), ("err", self.errors)) if text]
        return "; ".join(parts)


def run_cases(cases, words):
    """Runs those of `cases`, pairs of a name and a function, whose name contains one of `words` (all without words).

    A function returns None when its case passes, else what went wrong. Prints one line for each that fails and a
    summary; returns the exit status, which is not 0 either when no case was run.
    """
    wanted = [case for case in cases if not words or any(word in case[0] for word in words)]
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(JOBS) as pool:
        running = [(name, pool.submit(function)) for name, function in wanted]
        for name, result in running:
            problem = result.result()
            if problem is not None:
                failed += 1
                print(f"FAIL {name}: {problem}", flush=True)
    print(f"{len(wanted) - failed} passed, {failed} failed")
    return 0 if wanted and failed == 0 else 1
