"""The published interface, method by method, as its introspection text must tell it."""

from typing import NamedTuple, Optional

LIST_OF_KEYS = "a(xsxsisiii)"
LIST_OF_ACTIONS = "a(xsisssss)"


class Argument(NamedTuple):
    """One argument; `custom` is the Qt type that its annotation names, if it has one."""

    direction: str
    type: str
    value: str
    name: Optional[str] = None
    format: Optional[str] = None
    mapkey: Optional[str] = None
    custom: Optional[str] = None

    @property
    def attributes(self) -> dict[str, str]:
        values = self._asdict()
        del values["custom"]
        return {name: value for name, value in values.items() if value is not None}

    @property
    def elements(self) -> list[tuple[str, dict[str, str]]]:
        """The argument's element, and that of its annotation."""
        found = [("arg", self.attributes)]
        if self.custom:
            name = f"com.trolltech.QtDBus.QtTypeName.{self.direction.capitalize()}0"
            found.append(("annotation", {"value": self.custom, "name": name}))
        return found


ID_KEY = Argument("in", "x", "qlonglong", "idKey")
ID_ACTION = Argument("in", "x", "qlonglong", "idAction")
LIST_ID = Argument("in", "i", "int", "listId")
NAME = Argument("in", "s", "QString", "name")
KEY = Argument("in", "(xsxsisiii)", "Key", "k", custom="Key")
ACTION = Argument("in", "(xsisssss)", "Action", "action", custom="Action")
POSITIONS = Argument("in", "a{ii}", "int", "mapId", "map", "int", "QMapIntInt")

OUT_KEYS = Argument("out", LIST_OF_KEYS, "Key", format="list", custom="ListKey")
OUT_ACTIONS = Argument("out", LIST_OF_ACTIONS, "Action", format="list", custom="ListAction")
OUT_ID = Argument("out", "x", "qlonglong")
OUT_CODE = Argument("out", "i", "int")
OUT_BOOL = Argument("out", "b", "bool")
OUT_CAPABILITIES = Argument(
    "out", "a{s(si)}", "Capability", None, "map", "QString", "MapQStringCapability"
)
OUT_CAPABILITY = Argument("out", "(si)", "Capability", custom="Capability")

METHODS = [
    ("getAllProgrammableKeys", [], OUT_KEYS),
    ("getProgrammableKeysByContainer", [Argument("in", "s", "QString", "container")], OUT_KEYS),
    ("createProgrammableKey", [KEY], OUT_ID),
    ("modifyProgrammableKey", [KEY], OUT_CODE),
    ("changeProgrammableKeysPosition", [POSITIONS], OUT_BOOL),
    ("deleteProgrammableKey", [ID_KEY], OUT_CODE),
    ("getProgrammableKey", [ID_KEY], OUT_KEYS),
    ("getAllActions", [], OUT_ACTIONS),
    ("addAction", [ACTION], OUT_ID),
    ("modifyAction", [ACTION], OUT_CODE),
    ("deleteAction", [ID_ACTION], OUT_CODE),
    ("getAction", [ID_ACTION], OUT_ACTIONS),
    (
        "setIconStateForKey",
        [ID_KEY, Argument("in", "i", "int", "icon_x"), Argument("in", "i", "int", "icon_y")],
        OUT_CODE,
    ),
    ("setLabelStateForKey", [ID_KEY, Argument("in", "i", "int", "state")], OUT_CODE),
    ("getCapabilities", [], OUT_CAPABILITIES),
    ("getCapabilities", [LIST_ID], OUT_CAPABILITIES),
    ("getCapability", [NAME], OUT_CAPABILITY),
    ("getCapability", [LIST_ID, NAME], OUT_CAPABILITY),
]
"""Name, in-arguments and out-argument of each method, in order."""
