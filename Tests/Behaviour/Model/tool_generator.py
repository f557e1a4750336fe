"""Cases about tools drawn at random: small tools whose parameters are shared and whose tags collide, and
lines in the forms of both spellings, many of them mistyped. The same seed draws the same cases."""

import json

import generator
import texts
from kinds import KINDS
from texts import to_json

OPTION_TAGS = (
    "-a", "-n", "-v", "-s", "--name", "--sort", "--force", "-ab", "-1", "-\u00e9", "-e\u0301", "--caf\u00e9",
    "--cafe\u0301", "--e\u0301te\u0301", "--size", "--forces", "-name", "--help", "-h", "--dry-run",
)
WORD_TAGS = (
    "list", "lists", "remove", "add", "to", "a", "\u00e9", "e\u0301", "-", "eth0", "state", "help",
    "e\u0301te\u0301", "\u00e9t\u00e9s",
)
# Tags that one declaration has to tell apart.
FAMILIES = (("-a", "-n", "--an"), ("-n", "-e", "--ne"), ("--sort", "--sorts", "--port", "--fort"),
            ("--bat", "--cat", "--hat", "--bats"), ("list", "lists", "liste"), ("\u00e9t\u00e9", "\u00e9tes"),
            ("--disk", "disk"))
CHOICES = ("name", "size", "list", "-v", "\u00e9", "e\u0301", "a", "-1", "on", "x=y")
VALUES = ("w", "disk0", "name", "list", "", "-", "-x", "-5", "5", "12", "--", "--help", "-v", "=", "a=b",
          "lsit", "force", "\u00e9", "siz", "-n5")
NUMBERS = ("5", "-5", "0", "+3", "12", "-12", "99", "abc", "", "-", "5x", "-9223372036854775809",
           "9223372036854775808", "-1")
UUID = "0f8fad5b-d9cb-469f-a165-70867728950e"
PATHS = ("file", "dir", "missing")
KINDS_DRAWN = ("ParameterNone", *KINDS, "ParameterNone", "ParameterString")
CALLS = ("explain", "complete", "lint", "runTool")
WEIGHTS = (40, 35, 10, 15)


class Generator(generator.Generator):
    def next_case(self, call=None):
        call = call or self.random.choices(CALLS, WEIGHTS)[0]
        declarations = self.tool_declarations(call)
        if call == "runTool":  # whoever is not root would hand over to sudo
            declarations = [it | {"requiresRoot": False} for it in declarations]
        tool = self.tool(declarations)
        return {"call": call, "declarations": declarations, "tool": tool} | getattr(
            self, "keys_of_" + call)(declarations, tool)

    # tools

    def tool_declarations(self, call):
        """The parameters are drawn first: what declarations share makes them hard to tell apart."""
        pool = self.some(2, 6, lambda: self.tool_parameter(call))
        if self.chance(0.2):
            pool = self.family(call)
        count = self.random.choices((1, 2, 3, 4), (20, 45, 25, 10))[0]
        return [self.tool_declaration(pool) for _ in range(count)]

    def tool_declaration(self, pool):
        """Mostly a parameter stands in a declaration once."""
        drawn = self.random.sample(pool, min(len(pool), self.pick(1, 2, 3, 4, 4)))
        if self.chance(0.08):
            drawn.append(self.pick(*pool))
        required, optional = [], []
        for parameter in drawn:
            is_word = parameter["kind"] == "ParameterNone" and is_word_first(parameter)
            (required if self.chance(0.85 if is_word else 0.4) else optional).append(
                self.respelled_parameter(parameter) if self.chance(0.1) else parameter)
        return {"requiresRoot": self.chance(0.15), "required": required, "optional": optional,
                "help": self.pick("Do it", "List", ""), "hidden": self.chance(0.15)}

    def family(self, call):
        short = self.chance(0.5)
        return [self.tool_parameter(call, self.pick("ParameterNone", "ParameterString")) | {"tags": [tag]}
                for tag in self.pick(*(FAMILIES[:2] if short else FAMILIES[2:]))]

    def tool_parameter(self, call, *kinds):
        kind = self.pick(*kinds or KINDS_DRAWN)
        parameter = {"kind": kind, "tags": self.tool_tags(call), "tagHelp": self.pick("", "help", "The name")}
        if KINDS[kind].has_parameter:
            parameter["parameterName"] = self.pick("NAME", "DISK", "")
        return parameter | self.fields(kind, call)

    def tool_tags(self, call):
        count = self.random.choices((1, 2, 3), (70, 25, 5))[0]
        tags = [self.tool_tag() for _ in range(count)]
        if call == "lint" and self.chance(0.06):
            return self.pick([], [""], ["--"], ["two words"], ["x\u200by"], ["x\x07"])
        if self.chance(0.02):
            tags.append(self.pick("--", to_json(texts.from_bytes(b"-\xff")), "--x=y", "-\u00e9\u0301"))
        return tags

    def tool_tag(self):
        return self.pick(*(OPTION_TAGS if self.chance(0.6) else WORD_TAGS))

    def fields(self, kind, call):
        if kind == "ParameterNumber":
            least, greatest = self.pick((1, 9), (-9, 9), (-2**63, 2**63 - 1), (-9, -1))
            if call == "lint" and self.chance(0.1):
                least, greatest = greatest, least
            return {"min": least, "max": greatest}
        if kind == "ParameterList":
            return {"validOptions": [self.tool_option() for _ in range(self.random.randint(
                0 if call == "lint" and self.chance(0.1) else 1, 3))]}
        if kind == "ParameterFileURL":
            return self.pick({"type": "fileOrFolder", "state": "vague"},
                             {"type": "file", "state": "exist"}, {"type": "folder", "state": "exist"},
                             {"type": "fileOrFolder", "state": "absent"})
        return {}

    def tool_option(self):
        return {"tags": [self.pick(*CHOICES), *(["other"] if self.chance(0.1) else [])],
                "tagHelp": self.pick("", "by it")}

    def tool(self, declarations):
        tool = {"name": "items", "spelling": "exact" if self.chance(0.25) else "conventional"}
        first = first_tags(declarations)
        if first and self.chance(0.7):
            count = self.random.choices((1, 2, 3), (50, 35, 15))[0]
            chosen = self.random.sample(first, min(len(first), count))
            tool["operands"] = [{"tag": self.respelled(tag), "takes": "one"} for tag in chosen]
            last = tool["operands"][-1 if self.chance(0.93) else 0]
            last["takes"] = self.pick("one", "one", "many", "rest")
        if first and self.chance(0.3):
            tool["repeated"] = [self.pick(*first)]
        if self.chance(0.03):
            tool.setdefault("operands", []).append({"tag": self.tool_tag(), "takes": "one"})
        return tool

    # lines

    def tool_line(self, declarations, tool):
        declaration = self.pick(*declarations)
        given = [it for it in declaration["required"] if self.chance(0.95)]
        given += [it for it in declaration["optional"] if self.chance(0.5)]
        if given and self.chance(0.15):
            given.append(self.pick(*given))
        self.random.shuffle(given)
        if self.chance(0.7):
            given.sort(key=lambda it: not is_word_first(it))
        conventional = tool["spelling"] == "conventional"
        line = self.line_of(given, tool) if conventional else [
            word for parameter in given for word in self.typed(parameter)]
        return self.damaged_line(line) if self.chance(0.45) else line

    def line_of(self, given, tool):
        operands = {json.dumps(it["tag"]): it["takes"] for it in tool.get("operands", [])}
        words = []
        for parameter in given:
            takes = parameter["tags"] and operands.get(json.dumps(parameter["tags"][0]))
            if takes and self.chance(0.8):
                words += [[self.value_of(parameter)] for _ in range(
                    1 if takes == "one" else self.random.randint(1, 3))]
            elif parameter["tags"]:
                words.append(self.written(parameter))
        return [word for some in self.joined(words) for word in some]

    def written(self, parameter):
        """A tag with its value, if it takes one, in one of the forms."""
        typed = self.typed(parameter)
        if len(typed) == 2 and isinstance(typed[0], str) and isinstance(typed[1], str):
            if typed[0].startswith("--") and self.chance(0.4):
                return [typed[0][self.chance(0.15):] + "=" + typed[1]]
            if typed[0].startswith("-") and len(texts.characters(typed[0])) == 2 and self.chance(0.4):
                return [typed[0] + self.pick("", "", "", "=") + typed[1]]
        if isinstance(typed[0], str) and typed[0].startswith("--") and self.chance(0.05):
            return [typed[0][1:], *typed[1:]]
        return typed

    def joined(self, words):
        """Neighbouring short options become one argument, now and then."""
        done = []
        for some in words:
            before = done[-1] if done else None
            if before and len(before) == 1 and is_short(before[0]) and is_short(some[0]) and self.chance(
                    0.5):
                done[-1] = [before[0] + some[0][1:], *some[1:]]
            else:
                done.append(list(some))
        if self.chance(0.12):
            done.insert(self.random.randint(0, len(done)), ["--"])
        return done

    def typed(self, parameter):
        if not parameter["tags"]:
            return []
        tag = self.respelled(self.pick(*parameter["tags"]))
        return [tag, self.value_of(parameter)] if KINDS[parameter["kind"]].has_parameter else [tag]

    def value_of(self, parameter):
        kind = parameter["kind"]
        if self.chance(0.12):
            return self.any_word()
        if kind == "ParameterNumber":
            return self.pick(*NUMBERS)
        if kind == "ParameterUUID":
            return self.pick(UUID, UUID.upper(), UUID[:-1])
        if kind == "ParameterFileURL":
            return self.pick(*PATHS)
        if kind == "ParameterList" and parameter["validOptions"]:
            return self.respelled(self.pick(*parameter["validOptions"])["tags"][0])
        return self.pick(*VALUES)

    def any_word(self):
        return self.pick(self.pick(*VALUES), self.tool_tag(), self.pick(*CHOICES), self.pick(*NUMBERS),
                         to_json(texts.from_bytes(b"-\xff")), to_json(texts.from_bytes(b"\xff")))

    def damaged_line(self, line):
        at = self.random.randint(0, len(line))
        damage = self.random.choices(("drop", "add", "type", "swap", "again"), (20, 25, 35, 10, 10))[0]
        if damage == "drop":
            return line[:at] + line[at + 1:]
        if damage == "add":
            return line[:at] + [self.any_word()] + line[at:]
        if damage == "again":
            return line[:at] + line[at - 1:at] + line[at:]
        if damage == "swap":
            return line[:at][::-1] + line[at:]
        return line[:at] + list(map(self.mistyped, line[at:at + 1])) + line[at + 1:]

    def mistyped(self, word):
        """One or two mistakes."""
        return self.mistake(self.mistake(word) if self.chance(0.25) else word)

    def mistake(self, word):
        """One character too many, too few, another one or at another place; or case, dashes, the end."""
        characters = texts.characters(texts.from_json(word))
        at = self.random.randint(0, max(0, len(characters) - 1))
        here = characters[at:at + 1]
        changed = self.pick(
            characters[:at] + characters[at + 1:], characters[:at] + here + characters[at:],
            characters[:at] + [self.pick("x", "\u00e9", "e\u0301", "-")] + characters[at + 1:],
            characters[:at] + characters[at + 1:at + 2] + here + characters[at + 2:],
            [it.swapcase() if it.isascii() else it for it in characters],
            ["-", *characters], characters[1:], characters[:2], characters[:3],
            characters[:5], characters[:6],
            characters + ["=", "x"])
        return to_json(generator.reread("".join(changed)))

    # calls

    def keys_of_explain(self, declarations, tool):
        if self.chance(0.03):
            return {"arguments": []}
        return {"arguments": self.tool_line(declarations, tool)}

    def keys_of_runTool(self, declarations, tool):
        tool = tool | {"spelling": "conventional"}
        return {"arguments": ["items", *self.keys_of_explain(declarations, tool)["arguments"]]}

    def keys_of_complete(self, declarations, tool):
        line = self.tool_line(declarations, tool) if self.chance(0.8) else []
        before = line[:self.random.randint(0, len(line))]
        return {"before": before, "current": self.current(declarations, line[len(before):]),
                "all": self.chance(0.6)}

    def current(self, declarations, following):
        if self.chance(0.6):
            return ""
        tags = [tag for tag in all_tags(declarations) if isinstance(tag, str)]
        word = self.pick(*(tags + following[:1] or ["x"]))
        characters = texts.characters(texts.from_json(self.respelled(word)))
        return to_json("".join(characters[:self.random.randint(1, 3)]))

    def keys_of_lint(self, _declarations, _tool):
        return {}


def is_word_first(parameter):
    tag = texts.from_json(parameter["tags"][0]) if parameter["tags"] else "-x"
    return not tag.startswith("-") or tag == "-"


def is_short(word):
    return isinstance(word, str) and word[:1] == "-" and word[1:2] not in ("", "-") and (
        len(texts.characters(word)) == 2)


def first_tags(declarations):
    """Of the parameters that take a value, each once."""
    found = {}
    for parameter in generator.parameters_in(declarations):
        if KINDS[parameter["kind"]].has_parameter and parameter["tags"]:
            found.setdefault(json.dumps(parameter["tags"][0]), parameter["tags"][0])
    return list(found.values())


def all_tags(declarations):
    return [tag for parameter in generator.parameters_in(declarations) for tag in parameter["tags"]]
