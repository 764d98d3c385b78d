"""What is done to every server: keys, actions, and settings that come and go.

Each chapter can follow on another: it counts on nothing but room for keys.
"""

from typing import Callable

from conversation import Conversation
from samples import CALL, MODULE_KEY, SET_KEY
from sandbox.records import ACTION, KEY, Action, Key
from settings_peers import LIMIT_SETTING

ROOM = "1000"
UNKNOWN = 987654
RESERVED = -1
ODD_ACTION = Action(77, "dm-a", -(2**31), "", "Größe ☎ 𝄞", "'%1'\n\t", "?", "a" * 300)
ODD_KEY = Key(77, "", RESERVED, "Zürich ☎ 𝄞", 2**31 - 1, "", 2, -(2**31), -1)

Chapter = Callable[[Conversation], None]


def reading_and_writing_actions(phone: Conversation) -> None:
    action = phone.add(CALL)
    odd = phone.add(ODD_ACTION)
    for id_action in (action.idAction, odd.idAction, RESERVED, UNKNOWN):
        phone.call("getAction", "x", id_action)
    phone.call("getAllActions")
    phone.call("modifyAction", ACTION, action._replace(label="Front desk", arguments="502"))
    phone.call("modifyAction", ACTION, odd)
    phone.call("modifyAction", ACTION, Action(RESERVED, type=-1, label="none"))
    phone.call("modifyAction", ACTION, Action(RESERVED, type=-1))
    phone.call("modifyAction", ACTION, action._replace(idAction=UNKNOWN))
    for id_action in (RESERVED, UNKNOWN, odd.idAction, action.idAction, action.idAction):
        phone.call("deleteAction", "x", id_action)
    phone.add(CALL)


def creating_and_reading_keys(phone: Conversation) -> None:
    action = phone.add(CALL)
    phone.call("createProgrammableKey", KEY, SET_KEY._replace(idAction=UNKNOWN))
    key = phone.create(SET_KEY._replace(idKey=55, idAction=action.idAction, container="here"))
    phone.create(MODULE_KEY._replace(idAction=action.idAction))
    phone.create(MODULE_KEY._replace(idAction=action.idAction, type=2))
    phone.create(ODD_KEY)
    for id_key in (key.idKey, UNKNOWN):
        phone.call("getProgrammableKey", "x", id_key)
    for container in ("here", ODD_KEY.container, "nowhere", ""):
        phone.call("getProgrammableKeysByContainer", "s", container)
    phone.call("getAllProgrammableKeys")


def modifying_keys(phone: Conversation) -> None:
    action = phone.add(CALL)
    key = phone.create(SET_KEY._replace(idAction=action.idAction))
    module_key = phone.create(MODULE_KEY._replace(idAction=action.idAction))
    for changed in (
        key._replace(position=9, container="elsewhere", idAction=RESERVED),
        key._replace(icon="changed"),
        key._replace(idAction=UNKNOWN),
        key._replace(idKey=UNKNOWN),
        module_key._replace(position=11),
        module_key._replace(icon="changed"),
        module_key._replace(icon="changed"),
        module_key._replace(idKey=UNKNOWN, icon="other"),
        module_key._replace(type=0, icon="again"),
    ):
        phone.call("modifyProgrammableKey", KEY, changed)


def moving_keys(phone: Conversation) -> None:
    first, second, third = (phone.create(SET_KEY) for _ in range(3))
    for positions in (
        {},
        {first.idKey: 30},
        {third.idKey: 31, first.idKey: 32, second.idKey: 33},
        {UNKNOWN: 1, second.idKey: -5},
        {UNKNOWN: 1},
    ):
        phone.call("changeProgrammableKeysPosition", "a{ii}", positions)


def deleting_keys(phone: Conversation) -> None:
    key, provisioned = phone.create(MODULE_KEY), phone.create(SET_KEY._replace(dmId="dm-k"))
    for id_key in (provisioned.idKey, UNKNOWN, RESERVED, key.idKey, key.idKey):
        phone.call("deleteProgrammableKey", "x", id_key)
    phone.create(SET_KEY)


def reaching_the_limit(phone: Conversation) -> None:
    keys = phone.call("getAllProgrammableKeys")
    phone.settings.write(LIMIT_SETTING, str(sum(key.type == 0 for key in keys) + 2))
    last = [phone.create(SET_KEY) for _ in range(3)][1]
    phone.create(MODULE_KEY)
    phone.create(SET_KEY._replace(type=2))
    phone.call("deleteProgrammableKey", "x", last.idKey)
    phone.create(SET_KEY)
    phone.create(SET_KEY)
    for limit in ("0", "-1", "", "lots"):
        phone.settings.write(LIMIT_SETTING, limit)
        phone.create(SET_KEY)
        phone.create(MODULE_KEY)
    phone.settings.remove(LIMIT_SETTING)
    phone.create(SET_KEY)
    phone.create(MODULE_KEY)
    phone.settings.write(LIMIT_SETTING, ROOM)
    phone.create(SET_KEY)


def deleting_an_action_with_keys(phone: Conversation) -> None:
    action, other = phone.add(CALL), phone.add(CALL)
    key = MODULE_KEY._replace(idAction=action.idAction, aom_addr=40)
    bound = phone.create(SET_KEY._replace(idAction=action.idAction))
    phone.create(key)
    phone.create(SET_KEY._replace(idAction=other.idAction))
    provisioned = phone.create(key._replace(dmId="dm-b", aom_addr=41))
    phone.create(key._replace(type=2))
    phone.call("deleteAction", "x", action.idAction)
    phone.call("getProgrammableKey", "x", bound.idKey)
    # The provisioned key is still there, without its action.
    phone.call("getProgrammableKey", "x", provisioned.idKey)
    phone.call("setLabelStateForKey", "xi", provisioned.idKey, 1)
    phone.call("setIconStateForKey", "xii", provisioned.idKey, 1, 2)
    phone.press(aom_key_num=key.position, aom_type=1, addr=41)
    phone.press(aom_key_num=key.position, aom_type=1, addr=40)
    phone.call("modifyProgrammableKey", KEY, provisioned)
    phone.read_all()


def labels_reach_modules(phone: Conversation) -> None:
    action, other = phone.add(CALL), phone.add(CALL)
    key = MODULE_KEY._replace(idAction=action.idAction)
    phone.create(key._replace(position=1, aom_type=3, aom_addr=50))
    phone.create(SET_KEY._replace(idAction=action.idAction))
    phone.create(key._replace(position=2, aom_addr=51, dmId="dm-l"))
    phone.create(key._replace(idAction=other.idAction))
    phone.create(key._replace(type=2))
    phone.create(key._replace(position=0, aom_addr=50))
    for changed in (
        action._replace(label="Lobby"),
        action._replace(label="Lobby", shortLabel="Lob"),
        action._replace(label="Lobby", shortLabel="Lob"),
        action._replace(shortLabel=""),
        action._replace(shortLabel="ß☎𝄞"),
        other._replace(shortLabel="Oth"),
    ):
        phone.call("modifyAction", ACTION, changed)


def icons_and_labels_on_request(phone: Conversation) -> None:
    action = phone.add(CALL)
    key = MODULE_KEY._replace(idAction=action.idAction, aom_addr=60)
    for kind in (key, key._replace(aom_type=2), key._replace(type=0), SET_KEY):
        stored = phone.create(kind)
        phone.call("setIconStateForKey", "xii", stored.idKey, 17, -4)
        phone.call("setLabelStateForKey", "xi", stored.idKey, 3)
    phone.call("setIconStateForKey", "xii", UNKNOWN, 0, 0)
    phone.call("setLabelStateForKey", "xi", UNKNOWN, 0)


def rows_of_another_process(phone: Conversation) -> None:
    action = CALL._replace(idAction=5000, dmId="dm-x")
    key = MODULE_KEY._replace(idKey=6000, idAction=5000, aom_addr=70)
    phone.insert(action, action._replace(idAction=5001, dmId=""), key)
    phone.insert(key._replace(idKey=6001, dmId="dm-y", idAction=5001))
    phone.read_all()
    phone.press(aom_key_num=key.position, aom_type=1, addr=70)
    phone.add(CALL)
    phone.create(SET_KEY)
    phone.call("deleteAction", "x", 5000)
    phone.call("deleteAction", "x", 5001)
    phone.call("deleteProgrammableKey", "x", 6001)
    phone.call("deleteProgrammableKey", "x", 6000)


def starting_again(phone: Conversation) -> None:
    action = phone.add(CALL)
    key = phone.create(MODULE_KEY._replace(idAction=action.idAction, aom_addr=80))
    phone.call("modifyAction", ACTION, Action(RESERVED, type=-1, label="kept"))
    phone.call("deleteProgrammableKey", "x", phone.create(SET_KEY).idKey)
    phone.restart()
    phone.read_all()
    phone.press(aom_key_num=key.position, aom_type=1, addr=80)
    phone.create(SET_KEY)
    phone.add(CALL)


def without_settings(phone: Conversation) -> None:
    """The last chapter, where there is one: the settings do not come back."""
    phone.create(SET_KEY)
    phone.settings.leave()
    phone.create(SET_KEY)
    phone.create(MODULE_KEY)
