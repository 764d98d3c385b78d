"""All sections, by their names."""

from . import calls, callers, cores, growth, memory, provisioned_start, qt6, start, synchronisation

SECTIONS = {
    section.name: section
    for section in (
        calls.ON_TMPFS,
        calls.ON_A_DISK,
        memory.SECTION,
        start.SECTION,
        provisioned_start.SECTION,
        synchronisation.SECTION,
        cores.SECTION,
        callers.SECTION,
        qt6.SECTION,
        growth.SECTION,
    )
}
