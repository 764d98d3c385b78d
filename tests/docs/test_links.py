"""Links between the pages."""

from pathlib import Path

import pytest

from pages import CHECKOUT, PAGES, anchors, links


@pytest.mark.parametrize("page", PAGES, ids=lambda page: str(page.relative_to(CHECKOUT)))
def test_every_link_leads_to_a_file_and_a_heading(page: Path) -> None:
    broken = []
    for link in links(page):
        if "://" in link:
            continue
        name, _, anchor = link.partition("#")
        target = (page.parent / name).resolve() if name else page
        if not target.exists() or (anchor and anchor not in anchors(target)):
            broken.append(link)
    assert not broken
