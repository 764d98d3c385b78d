"""Whether a program was built with sanitizers, and what they report."""

import re
import signal
import subprocess
from pathlib import Path

from sandbox.processes import Process

REPORT = re.compile(r"^.*(Sanitizer|runtime error:).*$", re.MULTILINE)
SHOWN = 8000


def is_sanitized(program: Path) -> bool:
    """Whether AddressSanitizer is linked in."""
    libraries = subprocess.run(["ldd", str(program)], capture_output=True, text=True, check=True)
    return "libasan" in libraries.stdout


def report_in(log: str) -> str:
    """The beginning of a sanitizer report in an error output."""
    report = REPORT.search(log)
    return log[report.start() :][:SHOWN] if report else ""


def end_cleanly(process: Process) -> None:
    """Asks the process to end; a sanitizer looks for leaks then."""
    process.send_signal(signal.SIGTERM)
    check_end(process)


def check_end(process: Process) -> None:
    """Waits for the end, which must be clean and without any report of a sanitizer."""
    status = process.wait_for_exit()
    report = report_in(process.log.raw())
    assert (status, report) == (0, ""), f"status {status}\n{report}"
