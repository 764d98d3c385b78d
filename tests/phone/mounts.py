"""File systems for a test, which other processes do not see."""

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
"""Directories of programs that may be missing in PATH."""


def run(*command: str) -> None:
    """Runs a program. Raises OSError if it fails."""
    path = os.pathsep.join([os.environ.get("PATH", os.defpath), *ADMINISTRATION])
    environment = {**os.environ, "PATH": path}
    ended = subprocess.run(command, env=environment, capture_output=True, text=True, check=False)
    if ended.returncode != 0:
        raise OSError(f"{' '.join(command)}: {ended.stderr.strip()}")


@cache
def unshare_mounts() -> None:
    """Gives this process its own mount namespace.

    Only this process and its children see its later mounts, which disappear when they end. In a
    chroot that is not a mount point, other processes see them too.
    """
    libc = ctypes.CDLL(None, use_errno=True)
    if libc.unshare(CLONE_NEWNS) != 0:
        raise OSError(f"unshare: {os.strerror(ctypes.get_errno())}")
    with suppress(OSError):
        run("mount", "--make-rprivate", "/")


@contextmanager
def skip_if_mounting_fails() -> Iterator[None]:
    """Skips the test if the context raises OSError. In CI, the test fails instead."""
    try:
        unshare_mounts()
        yield
    except OSError as reason:
        if os.environ.get("CI"):
            raise
        pytest.skip(f"mounting failed: {reason}")


@contextmanager
def memory_file_system(place: Path, size: int) -> Iterator[None]:
    """Creates the directory and mounts a tmpfs of that many bytes on it."""
    place.mkdir(parents=True, exist_ok=True)
    with skip_if_mounting_fails():
        run("mount", "-t", "tmpfs", "-o", f"size={size}", "tmpfs", str(place))
    try:
        yield
    finally:
        run("umount", "--lazy", str(place))


@contextmanager
def read_only(place: Path) -> Iterator[None]:
    """Remounts the file system read-only until the context ends."""
    _remount(place, "ro")
    try:
        yield
    finally:
        _remount(place, "rw")


def _remount(place: Path, mode: str) -> None:
    run("mount", "-o", f"remount,{mode}", str(place))
