"""A private dbus-daemon."""

import shutil
import subprocess
import tempfile
from pathlib import Path
from typing import Optional

from .loop import LIMIT, wait_until
from .orphans import die_with_parent

# The configuration sets no limits. The daemon's default limits are those of a system bus.
CONFIGURATION = """\
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path={socket}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_destination="*" eavesdrop="true"/>
    <allow receive_sender="*"/>
  </policy>
</busconfig>
"""


class PrivateBus:
    """A message bus with its own directory. It has the same address after a restart."""

    def __init__(self) -> None:
        self.directory = Path(tempfile.mkdtemp(prefix="phone-bus-"))
        self.socket = self.directory / "socket"
        self.address = f"unix:path={self.socket}"
        self._configuration = self.directory / "bus.conf"
        self._configuration.write_text(CONFIGURATION.format(socket=self.socket), encoding="utf-8")
        self._daemon: Optional[subprocess.Popen[bytes]] = None

    def __enter__(self) -> "PrivateBus":
        try:
            self.start()
        except BaseException:
            self.close()
            raise
        return self

    def __exit__(self, *_exception: object) -> None:
        self.close()

    @property
    def running(self) -> bool:
        return self._daemon is not None and self._daemon.poll() is None

    def start(self) -> None:
        """Starts the daemon and returns once it accepts connections."""
        assert not self.running, "the bus is already running"
        ready = self.directory / "ready"
        log = self.directory / "log"
        with open(ready, "wb") as address_file, open(log, "wb") as log_file:
            self._daemon = subprocess.Popen(
                [
                    "dbus-daemon",
                    f"--config-file={self._configuration}",
                    "--nofork",
                    "--nopidfile",
                    "--print-address",
                ],
                stdin=subprocess.DEVNULL,
                stdout=address_file,
                stderr=log_file,
                preexec_fn=die_with_parent,
            )
        wait_until(lambda: ready.stat().st_size > 0 or not self.running, "the bus listens", LIMIT)
        assert self.running, f"the bus did not start:\n{log.read_text(errors='replace')}"

    def stop(self) -> None:
        """Kills the daemon. Its clients lose the connection."""
        if self._daemon is not None:
            self._daemon.kill()
            self._daemon.wait()
            self._daemon = None
        self.socket.unlink(missing_ok=True)

    def restart(self) -> None:
        self.stop()
        self.start()

    def close(self) -> None:
        """Stops the daemon and removes its directory."""
        self.stop()
        shutil.rmtree(self.directory, ignore_errors=True)
