"""Behaviour cases drawn at random, the same ones for the same seed.

Texts come from small pools, so that tags collide, values fit and spellings meet their canonical
twins often. What a case must not hold, because more than one answer is right, is said in
`is_undecided`.

A path may begin with `{here}`, the directory that `Playground` makes; `placed` puts its name there.
"""

import contextlib
import json
import os
import random
import shutil
import tempfile
import unicodedata

import kinds
import rules
import texts
from kinds import KINDS, FileURL

# Each group: spellings of one and the same text.
TWINS = (
    ("\u00e9", "e\u0301"),
    ("K", "\u212a"),
    (";", "\u037e"),
    ("`", "\u1fef"),
    ("\u00c5", "\u212b", "A\u030a"),
    ("\u03a9", "\u2126"),
    ("\u03ac", "\u1f71", "\u03b1\u0301"),
    ("\uac00", "\u1100\u1161"),
    ("\uac01", "\u1100\u1161\u11a8", "\uac00\u11a8"),
    ("\u1e69", "s\u0323\u0307", "s\u0307\u0323", "\u1e63\u0307", "\u1e61\u0323"),
    ("q\u0323\u0307", "q\u0307\u0323"),
    ("\u0344", "\u0308\u0301"),
    ("\u304c", "\u304b\u3099"),
    ("\u8c48", "\uf900"),
    ("\u2329", "\u3008"),
    ("\u2002", "\u2000"),
    ("\U0001d15e", "\U0001d157\U0001d165"),
)
SPELLINGS = {spelling: group for group in TWINS for spelling in group}

# Each group: texts that look or sound alike and are all different.
NEAR_MISSES = (
    ("-v", "-V", "--v", "-v ", " -v", "-\uff56", "-v\u200b", "v"),
    ("fi", "\ufb01"), ("ss", "\u00df"), ("k", "K"), ("e", "\u00e9"), ("\u00b5", "\u03bc"),
    ("\u1100\u1161", "\u3131\u314f"), ("\u0301e", "e\u0301"), ("\u1e9b\u0323", "\u1e69"),
    ("q\u0323\u0301\u0307", "q\u0323\u0307\u0301"), ("--file", "--file=x", "--fil", "--File"),
)

FAMILY = "\U0001f468\u200d\U0001f469\u200d\U0001f467"
FLAG = "\U0001f1e9\U0001f1ea"
PREPENDED = ("\u0600", "\u0605", "\u06dd", "\u070f", "\u08e2", "\U000110bd")
# Where user-perceived characters and code points part.
CLUSTERS = (
    FAMILY, FLAG, FLAG + "\U0001f1eb", "\U0001f44d\U0001f3fd", "\u2764\ufe0f", "\r\n", "\r", "\n",
    "\u0301", "x\u0301\u0323", "\u200d", "a\u200d", "\u1100", "\u1161", "\u11a8", "\u0e33",
    "\ufeff", *PREPENDED,
)
ESCAPED = (
    '"', "'", "\\", "\t", "\n", "\r", "\0", "\x01", "\x07", "\x1b", "\x7f", "\x85", "\x9f",
    "\u2028", "\u2029", "\u061c", "\u200e", "\u200f", "\u202a", "\u202e", "\u2066", "\u2069",
    "\u00ad", "\u034f", "\u115f", "\u180e", "\u200b", "\u200c", "\u200d", "\u2060", "\u2065",
    "\u206f", "\u3164", "\ufe00", "\ufe0e", "\ufe0f", "\ufeff", "\ufff0", "\ufdd0", "\ufffe",
    "\U0001d173", "\U000e0001", "\U000e0020", "\U000e007f", "\U000e0100", "\U000e0fff",
    "\U0010ffff",
)
# What keeps its joiners and selectors, and what does not.
EMOJI = (
    "\U0001f44d", "\U0001f44d\U0001f3fd", "\u2764\ufe0f", "\u2764", "\u200d", "\ufe0f", "\U0001f3fd",
    "\u2640\ufe0f", "\U0001f468\u200d", "\u2764\ufe0f\u200d\U0001f525", "1\ufe0f\u20e3", "\u0301",
    "\ufe0e", "\u00a9", "x",
)
# The neighbours of what is escaped stand as they are.
UNESCAPED = (
    " ", "~", "\u00a0", "\u00ac", "\u00ae", "\u0600", "\u061b", "\u061d", "\u06dd", "\u200a", "\u2010",
    "\u2027", "\u202f", "\u2070", "\u3000", "\u3163", "\ue000", "\ufdcf", "\ufdf0", "\ufe10", "\ufff9",
    "\ufffd", "\U000110bd", "\U000e1000", "\U0010fffd",
)
NOT_UTF8 = (
    b"\xff", b"\x80", b"\xc3", b"\xe2\x82", b"\xed\xa0\x80", b"\xf0\x9f\x98", b"\xf4\x90\x80\x80",
    b"\xc0\x80", b"\xfe\xff",
)
WORDS = (
    "a", "b", "list", "sort", "file", "x y", "Help", "|", "||", ", ", "[ ", "name", "a|b", "-", "=",
    "\u00fcber", "\u65e5\u672c", "\u043f\u0440\u0438\u0432\u0435\u0442", "\u05e9\u05b8", "%s", "%n",
    "{0}",
)
TAGS = ("-a", "-b", "-c", "-f", "-v", "--file", "--name", "list", "add", "remove", "-n", "--sort")

RELATIVE_PATHS = (
    "", ".", "..", "./", "../", "...", "file", "file/", "./file", "a b", "dir", "dir/", "dir//",
    "dir/.", "dir/..", "dir/./", "dir//sub", "dir/sub/", "dir/sub/../..", "dir/sub/../../file",
    "dir/inside", "link-dir", "link-dir/", "link-dir/sub", "link-file", "link-file/", "dangling",
    "loop", "missing", "missing/", "missing/x", "file/x", "locked", "locked/inside", "-f", "~",
    "~/file", "file:", "http://x/y", "a%20b", "caf\u00e9", "cafe\u0301", "x" * 255, "x" * 256,
    "../" * 40, ".hidden", "a:b@c", "a+b,c;d=e&f$g!h*i(j)", "two\nlines", "'q'",
)
ABSOLUTE_PATHS = (
    "/", "//", "///", "/..", "/.", "/../", "/./etc/./passwd", "/etc/../etc", "/dev/null", "/tmp",
    "/nonexistent/x", "{here}", "{here}/", "{here}/dir", "{here}//dir///sub", "{here}/file",
    "{here}/dir/..", "{here}/link-dir", "{here}/missing/", "{here}/caf\u00e9", "{here}/dangling",
)

RAW_VALUES = {
    "parsingError": ("Parse successful", "Missing Parameter", "Unknown command line",
                     "No command line specified", "NoError", "MissingParameter"),
    "urlType": FileURL.TYPES,
    "existState": FileURL.STATES,
}


class Playground:
    """A directory of files, directories, links and odd names; the current directory while it lasts."""

    def __enter__(self):
        self.before = os.getcwd()
        self.here = os.path.realpath(tempfile.mkdtemp(prefix="optrella"))
        os.chdir(self.here)
        for directory in ("dir", "dir/sub", "locked"):
            os.mkdir(directory)
        for name in (b"file", b"a b", b"dir/inside", b"locked/inside", b"caf\xc3\xa9", b"-f", b"~",
                     b"two\nlines", b"x" * 255, b"bad\xffname"):
            make_file(name)
        for name, target in (("link-dir", "dir"), ("link-file", "file"), ("dangling", "nowhere"),
                             ("loop", "loop")):
            os.symlink(target, name)
        os.chmod("locked", 0)
        return self

    def __exit__(self, *_):
        os.chdir(self.before)
        os.chmod(os.path.join(self.here, "locked"), 0o700)
        shutil.rmtree(self.here)


def make_file(name):
    """Where a file system refuses the name, the file is missing for model and runner alike."""
    with contextlib.suppress(OSError), open(name, "wb"):
        pass


def placed(case, here):
    return json.loads(json.dumps(case).replace("{here}", here))


# --- what more than one answer is right for ---

def parameters_in(value):
    if isinstance(value, dict):
        if "kind" in value:
            yield value
        for inner in value.values():
            yield from parameters_in(inner)
    elif isinstance(value, list):
        for inner in value:
            yield from parameters_in(inner)


def is_undecided(case):
    """Whether a path of the (placed) case has no one right answer: no path holds a NUL, and a
    path may name a directory only before, or only after, its dot segments are taken out."""
    paths = [parameter["userValue"] for parameter in parameters_in(case)
             if parameter["kind"] == "ParameterFileURL" and "userValue" in parameter]
    if any(parameter["kind"] == "ParameterFileURL" for parameter in parameters_in(case)):
        paths += case.get("arguments", [])
    return any(is_undecided_path(texts.from_json(path)) for path in paths)


def is_undecided_path(path):
    if "\0" in path:
        return True
    if path.startswith("/") or "." not in path:
        return False
    typed = texts.to_bytes(path)
    cleaned = kinds.without_dot_segments(os.getcwdb() + b"/" + typed)
    return kinds.is_directory(typed) != kinds.is_directory(cleaned)


# --- drawing ---

class Generator:
    """Draws cases; `next_case` is all that is asked of it from outside."""

    def __init__(self, seed):
        self.random = random.Random(seed)

    def chance(self, probability):
        return self.random.random() < probability

    def pick(self, *choices):
        return self.random.choice(choices)

    def some(self, least, most, draw):
        return [draw() for _ in range(self.random.randint(least, most))]

    def next_case(self):
        call = self.random.choices(list(CALL_WEIGHTS), list(CALL_WEIGHTS.values()))[0]
        return {"call": call} | getattr(self, "case_of_" + call)()

    # texts

    def piece(self):
        """A piece of a text; bytes where it is not UTF-8."""
        kind = self.random.random()
        if kind < 0.35:
            return self.pick(*WORDS)
        if kind < 0.60:
            return self.pick(*self.pick(*TWINS))
        if kind < 0.72:
            return self.pick(*self.pick(*NEAR_MISSES))
        if kind < 0.84:
            return self.pick(*CLUSTERS)
        if kind < 0.90:
            return self.pick(*ESCAPED)
        if kind < 0.94:
            return self.pick(*UNESCAPED)
        if kind < 0.98:
            return self.drawn_code_point()
        return texts.from_bytes(self.pick(*NOT_UTF8))

    def drawn_code_point(self):
        """Of the scripts whose rules no version of Unicode has changed."""
        first, last = self.pick((0x20, 0x24F), (0x300, 0x377), (0x386, 0x3FF), (0x400, 0x52F),
                                (0x5D0, 0x5EA), (0x1E00, 0x1F15), (0x3041, 0x30FF),
                                (0xAC00, 0xD7A3), (0x4E00, 0x9FFF), (0x1F600, 0x1F64F))
        drawn = chr(self.random.randint(first, last))
        return drawn if unicodedata.category(drawn) != "Cn" else "x"

    def text(self):
        length = self.random.choices((0, 1, 2, 3, 6), (10, 45, 25, 15, 5))[0]
        return texts.to_json(reread("".join(self.piece() for _ in range(length))))

    def prose(self):
        """A help text: mostly plain, sometimes anything."""
        if self.chance(0.6):
            return self.pick("", "", "Sort order", "The name", "Do it", "x")
        return self.text()

    def escaped_text(self):
        return texts.to_json(reread("".join(
            self.some(1, 4, lambda: self.pick(self.pick(*ESCAPED), self.piece(), self.emoji())))))

    def emoji(self):
        return "".join(self.some(1, 4, lambda: self.pick(*EMOJI)))

    def respelled(self, text):
        """The same text, written otherwise where that can be."""
        plain = texts.from_json(text)
        if not texts.is_utf8(plain) or self.chance(0.4):
            return text
        if self.chance(0.5):
            return unicodedata.normalize(self.pick("NFC", "NFD"), plain)
        return "".join(self.pick(*SPELLINGS.get(character, (character,))) for character in plain)

    def missed(self, text):
        """Another text that resembles this one."""
        plain = texts.from_json(text)
        miss = self.pick(self.lookalike(plain), self.lookalike(plain), plain.swapcase(),
                         plain + " ", " " + plain, plain[:-1], plain + "=x", plain + "\u0301",
                         plain + "\u200d", plain + "\0")
        return texts.to_json(reread(miss))

    def lookalike(self, plain):
        """One character as its fullwidth form, or what else looks like it."""
        at = self.random.randint(0, max(0, len(plain) - 1))
        here = plain[at:at + 1]
        other = {"k": "K", "\u00b5": "\u03bc", "\u00e9": "e", "\u1e69": "\u1e9b\u0323"}.get(here)
        if other is None:
            other = chr(ord(here) + 0xFEE0) if "!" <= here <= "~" else here + "\u200b"
        return plain[:at] + other + plain[at + 1:]

    def cut_text(self):
        """A text whose end matters, because characters are counted from there."""
        end = self.pick(*CLUSTERS) if self.chance(0.7) else self.pick(*PREPENDED)
        return texts.to_json(reread(texts.from_json(self.text()) + end))

    def tag(self):
        kind = self.random.random()
        if kind < 0.70:
            return self.pick(*TAGS)
        if kind < 0.80:
            return self.respelled(self.pick("--caf\u00e9", "-K", ";", "\uac01", "--\u1e69", "`"))
        if kind < 0.85:
            return self.pick(*self.pick(*NEAR_MISSES))
        if kind < 0.92:
            return self.cut_text()
        return self.text()

    def tags(self, least=0):
        count = self.random.choices((0, 1, 2, 3), (2, 55, 33, 10))[0]
        return [self.tag() for _ in range(max(least, count))]

    # values

    def path(self):
        kind = self.random.random()
        if kind < 0.50:
            return self.pick(*RELATIVE_PATHS)
        if kind < 0.70:
            return self.pick(*ABSOLUTE_PATHS)
        if kind < 0.75:
            return texts.to_json(texts.from_bytes(self.pick(b"bad\xffname", b"bad\xfename")))
        if kind < 0.90:
            return self.composed_path()
        return self.text_without_nul()

    def composed_path(self):
        segments = self.some(1, 5, lambda: self.pick(
            ".", "..", "", "dir", "sub", "file", "missing", "link-dir", "caf\u00e9", "..x"))
        return self.pick("", "", "/", "{here}/") + "/".join(segments)

    def text_without_nul(self):
        return texts.to_json(texts.from_json(self.text()).replace("\0", ""))

    def value_for(self, parameter):
        return KINDS[parameter["kind"]].draw_value(self, parameter)

    # parameters

    def parameter(self, *kinds):
        kind = self.pick(*(kinds or KINDS))
        parameter = {"kind": kind, "tags": self.tags(), "tagHelp": self.prose()}
        if KINDS[kind].has_parameter:
            parameter["parameterName"] = self.pick("path", "count", "", self.text())
        return parameter | KINDS[kind].draw_fields(self)

    def option(self):
        """An option may have no tag at all, which stops the process that reaches it."""
        first = self.pick("name", "date", "", "\u00e9", "K", "Name", self.tag(), self.cut_text())
        count = self.random.choices((0, 1, 2), (2, 70, 28))[0]
        return {"tags": [first, *self.some(1, 1, self.tag)][:count], "tagHelp": self.prose()}

    def filled_parameter(self, *kinds):
        parameter = self.parameter(*kinds)
        if self.chance(0.9):
            parameter["userValue"] = self.value_for(parameter)
        return parameter

    def respelled_parameter(self, parameter):
        """The same parameter, every text of it in another spelling."""
        twin = json.loads(json.dumps(parameter))
        twin["tags"] = list(map(self.respelled, twin["tags"]))
        for key in ("tagHelp", "parameterName", "userValue"):
            if key in twin:
                twin[key] = self.respelled(twin[key])
        return twin

    def nearly(self, parameter):
        """A parameter that differs in at most one place."""
        other = self.respelled_parameter(parameter)
        change = self.pick("tags", "order", "tagHelp", "parameterName", "userValue", "kind", "none")
        if change == "tags":
            other["tags"] = other["tags"][:-1] or [self.tag()]
        elif change == "order":
            other["tags"].reverse()
        elif change == "kind":
            other = self.of_another_kind(other)
        elif change in other:
            other[change] = self.missed(other[change])
        return other

    def of_another_kind(self, parameter):
        kept = {key: parameter[key] for key in ("tags", "tagHelp", "parameterName", "userValue")
                if key in parameter}
        other = self.parameter()
        if not KINDS[other["kind"]].has_parameter:
            kept.pop("parameterName", None)
        return other | kept

    # declarations

    def declaration(self):
        return {
            "requiresRoot": self.chance(0.1),
            "required": self.some(self.pick(0, 1, 1), 3, self.parameter),
            "optional": self.some(0, 3, self.parameter),
            "help": self.prose(),
            "hidden": self.chance(0.15),
        }

    def declarations(self):
        """Several commands; some share parameters or are another one's copy."""
        declared = self.some(1, 3, self.declaration)
        if self.chance(0.35):
            copy = json.loads(json.dumps(self.pick(*declared)))
            copy["help"] = self.prose()
            copy["optional"] += self.some(0, 1, self.parameter)
            declared.insert(self.random.randint(0, len(declared)), copy)
        if self.chance(0.3):
            self.share_a_parameter(declared)
        return declared

    def share_a_parameter(self, declared):
        """One parameter, or one tag, stands in two lists."""
        origin = [parameter for declaration in declared
                  for parameter in declaration["required"] + declaration["optional"]]
        target = self.pick(*declared)[self.pick("required", "optional")]
        if not origin:
            return
        shared = self.respelled_parameter(self.pick(*origin))
        if self.chance(0.5):
            shared = self.parameter() | {"tags": shared["tags"]}
        target.insert(self.random.randint(0, len(target)), shared)

    # command lines

    def arguments(self, declared):
        if self.chance(0.03):
            return self.some(0, 1, self.text)
        line = self.fitting_line(self.pick(*declared)) or self.fitting_line(self.pick(*declared))
        if not line or self.chance(0.3):
            line = self.damaged(line)
        return ["tool", *line]

    def fitting_line(self, declaration):
        """As many required ones as are declared, in any order, and some optional ones."""
        required = list(declaration["required"])
        if required and self.chance(0.1):
            required[self.random.randrange(len(required))] = self.pick(*required)
        optional = [parameter for parameter in declaration["optional"] if self.chance(0.5)]
        if optional and self.chance(0.15):
            optional.append(self.pick(*optional))
        given = required + optional
        self.random.shuffle(given)
        return [word for parameter in given for word in self.typed(parameter)]

    def typed(self, parameter):
        if not parameter["tags"]:
            return []
        tag = self.respelled(self.pick(*parameter["tags"]))
        return [tag, self.value_for(parameter)] if KINDS[parameter["kind"]].has_parameter else [tag]

    def damaged(self, line):
        damage = self.pick("end", "drop", "add", "miss", "escape", "swap", "none")
        at = self.random.randint(0, len(line))
        if damage == "end":
            return line[:-1]
        if damage == "drop":
            return line[:at] + line[at + 1:]
        if damage == "add":
            return line[:at] + [self.pick(self.tag(), self.text())] + line[at:]
        if damage == "escape":
            return line[:at] + [self.escaped_text()] + line[at:]
        if damage == "miss" and line:
            return line[:at] + list(map(self.missed, line[at:at + 1])) + line[at + 1:]
        if damage == "swap":
            return list(reversed(line))
        return self.some(1, 4, self.text)

    # calls

    def case_of_parse(self):
        declared = self.declarations()
        case = {"declarations": declared, "arguments": self.arguments(declared)}
        if self.chance(0.05):
            for parameter in parameters_in(declared):
                parameter["userValue"] = self.text_without_nul()
        if self.chance(0.3):
            case["fetch"] = self.pick("optional", "stopping")
        return case

    def case_of_displayHelp(self):
        return {"declarations": self.declarations() if self.chance(0.97) else []}

    def case_of_validate(self):
        return {"parameter": self.filled_parameter(*KINDS, "ParameterList", "ParameterList",
                                                   "ParameterFileURL", "ParameterFileURL")}

    def case_of_getValue(self):
        valued = [kind for kind in KINDS if KINDS[kind].has_value]
        return {"parameter": self.filled_parameter(*valued, "ParameterNumber", "ParameterFileURL")}

    def case_of_firstTag(self):
        parameter = self.filled_parameter()
        if self.chance(0.1):
            parameter["tags"] = []
        return {"parameter": parameter}

    def case_of_isEqualTo(self):
        return self.case_of_two(self.filled_parameter())

    def case_of_commonEqual(self):
        return self.case_of_two(self.filled_parameter())

    def case_of_flagEqual(self):
        left = self.filled_parameter("ParameterNone")
        right = self.nearly(left)
        if right["kind"] != "ParameterNone":
            right = self.respelled_parameter(left)
        return {"left": left, "right": right}

    def case_of_two(self, left):
        right = self.nearly(left) if self.chance(0.95) else self.filled_parameter()
        return {"left": left, "right": right}

    def case_of_rawValue(self):
        type_name = self.pick(*RAW_VALUES)
        text = self.pick(*RAW_VALUES[self.pick(type_name, type_name, *RAW_VALUES)])
        if self.chance(0.4):
            text = self.pick(self.missed(text), text.lower(), text.upper(), self.text())
        return {"type": type_name, "text": text}

    def lines(self):
        pieces = self.some(0, 6, lambda: self.pick(
            "\n", "\n", "\r\n", "\r", "\u0301", "\u2028", "\x85", "\u0600", "Password:",
            self.piece()))
        return texts.to_json(reread("".join(pieces)))

    def case_of_removeFirstLine(self):
        return {"text": self.lines()}

    def case_of_relay(self):
        return {"blocks": self.some(0, 5, self.lines)}

    def case_of_outputErrorMessage(self):
        return {"text": self.pick(self.text(), self.lines())}


def reread(text):
    """Stray bytes that have met may have become UTF-8."""
    return texts.from_bytes(texts.to_bytes(text))


CALL_WEIGHTS = {
    "parse": 50, "displayHelp": 12, "validate": 8, "getValue": 9, "firstTag": 1, "isEqualTo": 4,
    "commonEqual": 3, "flagEqual": 2, "rawValue": 2, "removeFirstLine": 3, "relay": 4,
    "outputErrorMessage": 2,
}
