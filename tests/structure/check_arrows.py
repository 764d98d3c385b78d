"""Checks the includes of src/, platform/ and tools/progkeysctl/ for unwanted dependencies.

A folder of src/ or tools/progkeysctl/ may include only itself and the folders that are below it in the lists of levels. In
src/, the members of a class must be defined in the folder that declares the class.
"""

import re
import sys
from pathlib import Path

LEVELS_OF_SERVICE = [
    ["main.cpp"],
    ["dbus"],
    ["module"],
    ["provisioning", "events", "storage"],
    ["records"],
    ["logging.h"],
]
LEVELS_OF_TOOL = [
    ["main.cpp", "SanitizerOptions.cpp"],
    ["commands"],
    ["cli", "converting", "events", "exchange", "planning"],
    ["client", "defaults"],
    ["fields", "files"],
    ["output"],
    ["outcome"],
    ["text"],
]
NOT_FOR_MODULES = {"zelcore/ZELBusNames.h", "zelcore/ZELEventCodec.h"}
INCLUDE = re.compile(r'^\s*#\s*include\s+["<]([^">]+)[">]', re.MULTILINE)
CLASS = re.compile(r"^(?:class|struct) (\w+)[^;]*?\{", re.MULTILINE)
MEMBER = re.compile(r"^\w[^\n;=(]*?\b(\w+)::~?\w+\(", re.MULTILINE)


def sources(folder: Path) -> list[Path]:
    return sorted(path for path in folder.rglob("*") if path.suffix in (".h", ".cpp"))


def includes(folder: Path) -> list[tuple[Path, str]]:
    return [(path, name) for path in sources(folder) for name in INCLUDE.findall(path.read_text(encoding="utf-8"))]


def faults_of_levels(top: Path, levels: list[list[str]]) -> list[str]:
    level_of = {folder: level for level, folders in enumerate(levels) for folder in folders}
    faults = [
        f"{path} is in no folder that has a level"
        for path in sources(top)
        if path.relative_to(top).parts[0] not in level_of
    ]
    for path, name in includes(top):
        folder, target = path.relative_to(top).parts[0], name.split("/")[0]
        if (top / name).exists() and folder != target and level_of.get(folder, 0) >= level_of.get(target, -1):
            faults.append(f"{path} includes {name}, which is not below it")
    return faults


def definitions_elsewhere(src: Path) -> list[str]:
    declared: dict[str, set[str]] = {}
    for path in sources(src):
        for name in CLASS.findall(path.read_text(encoding="utf-8")):
            declared.setdefault(name, set()).add(path.relative_to(src).parts[0])
    return [
        f"{path.relative_to(src)} defines a member of {name}, which another folder declares"
        for path in sources(src)
        for name in sorted(set(MEMBER.findall(path.read_text(encoding="utf-8"))))
        if name in declared and path.relative_to(src).parts[0] not in declared[name]
    ]


def faults_of_tool(tool: Path, src: Path) -> list[str]:
    """The tool may include only the records and the provisioning code of the service."""
    return [
        f"{path} includes {name}, which is private to the service"
        for path, name in includes(tool)
        if (src / name).exists() and not (tool / name).exists() and name.split("/")[0] not in ("records", "provisioning")
    ]


def faults_of_platform(root: Path) -> list[str]:
    faults = [
        f"{path.relative_to(root)} includes {name} of the service"
        for path, name in includes(root / "platform")
        if (root / "src" / name).exists()
    ]
    private = {path.name for path in (root / "platform" / "src").iterdir()} | NOT_FOR_MODULES
    return faults + [
        f"{path.relative_to(root)} includes {name}, which is private to the platform"
        for path, name in includes(root / "src")
        if name in private
    ]


def main() -> int:
    root = Path(sys.argv[1])
    src, tool = root / "src", root / "tools" / "progkeysctl"
    faults = faults_of_levels(src, LEVELS_OF_SERVICE) + definitions_elsewhere(src) + faults_of_platform(root)
    faults += faults_of_levels(tool, LEVELS_OF_TOOL) + faults_of_tool(tool, src)
    count = len(includes(src)) + len(includes(tool))
    print("\n".join(faults) or f"{count} includes of src/ and tools/progkeysctl/ without a finding")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
