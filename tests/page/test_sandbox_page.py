"""`sandbox --page`: how the page is served."""

import os
import signal
import socket
import subprocess
import urllib.request
from pathlib import Path

from browsing import Phone
from sandbox.loop import LIMIT, wait_until
from sandbox.processes import clean_environment


def run(bin_dir: Path, *words: str, path: str = "/usr/bin:/bin") -> "subprocess.CompletedProcess[str]":
    return subprocess.run(
        [bin_dir / "progkeysctl", "sandbox", *words],
        env={**clean_environment(), "PATH": path},
        capture_output=True,
        text=True,
        timeout=3 * LIMIT,
        check=False,
    )


def free_port() -> int:
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return int(probe.getsockname()[1])


def processes_of(directory: str) -> list[str]:
    found = []
    for entry in Path("/proc").iterdir():
        try:
            if entry.name.isdigit() and f"PROGKEYS_SANDBOX={directory}\0".encode() in (entry / "environ").read_bytes():
                found.append((entry / "comm").read_text().strip())
        except OSError:
            pass
    return found


def test_the_url_is_printed_and_in_the_environment(bin_dir: Path) -> None:
    port = free_port()
    result = run(bin_dir, "--page", "--port", str(port), "--", "sh", "-c", "echo $PROGKEYS_PAGE_URL")
    assert result.returncode == 0, result.stderr
    url = f"http://127.0.0.1:{port}/cockpit/@localhost/progkeys/index.html"
    assert result.stdout.splitlines() == [url, url]


def test_the_page_is_served_on_loopback_only(bin_dir: Path) -> None:
    phone = Phone(bin_dir)
    with urllib.request.urlopen(phone.url, timeout=LIMIT) as page:
        assert b"<title>Programmable keys</title>" in page.read()
    port = f":{int(phone.url.split(':')[2].split('/')[0]):04X}"
    listening = [line.split()[1] for line in Path("/proc/net/tcp").read_text().splitlines() if line.split()[3] == "0A"]
    assert [address for address in listening if address.endswith(port)] == [f"0100007F{port}"]
    phone.close()


def test_nothing_is_left_after_the_end(bin_dir: Path) -> None:
    phone = Phone(bin_dir)
    urllib.request.urlopen(phone.url, timeout=LIMIT).close()
    assert {"cockpit-ws", "cockpit-bridge"} <= set(processes_of(phone.directory))
    phone.close()
    assert (processes_of(phone.directory), os.path.exists(phone.directory)) == ([], False)


def test_nothing_is_left_after_the_tool_is_killed(bin_dir: Path) -> None:
    phone = Phone(bin_dir)
    urllib.request.urlopen(phone.url, timeout=LIMIT).close()
    phone.child.send_signal(signal.SIGKILL)
    wait_until(lambda: not processes_of(phone.directory) and not os.path.exists(phone.directory), "everything has ended")


def test_a_port_in_use_is_reported(bin_dir: Path) -> None:
    with socket.socket() as taken:
        taken.bind(("127.0.0.1", 0))
        taken.listen()
        port = taken.getsockname()[1]
        result = run(bin_dir, "--page", "--port", str(port), "--", "echo", "ran")
    assert (result.returncode, result.stdout) == (1, "")
    assert f"Port {port} is in use" in result.stderr


def test_a_port_requires_the_page(bin_dir: Path) -> None:
    result = run(bin_dir, "--port", "9999", "--", "echo", "ran")
    assert (result.returncode, result.stdout) == (2, "")
    assert "--port requires --page" in result.stderr


def test_a_missing_bridge_is_reported_with_its_package(bin_dir: Path, tmp_path: Path) -> None:
    for name in ("bash", "dirname", "realpath", "env", "dbus-daemon"):
        (tmp_path / name).symlink_to(f"/usr/bin/{name}")
    result = run(bin_dir, "--page", "--", "echo", "ran", path=str(tmp_path))
    assert (result.returncode, result.stdout) == (1, "")
    assert "Debian package cockpit-bridge" in result.stderr
