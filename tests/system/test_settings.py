"""Reading the key limit from SettingsManager, and faults of that peer."""

import time

import pytest

from samples import DATABASE_FULL, MODULE_KEY, SET_KEY, SETTING_NOT_READ, key_created
from sandbox.loop import WAIT_FACTOR, wait_until
from sandbox.names import INTERFACE, SETTINGS_MANAGER, UNKNOWN_SETTING, object_path
from sandbox.records import KEY
from sandbox.settings import SettingCall, write_settings

READ_LIMIT = 5.0


@pytest.fixture
def new_key(action):
    """A key on the set that is not stored yet."""
    return SET_KEY._replace(idAction=action.idAction)


# Replies


def test_a_setting_is_read_with_its_name_as_the_only_argument(client, settings, new_key):
    settings.calls.clear()
    client.create_programmable_key(new_key)
    path = object_path(SETTINGS_MANAGER)
    assert settings.calls == [
        SettingCall(path, INTERFACE, "getSettingValue", "s", ("ProgKeysMax",))
    ]


@pytest.mark.parametrize(
    "text", ["", "abc", "3 keys", "0x10", "0", "-1"], ids=lambda text: text or "empty"
)
def test_no_key_on_the_set_is_created_if_the_limit_is_not_a_positive_number(
    service, client, events, settings, new_key, text
):
    settings.values["ProgKeysMax"] = text
    assert client.create_programmable_key(new_key) == -1
    assert events.take() == [DATABASE_FULL]
    assert service.log.take("error") == []


def check_that_there_is_no_limit(service, client, events, new_key):
    """Creates three keys on the set. Each causes one error line and one event."""
    for _ in range(3):
        key = new_key._replace(idKey=client.create_programmable_key(new_key))
        assert key.idKey > 0
        assert events.take() == [key_created(key)]
        assert service.log.take("error") == [SETTING_NOT_READ]


@pytest.mark.parametrize(
    "error",
    [
        UNKNOWN_SETTING,
        "org.freedesktop.DBus.Error.Failed",
        "org.freedesktop.DBus.Error.UnknownMethod",
    ],
    ids=["unknown setting", "failure", "unknown method"],
)
def test_an_error_reply_means_no_limit_and_one_error_line(
    service, client, events, settings, new_key, error
):
    settings.fail(error, "0")
    check_that_there_is_no_limit(service, client, events, new_key)


@pytest.mark.parametrize(
    "signature, body",
    [
        ("i", [0]),
        ("x", [0]),
        ("b", [False]),
        ("d", [0.0]),
        ("v", ["0"]),
        ("o", ["/0"]),
        ("g", ["i"]),
        ("ay", [b"0"]),
        ("as", [["0"]]),
        ("(s)", [("0",)]),
        ("a{ss}", [{"0": "0"}]),
        ("is", [0, "0"]),
        ("", []),
    ],
    ids=lambda value: value or "nothing" if isinstance(value, str) else "",
)
def test_a_reply_that_is_not_a_string_means_no_limit_and_one_error_line(
    service, client, events, settings, new_key, signature, body
):
    settings.answer_with(signature, *body)
    check_that_there_is_no_limit(service, client, events, new_key)


def test_only_the_first_argument_of_a_reply_is_read(service, client, settings, new_key):
    settings.answer_with("sis", "1", 5, "0")
    assert client.create_programmable_key(new_key) == 1
    assert client.create_programmable_key(new_key) == -1
    assert service.log.take("error") == []


def test_a_missing_peer_means_no_limit_and_one_error_line(
    service, client, events, settings, new_key
):
    settings.close()
    check_that_there_is_no_limit(service, client, events, new_key)


def test_a_peer_that_disconnects_during_the_call_means_no_limit_and_one_error_line(
    service, client, events, settings, new_key
):
    settings.disconnect_on_call()
    check_that_there_is_no_limit(service, client, events, new_key)


def test_a_failed_read_for_a_module_key_is_also_logged(service, client, settings, action):
    settings.fail(UNKNOWN_SETTING)
    assert client.create_programmable_key(MODULE_KEY._replace(idAction=action.idAction)) == 1
    assert service.log.take("error") == [SETTING_NOT_READ]


# Waiting


def test_a_read_times_out_after_5_seconds_and_a_late_reply_is_ignored(
    service, client, events, settings, new_key
):
    settings.hang()
    begun = time.monotonic()
    assert client.create_programmable_key(new_key) == 1
    waited = time.monotonic() - begun
    assert READ_LIMIT - 0.5 <= waited <= READ_LIMIT + 2 * WAIT_FACTOR
    assert events.take() == [key_created(new_key._replace(idKey=1))]
    assert service.log.take("error") == [SETTING_NOT_READ]
    settings.values["ProgKeysMax"] = "1"
    settings.release()
    assert client.create_programmable_key(new_key) == -1
    assert service.log.take("error") == []


def test_a_call_during_a_read_is_handled_after_the_call_that_reads(client, settings, new_key):
    answered = []
    settings.hang()
    settings.calls.clear()
    waiting = client.send(
        "createProgrammableKey", KEY, new_key, on_reply=lambda: answered.append("create")
    )
    settings.wait_for_calls(1)
    later = client.send("getAllProgrammableKeys", on_reply=lambda: answered.append("read"))
    client.bus_round_trip()
    settings.release()
    assert waiting.wait().values == (1,)
    assert later.wait().values == ([new_key._replace(idKey=1)],)
    assert answered == ["create", "read"]


def test_a_press_during_a_read_is_reported_after_it(client, events, settings, new_key):
    settings.hang()
    settings.calls.clear()
    waiting = client.send("createProgrammableKey", KEY, new_key)
    settings.wait_for_calls(1)
    client.send_event("AOM_KEY_PRESS_EVENT", aom_key_num=1, aom_type=1, addr=1)
    client.bus_round_trip()
    settings.release()
    waiting.wait()
    assert [event.name for event in events.take()] == ["KEY_CREATE_NTF", "AOMKEY_PRESS_NTF"]


def test_a_hundred_large_calls_during_a_read_get_their_replies(service, client, settings, new_key):
    large = "x" * 2**20
    settings.hang()
    settings.calls.clear()
    waiting = client.send("createProgrammableKey", KEY, new_key)
    settings.wait_for_calls(1)
    calls = [client.send("getProgrammableKeysByContainer", "s", large) for _ in range(100)]
    client.connection.flush()
    client.bus_round_trip()
    settings.release()
    assert waiting.wait().values == (1,)
    wait_until(lambda: all(call.arrived for call in calls), "every call has a reply")
    assert {str(call.wait()) for call in calls} == {
        str(client.call("getProgrammableKeysByContainer", "s", "nowhere"))
    }
    assert service.running


# With the real peer


def test_the_limit_of_the_real_peer_applies(settings_manager, launch, client, events, settings_dir):
    service = launch()
    service.wait_until_ready(client)
    write_settings(settings_dir, {"ProgKeysMax": "2"})
    key = SET_KEY._replace(idAction=-1)
    assert [client.create_programmable_key(key) for _ in range(3)] == [1, 2, -1]
    assert events.take()[-1] == DATABASE_FULL
    write_settings(settings_dir, {"ProgKeysMax": "3"})
    assert client.create_programmable_key(key) == 3
    (settings_dir / "ProgKeysMax").unlink()
    assert client.create_programmable_key(key) == 4
    assert service.log.texts("error") == [SETTING_NOT_READ]
    service.stop()
