"""Searches over what declarations make of plainly written lines, by states and not by lines.

A track follows one declaration: a state, or nothing as soon as no further argument can help. Several
tracks go along one line together; a search asks which of their states can be reached.
"""

import spelling
import texts
from kinds import first_tag
from spelling import key

STATES_AT_MOST = 20000


class TooLarge(Exception):
    """The question is NP-hard; what takes too long is not asked."""


def choices_of(parameter):
    return [first_tag(option) for option in parameter.options if option.tags]


def symbols_of(tool):
    """What plainly written lines are made of: each tag and each choice once, and a word that is neither."""
    symbols = {}
    for declaration in tool.declarations:
        for parameter in declaration.required + declaration.optional:
            for text in [*parameter.tags, *choices_of(parameter)]:
                symbols.setdefault(key(text), text)
    if tool.conventional:
        symbols.pop("--", None)
    return [*symbols.values(), fresh_word(symbols)]


def fresh_word(symbols):
    return next(word for word in ("w" * count for count in range(1, 1000)) if word not in symbols)


class Track:
    """The states of one declaration. A strict one leaves nothing out, gives nothing twice and holds the
    choices; any other one only has to fit."""

    def __init__(self, reader, strict):
        self.reader, self.strict = reader, strict
        self.exact = isinstance(reader, spelling.Exact)
        self.start = (reader.start, frozenset(), 0)
        self.known = {}

    def next(self, state, argument):
        place = (state, argument)
        if place not in self.known:
            self.known[place] = self.stepped(state, argument)
        return self.known[place]

    def stepped(self, state, argument):
        if state is None:
            return None
        inner, given, count = state
        step = self.reader.step(inner, argument)
        if step.problem is not None or self.strict and not self.holds_choices(step):
            return None
        for position, _ in step.opened:
            if position in given and self.must_be_once(position):
                return None
            count += self.exact and position in self.reader.required
            given |= {position}
        if self.exact and count > len(self.reader.required):
            return None
        return step.state, self.kept(given), count

    def kept(self, given):
        """Where only the count matters, what was given makes no difference."""
        return given if self.strict or not self.exact else frozenset()

    def must_be_once(self, position):
        if self.strict:
            return position not in self.reader.often
        return not self.exact and position in self.reader.once

    def holds_choices(self, step):
        values = [*step.opened, *([step.filled] if step.filled else [])]
        return all(self.is_choice(self.reader.parameters[position], value)
                   for position, value in values if value is not None)

    @staticmethod
    def is_choice(parameter, value):
        return parameter.kind != "ParameterList" or any(
            texts.equal(value, choice) for choice in choices_of(parameter))

    def accepts(self, state):
        if state is None or self.reader.unfilled(state[0]) is not None:
            return False
        if self.exact and not self.strict:
            return state[2] == len(self.reader.required)
        return all(position in state[1] for position in self.reader.required)


class MaskedTrack(Track):
    """Of exact spelling: fits, and knows what was given."""

    def __init__(self, reader):
        super().__init__(reader, strict=False)

    def kept(self, given):
        return given

    def accepts(self, state):
        return super().accepts(state) and any(
            position not in state[1] for position in self.reader.required)


class SwallowingTrack(Track):
    """Of conventional spelling: knows whether an operand took the word that is no tag and no choice."""

    def __init__(self, reader, strict, word):
        super().__init__(reader, strict)
        self.word = word

    def stepped(self, state, argument):
        following = super().stepped(state, argument)
        if following is None:
            return None
        step = self.reader.step(state[0], argument)
        taken = argument == self.word and step.role in (spelling.PLAIN, spelling.REST) and step.opened
        return following[0], following[1], state[2] or bool(taken)

    def accepts(self, state):
        return super().accepts(state) and bool(state[2])


class Search:
    """`needed` says which tracks must go on, `is_goal` which states end a line."""

    def __init__(self, tracks, symbols, needed, is_goal):
        self.tracks, self.symbols, self.needed, self.is_goal = tracks, symbols, needed, is_goal
        self.judged = {}  # state: whether a goal can be reached from it, itself included

    def start(self):
        return tuple(track.start for track in self.tracks)

    def next(self, states, argument):
        """Nothing where a needed track ends; those go first."""
        needed = [self.tracks[at].next(states[at], argument) for at in self.needed]
        if None in needed:
            return None
        return tuple(track.next(state, argument) for track, state in zip(self.tracks, states))

    def after(self, states, arguments):
        for argument in arguments:
            states = self.next(states, argument)
            if states is None:
                return None
        return states

    def reaches(self, states):
        """Whether a goal can be reached: depth first, with what is known of earlier questions."""
        if states is None:
            return False
        path, seen = [(states, iter(self.symbols))], {states}
        while path:
            here, symbols = path[-1]
            if self.judged.get(here) or self.is_goal(here):
                self.judged.update((state, True) for state, _ in path)
                return True
            following = self.unseen(here, symbols, seen)
            if following is None:
                path.pop()
            else:
                path.append((following, iter(self.symbols)))
        self.judged.update(dict.fromkeys(seen, False))
        return False

    def unseen(self, here, symbols, seen):
        for symbol in symbols:
            following = self.next(here, symbol)
            if following is None or following in seen or self.judged.get(following) is False:
                continue
            seen.add(following)
            if len(seen) > STATES_AT_MOST:
                raise TooLarge
            return following
        return None

    def shortest(self):
        """A shortest line that ends in a goal; at least one argument. Nothing where there is none."""
        layer, seen = [(self.start(), ())], set()
        while layer:
            following = []
            for states, line in layer:
                for symbol in self.symbols:
                    reached = self.next(states, symbol)
                    if reached is None or reached in seen:
                        continue
                    if self.is_goal(reached):
                        return [*line, symbol]
                    seen.add(reached)
                    following.append((reached, (*line, symbol)))
            if len(seen) > STATES_AT_MOST:
                raise TooLarge
            layer = following
        return None


def alone(tool, readers, target, strict):
    """Lines that fit `target`, or more than that, and no other declaration."""
    tracks = [Track(reader, strict and index == target) for index, reader in enumerate(readers)]

    def is_goal(states):
        return tracks[target].accepts(states[target]) and not any(
            track.accepts(state) for index, (track, state) in enumerate(zip(tracks, states))
            if index != target)
    return Search(tracks, symbols_of(tool), [target], is_goal)


def both(tool, left, right):
    tracks = [Track(left, strict=True), Track(right, strict=True)]
    return Search(tracks, symbols_of(tool), [0, 1],
                  lambda states: all(map(Track.accepts, tracks, states)))


def swallowing(tool, reader, strict):
    symbols = symbols_of(tool)
    tracks = [SwallowingTrack(reader, strict, symbols[-1])]
    return Search(tracks, symbols, [0], lambda states: tracks[0].accepts(states[0]))


def masked(tool, reader):
    tracks = [MaskedTrack(reader)]
    return Search(tracks, symbols_of(tool), [0], lambda states: tracks[0].accepts(states[0]))
