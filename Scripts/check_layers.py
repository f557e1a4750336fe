#!/usr/bin/env python3
"""Checks the house rules of the sources: check_layers.py [ROOT]

A file includes only its own unit and files from lower floors; system headers are met under Platform/
alone, the Unicode library in one file; files are chosen by the build, never by #if on the system.
"""

import pathlib
import re
import sys

FLOORS = [
    ["Platform/", "Internal/Unicode", "Internal/Lines", "Export"],
    ["Text", "Internal/Print"],
    ["Values"],
    ["Parameters", "PromptForPassword", "CommandLineExitStatus"],
    ["CommandLine", "Fetch"],
    ["Help"],
    ["Optrella"],
]

STANDARD_HEADERS = set("""
    algorithm any array atomic bit bitset cassert cctype cerrno cfloat charconv chrono cinttypes climits
    cmath compare concepts condition_variable csignal cstdarg cstddef cstdint cstdio cstdlib cstring
    ctime deque exception filesystem functional future initializer_list iomanip ios iosfwd iostream
    istream iterator limits list map memory mutex new numbers numeric optional ostream queue random
    ranges semaphore set shared_mutex span sstream stack stdexcept streambuf string string_view
    system_error thread tuple type_traits typeinfo unordered_map unordered_set utility variant vector
    version
""".split())

# What every including file would pay for.
HEAVY_HEADERS = {"filesystem", "functional", "iostream", "memory", "regex", "sstream", "string"}
PUBLIC_HEADERS = {"CommandLine", "CommandLineExitStatus", "Export", "Fetch", "Help", "Optrella",
                  "Parameters", "Text", "Values"}

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)
CONDITION = re.compile(r"^\s*#\s*(?:if|ifdef|ifndef|elif)\b(.*)$", re.MULTILINE)
COMMENT = re.compile(r"//.*$", re.MULTILINE)
BANNED = [
    (re.compile(r"std::(?:cout|cerr)\b"), "prints around the print facility"),
    (re.compile(r"\busing namespace std\b"), "opens namespace std"),
    (re.compile(r"\bthrow\s"), "throws"),
]
POLICY = re.compile(r'/usr/bin/sudo|"Password|try again', re.IGNORECASE)


def unit(path):
    """The unit of a path below Optrella/: its floor belongs to the internal header too."""
    stem = path.rsplit(".", 1)[0]
    if stem.startswith("Platform/"):
        return stem
    if stem in ("Internal/Unicode", "Internal/Print", "Internal/Lines"):
        return stem
    return stem.removeprefix("Internal/")


def floor(path):
    name = unit(path)
    for number, units in enumerate(FLOORS):
        if any(name == each or (each.endswith("/") and name.startswith(each)) for each in units):
            return number
    return None


def is_within_platform(path, included):
    """Contracts stand directly under Platform/, and every platform file may include them; what stands
    in a system's folder is for that system's files alone."""
    if not path.startswith("Platform/") or not included.startswith("Platform/"):
        return False
    folder = included.rsplit("/", 1)[0]
    return folder == "Platform" or folder == path.rsplit("/", 1)[0]


def include_faults(path, text):
    own_floor = floor(path)
    for bracket, included in INCLUDE.findall(text):
        if bracket == "<":
            if included in STANDARD_HEADERS:
                if path.endswith(".hpp") and unit(path) in PUBLIC_HEADERS and "/" not in path \
                        and included in HEAVY_HEADERS:
                    yield f"a public header includes <{included}>, which costs every including file"
            elif included == "utf8proc.h":
                if path != "Internal/Unicode.cpp":
                    yield "includes the Unicode library outside Internal/Unicode.cpp"
            elif not path.startswith("Platform/") or path.count("/") < 2:
                yield f"includes the system header <{included}>"
            continue
        if not included.startswith("Optrella/"):
            yield f'includes "{included}", not by its path below Sources/'
            continue
        other = included.removeprefix("Optrella/")
        if floor(other) is None:
            yield f"includes {included}, which is on no floor"
        elif unit(other) == unit(path) or is_within_platform(path, other):
            continue
        elif floor(other) >= own_floor:
            yield f"includes {included}, which is on floor {floor(other)}; its own is {own_floor}"


def faults(path, text):
    if floor(path) is None:
        yield "is on no floor"
        return
    yield from include_faults(path, text)
    for condition in CONDITION.findall(text):
        if not re.fullmatch(r"\s*OPTRELLA_\w+_HPP", condition):
            yield f"has a condition of the preprocessor:{condition}"
    code = COMMENT.sub("", text)
    for pattern, fault in BANNED:
        if pattern.search(code):
            yield fault
    if path.startswith("Platform/") and POLICY.search(text):
        yield "holds a text or path that is policy"


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent.parent)
    sources = root / "Sources" / "Optrella"
    files = sorted(each for each in sources.rglob("*") if each.suffix in (".hpp", ".cpp"))
    if not files:
        sys.exit(f"{sources}: no sources")
    found = 0
    for file in files:
        path = file.relative_to(sources).as_posix()
        for fault in faults(path, file.read_text()):
            print(f"{file}: {fault}")
            found += 1
    if found:
        sys.exit(1)
    print(f"layers: {len(files)} files, no fault")


if __name__ == "__main__":
    main()
