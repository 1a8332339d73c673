#!/usr/bin/env python3
"""Checks that includes under Sources follow the layers.

Each folder with a CMakeLists.txt is a module; its files may include headers of the modules that its target links (PUBLIC,
directly or through others), and no module links itself through others. The link step alone does not detect an include of
a header that needs no library. Sources outside Sources/Platform may include the standard library and this project only,
those of the windows also Qt, and a .cpp file a few headers of the system. Each module is in the list of folders in
ARCHITECTURE.md.
"""
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
SOURCES = ROOT / "Sources"
STANDARD = re.compile(r"^[a-z_]+$")  # <vector>, <cmath>; other libraries' headers have a folder or an extension
SYSTEM = re.compile(r"^(?:sys/\w+|unistd|fcntl)\.h$")
GENERATED = ("BuiltInService.h",)  # by CMake
INCLUDE = re.compile(r"\s*#\s*include\b\s*(.*)")
QT = re.compile(r"^Qt?[A-Z][A-Za-z]*(?:/\w+)?$")
WINDOWS = ("OrvaneDesignKit/", "OrvaneSyncApp/Views/")  # Qt's types stay in these


def modules():
    """Folder below Sources -> target, and target -> targets it links publicly."""
    folders, links = {}, {}
    for file in sorted(SOURCES.rglob("CMakeLists.txt")):
        text = re.sub(r"#.*", "", file.read_text())
        folder = file.parent.relative_to(SOURCES).as_posix()
        found = re.search(r"orvane_(?:layer|loadable)_module\((\w+)([^)]*)\)", text)
        if found:
            public = re.search(r"PUBLIC\s+(.*?)(?:PRIVATE|$)", found.group(2), re.S)
            folders[folder] = found.group(1)
            links[found.group(1)] = public.group(1).split() if public else []
        for target, named in re.findall(r"target_link_libraries\((\w+)\s+([^)]*)\)", text):
            links.setdefault(target, []).extend(named.split())
            if not found and re.search(rf"add_(?:library|executable)\({target}\b", text):
                folders.setdefault(folder, target)
    return folders, links


def reachable(target, links):
    seen, waiting = set(), [target]
    while waiting:
        one = waiting.pop()
        if one not in seen:
            seen.add(one)
            waiting.extend(links.get(one, []))
    return seen


def module_of(path, folders):
    """The target of the nearest folder above that is a module."""
    for folder in path.parents:
        if folder.as_posix() in folders:
            return folders[folder.as_posix()]
    return None


def main():
    folders, links = modules()
    allowed = {target: reachable(target, links) for target in set(folders.values())}
    wrong = [f"{target} links itself through other modules" for target in allowed
             if any(target in reachable(linked, links) for linked in links.get(target, []))]
    # Loadable modules implement headers of the platform and of its other parts; these include the records that the modules
    # fill.
    platform = folders["Platform"]
    loaded = {target for folder, target in folders.items() if folder.startswith("Platform/")}
    for target in loaded:
        allowed[target] |= {platform} | loaded
    allowed[platform] = allowed[platform] | loaded
    guide = (ROOT / "ARCHITECTURE.md").read_text()
    guide = guide[guide.index("## The folders"):guide.index("Dependencies go down only")]
    wrong += [f"ARCHITECTURE.md: the list of folders lacks {folder}" for folder in folders
              if not re.search(rf"\b{folder.split('/')[-1]}\b", guide)]
    listed = subprocess.run(
        ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard", "Sources/*.h", "Sources/*.cpp"],
        cwd=ROOT, check=True, capture_output=True, text=True).stdout
    for name in filter(None, listed.split("\0")):
        path = pathlib.PurePosixPath(name).relative_to("Sources")
        if not (SOURCES / path).exists():
            continue
        own = module_of(path, folders)
        for number, line in enumerate((SOURCES / path).read_text().splitlines(), 1):
            if not (include := INCLUDE.match(line)):
                continue
            named = re.match(r'"([^"]+)"|<([^>]+)>', include[1])
            header = named and (named[1] or named[2])
            if not named:
                wrong.append(f"{name}:{number}: an include without the name of a header")
            elif named[1] or (SOURCES / header.split("/")[0]).is_dir():
                theirs = module_of(pathlib.PurePosixPath(header), folders)
                if theirs is None or theirs not in allowed.get(own, set()):
                    wrong.append(f"{name}:{number}: {own} does not link {theirs or 'any module'} ({header})")
            elif path.parts[0] == "Platform" or STANDARD.match(header) or header in GENERATED:
                continue
            elif path.as_posix().startswith(WINDOWS) and QT.match(header):
                continue
            elif path.suffix == ".h" or not SYSTEM.match(header):
                wrong.append(f"{name}:{number}: <{header}> outside Platform"
                             + (" and the windows" if QT.match(header) else ""))
    print("\n".join(wrong) or f"includes: {len(allowed)} modules in order")
    return 1 if wrong else 0


sys.exit(main())
