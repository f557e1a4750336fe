"""Stands for the tests of macOS's layer where they cannot run, and says why: NoToolchain.py REASON"""

import sys

print(f"skipped: the layer of macOS: {sys.argv[1]}")
sys.exit(77)
