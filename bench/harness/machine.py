"""The machine that the figures are of."""

import os
import platform
import re
import sqlite3
import subprocess
from pathlib import Path
from typing import Any, Optional

from .cores import ALLOWED, LAST
from .programs import SERVICE, SERVICE_QT6, Programs
from .setup import Setup
from .storage import file_system_of


def describe(setup: Setup) -> dict[str, Any]:
    """What the figures depend on."""
    return {
        "cpu": _field(Path("/proc/cpuinfo"), "model name") or platform.machine(),
        "cores": len(ALLOWED),
        "core": LAST,
        "memory": _memory(),
        "kernel": f"{platform.system()} {_version(platform.release())} {platform.machine()}",
        "distribution": platform.freedesktop_os_release().get("PRETTY_NAME"),
        "load": os.getloadavg()[0],
        "file systems": {
            "memory": file_system_of(setup.memory),
            "disk": file_system_of(setup.disk),
        },
        "versions": _versions(setup.programs),
    }


def _versions(programs: Programs) -> dict[str, Optional[str]]:
    return {
        "Qt 5": _qt_of(programs, SERVICE),
        "Qt 6": _qt_of(programs, SERVICE_QT6),
        "SQLite": sqlite3.sqlite_version,
        "libsystemd": _output("pkg-config", "--modversion", "libsystemd"),
        "dbus-daemon": _version(_output("dbus-daemon", "--version")),
        "Python": platform.python_version(),
    }


def _qt_of(programs: Programs, server: str) -> Optional[str]:
    """The version in the file name of the library that a server is linked with."""
    libraries = _output("ldd", programs.server(server)[0]) or ""
    found = re.search(r"=> (\S*libQt\dCore\.so\S*)", libraries)
    return Path(found[1]).resolve().name.partition(".so.")[2] if found else None


def _memory() -> Optional[int]:
    """The bytes of memory."""
    total = _field(Path("/proc/meminfo"), "MemTotal")
    return int(total.split()[0]) * 1024 if total else None


def _field(path: Path, name: str) -> Optional[str]:
    """The value of the first line `name: value`."""
    for line in path.read_text(encoding="utf-8").splitlines():
        label, _, value = line.partition(":")
        if label.strip() == name:
            return value.strip()
    return None


def _version(text: Optional[str]) -> Optional[str]:
    found = re.search(r"\d+(\.\d+)+", text or "")
    return found[0] if found else None


def _output(*command: str) -> Optional[str]:
    """What a command prints; None if it does not end well."""
    try:
        result = subprocess.run(command, capture_output=True, text=True, check=True)
    except (OSError, subprocess.CalledProcessError):
        return None
    return result.stdout.strip()
