"""The SettingsManager peer for development and tests."""

import pytest

from sandbox.client import BusError
from sandbox.names import SETTINGS_MANAGER, UNKNOWN_SETTING, bus_name
from sandbox.processes import start_settings_manager

TEXTS = {
    "plain": "1000",
    "empty": "",
    "several lines": "one\ntwo\n\nfour",
    "Unicode": "Zürich ☎ 電話 🙂",
    "separators": "D1,3,call,,501,a\\,b,c\\#d#D2",
    "outer spaces": "  around  ",
    "a quote": "'; DROP TABLE KEY; --",
    "a megabyte": "x" * 2**20,
}


@pytest.fixture
def get(settings_manager, client):
    def get_setting(name):
        reply = client.call("getSettingValue", "s", name, module=SETTINGS_MANAGER)
        assert reply.signature == "s"
        return reply.values[0]

    return get_setting


@pytest.fixture
def put(settings_manager, client):
    def set_setting(name, value):
        reply = client.call("setSettingValue", "ss", name, value, module=SETTINGS_MANAGER)
        assert reply.signature == ""

    return set_setting


@pytest.mark.parametrize("text", TEXTS.values(), ids=TEXTS)
def test_the_value_of_a_setting_is_the_text_of_its_file(get, settings_dir, text):
    (settings_dir / "Name").write_text(text, encoding="utf-8")
    assert get("Name") == text


@pytest.mark.parametrize(
    "written, value",
    [("5\n", "5"), ("5\n\n", "5\n"), ("\n", ""), ("\n5", "\n5"), ("5", "5"), ("5\r\n", "5\r")],
    ids=[
        "one newline",
        "two newlines",
        "only a newline",
        "leading newline",
        "no newline",
        "carriage return",
    ],
)
def test_one_final_newline_is_removed(get, settings_dir, written, value):
    (settings_dir / "Name").write_bytes(written.encode())
    assert get("Name") == value


def test_a_file_is_read_at_each_call(get, settings_dir):
    for value in ("1", "2", "", "3"):
        (settings_dir / "ProgKeysMax").write_text(value)
        assert get("ProgKeysMax") == value


@pytest.mark.parametrize("text", TEXTS.values(), ids=TEXTS)
def test_a_setting_can_be_set_and_read_back(get, put, settings_dir, text):
    put("Name", text)
    assert get("Name") == text
    assert (settings_dir / "Name").is_file()


def test_a_new_value_replaces_the_old_one_and_leaves_no_other_file(get, put, settings_dir):
    put("Name", "a long value")
    before = sorted(settings_dir.iterdir())
    put("Name", "short")
    assert get("Name") == "short"
    assert sorted(settings_dir.iterdir()) == before


def test_setting_a_value_that_cannot_be_written_returns_an_error(put, settings_dir):
    settings_dir.rename(settings_dir.with_name("moved"))
    with pytest.raises(BusError):
        put("Name", "value")


FORBIDDEN = ["../secret", "sub/secret", "/etc/hostname", ".hidden", "..", ".", "sub/"]


@pytest.mark.parametrize(
    "name", ["Missing", "", "sub", "progkeysmax", *FORBIDDEN], ids=lambda name: name or "empty"
)
def test_reading_an_unknown_or_forbidden_name_returns_the_error_unknown_setting(
    get, settings_dir, name
):
    (settings_dir / "sub").mkdir()
    for forbidden in (
        settings_dir / ".hidden",
        settings_dir / "sub" / "secret",
        settings_dir.parent / "secret",
    ):
        forbidden.write_text("not to be read")
    with pytest.raises(BusError) as raised:
        get(name)
    assert raised.value.name == UNKNOWN_SETTING
    assert get("ProgKeysMax") == "1000"


@pytest.mark.parametrize("name", ["", *FORBIDDEN], ids=lambda name: name or "empty")
def test_a_forbidden_name_cannot_be_set(put, settings_dir, name):
    (settings_dir / "sub").mkdir()
    before = sorted(settings_dir.parent.rglob("*"))
    with pytest.raises(BusError) as raised:
        put(name, "value")
    assert raised.value.name == UNKNOWN_SETTING
    assert sorted(settings_dir.parent.rglob("*")) == before


@pytest.mark.parametrize(
    "method, signature, arguments",
    [
        ("getSettingValue", "i", [1]),
        ("getSettingValue", "", []),
        ("getSettingValue", "ss", ["ProgKeysMax", "more"]),
        ("setSettingValue", "s", ["ProgKeysMax"]),
        ("setSettingValue", "si", ["ProgKeysMax", 1]),
        ("deleteSettingValue", "s", ["ProgKeysMax"]),
    ],
)
def test_a_call_with_a_wrong_signature_returns_an_error_and_changes_nothing(
    get, client, method, signature, arguments
):
    with pytest.raises(BusError):
        client.call(method, signature, *arguments, module=SETTINGS_MANAGER)
    assert get("ProgKeysMax") == "1000"


def test_a_second_peer_logs_that_the_name_is_taken_and_ends_with_status_1(
    settings_manager, bin_dir, bus, settings_dir, tmp_path
):
    with start_settings_manager(
        bin_dir, bus.address, settings_dir, tmp_path / "second.log"
    ) as second:
        assert second.wait_for_exit() == 1
        (line,) = second.log.texts("error")
    assert bus_name(SETTINGS_MANAGER) in line
    assert settings_manager.running


def test_stop_ends_the_peer_with_status_0(settings_manager, client):
    assert client.lifecycle("stop", module=SETTINGS_MANAGER).values == (True,)
    assert settings_manager.wait_for_exit() == 0
