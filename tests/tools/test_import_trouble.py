"""`import` disturbed by the bus, a signal, or another client."""

import json
import os
import signal
import subprocess
from pathlib import Path
from typing import Any, Iterator

import pytest

from progkeysctl import Tool, environment
from samples import CALL, SET_KEY
from sandbox.client import Client
from sandbox.loop import LIMIT, wait_until
from sandbox.processes import Module

KEYS = 900


def document(actions: list[dict[str, Any]], keys: list[dict[str, Any]]) -> dict[str, Any]:
    return {"schema": "com.velmora.Tessaro.ProgrammableKeys.Export", "version": 1, "actions": actions, "keys": keys}


@pytest.fixture
def many(tmp_path: Path) -> Path:
    """An export with so many keys that the import takes a while."""
    key = SET_KEY._asdict() | {"idAction": -1}
    keys = [key | {"idKey": place, "position": place} for place in range(KEYS)]
    file = tmp_path / "many.json"
    file.write_text(json.dumps(document([], keys)), encoding="utf-8")
    return file


@pytest.fixture
def importing(ctl: Tool, client: Client, phone: Module, many: Path) -> Iterator[subprocess.Popen[str]]:
    """An import that has started."""
    process = ctl.start("import", "--json=short", "--timeout", "1", many)
    wait_until(client.get_all_programmable_keys, "the first key is there")
    yield process
    process.kill()
    process.communicate()


def outcomes(out: str) -> list[str]:
    """The different outcomes, in their order."""
    return list(dict.fromkeys(row["outcome"] for row in json.loads(out)))


def test_a_bus_that_hangs_ends_the_import(importing: subprocess.Popen[str], client: Client) -> None:
    daemon = client.process_of("org.freedesktop.DBus")
    os.kill(daemon, signal.SIGSTOP)
    try:
        out, err = importing.communicate(timeout=LIMIT)
    finally:
        os.kill(daemon, signal.SIGCONT)
    assert importing.returncode == 3
    assert outcomes(out) == ["done", "unknown", "not done"]
    assert "did not answer within 1 s" in err


def test_the_outcome_is_unknown_if_the_bus_disconnects(ctl: Tool, client: Client, phone: Module) -> None:
    """The bus disconnects a client that sends too large a message."""
    large = CALL._asdict() | {"idAction": 1, "arguments": "x" * 34_000_000}
    lost = ctl("import", "--json=short", "--fields", "outcome", "-", stdin=json.dumps(document([large], [])))
    assert (lost.status, lost.json) == (1, [{"outcome": "unknown"}])
    assert "The connection to the system bus at" in lost.err
    assert "Try again when the bus is running" in lost.err


def test_ignored_signals_do_not_interrupt(
    ctl: Tool, client: Client, phone: Module, many: Path
) -> None:
    """As under nohup."""
    process = subprocess.Popen(
        ["nohup", *ctl.command("import", "--json=short", many)],
        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
        encoding="utf-8", env=environment(ctl.address, {}),
    )
    wait_until(client.get_all_programmable_keys, "the first key is there")
    process.send_signal(signal.SIGHUP)
    out, _ = process.communicate(timeout=LIMIT)
    assert process.returncode == 0
    assert outcomes(out) == ["done"]
    assert len(client.get_all_programmable_keys()) == KEYS


def test_a_refusal_has_its_cause(
    importing: subprocess.Popen[str], client: Client, settings_dir: Path
) -> None:
    (settings_dir / "ProgKeysMax").write_text("1\n", encoding="utf-8")
    out, err = importing.communicate(timeout=LIMIT)
    assert importing.returncode == 1
    assert outcomes(out) == ["done", "failed", "not done"]
    assert "the key limit ProgKeysMax is reached" in err
