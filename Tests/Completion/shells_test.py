"""What shells complete, at a terminal: shells_test.py COMPLETION_TOOL SESSIONS

Each shell says what it offers after a line, and that is compared with what the tool answers. What
it inserts is run: the tool then gets the word that was offered.
"""

import functools
import json
import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
import unittest

try:
    from interactive import Bash, Fish, Zsh
except ImportError as error:
    print(f"skipped: what shells complete: {error}")
    sys.exit(77)

TOOL = EXAMPLE = ""
INSTALLED = {"bash": "bash-completion/completions/my-stock",
             "zsh": "zsh/site-functions/_my-stock",
             "fish": "fish/vendor_completions.d/my-stock.fish"}
FILES = ["a file", "it's", "other file", "sessions.txt"]
DIRECTORIES = ["a dir", "other dir"]

# TAB is pressed in them after each character.
LINES = [["list", "--sort", "name", "--limit", "5", "--all"],
         ["list", "-s", "size:up", "-a"],
         ["list", "--sort=size:down", "--limit=7", "--all=x"],
         ["open", "two words", "--all"],
         ["open", "colon:ab"],
         ["open", "dollar$HOME"],
         ["remove", "-y", "plain", "it's", "caf\u00e9 cr\u00e8me"],
         ["import", "other file", "--yes", "--log", "a"],
         ["place", "there"],
         ["find", "there", "more"],
         ["run", "--label", "x", "anything", "-x", "--all"],
         ["note", "add", "hello", "--label", "a", "-l", "b"],
         ["set", "host:port"],
         ["set", "colour=never"],
         ["set", "@home"],
         ["db:migrate"],
         ["caf\u00e9"],
         ["open", "--", "--sort=d"],
         ["nonsense", "list"]]


def quoted(word):
    """The word as all shells read it, if they read it before anything else."""
    escaped = "".join(each if each.isalnum() or each in "-/=:.@" else "\\" + each for each in word)
    return "\\" + escaped if escaped.startswith("=") else escaped


@functools.cache
def answer(*typed, **of):
    """Kinds and words, as a tool answers in a directory."""
    result = subprocess.run([of.get("tool", TOOL), *map(os.fsencode, typed)], env={"OPTRELLA_COMPLETE": "1"},
                            cwd=of.get("directory"), stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True)
    lines = os.fsdecode(result.stdout).split("\n")[:-1]
    return [(kind, word) for kind, word, help_text in (line.split("\t") for line in lines)]


def words(*typed, **of):
    """The words among the offers."""
    return [word for kind, word in answer(*typed, **of) if word and kind in ("tag", "choice", "value")]


def paths(*typed, **of):
    """What the shell has to offer of the files in its directory."""
    found = []
    for kind, before in answer(*typed, **of):
        if kind in ("file", "directory", "path"):
            names = DIRECTORIES + (FILES if kind != "directory" else [])
            beginning = typed[-1][len(before):]
            found += [before + name for name in names if name.startswith(beginning)]
    return found


def described_lines(tool):
    """A line of each command that a tool shows, with all that it takes."""
    def value(parameter):
        if "validOptions" in parameter:
            return parameter["validOptions"][0]["tags"][0]
        return str(parameter["min"]) if "min" in parameter else "web"

    described = json.loads(subprocess.run([tool, "--describe"], stdout=subprocess.PIPE, check=True).stdout)
    operands = {each["tag"] for each in described["operands"]}
    for declaration in described["declarations"]:
        line, last = [], []
        for parameter in declaration["required"] + declaration["optional"]:
            tag = parameter["tags"][0]
            if tag in operands:
                last.append(value(parameter))
            else:
                line += [tag] if parameter["kind"] == "ParameterNone" else [tag, value(parameter)]
        if not declaration["hidden"]:
            yield line + last


def typed_one_after_the_other(name, lines):
    """What stands on the command line after each character of the words of lines."""
    typed = {}
    for line in lines:
        for place, word in enumerate(line):
            for size in range(len(word) + 1):
                words_so_far = [*line[:place], word[:size]]
                typed[" ".join([name, *map(quoted, words_so_far)])] = words_so_far
    return typed


def unique_beginning(word, among):
    """The shortest one, or nothing where all of it begins another word, too."""
    for size in range(1, len(word)):
        if [each for each in among if each.startswith(word[:size])] == [word]:
            return word[:size]
    return None


class Work:
    """A directory with the tool, and with its completion files where packages install them."""

    def __init__(self):
        self.path = pathlib.Path(tempfile.mkdtemp(prefix="completion-"))
        self.write("bin/my-stock", pathlib.Path(TOOL).read_bytes())
        self.write("bin/sessions", pathlib.Path(EXAMPLE).read_bytes())
        for shell, name in INSTALLED.items():
            self.write(f"share/{name}", script(shell))
        # Another tool of this name, which shows by its answer that it was asked.
        other = b"#!/bin/sh\nprintf 'tag\\tanother-one\\t\\n'\n"
        self.write("home/other dir/my-stock", other)
        self.write("here/other dir/my-stock", other)
        self.write("other/my-stock", other)
        for name in FILES:
            self.write(f"here/{name}", b"")
        self.write("here/sessions.txt", b"web active 0 3 eu prod\nmail locked 5 40\nweb-2 active 0 0 eu\n")
        self.write("here/a dir/inner file", b"")
        self.write("home/my file", b"")
        self.write("home/my dir/inner file", b"")
        # Without it fish, in the background, makes completions of all manual pages and writes them here.
        for data in ("share", "nothing"):
            (self.path / data / "fish/generated_completions").mkdir(parents=True)

    def write(self, name, content):
        file = self.path / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_bytes(content)
        file.chmod(0o755)

    def close(self):
        shutil.rmtree(self.path)


def script(shell):
    return subprocess.run([TOOL, "--completion", shell], capture_output=True, check=True).stdout


class Script(unittest.TestCase):
    def test_is_read_without_an_error_by_its_shell(self):
        for shell in INSTALLED:
            if shutil.which(shell) is None:
                print(f"skipped: the syntax of the script of {shell}: there is none")
                continue
            with self.subTest(shell):
                result = subprocess.run([shell, "-n"], input=script(shell), capture_output=True, check=False)
                self.assertEqual((result.returncode, result.stdout, result.stderr), (0, b"", b""))

    def test_does_nothing_in_a_bash_that_is_too_old(self):
        """macOS has 3.2, which may read all that is installed whenever it starts."""
        for kept, status in (("", 0), ("enable -n compopt", 1)):
            result = subprocess.run(["bash", "-c", f"{kept}\nset -e; source /dev/stdin; complete -p my-stock"],
                                    input=script("bash"), capture_output=True, check=False)
            self.assertEqual((result.returncode, result.stdout != b""), (status, status == 0))
        # What bash has not always read without shopt -s extglob.
        self.assertNotRegex(script("bash"), rb"[@*+?!]\(")

    def test_holds_no_command_of_the_tool(self):
        for shell in INSTALLED:
            for word in (b"import", b"db:migrate", b"--sort", b"remove"):
                self.assertNotIn(word, script(shell))


class Completion:
    """What all shells do. A subclass says which shell."""

    SHELL = None
    LISTS_PATHS_ALONE = True  # also where no word is offered, so that the test can see them

    @classmethod
    def setUpClass(cls):
        if shutil.which(cls.SHELL.NAME) is None:
            print(f"skipped: {cls.SHELL.NAME} is not installed", flush=True)
            raise unittest.SkipTest(f"{cls.SHELL.NAME} is not installed")
        cls.work = Work()
        cls.addClassCleanup(cls.work.close)
        cls.shells = {}

    @classmethod
    def tearDownClass(cls):
        for shell in cls.shells.values():
            shell.close()

    def shell(self, way="sourced", purpose="lines", **how):
        if way == "installed" and self.SHELL.LOADER and not os.path.exists(self.SHELL.LOADER):
            self.skipTest(f"there is no {self.SHELL.LOADER}")
        if (way, purpose) not in self.shells:
            self.shells[way, purpose] = self.SHELL(self.work.path, way, self.work.path / "here", **how)
        return self.shells[way, purpose]

    def tearDown(self):
        # What the tool writes on standard error.
        for shell in self.shells.values():
            self.assertNotIn(b"noise", shell.all_shown())

    def completed(self, line, way="sourced"):
        return self.shell(way).after_tab(line)

    # ---- What is offered ----

    def expected(self, typed, **of):
        expected = words(*typed, **of)
        if expected or self.LISTS_PATHS_ALONE:
            expected += paths(*typed, **of)
        return sorted(expected)

    def without_guesses(self, offers, typed, **of):
        return offers

    def check_offers(self, shell, lines, **of):
        offers = shell.offers_after(list(lines))
        for line, typed in lines.items():
            with self.subTest(line):
                self.assertEqual(sorted(self.without_guesses(offers[line], typed, **of)), self.expected(typed, **of))

    def test_offers_what_the_tool_answers_after_each_character(self):
        lines = typed_one_after_the_other("my-stock", LINES)
        self.assertGreater(len(lines), 200)
        self.check_offers(self.shell(purpose="offers"), lines)

    def test_offers_what_the_example_answers_after_each_character(self):
        lines = typed_one_after_the_other("sessions", described_lines(EXAMPLE))
        self.assertGreater(len(lines), 150)
        self.check_offers(self.shell(purpose="example", tool="sessions"), lines, tool=EXAMPLE,
                          directory=self.work.path / "here")

    def test_keeps_the_order_of_the_answer(self):
        for line, typed in {"my-stock ": [""], "my-stock list ": ["list", ""]}.items():
            self.assertEqual(self.shell(purpose="offers").offers_after([line])[line], words(*typed))

    def test_offers_nothing_after_a_line_that_cannot_go_on(self):
        self.assertEqual(self.completed("my-stock list list l"), "my-stock list list l")

    # ---- What is inserted ----

    def check_inserted(self, opening, word, beginning):
        with self.subTest(opening=opening, word=word):
            line = f"my-stock open {opening}{beginning if opening else quoted(beginning)}"
            if self.may_insert(opening, word):
                self.assertEqual(self.shell().arguments_after_tab(line), ["open", word])
            else:
                self.assertEqual(self.completed(line), line)

    def may_insert(self, opening, word):
        return True

    def test_inserts_each_word_so_that_the_tool_gets_it(self):
        stock = [word for word in words("open", "") if word[0] != "-"]
        tried = 0
        for word in stock:
            beginning = unique_beginning(word, stock)
            if beginning is None:
                continue
            tried += 1
            self.check_inserted("", word, beginning)
        self.assertGreater(tried, 30)

    def test_inserts_a_word_as_its_quotation_was_begun(self):
        stock = [word for word in words("open", "") if word[0] != "-"]
        for word in stock:
            beginning = unique_beginning(word, stock)
            if beginning is None or not beginning.replace(" ", "").isalnum():
                continue
            for opening in ('"', "'"):
                self.check_inserted(opening, word, beginning)

    def test_inserts_what_all_words_begin_with(self):
        self.assertEqual(self.completed("my-stock open col"), "my-stock open colon:a")
        self.assertEqual(self.completed("my-stock db"), "my-stock db:")
        self.assertEqual(self.completed("my-stock set c"), "my-stock set colour=")

    def test_inserts_the_value_of_an_option_after_its_equals_sign(self):
        self.assertEqual(self.completed("my-stock list --sort=d"), "my-stock list --sort=date ")
        self.assertEqual(self.completed("my-stock list --sort=si"), "my-stock list --sort=size:")
        self.assertEqual(self.completed("my-stock list --sort=size:u"), "my-stock list --sort=size:up ")
        self.assertEqual(self.completed("my-stock list --sort=k"), "my-stock list --sort=key=value ")

    def test_inserts_nothing_where_a_value_of_ones_own_is_due(self):
        for line in ("my-stock run ", "my-stock run x ", "my-stock note add ", "my-stock list --limit "):
            self.assertEqual(self.completed(line), line)

    # ---- What has been typed ----

    def test_reads_a_word_with_a_line_end(self):
        for text in ('"one\ntwo"', "'one\n two'"):
            shell = self.shell()
            self.assertEqual(shell.after_tab(f"my-stock note add {text} --l", types=shell.paste),
                             f"my-stock note add {text} --label ")

    def test_reads_a_word_that_is_not_utf8(self):
        # Which nobody can type.
        self.assertEqual(self.shell().arguments_after_tab("my-stock remove raw\t--y"),
                         ["remove", os.fsdecode(b"raw\xff\xfe"), "--yes"])

    def test_reads_a_word_in_quotes(self):
        for text in ('"two words"', "'two words'", "two\\ words", 'two" "words', '"it\'s"', "it\\'s",
                     "back\\\\slash", '"dollar\\$HOME"', "'dollar$HOME'", "colon:ab", "x", "\\[x\\]"):
            with self.subTest(text):
                line = f"my-stock open {text} --a"
                self.assertEqual(self.completed(line), line + "ll ")
        self.assertEqual(self.completed("my-stock open nothing extra --a"), "my-stock open nothing extra --a")

    def test_expands_and_runs_nothing_that_is_typed(self):
        ran = self.work.path / "here" / "ran"
        for line in ("my-stock open $(touch ran)", 'my-stock open "$(touch ran)', "my-stock open '$(touch ran)",
                     "my-stock open ~/$(touch ran)", "my-stock open `touch ran`", "my-stock note $(touch ran) ",
                     'my-stock note "$(touch ran)" ', "my-stock import --log=$(touch ran)",
                     "$(touch ran)/my-stock ", "~/$(touch ran)/my-stock ", "~$(touch ran)/my-stock "):
            with self.subTest(line):
                self.completed(line)
                self.assertFalse(ran.exists())
            ran.unlink(missing_ok=True)

    # ---- Paths ----

    def test_completes_a_path_with_spaces_in_the_home_directory(self):
        home = self.work.path / "home"
        self.assertEqual(self.shell().arguments_after_tab("my-stock import ~/my\\ f"),
                         ["import", str(home / "my file")])
        self.assertEqual(self.shell().arguments_after_tab("my-stock import ~/my\\ dir/i"),
                         ["import", str(home / "my dir" / "inner file")])

    def test_completes_paths_of_the_kind_that_is_meant(self):
        self.assertEqual(self.completed("my-stock place o"), "my-stock place other\\ dir/")
        self.assertEqual(self.completed("my-stock import o"), "my-stock import other\\ ")
        self.assertEqual(self.completed("my-stock find other\\ f"), "my-stock find other\\ file ")
        self.assertEqual(self.completed("my-stock import 'other f"), "my-stock import 'other file' ")
        self.assertEqual(self.completed("my-stock import it"), "my-stock import it\\'s ")

    def test_completes_a_path_after_an_equals_sign(self):
        self.assertEqual(self.shell().arguments_after_tab("my-stock import --log=other\\ f"),
                         ["import", "--log=other file"])
        self.assertEqual(self.completed("my-stock import --log=~/my\\ f"), "my-stock import --log=~/my\\ file ")

    def test_completes_the_file_of_a_redirection(self):
        self.assertEqual(self.completed("my-stock list >it"), "my-stock list >it\\'s ")
        self.assertEqual(self.completed("my-stock list > it"), "my-stock list > it\\'s ")
        self.assertEqual(self.completed("my-stock list 2>it"), "my-stock list 2>it\\'s ")
        self.assertEqual(self.completed("my-stock list > file --so"), "my-stock list > file --sort ")

    # ---- Which command is asked ----

    def test_asks_the_command_that_is_typed(self):
        for command in ("other\\ dir/my-stock", "./other\\ dir/my-stock", "~/other\\ dir/my-stock",
                        '"other dir"/my-stock', str(self.work.path / "here") + "/other\\ dir/my-stock",
                        "$HOME/other\\ dir/my-stock"):
            with self.subTest(command):
                self.assertEqual(self.completed(f"{command} an"), f"{command} another-one ")

    def test_completes_after_sudo(self):
        self.assertEqual(self.completed("sudo my-stock list --sort=d", self.SUDO),
                         "sudo my-stock list --sort=date ")
        other = self.work.path / "other" / "my-stock"
        self.assertEqual(self.completed(f"sudo {other} a", self.SUDO), f"sudo {other} another-one ")

    SUDO = "sourced"

    def test_completes_an_alias(self):
        self.shell().execute(self.ALIAS)
        self.assertEqual(self.completed("ms --so"), "ms --sort ")
        self.assertEqual(self.completed("ms --sort=d"), "ms --sort=date ")

    ALIAS = "alias ms='my-stock list'"

    def test_completes_after_other_commands(self):
        self.assertEqual(self.completed("echo a; my-stock db:s"), "echo a; my-stock db:seed ")
        self.assertEqual(self.completed("echo a | my-stock db:s"), "echo a | my-stock db:seed ")
        self.assertEqual(self.completed("A=1 my-stock db:s"), "A=1 my-stock db:seed ")

    # ---- The script ----

    def test_completes_where_the_script_is_installed(self):
        self.assertEqual(self.completed("my-stock li", "installed"), "my-stock list ")
        self.assertEqual(self.completed("my-stock open two\\ w", "installed"), "my-stock open two\\ words ")
        self.assertEqual(self.completed("my-stock list --sort=size:u", "installed"),
                         "my-stock list --sort=size:up ")

    def test_is_silent_when_the_tool_is_missing(self):
        shell = self.shell(purpose="missing")
        shell.execute("PATH=/nowhere" if self.SHELL is not Fish else "set PATH /nowhere")
        shell.shown = b""
        self.assertEqual(shell.after_tab("my-stock li"), "my-stock li")
        for word in (b"not found", b"Unknown", b"nowhere"):
            self.assertNotIn(word, shell.shown)

    def test_takes_a_moment(self):
        shell = self.shell()
        times = []
        for line, keys in (("my-stock list", ""), ("my-stock list --so", "\t")) * 15:
            begin = time.perf_counter()
            shell.after_tab(line, keys)
            times.append(time.perf_counter() - begin)
        took = 1000 * (statistics.median(times[1::2]) - statistics.median(times[::2]))
        print(f"{self.SHELL.NAME}: a TAB takes {took:.0f} ms", flush=True)
        self.assertLess(took, 500)


class BashTest(Completion, unittest.TestCase):
    SHELL = Bash
    LISTS_PATHS_ALONE = False
    SUDO = "installed"  # the package's completion of sudo
    ALIAS = "shopt -s progcomp_alias; alias ms='my-stock list'"

    def test_quotes_each_word_where_they_are_inserted_one_after_the_other(self):
        shell = self.shell(purpose="menu")
        shell.execute("bind '\"\\C-x\\C-n\": menu-complete'")
        self.assertEqual(shell.after_tab("my-stock open two", "\x18\x0e"), "my-stock open two\\ words ")
        self.assertEqual(shell.after_tab("my-stock open two", "\x18\x0e" * 2), "my-stock open two\\ \\ spaces ")

    def test_completes_where_colon_and_equals_sign_divide_no_words(self):
        shell = self.shell(purpose="breaks")
        shell.execute("COMP_WORDBREAKS=${COMP_WORDBREAKS//[:=]}")
        self.assertEqual(shell.after_tab("my-stock db:s"), "my-stock db:seed ")
        self.assertEqual(shell.after_tab("my-stock list --sort=size:u"), "my-stock list --sort=size:up ")
        self.assertEqual(shell.after_tab("my-stock import --log=it"), "my-stock import --log=it\\'s ")


class ShowsHelp:
    def test_shows_help_texts(self):
        shell = self.shell()
        shell.shown = b""
        self.completed("my-stock list --sort ")
        for text in ("By name, it's [quick]: 100% 'sure'", "By date, $(date) `date` \\n \"newest\"",
                     "Smallest first[31m", "Largest first"):
            shell.listen(lambda text=text: text.encode() in shell.shown)

    def test_shows_what_a_value_of_ones_own_means(self):
        shell = self.shell()
        shell.shown = b""
        self.completed("my-stock note add ")
        shell.listen(lambda: b"TEXT: Any text" in shell.shown)


class ZshTest(ShowsHelp, Completion, unittest.TestCase):
    SHELL = Zsh

    def may_insert(self, opening, word):
        """Within quotes zsh has no way to write what is not UTF-8."""
        return not opening or word.isprintable()


class FishTest(ShowsHelp, Completion, unittest.TestCase):
    SHELL = Fish

    def without_guesses(self, offers, typed, **of):
        """Where no path begins as typed, fish takes those that hold what is typed."""
        are_words = all(kind in ("tag", "choice", "value") for kind, word in answer(*typed, **of))
        return offers if are_words else [each for each in offers if each.startswith(typed[-1])]


def main():
    global TOOL, EXAMPLE
    TOOL, EXAMPLE = map(os.path.abspath, sys.argv[1:3])
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]], failfast="GTEST_FAIL_FAST" in os.environ,
                  verbosity=2)  # so that the reason of every skipped test is seen


if __name__ == "__main__":
    main()
