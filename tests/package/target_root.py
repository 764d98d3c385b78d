"""A Debian below a directory, with users, packages and a system bus of its own."""

import shutil
import subprocess
from pathlib import Path
from typing import IO, Optional, Sequence

from sandbox.loop import wait_until

SOCKET = Path("run/dbus/system_bus_socket")
HOW_TO_REACH_THE_MIRROR = (
    "etc/resolv.conf",
    "etc/hosts",
    "etc/apt/apt.conf.d",
    "etc/apt/auth.conf.d",
    "etc/apt/sources.list",
    "etc/apt/sources.list.d",
)
ENVIRONMENT = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C.UTF-8", "HOME": "/"}


def suite() -> str:
    """The Debian release of this machine, for which the packages were built."""
    release = Path("/etc/os-release").read_text(encoding="utf-8")
    fields = dict(line.split("=", 1) for line in release.splitlines() if "=" in line)
    return fields["VERSION_CODENAME"].strip('"')


def mirror() -> str:
    """Where this machine's apt has its packages from."""
    targets = subprocess.run(
        [
            "apt-get",
            "indextargets",
            "--format",
            "$(REPO_URI)",
            "Created-By: Packages",
            f"Codename: {suite()}",
        ],
        check=True,
        stdout=subprocess.PIPE,
        text=True,
    ).stdout.split()
    assert targets, "apt knows no repository; has apt-get update been run?"
    return targets[0]


class TargetRoot:
    """The root and its processes, on a file system in memory that goes with the namespace."""

    def __init__(self, path: Path) -> None:
        self.path = path
        self._bus: Optional[subprocess.Popen[bytes]] = None
        self._log: Optional[IO[bytes]] = None

    def make(self) -> None:
        """Unpacks a minimal Debian, ready for chroot."""
        mount("-t", "tmpfs", "-o", "mode=755,size=3G", "tmpfs", str(self.path))
        subprocess.run(
            ["debootstrap", "--variant=minbase", suite(), str(self.path), mirror()],
            check=True,
            stdout=subprocess.DEVNULL,
        )
        for name in HOW_TO_REACH_THE_MIRROR:
            self._keep(name)
        # Nothing is started by an installation: what runs here is started by the tests.
        self._write_executable("usr/sbin/policy-rc.d", "#!/bin/sh\nexit 101\n")
        mount("-t", "proc", "proc", str(self.path / "proc"))
        mount("--rbind", "/dev", str(self.path / "dev"))
        self.apt("update")

    def remove(self) -> None:
        """Its file system goes with the last that uses it."""
        subprocess.run(["umount", "--recursive", "--lazy", str(self.path)], check=True)
        self.path.rmdir()

    def run(
        self, *command: str, user: str = "root", limit: float = 600
    ) -> subprocess.CompletedProcess[str]:
        """Runs a command in the root, with the ids and groups that the user has there."""
        return subprocess.run(
            ["chroot", f"--userspec={user}", str(self.path), *command],
            env=ENVIRONMENT,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            text=True,
            timeout=limit,
            check=False,
        )

    def start(self, *command: str, user: str = "root") -> subprocess.Popen[str]:
        """Starts a command in the root; its output can be read line by line."""
        return subprocess.Popen(
            ["chroot", f"--userspec={user}", str(self.path), *command],
            env=ENVIRONMENT,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
        )

    def demand(self, *command: str, user: str = "root") -> str:
        """As `run`; the command must succeed. Returns its output."""
        result = self.run(*command, user=user)
        assert result.returncode == 0, f"{' '.join(command)}: {result.stdout}{result.stderr}"
        return result.stdout

    def apt(self, *arguments: str) -> str:
        return self.demand(
            "env",
            "DEBIAN_FRONTEND=noninteractive",
            "apt-get",
            "--yes",
            "--no-install-recommends",
            *arguments,
        )

    def install(self, packages: Sequence[Path]) -> str:
        """Installs package files with apt, and what they depend on from the mirror."""
        inside = self.path / "packages"
        inside.mkdir(exist_ok=True)
        for package in packages:
            shutil.copy(package, inside)
        return self.apt("install", *(f"/packages/{package.name}" for package in packages))

    def user_id(self, user: str) -> int:
        return int(self.demand("id", "-u", user))

    def group_ids(self, user: str) -> list[int]:
        return [int(group) for group in self.demand("id", "-G", user).split()]

    def start_bus(self) -> None:
        """The system bus, as the root's own configuration says; returns once it answers."""
        assert self._bus is None, "the bus runs already"
        (self.path / SOCKET.parent).mkdir(parents=True, exist_ok=True)
        self._log = open(self.path / "bus.log", "wb")
        self._bus = subprocess.Popen(
            [
                "chroot",
                str(self.path),
                "dbus-daemon",
                "--system",
                "--nofork",
                "--nopidfile",
                "--nosyslog",
            ],
            env=ENVIRONMENT,
            stdin=subprocess.DEVNULL,
            stdout=self._log,
            stderr=self._log,
        )
        wait_until(lambda: self.run("busctl", "list").returncode == 0, "the system bus answers")

    def stop_bus(self) -> None:
        if self._bus is not None and self._log is not None:
            self._bus.terminate()
            self._bus.wait(timeout=20)
            self._log.close()
        self._bus = None
        (self.path / SOCKET).unlink(missing_ok=True)

    @property
    def bus_log(self) -> str:
        """The output of the bus and of what it started."""
        return (self.path / "bus.log").read_text(encoding="utf-8", errors="replace")

    @property
    def address(self) -> str:
        return f"unix:path={self.path / SOCKET}"

    def _keep(self, name: str) -> None:
        source, target = Path("/") / name, self.path / name
        if source.is_dir():
            shutil.copytree(source, target, dirs_exist_ok=True)
        elif source.exists():
            shutil.copy(source, target)

    def _write_executable(self, name: str, text: str) -> None:
        file = self.path / name
        file.write_text(text, encoding="utf-8")
        file.chmod(0o755)


def mount(*arguments: str) -> None:
    subprocess.run(["mount", *arguments], check=True)
