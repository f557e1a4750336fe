"""A public header as Doxygen wants it: filter.py HEADER.

The headers' comments are plain ones, because they are read in the headers. Here a comment documents
every declaration that follows it up to the next empty line or comment; one after a field or a case
documents that; the first one of a header documents the header. What is not meant for a tool's author
is taken out.
"""

import re
import sys

END = "}  // namespace Optrella"  # hashes follow it, which Doxygen does not understand
FOR_ITS_MESSAGE = " Exists for its message alone:"
NO_DOCUMENTATION = (" ----", " clang-format ")  # how comments begin that say nothing of a declaration
COMMON = "    commonDetails common;"  # a member of each kind, which says nothing of it there
DEFINITION = re.compile(r"(inline|constexpr) .*\w::\w+\(")  # of a function that its class has declared


def documenting(comment, indent):
    """The lines of a comment as Doxygen reads them."""
    before = ""
    for line in comment:
        is_as_it_stands = line.startswith("  ")  # a table or code
        if is_as_it_stands and before and not before.startswith("  "):
            yield f"{indent}///"
        yield f"{indent}///{'    ' if is_as_it_stands else ''}{line}"
        before = line


def filtered(lines):
    comment = []
    indent = ""
    begins = True  # whether a declaration may begin on the line
    is_dropped = False  # up to the next empty line
    for line in lines:
        found = re.match(r"(\s*)//(.*)$", line)
        if line == END:
            yield line
            return
        if found and found[2].startswith(NO_DOCUMENTATION):
            yield ""
        elif found:
            if not begins or not comment or comment[-1] is None:
                comment = []
            if found[2].startswith(FOR_ITS_MESSAGE):
                is_dropped = True
            comment.append(found[2])
            indent = found[1]
            begins = True
        elif not line:
            comment, begins, is_dropped = [], True, False
            yield line
        elif is_dropped or DEFINITION.match(line):
            is_dropped = True
        else:
            is_declaration = begins and "~" not in line and re.match(rf"{indent}[^\s}}]", line)
            if comment and is_declaration:
                yield from documenting([text for text in comment if text is not None], indent)
                comment.append(None)  # a comment after this one is another one
            begins = line.endswith((";", "}"))
            if line == COMMON:
                line += "  // What every parameter carries."
            yield re.sub(r"^(\s+[^/{}()]*[;,]|\s+[^/()]*\{\};) +// ", r"\1 ///< ", line)


def described(lines):
    """The header's own comment, which comes first."""
    yield "/// @file"
    count = next(i for i, line in enumerate(lines) if not line.startswith("//"))
    first, *rest = [line.removeprefix("//") for line in lines[:count]]
    yield from documenting([first.partition(" - ")[2], *rest], "")


with open(sys.argv[1], encoding="utf-8") as header:
    text = header.read().splitlines()
print("\n".join([*described(text), *filtered(text)]))
