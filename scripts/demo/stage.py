"""What a scenario stands on: the phone, the telling, and the rows as they ought to be."""

from sandbox.records import Action, Key

from . import expected
from .merge import Rows
from .narrate import Narrator, Suitable
from .phone import Phone
from .words import ON_MODULE, ON_SET, RESERVED, new_action, new_key

REFUSED, AT_LIMIT, DONE = -2, -1, 0
RESERVED_ACTION = Action(idAction=RESERVED, type=-1)

LENA = Action(type=1, action="call", arguments="501", label="Lena Brandt, Sales", shortLabel="Lena")
TOKYO = Action(type=1, action="call", arguments="+81 3 5550 0142", label="東京 office", shortLabel="東京")

MODULE_TYPE, MODULE_ADDRESS = 1, 3
MODULE_KEY, UNPROGRAMMED_KEY = 12, 24
BORROWED_KEY = 1


def on_set(id_action: int, position: int, icon: str) -> Key:
    """A key of the set itself, not stored yet."""
    return Key(idAction=id_action, container="home", position=position, icon=icon, type=ON_SET, aom_type=0, aom_addr=0)


def on_module(id_action: int, position: int, icon: str) -> Key:
    """A key of the add-on module that is the user's own, not stored yet."""
    place = {"type": ON_MODULE, "aom_type": MODULE_TYPE, "aom_addr": MODULE_ADDRESS}
    return Key(idAction=id_action, container=f"module{MODULE_ADDRESS}", position=position, icon=icon, **place)


class Stage:
    """Does what changes rows and keeps account of it; `actions` and `keys` stand in the order of the service."""

    def __init__(self, phone: Phone, show: Narrator) -> None:
        self.phone = phone
        self.show = show
        self.actions: list[Action] = []
        self.keys: list[Key] = []

    def read_all(self) -> None:
        self.actions = self.phone.client.get_all_actions()
        self.keys = self.phone.client.get_all_programmable_keys()

    def start_service(self) -> None:
        self.phone.start_service()
        self.read_all()

    @property
    def rows(self) -> Rows:
        return Rows(list(self.actions), list(self.keys))

    def user_rows(self) -> Rows:
        actions = [row for row in self.actions if not row.dmId and row.idAction != RESERVED]
        return Rows(actions, [row for row in self.keys if not row.dmId])

    def add(self, action: Action) -> Action:
        taken = {known.idAction for known in self.actions}
        new = Suitable("the number of a new action", lambda found: found > 0 and found not in taken)
        found = self.show.call(
            "addAction", action, subject=new_action(action), answer=new,
            events=lambda number: [expected.action_created(action._replace(idAction=number))],
        )
        self.actions.append(action._replace(idAction=found))
        return self.actions[-1]

    def create(self, key: Key) -> Key:
        taken = {known.idKey for known in self.keys}
        new = Suitable("the number of a new key", lambda found: found > 0 and found not in taken)
        found = self.show.call(
            "createProgrammableKey", key, subject=new_key(key), answer=new,
            events=lambda number: expected.key_created(key._replace(idKey=number)),
        )
        self.keys.append(key._replace(idKey=found))
        return self.keys[-1]

    def press(self, number: int, answer: expected.Event) -> None:
        """Presses a key of the user's module."""

        def press() -> None:
            self.phone.client.send_event(
                "AOM_KEY_PRESS_EVENT", aom_key_num=number, aom_type=MODULE_TYPE, addr=MODULE_ADDRESS
            )

        what = f"AOM_KEY_PRESS_EVENT(aom_key_num {number}, aom_type {MODULE_TYPE}, addr {MODULE_ADDRESS})"
        self.show.act(what, press, events=[answer])

    def replace(self, old: Key, **changes: object) -> Key:
        new = old._replace(**changes)
        self.keys[self.keys.index(old)] = new
        return new

