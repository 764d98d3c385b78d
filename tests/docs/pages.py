"""The pages of the documentation, their links and their examples."""

import re
from pathlib import Path
from typing import Iterator, NamedTuple

CHECKOUT = Path(__file__).resolve().parents[2]
PAGES = sorted(CHECKOUT / page for glob in ("*.md", "docs/*.md", "examples/*.md", "peers/*/*.md") for page in CHECKOUT.glob(glob))


class Listing(NamedTuple):
    """A block of code in a page."""

    language: str
    text: str


def listings(page: Path) -> list[Listing]:
    blocks = re.findall(r"^```(\w*)\n(.*?)^```$", page.read_text(encoding="utf-8"), re.M | re.S)
    return [Listing(*block) for block in blocks]


def without_listings(page: Path) -> str:
    return re.sub(r"^```.*?^```$", "", page.read_text(encoding="utf-8"), flags=re.M | re.S)


def links(page: Path) -> list[str]:
    return re.findall(r"\]\(([^)\s]+)\)", without_listings(page))


def anchors(page: Path) -> Iterator[str]:
    """The fragments that a link to this page can have."""
    for heading in re.findall(r"^#+ (.*)$", without_listings(page), re.M):
        words = re.sub(r"[^\w\s-]", "", heading.lower())
        yield words.strip().replace(" ", "-")
