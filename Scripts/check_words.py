#!/usr/bin/env python3
"""Holds the sources, the pages and new commit messages to the field's words: check_words.py [ROOT]

Scripts/words.txt lists the words. Commit messages are looked at from the commit on that added this
script; without git's records of it, they are left out, which is said.
"""

import pathlib
import re
import subprocess
import sys

WORDS = "Scripts/words.txt"
SCRIPT = "Scripts/check_words.py"
# What others have written, what is drawn by chance, and what a case is about.
LEFT_OUT = re.compile(r"\.jsonl$|^Tests/Fuzz/Corpus/|\.dict$|^Tests/ToolAuthor/refused\.txt$")


def read_words(root):
    words = {}
    for line in (root / WORDS).read_text().splitlines():
        if line and not line.startswith("#"):
            word, instead, allowed = (re.split(r"  +", line) + [""])[:3]
            words[word] = (instead, re.compile(allowed) if allowed else None)
    return words


class Words:
    def __init__(self, words):
        self.words = words
        # Also as a part of a name, in either case, but not of a longer word.
        self.pattern = re.compile("|".join(
            rf"(?<![a-zA-Z]){word}(?![a-z])|(?<![A-Z]){word.capitalize()}(?![a-z])"
            rf"|(?<![A-Z]){word.upper()}(?![A-Z])" for word in words))

    def faults(self, text):
        for number, line in enumerate(text.splitlines(), 1):
            for found in self.pattern.finditer(line):
                word = found.group().lower()
                instead, allowed = self.words[word]
                if allowed is None or not allowed.search(line):
                    yield number, word, instead


def git(root, *arguments):
    done = subprocess.run(["git", "-C", root, *arguments], capture_output=True, text=True, check=False)
    return done.stdout if done.returncode == 0 else None


def tracked(root):
    listed = git(root, "ls-files", "-z", "--cached", "--others", "--exclude-standard")
    if listed is None:  # an exported copy
        return sorted(each.relative_to(root).as_posix() for each in root.rglob("*") if each.is_file())
    return sorted(set(listed.split("\0")) - {""})


def text_of(file):
    try:
        return file.read_text(encoding="utf-8")
    except (UnicodeDecodeError, FileNotFoundError, IsADirectoryError):
        return ""


def messages(root):
    """The commits whose messages count, and those; nothing where git does not tell."""
    added = git(root, "log", "--diff-filter=A", "--format=%H", "--", SCRIPT)
    if not added:
        return None
    first = added.split()[-1]
    log = git(root, "log", "--format=%h%x00%B%x01", f"{first}..HEAD") or ""
    return [entry.strip().split("\0", 1) for entry in log.split("\1") if entry.strip()]


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent.parent)
    words = Words(read_words(root))
    files = [path for path in tracked(root) if path != WORDS and not LEFT_OUT.search(path)]
    places = [(path, text_of(root / path)) for path in files]
    commits = messages(root)
    if commits is None:
        print("words: commit messages are left out: git does not know this script here")
    places += [(f"commit {name}", message) for name, message in commits or []]
    found = [f"{place}:{number}: '{word}': write {instead}"
             for place, text in places for number, word, instead in words.faults(text)]
    if found:
        print("\n".join(found))
        sys.exit(1)
    print(f"words: {len(files)} files and {len(commits or [])} commit messages, no fault")


if __name__ == "__main__":
    main()
