"""The strip of labels on an add-on module, drawn as it lies between the module's two columns of keys."""

from typing import NamedTuple, Sequence

from sandbox.records import Action, Key

from .screen import Screen
from .text import Span, pad, shorten, width_of
from .words import ON_MODULE

ROWS = 12
NARROWEST_LABEL = 3
MARGIN = "   "
"""Where the numbers of the keys stand, to the left and to the right."""
GAP = "   "


class Strip(NamedTuple):
    """The labels of a module by the numbers of their keys, which count down the left column and then the right one."""

    title: str
    labels: dict[int, str]


def strips_of(keys: Sequence[Key], actions: Sequence[Action]) -> list[Strip]:
    """The labels on the add-on modules."""
    labels = {action.idAction: action.shortLabel for action in actions}
    modules: dict[tuple[int, int], Strip] = {}
    for key in keys:
        if key.type == ON_MODULE:
            strip = modules.setdefault((key.aom_addr, key.aom_type), Strip(f"module {key.aom_addr}", {}))
            strip.labels.setdefault(key.position, labels.get(key.idAction, ""))
    return [strip for _, strip in sorted(modules.items())]


def show_strips(screen: Screen, strips: Sequence[Strip], indent: int = 0) -> None:
    """Draws strips, as many side by side as fit; if not even one does, with shorter labels."""
    strips = [
        Strip(strip.title, {number: screen.legible(label) for number, label in strip.labels.items()})
        for strip in strips
    ]
    room = screen.width - indent
    longest = max((width_of(label) for strip in strips for label in strip.labels.values()), default=0)
    width = max(min(longest, (room - _width(0)) // 2), NARROWEST_LABEL)
    abreast = max((room + len(GAP)) // (_width(width) + len(GAP)), 1)
    for start in range(0, len(strips), abreast):
        screen.write()
        for lines in zip(*(_draw(screen, strip, width) for strip in strips[start:start + abreast])):
            spans = [span for line in lines for span in (Span(GAP), *line)]
            screen.show(*spans[1:], indent=indent)


def _width(label: int) -> int:
    """The columns that a strip takes with labels of that width."""
    return 2 * (len(MARGIN) + label + len("┤ ") + 1) - 1


def _draw(screen: Screen, strip: Strip, width: int) -> list[list[Span]]:
    """The lines of a strip, all equally wide."""
    rule = screen.glyph("rule") * (width + 2)
    title = shorten(f" {strip.title} ", width + 1, "")
    left, middle, right = screen.glyph("top")
    top = [
        Span(f"{MARGIN}{left}{rule[0]}", "dim"),
        Span(title, "title"),
        Span(f"{rule[1 + width_of(title):]}{middle}{rule}{right}{MARGIN}", "dim"),
    ]
    left, middle, right = screen.glyph("bottom")
    bottom = [Span(f"{MARGIN}{left}{rule}{middle}{rule}{right}{MARGIN}", "dim")]
    return [top, *(_row(screen, strip, number, width) for number in range(1, ROWS + 1)), bottom]


def _row(screen: Screen, strip: Strip, number: int, width: int) -> list[Span]:
    """The key of that number, and the one across from it."""
    left, middle, right = screen.glyph("keys")
    here, across = (
        pad(shorten(strip.labels.get(key, ""), width, screen.glyph("ellipsis")), width)
        for key in (number, number + ROWS)
    )
    return [
        Span(f"{number:2} {left} ", "dim"),
        Span(here),
        Span(f" {middle} ", "dim"),
        Span(across),
        Span(f" {right} {number + ROWS:2}", "dim"),
    ]
