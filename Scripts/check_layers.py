#!/usr/bin/env python3
"""Checks the layout of the sources.

    check_layers.py [ROOT]     the checks
    check_layers.py --table    the layers, as CONTRIBUTING.md shows them

A file includes only its own unit and lower layers, and no header includes itself by way of others.
System headers are met under Platform/ alone, the Unicode library in two files; files are chosen by the
build, never by #if on the system. What is installed is what the public headers include, no more and no
less. Every system has a file for each header in Platform/System.hpp. No two headers share a name, and
no file holds more than its share of the lines.
"""

import pathlib
import re
import sys

# From the lowest on. A unit is a public header and the directory of its name.
LAYERS = [
    ["Platform", "Export"],
    ["Text"],
    ["Values"],
    ["Parameters", "Elevation", "CommandLineExitStatus"],
    ["CommandLine", "Fetch"],
    ["Help", "Tool"],
    ["Explain", "Complete", "Lint", "HelpPage", "ManualPage", "Description"],
    ["CompletionScript"],
    ["RunTool"],
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
HEAVY_HEADERS = {"filesystem", "functional", "iostream", "iterator", "memory", "regex", "sstream",
                 "string"}
UNICODE = ("Text/Unicode.cpp", "Text/Characters.cpp")
LARGEST_SHARE = 0.09  # of all lines, in one file

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)
LANGUAGE = r"__cplusplus < 202002L"  # the one condition: it is refused in words
CONDITION = re.compile(r"^\s*#\s*(?:if|ifdef|ifndef|elif)\b(.*)$", re.MULTILINE)
COMMENT = re.compile(r"//.*$", re.MULTILINE)
INSTALLED = re.compile(r"FILE_SET HEADERS [^)]*FILES\s([^)]*)\)")
BANNED = [
    (re.compile(r"std::(?:cout|cerr)\b"), "prints around the print facility"),
    (re.compile(r"\busing namespace std\b"), "opens namespace std"),
    (re.compile(r"\bthrow\s"), "throws"),
]
POLICY = re.compile(r'/usr/bin/sudo|"Password|try again', re.IGNORECASE)


class Sources:
    """The files below Sources/Optrella, by their paths there."""

    def __init__(self, root):
        self.directory = root / "Sources" / "Optrella"
        self.texts = {each.relative_to(self.directory).as_posix(): each.read_text()
                      for each in sorted(self.directory.rglob("*")) if each.suffix in (".hpp", ".cpp")}
        self.build = (self.directory / "CMakeLists.txt").read_text()

    def headers(self):
        return [path for path in self.texts if path.endswith(".hpp")]

    def included(self, path):
        """The project's headers that a file includes."""
        names = (name for bracket, name in INCLUDE.findall(self.texts.get(path, "")) if bracket == '"')
        return [name.removeprefix("Optrella/") for name in names]

    def reached(self, path):
        """All headers that a file includes, directly or by way of others."""
        found, left = set(), self.included(path)
        while left:
            header = left.pop()
            if header not in found:
                found.add(header)
                left += self.included(header)
        return found

    def installed(self):
        return set().union(*({path} | self.reached(path) for path in self.headers() if is_public(path)))

    def systems(self):
        """The directories of the systems under Platform/."""
        return sorted({path.split("/")[1] for path in self.texts
                       if path.startswith("Platform/") and path.count("/") == 2} - {"Posix"})


def is_public(path):
    return "/" not in path and path.endswith(".hpp")


def unit(path):
    return path.split("/")[0].split(".")[0]


def layer(path):
    return next((number for number, units in enumerate(LAYERS) if unit(path) in units), None)


def is_another_systems(path, included):
    """Contracts stand directly under Platform/ for everybody; what stands in Posix/ is for the systems
    too, what stands in a system's directory for that system alone."""
    if not included.startswith("Platform/") or included.count("/") < 2:
        return False
    directory = included.rsplit("/", 1)[0]
    if directory == "Platform/Posix":
        return not (path.startswith("Platform/") and path.count("/") == 2)
    return directory != path.rsplit("/", 1)[0]


# ---- Faults of one file ----

def include_faults(path, text, is_installed):
    own_layer = layer(path)
    for bracket, included in INCLUDE.findall(text):
        if bracket == "<":
            if included in STANDARD_HEADERS:
                if is_installed and included in HEAVY_HEADERS:
                    yield f"an installed header includes <{included}>, which costs every including file"
            elif included == "utf8proc.h":
                if path not in UNICODE:
                    yield f"includes the Unicode library outside {' and '.join(UNICODE)}"
            elif not path.startswith("Platform/") or path.count("/") < 2:
                yield f"includes the system header <{included}>"
            continue
        if not included.startswith("Optrella/"):
            yield f'includes "{included}", not by its path below Sources/'
            continue
        other = included.removeprefix("Optrella/")
        if layer(other) is None:
            yield f"includes {included}, which is in no layer"
        elif is_another_systems(path, other):
            yield f"includes {included}, which is another directory's own"
        elif unit(other) != unit(path) and layer(other) >= own_layer:
            yield f"includes {included}, which is in layer {layer(other)}; its own is {own_layer}"


def file_faults(path, text, is_installed):
    if layer(path) is None:
        yield "is in no layer"
        return
    yield from include_faults(path, text, is_installed)
    for condition in CONDITION.findall(text):
        if not re.fullmatch(rf"\s*(?:OPTRELLA_\w+_HPP|{LANGUAGE})", condition):
            yield f"has a condition of the preprocessor:{condition}"
    guard = "OPTRELLA_" + re.sub(r"\W", "_", path).upper()
    if path.endswith(".hpp") and f"#ifndef {guard}\n#define {guard}\n" not in text:
        yield f"has another guard than {guard}"
    code = COMMENT.sub("", text)
    for pattern, fault in BANNED:
        if pattern.search(code):
            yield fault
    if path.startswith("Platform/") and POLICY.search(text):
        yield "holds a text or path that is policy"


# ---- Faults of all together ----

def name_faults(sources):
    first = {}
    for path in sources.headers():
        other = first.setdefault(path.rsplit("/", 1)[-1], path)
        if other != path:
            yield path, f"shares its name with {other}"


def size_faults(sources):
    sizes = {path: text.count("\n") for path, text in sources.texts.items()}
    for path, size in sizes.items():
        share = size / sum(sizes.values())
        if share > LARGEST_SHARE:
            yield path, f"holds {share:.1%} of all lines; no file holds more than {LARGEST_SHARE:.0%}"


def installing_faults(sources):
    listed = INSTALLED.search(sources.build)
    listed = set(listed.group(1).split()) if listed else set()
    needed = sources.installed()
    for path in sorted(needed - listed):
        yield path, "is included by a public header, and CMakeLists.txt does not install it"
    for path in sorted(listed - needed):
        yield path, "is installed by CMakeLists.txt, and no public header includes it"


def system_faults(sources):
    contracts = {header.removeprefix("Platform/").removesuffix(".hpp")
                 for header in sources.included("Platform/System.hpp")}
    for system in sources.systems():
        for name in sorted(contracts):
            path = f"Platform/{system}/{name}.cpp"
            if path not in sources.texts:
                yield path, "is missing: Platform/System.hpp asks for it"


def all_faults(sources):
    installed = sources.installed()
    for path, text in sources.texts.items():
        for fault in file_faults(path, text, path in installed):
            yield path, fault
    for path in sources.headers():
        if path in sources.reached(path):
            yield path, "includes itself by way of other headers"
    for faults in (name_faults, size_faults, installing_faults, system_faults):
        yield from faults(sources)


def table():
    def shown(name):
        return f"{name}/" if name in ("Platform", "Elevation") else name
    return "".join(f"    {number}  {'  '.join(map(shown, units))}\n"
                   for number, units in reversed(list(enumerate(LAYERS))))


def main():
    if sys.argv[1:] == ["--table"]:
        print(table(), end="")
        return
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent.parent)
    sources = Sources(root)
    if not sources.texts:
        sys.exit(f"{sources.directory}: no sources")
    found = [f"{sources.directory / path}: {fault}" for path, fault in all_faults(sources)]
    page = root / "CONTRIBUTING.md"
    if page.exists() and table() not in page.read_text():
        found.append(f"{page}: does not show the layers as check_layers.py --table prints them")
    if found:
        print("\n".join(found))
        sys.exit(1)
    print(f"layers: {len(sources.texts)} files, no fault")


if __name__ == "__main__":
    main()
