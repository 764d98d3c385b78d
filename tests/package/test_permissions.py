"""Permissions on the system bus, with the installed policy and real user ids."""

import re
from typing import Iterable, Iterator, Optional
from xml.etree import ElementTree

import pytest

from bus_users import ACCESS_DENIED, BusUser, mark
from conftest import People
from installation import has_owner, is_running, process_owner, stop
from sandbox.loop import wait_until
from sandbox.names import INTERFACE, LIFECYCLE, SETTINGS_MANAGER, bus_name, object_path
from target_root import TargetRoot

READ_METHODS = {
    "getAllProgrammableKeys",
    "getProgrammableKeysByContainer",
    "getProgrammableKey",
    "getAllActions",
    "getAction",
    "getCapabilities",
    "getCapability",
}
UNKNOWN_METHOD = "org.freedesktop.DBus.Error.UnknownMethod"
LOG_CONTROL = "/org/freedesktop/LogControl1"


def methods(root: TargetRoot, interface: str) -> list[str]:
    """The names of the methods of an installed interface, without duplicates."""
    file = root.path / f"usr/share/dbus-1/interfaces/{interface}.xml"
    names = [element.attrib["name"] for element in ElementTree.parse(file).iter("method")]
    assert names, f"{file} has no method"
    return sorted(set(names))


@pytest.fixture(autouse=True)
def running_service(people: People) -> None:
    assert not people.root.call(f"{INTERFACE}.getAllActions").error


def denied(user: BusUser, interface: str, members: Iterable[str]) -> set[str]:
    """The members that the user cannot call. The calls have no arguments and thus no effect."""
    found = set()
    for member in members:
        answer = user.call(f"{interface}.{member}")
        assert answer.error in ("", ACCESS_DENIED, UNKNOWN_METHOD), f"{member}: {answer.error}"
        if answer.is_denied:
            found.add(member)
    return found


def test_the_first_call_starts_the_service_as_its_own_user(
    root: TargetRoot, people: People
) -> None:
    stop(people.root)
    assert not is_running(people.root)
    assert not people.visitor.call(f"{INTERFACE}.getAllActions").error
    assert process_owner(root, people.root) == "zelprogkeys"


def test_the_bus_reads_the_policy_without_errors_or_warnings(root: TargetRoot) -> None:
    # Earlier tests may have made calls that the policy rejects.
    lines = [
        line
        for line in root.bus_log.splitlines()
        if line.startswith("dbus-daemon[") and "] Rejected send message, " not in line
    ]
    own_lines = [line for line in lines if re.search("velmora|zelprogkeys|progkeys-admin", line)]
    assert [
        line for line in own_lines if re.search("unknown|unable|warning|error|fail", line, re.I)
    ] == []


@pytest.mark.parametrize(
    ("who", "allowed"), [("visitor", READ_METHODS), ("secretary", None), ("root", None)]
)
def test_all_users_can_read_and_the_group_and_root_can_write(
    root: TargetRoot, people: People, who: str, allowed: Optional[set[str]]
) -> None:
    every = set(methods(root, INTERFACE))
    expected = set() if allowed is None else every - allowed
    assert denied(getattr(people, who), INTERFACE, every) == expected


@pytest.mark.parametrize(
    ("member", "arguments"),
    [
        ("org.freedesktop.DBus.Introspectable.Introspect", ()),
        ("org.freedesktop.DBus.Peer.Ping", ()),
        ("org.freedesktop.DBus.Properties.GetAll", ("string:org.freedesktop.LogControl1",)),
    ],
)
def test_all_users_can_introspect(people: People, member: str, arguments: tuple[str, ...]) -> None:
    assert people.visitor.call(member, *arguments, path=LOG_CONTROL).error == ""


def test_calls_without_an_interface_are_denied_to_users(people: People) -> None:
    assert people.visitor.call_without_interface("getAllActions").endswith("AccessDenied")
    assert people.visitor.call_without_interface("deleteAction").endswith("AccessDenied")
    assert people.root.call_without_interface("getAllActions") == "success"


@pytest.mark.parametrize("who", ["visitor", "secretary", "service"])
def test_only_root_can_call_lifecycle_methods(
    root: TargetRoot, people: People, who: str
) -> None:
    every = methods(root, LIFECYCLE)
    assert denied(getattr(people, who), LIFECYCLE, every) == set(every)
    assert not people.root.call(f"{LIFECYCLE}.presentationLoaded").error


@pytest.mark.parametrize("who", ["visitor", "secretary", "root"])
def test_only_the_user_of_the_service_can_own_its_name(people: People, who: str) -> None:
    stop(people.root)
    assert getattr(people, who).request_name().is_denied
    assert "1" in people.service.request_name().reply.split()


def test_the_user_of_the_service_can_own_no_other_name(people: People) -> None:
    assert people.service.request_name(bus_name("AnotherModule")).is_denied


def test_root_can_set_the_log_level_and_all_users_can_read_it(people: People) -> None:
    level = ("string:org.freedesktop.LogControl1", "string:LogLevel")
    read, write = "org.freedesktop.DBus.Properties.Get", "org.freedesktop.DBus.Properties.Set"
    for user in (people.visitor, people.secretary):
        assert user.call(write, *level, "variant:string:debug", path=LOG_CONTROL).is_denied
    assert not people.root.call(write, *level, "variant:string:warning", path=LOG_CONTROL).error
    assert "warning" in people.visitor.call(read, *level, path=LOG_CONTROL).reply


@pytest.fixture
def settings_manager(root: TargetRoot, people: People) -> Iterator[None]:
    """The SettingsManager with the example settings, run by root."""
    settings = "/usr/share/doc/zelprogrammablekeys-devtools/examples/settings"
    process = root.start("settingsmanager", settings)
    try:
        name = bus_name(SETTINGS_MANAGER)
        wait_until(lambda: has_owner(people.root, name), "the SettingsManager owns its name")
        yield
    finally:
        process.terminate()
        process.wait(timeout=20)


def delete_data(root: TargetRoot, people: People) -> None:
    stop(people.root)
    root.demand("sh", "-c", "rm -f /data/ZELApplication/ZelProgrammableKeys/*")


@pytest.mark.parametrize(
    ("who", "receives"),
    [("visitor", False), ("service", False), ("secretary", True), ("root", True)],
)
@pytest.mark.usefixtures("settings_manager")
def test_only_the_group_and_root_receive_events(
    root: TargetRoot, people: People, who: str, receives: bool
) -> None:
    delete_data(root, people)
    listener = getattr(people, who).listen()
    try:
        # The start reads the settings and sends events for the provisioned keys.
        assert people.root.progkeysctl("key", "list", "--json=short").stdout.count("dmId") > 1
        added = people.secretary.progkeysctl("action", "add", "type=1", "label=Private")
        assert added.returncode == 0, added
        mark(people.root)
        received = set(listener.events_until_marker())
    finally:
        listener.close()
    assert (received >= {"KEY_CREATE_NTF", "ACTION_CREATE_NTF"}) if receives else not received


@pytest.mark.parametrize(
    ("who", "member", "is_denied"),
    [
        ("visitor", "getSettingValue", True),
        ("service", "getSettingValue", False),
        ("service", "setSettingValue", True),
    ],
)
def test_the_service_can_read_settings_and_only_root_can_write_them(
    people: People, settings_manager: None, who: str, member: str, is_denied: bool
) -> None:
    answer = getattr(people, who).call(
        f"{INTERFACE}.{member}",
        "string:ProgKeysMax",
        *(["string:1"] if member.startswith("set") else []),
        destination=bus_name(SETTINGS_MANAGER),
        path=object_path(SETTINGS_MANAGER),
    )
    assert answer.error == (ACCESS_DENIED if is_denied else "")


@pytest.mark.parametrize(
    ("who", "reported"), [("visitor", False), ("secretary", True), ("root", True)]
)
def test_only_presses_from_the_group_and_root_are_reported(
    people: People, who: str, reported: bool
) -> None:
    listener = people.root.listen()
    try:
        pressed = getattr(people, who).progkeysctl("press", "3/12", "--timeout", "2")
        # When this call returns, the service has handled the press.
        assert not people.root.call(f"{INTERFACE}.getAllActions").error
        mark(people.root)
        assert ("AOMKEY_PRESS_NTF" in listener.events_until_marker()) == reported
        assert (pressed.returncode == 0) == reported, pressed
    finally:
        listener.close()
