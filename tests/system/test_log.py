"""The levels and the format of log lines."""

import os
import re

import pytest

from samples import CALL, MODULE_KEY

EVERY_LEVEL = {"error", "warning", "info", "debug"}
WRITTEN_AT = {
    0: set(),
    2: set(),
    3: {"error"},
    4: {"error", "warning"},
    5: {"error", "warning"},
    6: {"error", "warning", "info"},
    7: EVERY_LEVEL,
}


def provoke_every_level(client):
    """Causes an error and a warning. The first start logs at the other levels."""
    client.delete_action(-1)
    client.send_raw_event("sas", "AOM_KEY_PRESS_EVENT", ["no", "arguments"])
    client.round_trip()


@pytest.mark.parametrize(
    "level, written", WRITTEN_AT.items(), ids=[f"level {level}" for level in WRITTEN_AT]
)
def test_a_line_is_written_if_its_level_is_not_above_the_log_level(start, client, level, written):
    service = start(log_level=level)
    provoke_every_level(client)
    assert {line.level for line in service.log.lines()} == written


@pytest.mark.parametrize(
    "text",
    [None, "", "debug", "8", "-1", "3x"],
    ids=["unset", "empty", "a word", "too large", "negative", "a number and a letter"],
)
def test_the_level_is_6_if_the_environment_has_no_valid_level(start, client, text):
    service = start(log_level=None, extra={} if text is None else {"ZEL_LOG_LEVEL": text})
    provoke_every_level(client)
    assert {line.level for line in service.log.lines()} == {"error", "warning", "info"}


def test_a_line_consists_of_time_name_pid_level_and_text(service, client):
    client.delete_action(-1)
    line = service.log.raw().splitlines()[-1]
    text = "Action of id -1 is read only and reserved. Deletion is forbidden."
    assert re.fullmatch(rf"\S+ ZelProgrammableKeys\[{service.pid}\] error: {text}", line)


def test_lines_in_the_journal_begin_with_their_level(start, client, tmp_path):
    log = tmp_path / "journal"
    log.touch()
    stream = f"{os.stat(log).st_dev}:{os.stat(log).st_ino}"
    start(log_path=log, extra={"JOURNAL_STREAM": stream})
    provoke_every_level(client)
    written = log.read_text(encoding="utf-8").splitlines()
    assert "<3>Action of id -1 is read only and reserved. Deletion is forbidden." in written
    assert "<6>Table Key is not correct. Check fails" in written
    assert "<7>ZelProgrammableKeys checking..." in written
    assert {line[:3] for line in written} == {"<3>", "<4>", "<6>", "<7>"}


def test_lines_have_no_prefix_if_stderr_is_not_the_journal(start, client):
    service = start(extra={"JOURNAL_STREAM": "1:1"})
    assert "ZelProgrammableKeys checking..." in [
        line.text for line in service.log.lines() if line.level == "debug"
    ]


@pytest.mark.parametrize(
    "text",
    ["100 %1 of %2 %s%n", "  spaced  out  ", "Zürich ☎ 電話 🙂", "a\tb", 'it\'s "quoted" \\ slashed'],
    ids=["placeholders", "spaces", "Unicode", "tab", "quotes and backslash"],
)
@pytest.mark.parametrize("locale", ["C", "C.UTF-8"])
def test_a_text_is_logged_unchanged_at_the_end_of_its_line(start, client, text, locale):
    service = start(extra={"LC_ALL": locale, "LANG": locale})
    id_action = client.add_action(CALL)
    id_key = client.create_programmable_key(MODULE_KEY._replace(dmId=text, idAction=id_action))
    service.log.take()
    assert client.delete_programmable_key(id_key) == -2
    assert f"isProgrammableKeyRemovable : idDM={text}" in service.log.take()
