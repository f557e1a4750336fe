"""What `runTool` does, but for its words: a line runs exactly when `explain` says that it does."""

import dataclasses

import explaining
import rules
import spelling
from rules import texts_of

WRONG = 64
# What every tool answers. The pages that it shows are tested elsewhere.
QUESTIONS = ("--help", "-h", "help", "--version", "--completion", "--manual", "--describe")
NOTHING_RAN = {"ran": None, "worker": False, "parameters": [], "fetched": []}


def run(tool, case):
    line = list(texts_of(case["arguments"]))[1:]
    tool = dataclasses.replace(tool, conventional=True)
    explanation = explaining.explain(tool, line)
    if explanation["outcome"] != "runs":
        return {"status": WRONG} | NOTHING_RAN
    index = explanation["attempts"][0]["declaration"]
    reader = spelling.readers_of(tool)[index]
    given = [rules.replace(reader.parameters[position], user_value=value or "")
             for position, value in reader.handed(reader.read(line))]
    return {
        "status": 0,
        "ran": index,
        "worker": True,
        "parameters": list(map(rules.as_handed_over, given)),
        "fetched": [rules.fetched(parameter, given, False) for parameter in reader.parameters],
    }


def may_ask(line):
    """Whether it may ask something that the tool answers itself."""
    return not line or any(it in QUESTIONS or it.startswith("--completion=") for it in line)


def fault_of_words(case, observed):
    """What holds for what is said, whatever it is."""
    line = list(texts_of(case["arguments"]))[1:]
    if observed["ran"] is not None or may_ask(line):
        return None
    if observed["stdout"] != "":
        return "stdout: of a line that is wrong nothing is printed"
    said = rules.from_json(observed["stderr"])
    name = rules.from_json(case["tool"].get("name", "")) + ": "
    if not said.endswith("\n") or not all(it.startswith(name) for it in said[:-1].split("\n")):
        return "stderr: each line begins with the tool's name"
    return None
