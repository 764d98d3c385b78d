"""A server with a private bus, a SettingsManager and its own data."""

import os
import shutil
import signal
import sqlite3
import subprocess
import tempfile
import time
from contextlib import ExitStack, closing
from pathlib import Path
from typing import Mapping, Sequence

BUS = """\
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

REMOVED_VARIABLES = (
    *("DBUS_", "GLIBC_TUNABLES", "JOURNAL_", "LD_PRELOAD", "MALLOC_", "NOTIFY_"),
    *("QT_", "WATCHDOG_", "ZEL_"),
)
"""Variables with these prefixes would change the behavior of the measured processes."""

END_WITH_PARENT = ("setpriv", "--pdeathsig", "KILL", "--")

START_LIMIT = 20
CLIENT_LIMIT = 120
KEYS_OF_MODULE = 24
MANY_KEYS = "1000000"


class MeasurementFailed(Exception):
    """A measurement failed. The text has the reason."""


def provisioned(count: int, kind: str) -> dict[str, str]:
    """Settings with `count` provisioned actions, each with a key of this kind."""
    keys = (
        f"P{i},main,{i},phone,0,0,0"
        if kind == "set keys"
        else f"P{i},module,{i % KEYS_OF_MODULE},phone,1,1,{i // KEYS_OF_MODULE}"
        for i in range(count)
    )
    actions = (f"P{i},1,call,,{500 + i},Office {i},Off {i}" for i in range(count))
    return {
        "DefaultActions": "#".join(actions),
        "DefaultKeys": "#".join(keys),
        "ProgKeysMax": MANY_KEYS,
    }


class Testbed:
    """A context with a running server, `rows` stored keys and actions, and `keys` provisioned keys.

    `commands` has the command of each program by its name.
    """

    def __init__(
        self,
        commands: Mapping[str, Sequence[str]],
        server: str,
        storage: Path,
        rows: int = 100,
        keys: int = 0,
        kind: str = "module keys",
        with_server: bool = True,
    ) -> None:
        self.server = server
        self.keys = keys
        self._commands = commands
        self._storage = storage
        self._rows = rows
        self._settings = provisioned(keys, kind)
        self._with_server = with_server
        self._environment: dict[str, str] = {}
        self._resources = ExitStack()

    def __enter__(self) -> "Testbed":
        with ExitStack() as resources:
            self._directory = Path(tempfile.mkdtemp(prefix="progkeys-bench-", dir=self._storage))
            resources.callback(shutil.rmtree, self._directory, ignore_errors=True)
            self._log = self._directory / "log"
            self._database = self._directory / "ZelProgrammableKeys/zelprogrammablekeys.data"
            self._start_bus(resources)
            for name, value in self._settings.items():
                self._set(name, value)
            self._start_module(resources, "settingsmanager", "SettingsManager")
            self._store_rows()
            if self._with_server:
                self.pid = self._start_module(resources, self.server, "ZelProgrammableKeys")
            self._resources = resources.pop_all()
        return self

    def __exit__(self, *_exception: object) -> None:
        self._resources.close()

    def run(self, operation: str, count: int = 1, warmup: int = 1) -> float:
        """Runs an operation `count` times and returns the mean time in seconds."""
        return self._client(operation, count, warmup, self._rows)

    def check_key_limit(self) -> None:
        """Checks that the server reads the limit when a key is created."""
        self._set("ProgKeysMax", "0")
        self.run("create-key-above-limit")
        self._set("ProgKeysMax", MANY_KEYS)

    def start(self) -> float:
        """Starts and ends the server. Returns the seconds until it owned its name."""
        seconds = self._client("start", *self._commands[self.server])
        with closing(sqlite3.connect(self._database)) as connection:
            (found,) = connection.execute("SELECT COUNT(*) FROM KEY").fetchone()
        if found != self._rows + self.keys:
            raise MeasurementFailed(f"{self.server} has {found} keys after its start")
        return seconds

    def memory(self) -> float:
        """The memory of the server in MiB, including its share of shared pages."""
        rollup = Path(f"/proc/{self.pid}/smaps_rollup").read_text(encoding="ascii")
        (size,) = (line.split()[1] for line in rollup.splitlines() if line.startswith("Pss:"))
        return int(size) / 1024

    def _set(self, name: str, value: str) -> None:
        """Changes a setting."""
        directory = self._directory / "settings"
        directory.mkdir(exist_ok=True)
        (directory / name).write_text(f"{value}\n", encoding="utf-8")

    def _start_bus(self, resources: ExitStack) -> None:
        # The path of a socket is limited to 107 bytes, so it is not below the storage directory.
        directory = Path(tempfile.mkdtemp(prefix="progkeys-bench-"))
        resources.callback(shutil.rmtree, directory, ignore_errors=True)
        address = f"unix:path={directory}/socket"
        configuration = directory / "bus.conf"
        configuration.write_text(BUS.format(socket=directory / "socket"), encoding="utf-8")
        kept = {k: v for k, v in os.environ.items() if not k.startswith(REMOVED_VARIABLES)}
        self._environment = {
            **kept,
            "DBUS_SYSTEM_BUS_ADDRESS": address,
            "ZEL_DATA_ROOT": f"{self._directory}/",
            "ZEL_LOG_LEVEL": "3",
        }
        daemon = ("dbus-daemon", f"--config-file={configuration}", "--nofork", "--nopidfile")
        process = self._launch(resources, (*daemon, "--print-address"))
        deadline = time.monotonic() + START_LIMIT
        # The daemon prints its address when it accepts connections.
        while address not in self._log.read_text(encoding="utf-8"):
            if process.poll() is not None or time.monotonic() > deadline:
                raise MeasurementFailed(f"the bus did not start{self._last_lines()}")
            time.sleep(0.005)

    def _start_module(self, resources: ExitStack, server: str, module: str) -> int:
        """Starts a server, waits until it owns its name, and returns its process id."""
        command = list(self._commands[server])
        if server == "settingsmanager":
            command.append(str(self._directory / "settings"))
        process = self._launch(resources, command)
        wait = ("gdbus", "wait", "--address", self._environment["DBUS_SYSTEM_BUS_ADDRESS"])
        wait += ("--timeout", str(START_LIMIT), f"com.velmora.Tessaro.{module}")
        waiter = self._launch(resources, wait)
        while waiter.poll() is None and process.poll() is None:
            time.sleep(0.005)
        if waiter.poll() != 0 or process.poll() is not None:
            raise MeasurementFailed(f"{server} did not start{self._last_lines()}")
        return process.pid

    def _launch(self, resources: ExitStack, command: Sequence[str]) -> "subprocess.Popen[bytes]":
        with open(self._log, "ab") as log:
            process = subprocess.Popen(
                [*END_WITH_PARENT, *command],
                env=self._environment,
                stdin=subprocess.DEVNULL,
                stdout=log,
                stderr=log,
                start_new_session=True,
            )
        resources.callback(process.wait)
        resources.callback(process.kill)
        return process

    def _store_rows(self) -> None:
        """Starts a server to create the tables, and adds actions, each with a module key."""
        # The frame does not create tables.
        creator = "service" if self.server == "frame" else self.server
        self._client("start", *self._commands[creator])
        ids = range(1, self._rows + 1)
        actions = ((i, str(500 + i), f"Office {i}", f"Off {i}") for i in ids)
        keys = ((i, i, (i - 1) % KEYS_OF_MODULE, (i - 1) // KEYS_OF_MODULE) for i in ids)
        with closing(sqlite3.connect(self._database)) as connection, connection:
            connection.executemany(
                "INSERT INTO ACTION (idAction, type, action, webAppName, arguments, label,"
                " shortLabel, dmId) VALUES (?, 1, 'call', '', ?, ?, ?, '')",
                actions,
            )
            connection.executemany(
                "INSERT INTO KEY (idKey, container, idAction, position, icon, type, aom_type,"
                " aom_addr, dmId) VALUES (?, 'module', ?, ?, 'phone', 1, 1, ?, '')",
                keys,
            )

    def _client(self, *words: object) -> float:
        child = subprocess.Popen(
            [*END_WITH_PARENT, *self._commands["client"], *map(str, words)],
            env=self._environment,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            text=True,
            start_new_session=True,
        )
        try:
            printed, errors = child.communicate(timeout=CLIENT_LIMIT)
        except BaseException as error:
            # A server that the client has started is in its process group.
            os.killpg(child.pid, signal.SIGKILL)
            child.wait()
            if isinstance(error, subprocess.TimeoutExpired):
                raise MeasurementFailed(f"{words[0]} on {self.server}: timed out") from None
            raise
        if child.returncode != 0:
            what = f"{words[0]} on {self.server}"
            raise MeasurementFailed(f"{what}: {errors.strip()}{self._last_lines()}")
        return float(printed)

    def _last_lines(self) -> str:
        """The last lines of the log, to append to a message."""
        lines = self._log.read_text(encoding="utf-8", errors="replace").splitlines()[-10:]
        return "".join(f"\n  {line}" for line in lines)
