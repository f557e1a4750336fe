#!/usr/bin/env python3
"""The hosted CI file is YAML, and names presets and scripts that there are."""

import json
import os
import pathlib
import re
import sys
import unittest

try:
    import yaml
except ImportError:
    print("skipped: there is no python3-yaml")
    sys.exit(0)

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
FILE = ROOT / ".github" / "workflows" / "ci.yml"
PRESETS = {each["name"]
           for each in json.loads((ROOT / "CMakePresets.json").read_text())["workflowPresets"]}


class HostedCI(unittest.TestCase):
    def setUp(self):
        self.jobs = yaml.safe_load(FILE.read_text())["jobs"]

    def commands(self):
        return [step["run"] for job in self.jobs.values() for step in job["steps"] if "run" in step]

    def test_linux_runs_every_workflow_preset(self):
        self.assertEqual(set(self.jobs["linux"]["strategy"]["matrix"]["preset"]), PRESETS)
        self.assertIn("cmake --workflow --preset ${{ matrix.preset }}",
                      [step.get("run") for step in self.jobs["linux"]["steps"]])

    def test_named_presets_exist(self):
        named = re.findall(r"--preset (\w+)", "\n".join(self.commands()))
        self.assertTrue(named)
        self.assertLessEqual(set(named), PRESETS)

    def test_named_scripts_exist(self):
        named = re.findall(r"\b(?:Scripts|Tests)/[\w/.]+", "\n".join(self.commands()))
        self.assertIn("Tests/Package/consume", named)
        for script in named:
            self.assertTrue(os.access(ROOT / script, os.X_OK), script)

    def test_every_job_installs_what_the_lists_of_packages_name(self):
        for name, job in self.jobs.items():
            commands = [step.get("run", "") for step in job["steps"]]
            self.assertRegex("\n".join(commands), r"(?m)^Scripts/prepare (all|check)$", name)
            self.assertFalse([each for each in commands if "brew" in each], name)

    def test_every_job_says_where_it_runs(self):
        for name, job in self.jobs.items():
            self.assertRegex(job["runs-on"], r"^(ubuntu|macos)-", name)


if __name__ == "__main__":
    unittest.main()
