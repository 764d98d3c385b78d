"""File systems of a test's own."""

import os
import subprocess
from contextlib import contextmanager
from pathlib import Path
from typing import Iterator

import pytest


def need_mounts() -> None:
    """Skips the test where nothing can be mounted; in CI that is a failure."""
    if os.geteuid() == 0:
        return
    if os.environ.get("CI"):
        pytest.fail("only root can mount file systems")
    pytest.skip("only root can mount file systems")


@contextmanager
def memory_file_system(place: Path, size: int) -> Iterator[None]:
    """Mounts a file system of that many bytes on the place, which it makes."""
    need_mounts()
    place.mkdir(parents=True, exist_ok=True)
    subprocess.run(
        ["mount", "-t", "tmpfs", "-o", f"size={size}", "tmpfs", str(place)], check=True
    )
    try:
        yield
    finally:
        subprocess.run(["umount", "--lazy", str(place)], check=True)


@contextmanager
def read_only(place: Path) -> Iterator[None]:
    """Nothing can be written to the file system mounted there meanwhile."""
    _remount(place, "ro")
    try:
        yield
    finally:
        _remount(place, "rw")


def _remount(place: Path, mode: str) -> None:
    subprocess.run(["mount", "-o", f"remount,{mode}", str(place)], check=True)
