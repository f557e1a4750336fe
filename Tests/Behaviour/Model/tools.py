"""What the calls about a tool answer, and what is wrong with another answer."""

import completing
import explaining
import linting
import rules
import running
import searching
import spelling
from comparing import ERRORS, first_difference, same
from rules import from_json, to_json

SILENT = {"stdout": "", "stderr": "", "stopped": False}


def observation_of(case):
    """Nothing where the model does not judge: a list without a choice stops the process, and a search
    may be too large."""
    try:
        return ANSWERS[case["call"]](case, spelling.tool_of(case)) | SILENT
    except (rules.FatalStop, searching.TooLarge):
        return None


def explanation(case, tool):
    return explaining.explain(tool, list(rules.texts_of(case["arguments"])))


def completion(case, tool):
    return completing.complete(tool, list(rules.texts_of(case["before"])), from_json(case["current"]),
                               case["all"])


def findings(_case, tool):
    return {"findings": linting.findings_of(tool)}


def outcome(case, tool):
    return running.run(tool, case)


ANSWERS = {"explain": explanation, "complete": completion, "lint": findings, "runTool": outcome}


def difference(case, expected, observed):
    """One line; nothing where the observation is right."""
    if "error" in observed:
        return ERRORS + str(observed["error"])
    keys = [*expected, *(["words"] if case["call"] == "explain" else [])]
    if sorted(keys) != sorted(observed):
        return f"keys: expected {sorted(keys)}, observed {sorted(observed)}"
    if case["call"] == "lint":
        fault = linting.first_difference(spelling.tool_of(case), observed["findings"])
        if fault:
            return "findings: " + fault
        observed = observed | {"findings": expected["findings"]}
    if case["call"] == "explain" and (fault := fault_of_words(case, observed)):
        return fault
    if case["call"] == "runTool" and (fault := running.fault_of_words(case, observed)):
        return fault
    for name in expected:
        if name in left_open(case, expected):
            continue
        seen = comparable(name, observed[name])
        if not same(comparable(name, expected[name]), seen):
            return f"{name}: " + first_difference(expected[name], seen)
    return None


def fault_of_words(case, observed):
    """What holds for the words, whatever they are."""
    if any((attempt["why"] is None) != (attempt["unknown"] is None) for attempt in observed["attempts"]):
        return "attempts: an unknown argument, and no other, has a reason"
    if bool(observed["words"]) == (observed["outcome"] == "runs"):
        return "words: for what does not run, and for nothing else"
    name = from_json(case["tool"].get("name", ""))
    if not all(from_json(line).startswith(name + ": ") for line in observed["words"]):
        return "words: each line begins with the tool's name"
    return None


def left_open(case, expected):
    """What the model does not say."""
    if case["call"] != "runTool" or expected["ran"] is not None:
        return ()
    line = list(rules.texts_of(case["arguments"]))[1:]
    return ("status", "stdout", "stderr") if running.may_ask(line) else ("stdout", "stderr")


def comparable(name, value):
    """Without what more than one answer is right for."""
    if name == "attempts":
        return [{key: it for key, it in attempt.items() if key != "why"} | {
            "rejected": [it["parameter"] for it in attempt["rejected"]],
            "near": [to_json(spelling.key(from_json(it))) for it in attempt["near"]]} for attempt in value]
    if name == "offers":
        return [offer if offer["word"] is None else {
            key: it for key, it in offer.items() if key != "name"} for offer in value]
    return value
