"""Runs cases, compares what was observed with what the model expects, says where they differ."""

import json
import subprocess

import rules
import texts

ERRORS = "no observation: "


class RunnerFailed(Exception):
    pass


def observe(runner, cases):
    """The runner's observations of all cases, in their order."""
    lines = "".join(json.dumps(case) + "\n" for case in cases)
    run = subprocess.run(runner, input=lines.encode(), capture_output=True, check=False)
    answers = run.stdout.split(b"\n")[:-1]
    if run.returncode != 0 or len(answers) != len(cases):
        raise RunnerFailed(f"{runner} ended with {run.returncode} after {len(answers)} of "
                           f"{len(cases)} cases: {run.stderr.decode(errors='replace')}")
    return list(map(json.loads, answers))


def difference(expected, observed):
    """One line that names the first difference; nothing when there is none."""
    if "error" in observed:
        return ERRORS + str(observed["error"])
    if expected.keys() != observed.keys():
        return f"keys: expected {sorted(expected)}, observed {sorted(observed)}"
    for key in expected:
        if key == "stdout" and is_cut_short(expected, observed):
            continue
        if not same(expected[key], observed[key]):
            return key + ": " + first_difference(expected[key], observed[key])
    return None


def same(expected, observed):
    """`==` alone holds True and 1 for the same."""
    return expected == observed and json.dumps(expected, sort_keys=True) == json.dumps(
        observed, sort_keys=True)


def is_cut_short(expected, observed):
    """A process that is stopped may lose the end of what it has printed: buffering is open."""
    return (expected["stopped"] is observed["stopped"] is True
            and bytes_of(expected["stdout"]).startswith(bytes_of(observed["stdout"])))


def bytes_of(value):
    """The bytes of a text; of anything else, the JSON of it."""
    if isinstance(value, str) or isinstance(value, dict) and value.keys() == {"hex"}:
        return texts.to_bytes(texts.from_json(value))
    return json.dumps(value, sort_keys=True).encode()


def first_difference(expected, observed):
    left, right = bytes_of(expected), bytes_of(observed)
    at = next((at for at, pair in enumerate(zip(left, right)) if pair[0] != pair[1]),
              min(len(left), len(right)))
    return (f"byte {at} differs: expected {left[max(0, at - 20):at + 20]!r}, "
            f"observed {right[max(0, at - 20):at + 20]!r}")


def expectation_of(case):
    """Nothing where the answer depends on users of this machine that are not modelled."""
    try:
        return rules.observation_of(case)
    except rules.NotKnownHere:
        return None
