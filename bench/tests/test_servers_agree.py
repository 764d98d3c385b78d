"""What is measured is the same work: all servers answer, announce, ask and store alike."""

import xml.etree.ElementTree as ElementTree
from pathlib import Path
from typing import Callable

import pytest

import chapters
import chapters_of_trouble
from chapters import Chapter
from conversation import Step
from sandbox.names import SERVICE, bus_name
from sandbox.records import Key
from servers import BENCH, OTHERS, REFERENCE
from transcripts import Transcript, differences

# A start drops what is no longer provisioned, so the one that starts anew comes before such rows.
CHAPTERS: tuple[Chapter, ...] = (
    chapters.starting_again,
    chapters.reading_and_writing_actions,
    chapters.creating_and_reading_keys,
    chapters.modifying_keys,
    chapters.moving_keys,
    chapters.deleting_keys,
    chapters.reaching_the_limit,
    chapters.deleting_an_action_with_keys,
    chapters.labels_reach_modules,
    chapters.icons_and_labels_on_request,
    chapters.rows_of_another_process,
    chapters_of_trouble.presses,
    chapters_of_trouble.presses_with_numbers_of_other_types,
    chapters_of_trouble.presses_without_a_place,
    chapters_of_trouble.events_of_other_shapes,
    chapters_of_trouble.keys_that_are_not_stored,
    chapters_of_trouble.moves_that_are_not_stored,
    chapters_of_trouble.actions_that_are_not_stored,
    chapters.without_settings,
)

Converse = Callable[..., Transcript]

ANNOUNCED = {
    "KEY_CREATE_NTF",
    "KEY_MODIFY_NTF",
    "KEY_DELETE_NTF",
    "KO_PROGKEYS_DB_FULL",
    "ACTION_CREATE_NTF",
    "ACTION_MODIFY_NTF",
    "ACTION_DELETE_NTF",
    "AOM_SET_LABEL_PROPERTY_REC",
    "AOM_SET_ICON_PROPERTY_REC",
    "AOMKEY_PRESS_NTF",
}

ROWS, NO_ROWS, AN_ID = "rows", "no rows", "an id"
LISTS = {ROWS, NO_ROWS}
OUTCOMES = {
    "getAllProgrammableKeys": LISTS,
    "getProgrammableKeysByContainer": LISTS,
    "getProgrammableKey": LISTS,
    "createProgrammableKey": {AN_ID, -1, -2},
    "modifyProgrammableKey": {0, -2, -3},
    "changeProgrammableKeysPosition": {True, False},
    "deleteProgrammableKey": {0, -2, -3},
    "getAllActions": {ROWS},
    "getAction": LISTS,
    "addAction": {AN_ID, -3},
    "modifyAction": {0, -2, -3},
    "deleteAction": {0, -2, -3},
    "setIconStateForKey": {0, -2},
    "setLabelStateForKey": {0, -2},
}


@pytest.fixture(scope="session")
def reference(converse: Converse) -> Converse:
    """The service's side of a conversation, which is had once."""
    had: dict[tuple[Chapter, ...], Transcript] = {}

    def transcript(*told: Chapter) -> Transcript:
        if told not in had:
            had[told] = converse(REFERENCE, *told, is_peer_real=len(told) > 1)
        return had[told]

    return transcript


def outcome(step: Step) -> object:
    """The value that a call returned, or what kind of value it was."""
    assert step.reply is not None
    (value,) = step.reply.values
    if isinstance(value, list):
        return ROWS if value else NO_ROWS
    return AN_ID if not isinstance(value, bool) and value > 0 else value


@pytest.mark.parametrize("chapter", CHAPTERS, ids=lambda chapter: chapter.__name__)
@pytest.mark.parametrize("server", OTHERS)
def test_another_server_does_what_the_service_does(
    converse: Converse, reference: Converse, server: str, chapter: Chapter
) -> None:
    """Replies, events, rows and calls of the settings peer, step by step."""
    expected = reference(chapter)
    assert all(step.settings_calls is not None for step in expected.steps)
    told = differences(expected, converse(server, chapter))
    assert not told, "\n".join(told)


@pytest.mark.parametrize("server", OTHERS)
def test_so_it_does_all_day_beside_the_real_settings_peer(
    converse: Converse, reference: Converse, server: str
) -> None:
    found = converse(server, *CHAPTERS, is_peer_real=True)
    told = differences(reference(*CHAPTERS), found)
    assert not told, "\n".join(told)


def test_every_method_is_called_with_every_outcome(reference: Converse) -> None:
    found: dict[str, set[object]] = {}
    for chapter in CHAPTERS:
        for step in reference(chapter).steps:
            if step.reply is not None:
                found.setdefault(step.name, set()).add(outcome(step))
    assert found == OUTCOMES


def test_the_methods_are_those_of_the_interface_but_for_the_capabilities() -> None:
    text = Path(BENCH.parent / "src" / "dbus" / f"{bus_name(SERVICE)}.xml").read_text("utf-8")
    methods = {method.get("name") for method in ElementTree.fromstring(text).iter("method")}
    assert methods - {"getCapabilities", "getCapability"} == OUTCOMES.keys()


def test_every_event_is_heard_and_the_settings_are_read(reference: Converse) -> None:
    steps = [step for chapter in CHAPTERS for step in reference(chapter).steps]
    assert {event.name for step in steps for event in step.events} == ANNOUNCED
    presses = [step for step in steps if step.name == "press"]
    told = [[event.values["exists"] for event in step.events] for step in presses]
    assert all(answer in told for answer in ([True], [False], []))
    asked = {step.name for step in steps if step.settings_calls}
    assert asked == {"createProgrammableKey"}


def test_a_difference_is_seen(reference: Converse) -> None:
    """In each part of a transcript, so that agreement means something."""
    transcript = reference(chapters.reaching_the_limit)
    (step, *rest) = transcript.steps
    for changed in (
        step._replace(heard=step.heard * 2),
        step._replace(settings_calls=["one more"]),
        step._replace(keys=[*step.keys, Key()]),
        step._replace(actions=[]),
    ):
        assert len(differences(transcript, transcript._replace(steps=[changed, *rest]))) == 1
    assert len(differences(transcript, transcript._replace(steps=transcript.steps[1:]))) > 1
    file = transcript.file
    for other in (file._replace(tables={}), file._replace(last_ids={}), file._replace(keys=[])):
        assert len(differences(transcript, transcript._replace(file=other))) == 1
