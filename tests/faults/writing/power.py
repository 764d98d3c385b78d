"""A disk with simulated power cuts, which lose everything that was not written to it."""

import fcntl
import os
import struct
import tempfile
from pathlib import Path

from mounts import run
from sandbox.loop import wait_until

EXT4_IOC_SHUTDOWN = 0x8004587D
WITHOUT_ITS_JOURNAL = struct.pack("I", 2)
"""Without writing the journal."""

MEGABYTES = 16


class Disk:
    """An ext4 file system in a file. Unmounting it removes the loop device."""

    def __init__(self, directory: Path) -> None:
        self.path = Path(tempfile.mkdtemp(prefix="disk-", dir=directory))
        self._image = self.path.with_suffix(".image")
        with open(self._image, "wb") as image:
            image.truncate(MEGABYTES << 20)
        run("mkfs.ext4", "-q", str(self._image))
        self._mount()

    def _mount(self) -> None:
        run("mount", "-o", "loop", str(self._image), str(self.path))

    def cut_power(self) -> None:
        """From now on nothing is written to the disk, and each write fails."""
        directory = os.open(self.path, os.O_RDONLY)
        try:
            assert os.fstat(directory).st_dev != self._image.stat().st_dev, "not the test's disk"
            fcntl.ioctl(directory, EXT4_IOC_SHUTDOWN, WITHOUT_ITS_JOURNAL)
        finally:
            os.close(directory)

    def restore_power(self) -> None:
        """Mounts the disk again when no process has an open file on it."""
        wait_until(self._unmount, f"no process has an open file on {self.path}")
        self._mount()

    def _unmount(self) -> bool:
        try:
            run("umount", str(self.path))
        except OSError:
            return False
        return True

    def remove(self) -> None:
        """Unmounts the disk when the last file on it is closed."""
        if self.path.is_mount():
            run("umount", "--lazy", str(self.path))
        self.path.rmdir()
        self._image.unlink()
