"""A disk that can lose its power, and with it everything that was not written to it."""

import ctypes
import fcntl
import os
import struct
import subprocess
import tempfile
from pathlib import Path

from sandbox.loop import wait_until

EXT4_IOC_SHUTDOWN = 0x8004587D
WITHOUT_ITS_JOURNAL = struct.pack("I", 2)
"""Nothing more is written, not even what the journal holds."""

CLONE_NEWNS = 0x00020000
MEGABYTES = 16


class NoDisk(Exception):
    """There can be no such disk here; the text says why."""


def _run(*command: str) -> None:
    ended = subprocess.run(command, capture_output=True, text=True, check=False)
    if ended.returncode != 0:
        raise NoDisk(f"{' '.join(command)}: {ended.stderr.strip()}")


def _keep_mounts_to_this_process() -> None:
    """From now on what this process mounts is seen by its children alone, and goes with it however it ends."""
    libc = ctypes.CDLL(None, use_errno=True)
    if libc.unshare(CLONE_NEWNS) != 0:
        raise NoDisk(f"unshare: {os.strerror(ctypes.get_errno())}")
    _run("mount", "--make-rprivate", "/")


class Disk:
    """An ext4 file system in a file of its own. The loop device below it goes whenever it is unmounted."""

    def __init__(self, directory: Path) -> None:
        if os.geteuid() != 0:
            raise NoDisk("only root can mount a disk")
        _keep_mounts_to_this_process()
        self.path = Path(tempfile.mkdtemp(prefix="disk-", dir=directory))
        self._image = self.path.with_suffix(".image")
        with open(self._image, "wb") as image:
            image.truncate(MEGABYTES << 20)
        _run("mkfs.ext4", "-q", str(self._image))
        self._mount()

    def _mount(self) -> None:
        _run("mount", "-o", "loop", str(self._image), str(self.path))

    def cut_power(self) -> None:
        """From now on nothing reaches the disk, and whoever writes to it is told that it fails."""
        directory = os.open(self.path, os.O_RDONLY)
        try:
            assert os.fstat(directory).st_dev != self._image.stat().st_dev, "the machine's own disk"
            fcntl.ioctl(directory, EXT4_IOC_SHUTDOWN, WITHOUT_ITS_JOURNAL)
        finally:
            os.close(directory)

    def restore_power(self) -> None:
        """Mounts the disk anew, as it is after the cut, once all those who had files on it open have ended."""
        wait_until(self._unmount, f"nobody has a file open on {self.path}")
        self._mount()

    def _unmount(self) -> bool:
        umount = subprocess.run(["umount", self.path], stderr=subprocess.DEVNULL, check=False)
        return umount.returncode == 0

    def remove(self) -> None:
        """Unmounts the disk, at the latest when the last one has closed his files on it."""
        if self.path.is_mount():
            _run("umount", "--lazy", str(self.path))
        self.path.rmdir()
        self._image.unlink()
