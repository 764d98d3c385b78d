"""The framework and a module whose hooks fail, throw or end the process."""

import fcntl
import os

import pytest
from dbus.lowlevel import HANDLER_RESULT_NOT_YET_HANDLED

from sandbox.client import BusError
from sandbox.events import EventRecorder
from sandbox.loop import wait_until
from sandbox.names import INTERFACE, LIFECYCLE, object_path
from sandbox.processes import Module, clean_environment

SUBJECT = "Subject"
INVOCATION_FAILED = "com.velmora.Tessaro.Error.InvocationFailed"


@pytest.fixture
def launch_subject(bin_dir, bus, data_root, tmp_path):
    """Starts the test module with arguments; see tests/system/subject."""
    launched = []

    def launch(*arguments):
        environment = {
            **clean_environment(),
            "DBUS_SYSTEM_BUS_ADDRESS": bus.address,
            "ZEL_DATA_ROOT": f"{data_root}/",
            "ZEL_LOG_LEVEL": "7",
        }
        command = [str(bin_dir.parent / "tests" / "subject"), *arguments]
        log = tmp_path / f"subject-{len(launched)}.log"
        launched.append(Module(SUBJECT, command, environment, log))
        return launched[-1]

    yield launch
    try:
        for process in launched:
            if process.running:
                process.stop()
    finally:
        for process in launched:
            process.kill()


@pytest.fixture
def start_subject(launch_subject, client):
    def start(*arguments):
        process = launch_subject(*arguments)
        process.wait_until_ready(client)
        return process

    return start


@pytest.fixture
def data(data_root):
    """A file of the module's data, in its directory."""
    file = data_root / SUBJECT / "data"
    file.parent.mkdir(parents=True)
    file.write_text("the keys")
    return file


def hooks(process):
    return [text.removeprefix("hook ") for text in process.log.texts() if text.startswith("hook ")]


def names_in(directory):
    return sorted(path.name for path in directory.iterdir())


def echo(client, text="are you there?"):
    return client.call("echo", "s", text, module=SUBJECT).values[0]


def answers(client, method, *arguments, interface=INTERFACE, wants_reply=True):
    """All replies to a call. A library that waits for the reply would drop a second one."""
    signature = "s" * len(arguments)
    message = client.message(method, signature, *arguments, module=SUBJECT, interface=interface)
    message.set_no_reply(not wants_reply)
    received = []

    def keep(_connection, answer):
        received.append(answer)
        return HANDLER_RESULT_NOT_YET_HANDLED

    client.connection.add_message_filter(keep)
    serial = client.connection.send_message(message)
    echo(client)  # the bus keeps the order of the replies
    return [
        (answer.get_error_name(), "".join(map(str, answer.get_args_list())))
        for answer in received
        if answer.get_reply_serial() == serial
    ]


# The start


@pytest.mark.parametrize(
    "arguments, ran",
    [
        pytest.param("check=no deploy=no", "check deploy", id="deploy fails"),
        pytest.param("init=no", "check init", id="init fails"),
        pytest.param("check=no init=no", "check deploy init", id="init fails after deploy"),
        pytest.param("start=no", "check init start", id="start fails"),
    ],
)
def test_a_hook_that_fails_is_logged_and_ends_the_process_with_status_1(
    launch_subject, arguments, ran
):
    process = launch_subject(*arguments.split())
    assert process.wait_for_exit() == 1
    assert hooks(process) == ran.split()
    assert process.log.texts("error") == [f"The module's hook {ran.split()[-1]} failed"]


@pytest.mark.parametrize(
    "arguments, ran",
    [
        pytest.param("check=throw", "check", id="check throws"),
        pytest.param("check=no deploy=throw", "check deploy", id="deploy throws"),
        pytest.param("init=throw", "check init", id="init throws"),
        pytest.param("start=throw", "check init start", id="start throws"),
    ],
)
def test_a_hook_that_throws_ends_the_process_with_status_1(launch_subject, arguments, ran):
    process = launch_subject(*arguments.split())
    assert process.wait_for_exit() == 1
    assert hooks(process) == ran.split()
    message = f"Exception of type 4 left module Subject: {ran.split()[-1]} threw"
    assert process.log.texts("error") == [message]


@pytest.mark.parametrize(
    "arguments, ran",
    [
        pytest.param("check=term", "check", id="during check"),
        pytest.param("init=term", "check init", id="during init"),
        pytest.param("start=term", "check init start", id="during start"),
    ],
)
def test_a_signal_during_a_hook_ends_the_start_with_status_0(launch_subject, arguments, ran):
    process = launch_subject(*arguments.split())
    assert process.wait_for_exit() == 0
    assert hooks(process) == ran.split()
    assert process.log.texts("error", "warning", "info") == []


def test_a_module_without_an_adaptor_has_the_lifecycle_interface(start_subject, client):
    start_subject("no-adaptor")
    with pytest.raises(BusError):
        echo(client)
    assert client.lifecycle("restoreDefault", SUBJECT).values == (True,)


# Lifecycle calls

BOOL_METHODS = [
    "restoreDefault",
    "restoreFactory",
    "preSaveForSaveRestore",
    "postRestoreForSaveRestore",
]
VOID_METHODS = {"presentationLoaded": "presentation_loaded", "presentationStop": "presentation_stop"}


@pytest.mark.parametrize("values, result", [([], True), (["=no"], False)], ids=["true", "false"])
def test_a_lifecycle_method_runs_its_hook_once_and_returns_its_result(
    start_subject, client, values, result
):
    process = start_subject(*(method + value for method in BOOL_METHODS for value in values))
    for method in BOOL_METHODS:
        reply = client.lifecycle(method, SUBJECT)
        assert (reply.signature, reply.values) == ("b", (result,))
    assert hooks(process) == ["check", "init", "start", *BOOL_METHODS]


def test_a_presentation_method_runs_its_hook_and_returns_nothing(start_subject, client):
    process = start_subject()
    for method in VOID_METHODS:
        assert client.lifecycle(method, SUBJECT).signature == ""
    assert hooks(process)[3:] == list(VOID_METHODS.values())


def test_stop_returns_the_result_of_a_failed_hook_and_the_process_ends_with_status_0(
    start_subject, client
):
    process = start_subject("stop=no")
    assert client.lifecycle("stop", SUBJECT).values == (False,)
    assert process.wait_for_exit() == 0


@pytest.mark.parametrize("interface", [LIFECYCLE, INTERFACE], ids=["lifecycle", "operations"])
def test_the_start_hooks_cannot_be_called_over_the_bus(start_subject, client, interface):
    process = start_subject()
    for hook in ("check", "deploy", "init", "start"):
        with pytest.raises(BusError):
            client.call(hook, interface=interface, module=SUBJECT)
    assert hooks(process) == ["check", "init", "start"]


# Exceptions


@pytest.mark.parametrize(
    "message",
    ["why", "", "%1 %2 %s", "Grüße 電話"],
    ids=["a message", "no message", "placeholders", "a message with non-ASCII characters"],
)
def test_an_exception_in_a_call_sends_one_error_reply_and_logs_one_line(
    start_subject, client, message
):
    process = start_subject()
    assert answers(client, "fail", message) == [(INVOCATION_FAILED, message)]
    assert answers(client, "failWithoutModule", message) == [(INVOCATION_FAILED, message)]
    assert process.log.texts("error") == [
        f"Exception of type 4 left module Subject: {message}",
        f"Exception of type 9 left module (none): {message}",
    ]


def test_a_failed_call_that_expects_no_reply_gets_no_reply(start_subject, client):
    process = start_subject()
    assert answers(client, "fail", "why", wants_reply=False) == []
    assert len(process.log.texts("error")) == 1


@pytest.mark.parametrize("method", [*BOOL_METHODS, "stop", *VOID_METHODS])
def test_an_exception_in_a_lifecycle_hook_sends_one_error_reply(
    start_subject, client, method
):
    hook = VOID_METHODS.get(method, method)
    start_subject(f"{hook}=throw")
    expected = [(INVOCATION_FAILED, f"{hook} threw")]
    assert answers(client, method, interface=LIFECYCLE) == expected


def test_an_exception_in_an_event_slot_is_logged_and_the_next_event_is_handled(
    start_subject, client
):
    process = start_subject()
    events = EventRecorder(client, object_path(SUBJECT))
    client.send_event("SUBJECT_EVENT", throw="why")
    client.send_event("SUBJECT_EVENT")
    events.wait_for("SUBJECT_ANSWER")
    assert process.log.texts("error") == ["Exception of type 7 left module Subject: why"]


def test_an_exception_outside_of_a_call_is_logged_and_the_event_loop_continues(
    start_subject, client
):
    process = start_subject()
    client.call("failLater", "s", "why", module=SUBJECT)
    wait_until(lambda: process.log.texts("error"), "the exception is logged")
    assert process.log.texts("error") == ["Exception of type 5 left module Subject: why"]
    assert echo(client) == "are you there?"


# The log


def test_messages_of_qt_are_log_lines(start_subject, client):
    process = start_subject()
    client.call("logThroughQt", "s", "100 %1", module=SUBJECT)
    lines = [(line.level, line.text) for line in process.log.lines() if "%1" in line.text]
    assert lines == [(level, "100 %1") for level in ("debug", "info", "warning", "error")]


# Data that fails its check


@pytest.mark.parametrize("link", [SUBJECT, f"{SUBJECT}/data"], ids=["directory", "file"])
def test_the_backup_contains_the_targets_of_symbolic_links(start_subject, data, data_root, link):
    target = data_root.parent / "target"
    (data_root / link).rename(target)
    (data_root / link).symlink_to(target)
    start_subject("check=no")
    data.write_text("overwritten")
    assert (data_root / f"{SUBJECT}.before-deploy" / "data").read_text() == "the keys"


@pytest.mark.parametrize(
    "argument, status",
    [
        pytest.param("deploy=no", 1, id="deploy fails"),
        pytest.param("deploy=term", 0, id="a signal comes during deploy"),
    ],
)
def test_data_is_backed_up_and_kept_if_the_start_ends_in_deploy(
    launch_subject, data, data_root, argument, status
):
    process = launch_subject("check=no", argument)
    assert process.wait_for_exit() == status
    assert hooks(process) == ["check", "deploy"]
    assert names_in(data_root) == [SUBJECT, f"{SUBJECT}.before-deploy"]
    assert data.read_text() == "the keys"


def test_data_that_cannot_be_backed_up_is_not_changed(launch_subject, data, data_root):
    (data.parent / "link").symlink_to(data_root / "nowhere")
    process = launch_subject("check=no", "deploy=wipe")
    assert process.wait_for_exit() == 1
    assert "hook deploy" not in process.log.raw()
    assert "could not be copied" in process.log.texts("error")[-1]
    assert (names_in(data_root), data.read_text()) == ([SUBJECT], "the keys")


@pytest.mark.parametrize(
    "name, place",
    [
        pytest.param("data", (), id="the whole file"),
        pytest.param("data", (1, 3 << 30), id="one byte at an offset of more than 2 GiB"),
        pytest.param(".hidden", (), id="a hidden file"),
        pytest.param("sub/file", (), id="a file in a subdirectory"),
    ],
)
def test_data_that_another_process_has_locked_is_not_changed(
    launch_subject, data, data_root, name, place
):
    path = data.parent / name
    path.parent.mkdir(exist_ok=True)
    with open(path, "a", encoding="utf-8") as file:
        fcntl.lockf(file, fcntl.LOCK_EX, *place)
        process = launch_subject("check=no", "deploy=wipe")
        assert process.wait_for_exit() == 1
    assert hooks(process) == ["check"]
    (line,) = process.log.texts("error", "warning")
    assert f"failed its check while process {os.getpid()} had it locked" in line
    assert (names_in(data_root), data.read_text()) == ([SUBJECT], "the keys")


def test_deploy_runs_despite_a_shared_lock(start_subject, data):
    with open(data, encoding="utf-8") as file:
        fcntl.lockf(file, fcntl.LOCK_SH)
        process = start_subject("check=no")
    assert hooks(process) == ["check", "deploy", "check", "init", "start"]


def test_a_directory_without_data_is_not_checked_after_deploy_and_not_set_aside(
    start_subject, data, data_root
):
    data.write_text("")
    process = start_subject("check=never")
    assert hooks(process) == ["check", "deploy", "init", "start"]
    assert names_in(data_root) == [SUBJECT]


def test_a_directory_that_deploy_removed_is_not_set_aside(launch_subject, data, data_root):
    process = launch_subject("check=never", "deploy=wipe")
    assert process.wait_for_exit() == 1
    assert names_in(data_root) == [f"{SUBJECT}.before-deploy"]
    assert "directory cannot be written" in process.log.texts("error")[-1]
