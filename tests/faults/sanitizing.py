"""Detecting sanitizer builds and sanitizer reports."""

import re
import signal
import subprocess
from pathlib import Path

from sandbox.processes import Process

REPORT = re.compile(r"^.*(Sanitizer|runtime error:).*$", re.MULTILINE)
MAX_REPORT_LENGTH = 8000


def is_sanitized(program: Path) -> bool:
    """Whether the program is linked with AddressSanitizer."""
    libraries = subprocess.run(["ldd", str(program)], capture_output=True, text=True, check=True)
    return "libasan" in libraries.stdout


def report_in(log: str) -> str:
    """The beginning of a sanitizer report in a log, or an empty text."""
    report = REPORT.search(log)
    return log[report.start() :][:MAX_REPORT_LENGTH] if report else ""


def end_cleanly(process: Process) -> None:
    """Ends the process with SIGTERM. Sanitizers report leaks at the end."""
    process.send_signal(signal.SIGTERM)
    check_end(process)


def check_end(process: Process) -> None:
    """Waits until the process ends. Its status must be 0 and its log without sanitizer reports."""
    status = process.wait_for_exit()
    report = report_in(process.log.raw())
    assert (status, report) == (0, ""), f"status {status}\n{report}"
