"""A Debian root directory with its own users, packages and system bus."""

import shutil
import subprocess
from pathlib import Path
from typing import IO, Optional, Sequence

from sandbox.loop import wait_until

SOCKET = Path("run/dbus/system_bus_socket")
APT_CONFIGURATION = (
    "etc/resolv.conf",
    "etc/hosts",
    "etc/apt/apt.conf.d",
    "etc/apt/auth.conf.d",
    "etc/apt/sources.list",
    "etc/apt/sources.list.d",
)
ENVIRONMENT = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C.UTF-8", "HOME": "/"}


def suite() -> str:
    """The Debian release of the host, for which the packages were built."""
    release = Path("/etc/os-release").read_text(encoding="utf-8")
    fields = dict(line.split("=", 1) for line in release.splitlines() if "=" in line)
    return fields["VERSION_CODENAME"].strip('"')


def mirror() -> str:
    """The Debian mirror of the host."""
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
    assert targets, "apt has no package lists; run apt-get update"
    return targets[0]


class TargetRoot:
    """The root directory, on a tmpfs that ends with the mount namespace, and its processes."""

    def __init__(self, path: Path) -> None:
        self.path = path
        self._bus: Optional[subprocess.Popen[bytes]] = None
        self._log: Optional[IO[bytes]] = None

    def make(self) -> None:
        """Installs a minimal Debian for chroot."""
        mount("-t", "tmpfs", "-o", "mode=755,size=3G", "tmpfs", str(self.path))
        subprocess.run(
            ["debootstrap", "--variant=minbase", suite(), str(self.path), mirror()],
            check=True,
            stdout=subprocess.DEVNULL,
        )
        for name in APT_CONFIGURATION:
            self._copy_from_host(name)
        # Packages must not start services when they are installed.
        self._write_executable("usr/sbin/policy-rc.d", "#!/bin/sh\nexit 101\n")
        mount("-t", "proc", "proc", str(self.path / "proc"))
        mount("--rbind", "/dev", str(self.path / "dev"))
        self.apt("update")

    def remove(self) -> None:
        """Unmounts the directory when its last user ends."""
        subprocess.run(["umount", "--recursive", "--lazy", str(self.path)], check=True)
        self.path.rmdir()

    def run(
        self, *command: str, user: str = "root", limit: float = 600
    ) -> subprocess.CompletedProcess[str]:
        """Runs a command in the root directory, with the ids of the user there."""
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
        """Starts a command in the root directory. Its output can be read line by line."""
        return subprocess.Popen(
            ["chroot", f"--userspec={user}", str(self.path), *command],
            env=ENVIRONMENT,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
        )

    def demand(self, *command: str, user: str = "root") -> str:
        """Runs a command that must succeed, and returns its output."""
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
        """Installs package files with apt, and their dependencies from the mirror."""
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
        """Starts the system bus of the root directory and waits until it replies."""
        assert self._bus is None, "the bus is already running"
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
        wait_until(lambda: self.run("busctl", "list").returncode == 0, "the system bus replies")

    def stop_bus(self) -> None:
        if self._bus is not None and self._log is not None:
            self._bus.terminate()
            self._bus.wait(timeout=20)
            self._log.close()
        self._bus = None
        (self.path / SOCKET).unlink(missing_ok=True)

    @property
    def bus_log(self) -> str:
        """The output of the bus and of the processes that it has started."""
        return (self.path / "bus.log").read_text(encoding="utf-8", errors="replace")

    @property
    def address(self) -> str:
        return f"unix:path={self.path / SOCKET}"

    def _copy_from_host(self, name: str) -> None:
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
