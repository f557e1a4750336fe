"""Texts as the model reads them: equality, characters, rendering.

A text is a Python string in which each byte that is not part of UTF-8 stands as one of the
surrogates U+DC80 to U+DCFF (the "surrogateescape" of Python). In JSON a text is a string, or
{"hex": "..."} where it is not UTF-8.

Two libraries carry the Unicode data: `unicodedata` (14.0 in Python 3.11) the canonical
equivalence, and the `regex` package (15.0 in Debian 12) the boundaries of characters. The
generator therefore keeps to characters that 14.0 has. It also keeps off viramas (category Mn
and combining class 9), because here sources differ: since Unicode 15.1 rule GB9c of UAX 29 holds
a consonant, a virama and a consonant together, and `regex` as of 2022 does not know it yet. Nor
does it draw pictographs that are no emoji: Unicode 17 has fewer of them.
"""

import unicodedata

import regex

SHORT_ESCAPES = {
    '"': '\\"', "'": "\\'", "\\": "\\\\",
    "\t": "\\t", "\n": "\\n", "\r": "\\r", "\0": "\\0",
}
INVISIBLE = regex.compile(r"\p{Default_Ignorable_Code_Point}|\p{Noncharacter_Code_Point}")
EMOJI_SEQUENCE = regex.compile(r"LOOK(?:\u200dLOOK)*".replace(
    "LOOK", r"\p{Extended_Pictographic}[\ufe0f\U0001f3fb-\U0001f3ff]?"))


def from_bytes(data):
    return data.decode("utf-8", "surrogateescape")


def to_bytes(text):
    return text.encode("utf-8", "surrogateescape")


def from_json(value):
    return value if isinstance(value, str) else from_bytes(bytes.fromhex(value["hex"]))


def to_json(text):
    return text if is_utf8(text) else {"hex": to_bytes(text).hex()}


def is_stray_byte(character):
    return "\udc80" <= character <= "\udcff"


def is_utf8(text):
    return text.isascii() or not any(map(is_stray_byte, text))


def equal(left, right):
    """Canonical equivalence; byte by byte as soon as one of the two is not UTF-8."""
    if left == right:
        return True
    if not (is_utf8(left) and is_utf8(right)):
        return False
    return unicodedata.normalize("NFD", left) == unicodedata.normalize("NFD", right)


def all_equal(left, right):
    return len(left) == len(right) and all(map(equal, left, right))


def characters(text):
    """User-perceived characters. A stray byte is one of its own: to `regex` it is a surrogate,
    which joins nothing."""
    return regex.findall(r"\X", text)


def without_last_characters(text, count):
    kept = characters(text)
    return "".join(kept[:max(0, len(kept) - count)])


def rendered(text):
    """Within an emoji sequence nothing invisible is without an effect."""
    pieces, end = [], 0
    for emoji in EMOJI_SEQUENCE.finditer(text):
        pieces += [*map(rendered_code_point, text[end:emoji.start()]), emoji[0]]
        end = emoji.end()
    pieces += map(rendered_code_point, text[end:])
    return '"' + "".join(pieces) + '"'


def rendered_code_point(character):
    if character in SHORT_ESCAPES:
        return SHORT_ESCAPES[character]
    if is_stray_byte(character):
        return f"\\x{{{ord(character) - 0xDC00:02X}}}"
    if must_be_escaped(character):
        return f"\\u{{{ord(character):02X}}}"
    return character


def must_be_escaped(character):
    return (unicodedata.category(character) in ("Cc", "Zl", "Zp")
            or INVISIBLE.match(character) is not None)


def rendered_list(texts):
    return "[" + ", ".join(map(rendered, texts)) + "]"
