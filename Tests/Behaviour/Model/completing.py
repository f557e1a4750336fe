"""What `complete` answers: which words can follow, by searching for a good line that begins with them."""

from typing import NamedTuple, Optional

import searching
import spelling
import texts
from rules import first_tag
from spelling import PLAIN, REST, TAG, VALUE, key
from texts import to_json

REQUIRED_WORD, REQUIRED_TAG, DUE, OPTION = range(4)


class Offer(NamedTuple):
    kind: str
    word: Optional[str]
    help: str
    name: Optional[str]
    category: int
    position: int
    path: tuple = ()  # its type and state, which tell a placeholder from another

    def observed(self):
        return {"kind": self.kind, "word": None if self.word is None else to_json(self.word),
                "help": to_json(self.help), "name": None if self.name is None else to_json(self.name)}


def begins_with(word, beginning):
    start, whole = texts.characters(beginning), texts.characters(word)
    return len(start) <= len(whole) and all(map(texts.equal, whole, start))


class Completion:
    """The offers of one declaration."""

    def __init__(self, tool, readers, target, before):
        self.reader = readers[target]
        self.search = searching.alone(tool, readers, target, strict=True)
        self.states = self.search.after(self.search.start(), before)
        self.state, self.given, _ = self.states[target] if self.states is not None else (None, (), 0)
        self.fresh = self.search.symbols[-1]
        self.words = words_of(self.reader)

    def offers(self):
        if self.states is None:
            return []
        return [*self.tags(), *self.values()]

    def can_follow(self, word):
        return self.search.reaches(self.search.next(self.states, word))

    def tags(self):
        for position, parameter in enumerate(self.reader.parameters):
            for tag in parameter.tags:
                if self.reads_as_tag(position, tag) and self.can_follow(tag):
                    yield Offer("tag", tag, parameter.tag_help, None, self.category(position), position)

    def reads_as_tag(self, position, tag):
        if not self.is_written(tag):
            return False
        step = self.reader.step(self.state, tag)
        return step.role == TAG and [it for it, _ in step.opened] == [position] and (
            self.reader.owner(tag) == position)

    def is_written(self, word):
        return any(key(word) == key(symbol) for symbol in self.search.symbols)

    def category(self, position):
        if position in self.words:
            return REQUIRED_WORD
        return REQUIRED_TAG if position in self.reader.required else OPTION

    def values(self):
        for position, parameter in enumerate(self.reader.parameters):
            if not parameter.has_parameter:
                continue
            if parameter.kind == "ParameterList":
                yield from self.choices(position, parameter)
            elif self.reads_as_value(position, self.fresh) and self.can_follow(self.fresh):
                is_path = parameter.kind == "ParameterFileURL"
                yield Offer("path" if is_path else "value", None, parameter.tag_help,
                            parameter.parameter_name, DUE, position,
                            (parameter.type, parameter.state) if is_path else ())

    def choices(self, position, parameter):
        for option in parameter.options:
            choice = first_tag(option)
            if self.is_written(choice) and self.reads_as_value(position, choice) and self.can_follow(
                    choice):
                yield Offer("choice", choice, option.tag_help, None, DUE, position)

    def reads_as_value(self, position, word):
        step = self.reader.step(self.state, word)
        given = [step.filled[0]] if step.filled else [it for it, _ in step.opened]
        return step.role in (VALUE, PLAIN, REST) and given == [position]

    # for people

    def reduced(self, offers):
        """A value that is due stays: nothing else can follow it."""
        lacking = self.words.difference(self.given)
        if lacking:
            offers = [it for it in offers if it.kind != "tag" or it.position in lacking]
        operands = [position for position, _ in self.reader.operands]
        offers = [it for it in offers if it.kind != "tag" or it.position not in operands]
        return [it for it in offers if it.kind != "tag" or it == longest(it.position, offers)]


def words_of(reader):
    return frozenset(position for position in reader.required
                     if spelling.Conventional.is_word_flag(reader.parameters[position]))


def longest(position, offers):
    return max((it for it in offers if it.kind == "tag" and it.position == position),
               key=lambda it: len(texts.characters(it.word)))


def complete(tool, before, current, whole):
    readers = spelling.readers_of(tool)
    found = []
    for target, declaration in enumerate(tool.declarations):
        if declaration.hidden:
            continue
        completion = Completion(tool, readers, target, before)
        offers = [it for it in completion.offers() if can_begin_with(it, current)]
        found += offers if whole or current else completion.reduced(offers)
    ordered = sorted(once(found), key=lambda it: it.category)
    return {"offers": [it.observed() for it in ordered]}


def can_begin_with(offer, current):
    if offer.word is None:
        return not current.startswith("-")
    return begins_with(offer.word, current)


def once(offers):
    """The first declaration's offer of each word; of each placeholder."""
    seen = {}
    for offer in offers:
        same = ("word", key(offer.word)) if offer.word is not None else (
            offer.kind, key(offer.help), key(offer.name), offer.path)
        seen.setdefault(same, offer)
    return list(seen.values())
