#!/usr/bin/python3
"""A tool's description says of drawn tools what they declare, is what its schema says, and is enough to
tell which lines fit: the model that knows nothing else judges lines as the tool itself does.

    description_test.py RUNNER SCHEMA [TOOL...] [--cases N] [--seed S | --seed random]

What the tools, by their programs, say of themselves must be what the schema says, too. The number of cases
is half of OPTRELLA_GENERATED_CASES where --cases does not give it: each is observed twice.
"""

import argparse
import json
import os
import pathlib
import random
import subprocess
import sys

import comparing
import generator
import spelling
import tool_generator
import tools
from rules import from_json

try:
    import jsonschema
except ImportError:
    jsonschema = None

CURATED = pathlib.Path(__file__).resolve().parent.parent / "Cases" / "description.jsonl"
BLOCK = 500
# In `tool`, where a case leaves a key out.
NOTHING_SAID = {"name": "", "version": "", "summary": "", "operands": [], "repeated": []}


def main():
    options = options_of(sys.argv[1:])
    print(f"seed {options.seed}, {options.cases} cases", flush=True)
    if jsonschema is None:
        print("skipped: the schema of descriptions: python3-jsonschema is missing")
    with generator.Playground():
        test = Test(options)
        test.run(options.cases)
    return test.report()


def options_of(arguments):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("runner", type=os.path.abspath)
    parser.add_argument("schema", type=pathlib.Path)
    parser.add_argument("tools", nargs="*", type=os.path.abspath)
    parser.add_argument("--cases", type=int,
                        default=int(os.environ.get("OPTRELLA_GENERATED_CASES", "3000")) // 2)
    parser.add_argument("--seed", default="1")
    options = parser.parse_args(arguments)
    if not os.access(options.runner, os.X_OK):
        parser.error(f"there is no program {options.runner}")
    if options.cases < 1:
        parser.error("--cases must be at least 1")
    options.schema = json.loads(options.schema.read_text(encoding="utf-8"))
    options.seed = random.SystemRandom().randrange(2**32) if options.seed == "random" else int(
        options.seed)
    return options


class Generator(tool_generator.Generator):
    def next_case(self, call=None):
        """A line for a tool; in every fourth tool, texts of any bytes."""
        if not self.chance(0.25):
            return super().next_case("explain")
        declarations = self.declarations()
        tool = self.tool(declarations) | {"name": self.text(), "version": self.text(), "summary": self.text()}
        return {"call": "explain", "declarations": declarations, "tool": tool,
                "arguments": self.tool_line(declarations, tool)}

    def value_of(self, parameter):
        """No choice without a word."""
        if parameter["kind"] != "ParameterList":
            return super().value_of(parameter)
        return super().value_of(parameter | {
            "validOptions": [option for option in parameter["validOptions"] if option["tags"]]})


class Test:
    def __init__(self, options):
        self.runner = [options.runner]
        self.seed = options.seed
        self.tools = options.tools
        self.schema = Schema(options.schema) if jsonschema else None
        self.faults = []
        self.validated = self.judged = self.runs = 0

    def run(self, count):
        if self.schema:
            self.faults += self.schema.faults_of_itself()
            self.validate_curated()
            self.validate_tools()
        cases = Generator(self.seed)
        for begin in range(0, count, BLOCK):
            if not self.faults:
                self.run_block([cases.next_case() for _ in range(min(BLOCK, count - begin))])

    def validate_curated(self):
        for line in CURATED.read_text(encoding="utf-8").splitlines():
            self.validate(json.loads(line), described(json.loads(line)["expect"]))

    def validate_tools(self):
        for tool in self.tools:
            ran = subprocess.run([tool, "--describe"], capture_output=True, check=False, stdin=subprocess.DEVNULL)
            if ran.returncode != 0 or ran.stderr:
                self.fail(tool, f"--describe ended with {ran.returncode}: {ran.stderr}")
            self.validate(tool, described({"value": ran.stdout}))

    def run_block(self, cases):
        # A description is of the conventional reading, whatever else the tool says.
        conventional = [case | {"tool": case["tool"] | {"spelling": "conventional"}} for case in cases]
        descriptions = comparing.observe(self.runner, [case | {"call": "description"} for case in cases])
        explanations = comparing.observe(self.runner, conventional)
        for case, observed, explained in zip(conventional, descriptions, explanations):
            self.take(case, observed, explained)

    def take(self, case, observed, explained):
        description = described(observed)
        if not comparing.same(description, declared(case)):
            return self.fail(case, f"is not what is declared: {observed}")
        self.validate(case, description)
        self.judge(case | rebuilt(description), explained)

    def validate(self, case, description):
        if self.schema:
            self.validated += 1
            if fault := self.schema.fault(description):
                self.fail(case, fault)

    def judge(self, case, explained):
        """Nothing of the case is left in there but the line."""
        expected = tools.observation_of(case)
        if expected is None:
            return
        self.judged += 1
        self.runs += expected["outcome"] == "runs"
        if fault := tools.difference(case, expected, explained):
            self.fail(case, f"{fault}\nexpected: {json.dumps(expected)}\nobserved: {json.dumps(explained)}")

    def fail(self, case, fault):
        self.faults.append(f"case: {json.dumps(case)}\n{fault}\n")

    def report(self):
        print(*self.faults[:5], sep="\n", end="")
        print(f"{len(self.faults)} faults; {self.validated} descriptions are what the schema says, "
              f"{self.judged} lines are judged, {self.runs} of them run")
        return 1 if self.faults or not self.runs or self.runs == self.judged else 0


# ---- Descriptions ----

def described(observed):
    """What a program reads; nothing where there is no JSON."""
    try:
        return json.loads(observed["value"])
    except (KeyError, TypeError, ValueError):
        return None


def declared(case):
    said = {key: case["tool"].get(key, nothing) for key, nothing in NOTHING_SAID.items()}
    first = {spelling.key(from_json(tag)): tag for tag in reversed(
        tool_generator.first_tags(case["declarations"]))}
    return {"optrella": 1, "declarations": case["declarations"]} | said | {
        "operands": [it | {"tag": as_declared(it["tag"], first)} for it in said["operands"]],
        "repeated": [as_declared(it, first) for it in said["repeated"]]}


def as_declared(tag, first):
    """An operand is made of the parameter, so it has that spelling of the tag."""
    return first.get(spelling.key(from_json(tag)), tag)


def rebuilt(description):
    """The keys of a case that are about the tool."""
    return {"declarations": description["declarations"],
            "tool": {key: description[key] for key in NOTHING_SAID}}


# ---- The schema ----

class Schema:
    def __init__(self, schema):
        self.plain = jsonschema.Draft202012Validator(schema)
        self.strict = jsonschema.Draft202012Validator(closed(schema))
        self.schema = schema

    def fault(self, description):
        """Every field that there is must be named: it is promised to stay."""
        error = next(self.strict.iter_errors(description), None)
        return error and f"the schema says of {list(error.absolute_path)}: {error.message}"

    def faults_of_itself(self):
        """It must refuse what lacks a field, and leave room for what is to come."""
        self.plain.check_schema(self.schema)
        sample = json.loads(json.dumps(SAMPLE))
        yield from filter(None, [self.fault(sample)])
        if not self.plain.is_valid(with_added_fields(sample)):
            yield "the schema refuses an added field"
        for name, inner in list(objects_in(sample)):
            for key in list(inner):
                taken = inner.pop(key)
                if self.plain.is_valid(sample):
                    yield f"the schema takes {name} without {key}"
                inner[key] = taken


def closed(schema):
    """The same, without room for other fields."""
    if isinstance(schema, list):
        return [closed(each) for each in schema]
    if not isinstance(schema, dict):
        return schema
    inner = {key: closed(each) for key, each in schema.items()}
    return inner | {"additionalProperties": False} if schema.get("type") == "object" else inner


def objects_in(value, name="the description"):
    if isinstance(value, dict):
        yield name, value
    for key, inner in value.items() if isinstance(value, dict) else enumerate(value):
        if isinstance(inner, (dict, list)):
            yield from objects_in(inner, key)


def with_added_fields(value):
    if isinstance(value, list):
        return list(map(with_added_fields, value))
    if not isinstance(value, dict):
        return value
    return {key: with_added_fields(each) for key, each in value.items()} | {"added": [{"later": None}]}


SAMPLE = {
    "optrella": 1, "name": "items", "version": "1", "summary": "", "repeated": ["-s", {"hex": "2dff"}],
    "operands": [{"tag": "-s", "takes": "rest"}],
    "declarations": [{"requiresRoot": True, "help": "", "hidden": False, "optional": [], "required": [
        {"kind": "ParameterNone", "tags": ["list"], "tagHelp": ""},
        {"kind": "ParameterString", "tags": ["-s"], "parameterName": "S", "tagHelp": ""},
        {"kind": "ParameterUUID", "tags": [], "parameterName": "U", "tagHelp": ""},
        {"kind": "ParameterNumber", "tags": ["-n"], "parameterName": "N", "min": -2**63, "max": 2**63 - 1,
         "tagHelp": ""},
        {"kind": "ParameterList", "tags": ["-l"], "parameterName": "L",
         "validOptions": [{"tags": ["a"], "tagHelp": ""}], "tagHelp": ""},
        {"kind": "ParameterFileURL", "tags": ["-f"], "parameterName": "F", "type": "file", "state": "absent",
         "tagHelp": ""},
        {"kind": "Port", "tags": ["-p"], "hasParameter": True, "parameterName": "P", "tagHelp": ""}]}]}


if __name__ == "__main__":
    sys.exit(main())
