"""Parsing and comparing introspection texts and the published interface files."""

import os
import re
import subprocess
import xml.etree.ElementTree as ElementTree
from pathlib import Path
from typing import NamedTuple

from sandbox.loop import LIMIT
from sandbox.names import EVENTS, INTERFACE, LIFECYCLE

CHECKOUT = Path(__file__).resolve().parents[2]
FILES = {
    INTERFACE: CHECKOUT / "src" / "dbus" / f"{INTERFACE}.xml",
    LIFECYCLE: CHECKOUT / "platform" / "dbus" / f"{LIFECYCLE}.xml",
    EVENTS: CHECKOUT / "platform" / "dbus" / f"{EVENTS}.xml",
}

QT_TYPE = re.compile(r"(?:com\.trolltech|org\.qtproject)\.QtDBus\.QtTypeName\.(\w+)")


class Method(NamedTuple):
    """A method without the names of its out arguments, which callers do not see."""

    name: str
    inputs: tuple[tuple[str, str], ...]
    outputs: tuple[str, ...]
    qt_types: tuple[tuple[str, str], ...]


class Comment(NamedTuple):
    """The comment before an element: the symbol, the parameters by name, and the text."""

    symbol: str
    parameters: dict[str, str]
    text: str


def interface_in(text: str, name: str) -> ElementTree.Element:
    """The element of that interface, including its comments."""
    parser = ElementTree.XMLParser(target=ElementTree.TreeBuilder(insert_comments=True))
    root = ElementTree.fromstring(text, parser=parser)
    (element,) = [each for each in root.findall("interface") if each.get("name") == name]
    return element


def interface_of_file(name: str) -> ElementTree.Element:
    return interface_in(FILES[name].read_text(encoding="utf-8"), name)


def types_of(member: ElementTree.Element, direction: str) -> tuple[str, ...]:
    return tuple(
        arg.get("type", "") for arg in member.findall("arg") if arg.get("direction") == direction
    )


def methods_of(interface: ElementTree.Element) -> list[Method]:
    return [
        Method(
            method.get("name", ""),
            tuple(
                (arg.get("name", ""), arg.get("type", ""))
                for arg in method.findall("arg")
                if arg.get("direction", "in") == "in"
            ),
            types_of(method, "out"),
            tuple(
                (match[1], annotation.get("value", ""))
                for annotation in method.findall("annotation")
                if (match := QT_TYPE.fullmatch(annotation.get("name", "")))
            ),
        )
        for method in interface.findall("method")
    ]


def parse_comment(text: str) -> Comment:
    lines = [line.strip() for line in text.strip().splitlines()]
    parameters = {}
    rest = lines[1:]
    while rest and (match := re.fullmatch(r"@(\w+): (.+)", rest[0])):
        parameters[match[1]] = match[2]
        rest = rest[1:]
    return Comment(lines[0].rstrip(":"), parameters, " ".join(rest).strip())


def comments_of(interface: ElementTree.Element) -> list[tuple[ElementTree.Element, Comment]]:
    """Every method and signal, with the comment directly before it."""
    children = list(interface)
    found = []
    for before, element in zip([None, *children], children):
        if element.tag in ("method", "signal"):
            is_comment = before is not None and before.tag is ElementTree.Comment
            text = before.text or "" if is_comment and before is not None else ""
            found.append((element, parse_comment(text) if text else Comment("", {}, "")))
    return found


def dtd_of_introspection() -> Path:
    """The path of the introspection DTD that the bus library installs."""
    data = subprocess.run(
        ["pkg-config", "--variable=datadir", "dbus-1"],
        capture_output=True,
        text=True,
        check=True,
        timeout=LIMIT,
    ).stdout.strip()
    return Path(data) / "xml" / "dbus-1" / "introspect.dtd"


def qdbusxml2cpp() -> str:
    """The generator of proxies of the Qt that the build uses."""
    return os.environ.get("PROGKEYS_QDBUSXML2CPP", "qdbusxml2cpp")
