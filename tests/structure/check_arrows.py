"""Holds the includes of each folder of src/ against the folders that its CMakeLists.txt names.

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
    return set(re.findall(r"\bprogkeys_(\w+)", (folder / "CMakeLists.txt").read_text(encoding="utf-8")))


def faults_of_service(src: Path) -> list[str]:
    folders = {path.name for path in src.iterdir() if path.is_dir()}
    faults = []
    for folder in sorted(folders):
        allowed = named_arrows(src / folder) | {folder}
        for path, name in includes(src / folder):
            target = name.split("/")[0]
            if target in folders and target not in allowed and name != MODULE_CLASS:
                faults.append(f"{path.relative_to(src)} includes {name}, an arrow that its CMakeLists.txt does not name")
    return faults


def circles(src: Path) -> list[str]:
    arrows = {path.name: named_arrows(path) for path in src.iterdir() if path.is_dir()}
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
    faults = faults_of_service(root / "src") + circles(root / "src") + faults_of_platform(root)
    print("\n".join(faults) or f"{len(includes(root / 'src'))} includes of src/, every one along a named arrow")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
