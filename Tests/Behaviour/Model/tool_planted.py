#!/usr/bin/python3
"""A runner that answers by the model of tools itself, with one error planted: tool_planted.py NAME.

Whoever compares with it must notice the error; with the name "none" nothing may differ.
"""
import json
import sys

import tools

ERRORS = {"words do not wait": ("explain", lambda: None), "near to nothing short":("explain", lambda: None), "good fits two": ("complete", lambda: None)}


def main():
    if sys.argv[1] != "none":
        ERRORS[sys.argv[1]][1]()
    for line in sys.stdin:
        case = json.loads(line)
        print(json.dumps(spoken(case, tools.observation_of(case))))


def spoken(case, observation):
    """With the words that the comparison leaves to others."""
    return observation | {"words": []} if case["call"] == "explain" else observation


if __name__ == "__main__":
    main()
