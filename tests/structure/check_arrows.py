"""Checks that the includes of src/, platform/ and the tool point one way.

In src/ a folder may include only itself and the folders that LEVELS lists below it. In the tool a folder may include only
the folders that its CMakeLists.txt names. No class is declared in one folder of src/ and defined in another.
"""

import re
import sys
from pathlib import Path

LEVELS = [
    ["main.cpp"],
    ["dbus"],
    ["module"],
    ["provisioning", "events", "storage"],
    ["records"],
    ["logging.h"],
]
FOR_PROGRAMS_THAT_ARE_NO_MODULE = {"zelcore/ZELBusNames.h", "zelcore/ZELEventCodec.h"}
INCLUDE = re.compile(r'^\s*#\s*include\s+["<]([^">]+)[">]', re.MULTILINE)
CLASS = re.compile(r"^(?:class|struct) (\w+)[^;]*?\{", re.MULTILINE)
MEMBER = re.compile(r"^\w[^\n;=(]*?\b(\w+)::~?\w+\(", re.MULTILINE)


def sources(folder: Path) -> list[Path]:
    return sorted(path for path in folder.rglob("*") if path.suffix in (".h", ".cpp"))


def includes(folder: Path) -> list[tuple[Path, str]]:
    return [(path, name) for path in sources(folder) for name in INCLUDE.findall(path.read_text(encoding="utf-8"))]


def faults_of_service(src: Path) -> list[str]:
    level_of = {room: level for level, rooms in enumerate(LEVELS) for room in rooms}
    faults = [
        f"{path.relative_to(src)} is in no folder that has a level"
        for path in sources(src)
        if path.relative_to(src).parts[0] not in level_of
    ]
    for path, name in includes(src):
        room, target = path.relative_to(src).parts[0], name.split("/")[0]
        if (src / name).exists() and room != target and level_of[room] >= level_of.get(target, -1):
            faults.append(f"{path.relative_to(src)} includes {name}, which is not below it")
    return faults + definitions_elsewhere(src)


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


def named_arrows(folder: Path) -> set[str]:
    return set(re.findall(r"\bprogkeysctl_(\w+)", (folder / "CMakeLists.txt").read_text(encoding="utf-8")))


def faults_of_tool(root: Path) -> list[str]:
    """The tool is a client: of the service it may know the records and the rules of the defaults."""
    tool, src = root / "tools" / "progkeysctl", root / "src"
    folders = sorted(path.name for path in tool.iterdir() if path.is_dir() and sources(path))
    faults = []
    for folder in folders:
        allowed = named_arrows(tool / folder) | {folder}
        for path, name in includes(tool / folder):
            target = name.split("/")[0]
            if (tool / name).exists() and target in folders and target not in allowed:
                faults.append(f"{path.relative_to(root)} includes {name}, but its CMakeLists.txt does not name {target}")
            is_of_service = (src / name).exists() and not (tool / name).exists()
            if is_of_service and target not in ("records", "provisioning"):
                faults.append(f"{path.relative_to(root)} includes {name}, which is private to the service")
    return faults + circles(tool, folders)


def circles(tool: Path, folders: list[str]) -> list[str]:
    reach = {name: named_arrows(tool / name) & set(folders) - {name} for name in folders}
    for _ in folders:
        reach = {name: targets.union(*(reach[target] for target in targets)) for name, targets in reach.items()}
    return [f"tools/progkeysctl/{name} depends on itself" for name, targets in sorted(reach.items()) if name in targets]


def faults_of_platform(root: Path) -> list[str]:
    faults = [
        f"{path.relative_to(root)} includes {name} of the service"
        for path, name in includes(root / "platform")
        if (root / "src" / name).exists()
    ]
    private = {path.name for path in (root / "platform" / "src").iterdir()} | FOR_PROGRAMS_THAT_ARE_NO_MODULE
    return faults + [
        f"{path.relative_to(root)} includes {name}, which is private to the platform"
        for path, name in includes(root / "src")
        if name in private
    ]


def main() -> int:
    root = Path(sys.argv[1])
    faults = faults_of_service(root / "src") + faults_of_platform(root) + faults_of_tool(root)
    count = len(includes(root / "src")) + len(includes(root / "tools" / "progkeysctl"))
    print("\n".join(faults) or f"All {count} includes of src/ and the tool point down")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
