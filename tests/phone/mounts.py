"""File systems of a test's own, which the rest of the machine does not see."""

import ctypes
import os
import subprocess
from contextlib import contextmanager, suppress
from functools import cache
from pathlib import Path
from typing import Iterator

import pytest

CLONE_NEWNS = 0x00020000
ADMINISTRATION = ("/usr/sbin", "/sbin")
"""Where programs may be that are not on everybody's path."""


def run(*command: str) -> None:
    """Runs a program that has to succeed."""
    path = os.pathsep.join([os.environ.get("PATH", os.defpath), *ADMINISTRATION])
    environment = {**os.environ, "PATH": path}
    ended = subprocess.run(command, env=environment, capture_output=True, text=True, check=False)
    if ended.returncode != 0:
        raise OSError(f"{' '.join(command)}: {ended.stderr.strip()}")


@cache
def keep_mounts_to_this_process() -> None:
    """From now on what this process mounts is seen by its children alone, and goes with it however it ends.

    But not in a changed root that is no mount: there the machine sees the mounts, too, while they last.
    """
    libc = ctypes.CDLL(None, use_errno=True)
    if libc.unshare(CLONE_NEWNS) != 0:
        raise OSError(f"unshare: {os.strerror(ctypes.get_errno())}")
    with suppress(OSError):
        run("mount", "--make-rprivate", "/")


@contextmanager
def skipped_where_nothing_can_be_mounted() -> Iterator[None]:
    """Skips the test if what is made meanwhile cannot be made here; in CI that is a failure."""
    try:
        keep_mounts_to_this_process()
        yield
    except OSError as reason:
        if os.environ.get("CI"):
            raise
        pytest.skip(f"nothing can be mounted: {reason}")


@contextmanager
def memory_file_system(place: Path, size: int) -> Iterator[None]:
    """Mounts a file system of that many bytes on the place, which it makes."""
    place.mkdir(parents=True, exist_ok=True)
    with skipped_where_nothing_can_be_mounted():
        run("mount", "-t", "tmpfs", "-o", f"size={size}", "tmpfs", str(place))
    try:
        yield
    finally:
        run("umount", "--lazy", str(place))


@contextmanager
def read_only(place: Path) -> Iterator[None]:
    """Nothing can be written to the file system mounted there meanwhile."""
    _remount(place, "ro")
    try:
        yield
    finally:
        _remount(place, "rw")


def _remount(place: Path, mode: str) -> None:
    run("mount", "-o", f"remount,{mode}", str(place))
