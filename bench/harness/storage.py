"""Where the data of the stands lie: in memory, or on a disk."""

import shutil
import subprocess
import tempfile
from contextlib import contextmanager
from pathlib import Path
from typing import Iterator

from .failure import MeasurementFailed
from .programs import CHECKOUT

IN_MEMORY = {"tmpfs", "ramfs"}


def file_system_of(path: Path) -> str:
    """The type of the file system that a path is on.

    The list of mounts does not always tell: it leaves out the root of a chroot that is no mount.
    """
    return subprocess.run(
        ["stat", "--file-system", "--format=%T", str(path)],
        check=True,
        stdout=subprocess.PIPE,
        text=True,
    ).stdout.strip()


def memory_directory() -> Path:
    """A directory on a file system in memory."""
    return _first([Path("/dev/shm"), Path("/tmp")], True, "no file system in memory")


def disk_directory() -> Path:
    """A directory on a file system that is not in memory."""
    return _first([CHECKOUT / "build", Path("/tmp"), Path("/var/tmp")], False, "no disk")


def _first(candidates: list[Path], in_memory: bool, otherwise: str) -> Path:
    for path in candidates:
        if path.is_dir() and (file_system_of(path) in IN_MEMORY) == in_memory:
            return path
    raise MeasurementFailed(f"{otherwise}: tried {', '.join(map(str, candidates))}")


@contextmanager
def fresh_directory(below: Path) -> Iterator[Path]:
    """A directory of one's own that is gone afterwards."""
    directory = Path(tempfile.mkdtemp(prefix="progkeys-bench-", dir=below))
    try:
        yield directory
    finally:
        shutil.rmtree(directory, ignore_errors=True)
