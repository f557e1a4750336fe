"""The library's kinds of parameters: what each validates, what is fetched of it, and how the cases draw it.

One class a kind. A kind of the library without one here fails the generated cases, because the runner
names it. `draw` is the generator: its pools and its chances.
"""

import os
import re
import stat

import texts
from texts import equal, to_json


class FatalStop(Exception):
    """The process is stopped, without a message."""


def first_tag(tagged):
    if not tagged.tags:
        raise FatalStop
    return tagged.tags[0]


# --- values ---

def number_value(text):
    if not re.fullmatch("[+-]?[0-9]+", text):
        return -1
    value = int(text)
    return value if -2**63 <= value < 2**63 else -1


def uuid_value(text):
    return text.upper() if is_uuid(text) else "00000000-0000-0000-0000-000000000000"


def is_uuid(text):
    return re.fullmatch("[0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}", text) is not None


def path_exists(path):
    return os.path.exists(texts.to_bytes(path))


def file_url(path):
    """An absolute path stands as it is; a relative one, and it alone, loses its dot segments."""
    named = texts.to_bytes(path)
    here = os.getcwdb()
    if not named.startswith(b"/"):
        named = without_dot_segments(here + b"/" + named)
    if is_directory(named) and not named.endswith(b"/"):
        named += b"/"
    return "file://" + percent_encoded(named)


def is_directory(path):
    """A link to a directory is none."""
    try:
        return stat.S_ISDIR(os.lstat(path).st_mode)
    except (OSError, ValueError):
        return False


def without_dot_segments(path):
    """RFC 3986, 5.2.4, for a path that begins with a slash."""
    kept = []
    segments = path.split(b"/")[1:]
    for segment in segments:
        if segment == b"..":
            del kept[-1:]
        elif segment != b".":
            kept.append(segment)
    if segments[-1] in (b".", b".."):
        kept.append(b"")
    return b"/" + b"/".join(kept)


STANDS_IN_A_URL = frozenset(
    b"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~!$&'()*+,;=:@/")


def percent_encoded(path):
    return "".join(chr(byte) if byte in STANDS_IN_A_URL else f"%{byte:02X}" for byte in path)


# --- kinds ---

class Kind:
    """What a kind does that does not say otherwise."""

    has_parameter = True
    has_value = False  # whether the kind has getValue

    def validate(self, parameter):
        return None

    def value(self, parameter):
        return to_json(parameter.user_value)

    def described(self, description, parameter):
        """The descriptions of the help listing so far, with what the kind adds to its own."""
        return description

    def draw_fields(self, draw):
        """What a case says of the kind, beside tags, name and help."""
        return {}

    def draw_value(self, draw, parameter):
        return draw.pick(draw.text(), draw.tag())


class Flag(Kind):
    has_parameter = False


class String(Kind):
    pass


class UUID(Kind):
    def value(self, parameter):
        return uuid_value(parameter.user_value)

    def draw_value(self, draw, parameter):
        digits = "".join(draw.pick(*"0123456789abcdefABCDEF") for _ in range(32))
        value = "-".join((digits[:8], digits[8:12], digits[12:16], digits[16:20], digits[20:]))
        if draw.chance(0.5):
            return value
        at = draw.random.randint(0, 35)
        return draw.pick(
            digits, "{" + value + "}", value[:-1], value + "0", value + "\0", " " + value,
            value + "\n", value.replace("-", "_"), value[:at] + value[at + 1:],
            value[:at] + "g" + value[at + 1:], value[:at] + "\uff11" + value[at + 1:],
            value[:at] + "-" + value[at + 1:], value[:at] + "\u0301" + value[at:], "",
            "00000000-0000-0000-0000-000000000000", "urn:uuid:" + value)


class Number(Kind):
    has_value = True

    NUMBERS = (
        "0", "1", "-1", "7", "42", "500", "9223372036854775807", "9223372036854775808",
        "-9223372036854775808", "-9223372036854775809", "18446744073709551615",
        "18446744073709551616", "99999999999999999999", "9223372036854775799",
        "9223372036854775810", "-9223372036854775810",
    )
    SPOILERS = (
        " ", "\t", "\n", "\0", "+", "-", ".", ",", "_", "e3", "0x", "\uff14", "\u0663", "\u2212",
        "\u0301", "\u00b2", "x",
    )

    def value(self, parameter):
        return number_value(parameter.user_value)

    def draw_fields(self, draw):
        return {"min": draw.pick(1, -2**63, 9), "max": draw.pick(9, 2**63 - 1, 0)}

    def draw_value(self, draw, parameter):
        value = draw.pick(*self.NUMBERS) if draw.chance(0.6) else str(
            draw.random.randint(-2**draw.pick(8, 63, 64, 70), 2**draw.pick(8, 63, 64, 70)))
        if draw.chance(0.25):
            value = value.lstrip("-").zfill(draw.random.randint(2, 40))
        if draw.chance(0.2):
            value = draw.pick("+", "-") + value
        if draw.chance(0.25):
            at = draw.pick(0, len(value), draw.random.randint(0, len(value)))
            value = value[:at] + draw.pick(*self.SPOILERS) + value[at:]
        return draw.pick("", "+", "-", "word") if draw.chance(0.05) else value


class List(Kind):
    has_value = True

    def validate(self, parameter):
        if self.option_chosen(parameter) is not None:
            return None
        message = "Item " + parameter.user_value + " is not a valid option. It must be one of: "
        return self.with_choices(message, parameter)

    def value(self, parameter):
        option = self.option_chosen(parameter)
        if option is None:
            raise FatalStop
        return to_json(first_tag(option))

    @staticmethod
    def option_chosen(parameter):
        for option in parameter.options:
            if equal(first_tag(option), parameter.user_value):
                return option
        return None

    def described(self, description, parameter):
        return self.with_choices(description + "        Must be one of: ", parameter) + "\n"

    @staticmethod
    def with_choices(text, parameter):
        for option in parameter.options:
            text += first_tag(option) + ", "
        return texts.without_last_characters(text, 2)

    def draw_fields(self, draw):
        return {"validOptions": draw.some(0, 4, draw.option)}

    def draw_value(self, draw, parameter):
        """Mostly a first tag; now and then a later one, which is no choice."""
        choices = [option["tags"] for option in parameter["validOptions"] if option["tags"]]
        if not choices or draw.chance(0.15):
            return draw.text()
        chosen = draw.pick(*choices)
        return draw.respelled(chosen[0] if draw.chance(0.9) else chosen[-1])


class FileURL(Kind):
    has_value = True

    TYPES = ("file", "folder", "fileOrFolder")
    STATES = ("exist", "absent", "vague")

    def validate(self, parameter):
        if parameter.state == "vague":
            return None
        exists = path_exists(parameter.user_value)
        if parameter.state == "exist" and not exists:
            return parameter.user_value + " does not exist"
        if parameter.state == "absent" and exists:
            return parameter.user_value + " must not exist"
        return None

    def value(self, parameter):
        return file_url(parameter.user_value)

    def draw_fields(self, draw):
        return {"type": draw.pick(*self.TYPES), "state": draw.pick(*self.STATES)}

    def draw_value(self, draw, parameter):
        """Mostly a path that passes."""
        if draw.chance(0.5):
            return draw.path()
        if parameter["state"] == "absent":
            return draw.pick("missing", "dangling", "{here}/missing/", "file/")
        return draw.pick("file", "dir", "link-dir", "caf\u00e9", "{here}/dir", ".", "a b")


KINDS = {
    "ParameterNone": Flag(),
    "ParameterString": String(),
    "ParameterUUID": UUID(),
    "ParameterNumber": Number(),
    "ParameterList": List(),
    "ParameterFileURL": FileURL(),
}
