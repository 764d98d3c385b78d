"""Holds the includes of each folder of src/ and of the tool against the folders that its CMakeLists.txt names.

Arrows run one way: app wires, the others stand on what they name. The one arrow that may run back up goes to the module
class, from the folders that define its slots.
"""

import re
import sys
from pathlib import Path

MODULE_CLASS = "app/ZelProgrammableKeys.h"
FOR_PROGRAMS_THAT_ARE_NO_MODULE = {"zelcore/ZELBusNames.h", "zelcore/ZELEventCodec.h"}
INCLUDE = re.compile(r'^\s*#\s*include\s+["<]([^">]+)[">]', re.MULTILINE)


def includes(folder: Path) -> list[tuple[Path, str]]:
    files = sorted(path for path in folder.rglob("*") if path.suffix in (".h", ".cpp"))
    return [(path, name) for path in files for name in INCLUDE.findall(path.read_text(encoding="utf-8"))]


def named_arrows(folder: Path) -> set[str]:
    prefix = "progkeysctl" if folder.parent.name == "progkeysctl" else "progkeys"
    return set(re.findall(rf"\b{prefix}_(\w+)", (folder / "CMakeLists.txt").read_text(encoding="utf-8")))


def folders_of(house: Path) -> list[str]:
    """Those that hold code."""
    return sorted(path.name for path in house.iterdir() if path.is_dir() and includes(path))


def unnamed_arrows(house: Path) -> list[str]:
    folders = folders_of(house)
    faults = []
    for folder in folders:
        allowed = named_arrows(house / folder) | {folder}
        for path, name in includes(house / folder):
            target = name.split("/")[0]
            is_own = (house / name).exists()
            if is_own and target in folders and target not in allowed and name != MODULE_CLASS:
                faults.append(f"{path.relative_to(house)} includes {name}, an arrow that its CMakeLists.txt does not name")
    return faults


def faults_of_tool(root: Path) -> list[str]:
    """The tool is a client: of the service it may know the records and the rules of the defaults."""
    tool = root / "tools" / "progkeysctl"
    return [
        f"{path.relative_to(root)} includes {name}, which is the service's own"
        for path, name in includes(tool)
        if (root / "src" / name).exists()
        and not (tool / name).exists()
        and name.split("/")[0] not in ("records", "provisioning")
    ]


def circles(src: Path) -> list[str]:
    arrows = {name: named_arrows(src / name) for name in folders_of(src)}
    reach = {name: set(targets & arrows.keys()) - {name} for name, targets in arrows.items()}
    for _ in arrows:
        reach = {name: targets.union(*(reach[target] for target in targets)) for name, targets in reach.items()}
    return [f"{name} stands on itself" for name, targets in sorted(reach.items()) if name in targets]


def faults_of_platform(root: Path) -> list[str]:
    platform = [
        f"{path.relative_to(root)} includes {name} of the service"
        for path, name in includes(root / "platform")
        if (root / "src" / name).exists()
    ]
    private = {path.name for path in (root / "platform" / "src").iterdir()} | FOR_PROGRAMS_THAT_ARE_NO_MODULE
    return platform + [
        f"{path.relative_to(root)} includes {name}, which is private to the platform"
        for path, name in includes(root / "src")
        if name in private
    ]


def main() -> int:
    root = Path(sys.argv[1])
    houses = [root / "src", root / "tools" / "progkeysctl"]
    faults = [fault for house in houses for fault in unnamed_arrows(house) + circles(house)]
    faults += faults_of_platform(root) + faults_of_tool(root)
    count = sum(len(includes(house)) for house in houses)
    print("\n".join(faults) or f"{count} includes of src/ and the tool, every one along a named arrow")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
