"""Interactive shells, each at a terminal of its own."""

import os
import shutil
import subprocess
import time

import pexpect

LONGEST = 20  # seconds, for whatever a shell does
EDITOR = b"\x1b[?2004h"  # a shell that begins to edit a line asks the terminal to mark what is pasted
WRITTEN = "\x18\x04"  # ^X^D: writes the command line into a file, and empties it


class Shell:
    """A shell in a directory of the work, with a tool's completion sourced or installed."""

    NAME = ""
    LOADER = ""  # what must be installed that loads what packages install
    SPY = ""  # commands that make the shell write what it offers into a file

    def __init__(self, work, way, directory, tool="my-stock"):
        self.work = work
        self.tool = tool
        self.line_file = work / "line"
        self.offers_file = work / "offers"
        self.record_file = work / "record"
        self.shown = b""
        self.shown_before = b""
        self.is_spied = False
        home = work / "home"
        home.mkdir(exist_ok=True)
        self.environment = {
            "HOME": str(home), "PATH": f"{work / 'bin'}:/usr/local/bin:/usr/bin:/bin", "LC_ALL": "C.UTF-8",
            "TERM": "xterm", "RECORD": str(self.record_file), "WORK": str(work), "ZDOTDIR": str(home),
            "XDG_DATA_HOME": str(work / ("share" if way == "installed" else "nothing")),
            "XDG_CONFIG_HOME": str(home / "config"), "COLUMNS": "200", "LINES": "50"}
        self.child = pexpect.spawn(*self.start(home, way), env=self.environment, cwd=str(directory),
                                   timeout=LONGEST, dimensions=(50, 200))
        self.child.delaybeforesend = None
        self.await_editor()

    def close(self):
        self.child.close(force=True)

    def start(self, home, way):
        """The program and its arguments, once its configuration is written."""
        raise NotImplementedError

    # ---- The keyboard and the screen ----

    def type(self, keys):
        self.child.send(keys if isinstance(keys, bytes) else os.fsencode(keys))

    def paste(self, text):
        self.type(f"\x1b[200~{text}\x1b[201~")

    def listen(self, is_enough):
        end = time.monotonic() + LONGEST
        while not is_enough():
            if time.monotonic() > end:
                raise TimeoutError(f"{self.NAME} does not answer; it has shown {self.shown!r}")
            try:
                self.shown += self.child.read_nonblocking(65536, 0.002)
            except pexpect.TIMEOUT:
                pass

    def all_shown(self):
        return self.shown_before + self.shown

    def await_editor(self):
        self.listen(lambda: EDITOR in self.shown)

    def await_file(self, file):
        self.listen(file.exists)
        content = file.read_bytes()
        file.unlink()
        return os.fsdecode(content)

    def run(self, keys):
        """Types what ends in Return, and waits for the next line."""
        self.shown_before, self.shown = self.all_shown(), b""
        self.type(keys)
        self.await_editor()

    def execute(self, commands):
        """Runs commands in the shell itself."""
        script = self.work / "script"
        script.write_text(commands)
        self.run(f"source {script}\r")

    # ---- Questions ----

    def to_be_spied(self):
        return ""

    def after_tab(self, line, keys="\t", types=None):
        """The command line after TAB at its end."""
        (types or self.type)(line)
        self.type(keys)
        self.type(WRITTEN)
        return self.await_file(self.line_file)

    def arguments_after_tab(self, line):
        """What the tool gets when the command line is completed and run."""
        self.run(line + "\t\r")
        return self.await_file(self.record_file).split("\0")[:-1]

    def offers_after(self, lines):
        """The words that are offered at the end of each line, in their order."""
        if not self.is_spied:
            self.execute(self.SPY.replace("TOOL", self.tool.replace("-", "_")) + self.to_be_spied())
            self.is_spied = True
        return {line: self.offers_at(line) for line in lines}

    def offers_at(self, line):
        self.offers_file.unlink(missing_ok=True)
        self.after_tab(line)
        return self.await_file(self.offers_file).split("\0")[:-1] if self.offers_file.exists() else []


class Bash(Shell):
    NAME = "bash"
    LOADER = "/usr/share/bash-completion/bash_completion"

    # A reply is read by the shell itself, after what is typed before it: a word, as it would be run.
    SPY = r"""
spied() {
  local typed=${COMP_LINE:0:COMP_POINT} type=$COMP_TYPE each end
  typed=${typed%"$2"} typed=${typed#"$1"}
  COMP_TYPE=37
  _optrella_TOOL "$@"
  for each in "${COMPREPLY[@]}"; do
    [[ $each ]] || continue
    [[ $(compopt) != *"-o filenames"* ]] || printf -v each %q "$each" # readline does
    for end in '' \' '"'; do
      (eval "set -- $typed$each$end" && printf '%s\0' "${@: -1}") 2>/dev/null && break
    done
  done >"$WORK/offers"
  COMP_TYPE=$type
  _optrella_TOOL "$@"
}
"""

    def to_be_spied(self):
        return f"complete -F spied {self.tool}\n"

    def start(self, home, way):
        source = {"sourced": f"source <({self.tool} --completion bash)",
                  "installed": f"source {self.LOADER}"}[way]
        (home / ".bashrc").write_text(rf"""
PS1='$ '
HISTFILE=
bind 'set bell-style none'
bind 'set completion-query-items 0'
bind 'set page-completions off'
written() {{
  printf %s "$READLINE_LINE" >"$WORK/new"
  /bin/mv "$WORK/new" "$WORK/line"
  READLINE_LINE= READLINE_POINT=0
}}
bind -x '"\C-x\C-d": written'
{source}
""")
        return shutil.which("bash"), ["--noprofile", "--rcfile", str(home / ".bashrc"), "-i"]


class Zsh(Shell):
    NAME = "zsh"

    SPY = r"""
compadd() {
  local -a spied
  if [[ " ${(j: :)@} " != *' -'[OAD]' '* ]]; then
    builtin compadd -O spied "$@"
    [[ " $* " != *' -Q '* && $* != -*Q* ]] || spied=("${(@Q)spied}")
    (( $#spied )) && print -rN -- "${spied[@]/#/$IPREFIX}" >>$WORK/offers
  fi
  builtin compadd "$@"
}
"""

    def start(self, home, way):
        before, after = {"sourced": ("", f"source <({self.tool} --completion zsh)"),
                         "installed": ("fpath=($XDG_DATA_HOME/zsh/site-functions $fpath)", "")}[way]
        (home / ".zshrc").write_text(rf"""
PS1='$ '
setopt no_beep
LISTMAX=10000
{before}
autoload -Uz compinit
compinit -u -D
{after}
written() {{
  print -rn -- "$BUFFER" >$WORK/new
  /bin/mv $WORK/new $WORK/line
  BUFFER=
}}
zle -N written
bindkey '^X^D' written
bindkey '^I' complete-word  # by itself it expands what is typed, too
""")
        return shutil.which("zsh"), ["-d", "-i"]

    def offers_at(self, line):
        """zsh adds a path more than once."""
        return list(dict.fromkeys(super().offers_at(line)))


class Fish(Shell):
    NAME = "fish"

    def start(self, home, way):
        source = {"sourced": f"{self.tool} --completion fish | source", "installed": ""}[way]
        configuration = home / "config" / "fish" / "config.fish"
        configuration.parent.mkdir(parents=True, exist_ok=True)
        configuration.write_text(rf"""
function fish_prompt; printf '$ '; end
function fish_greeting; end
{source}
function written
    printf %s (commandline | string collect) >$WORK/new
    /bin/mv $WORK/new $WORK/line
    commandline ''
end
bind \cx\cd written
""")
        return shutil.which("fish"), ["-i"]

    def offers_after(self, lines):
        """fish says itself what it offers."""
        source = "".join(f"complete -C {quoted_for_fish(line)} | string replace -r '\\t.*' ''\nprintf '\\0'\n"
                         for line in lines)
        script = self.work / "questions.fish"
        script.write_text(f"{self.tool} --completion fish | source\n" + source)
        result = subprocess.run(["fish", script], env=self.environment, cwd=self.work / "here",
                                stdout=subprocess.PIPE, check=True)
        answers = os.fsdecode(result.stdout).split("\0")[:-1]
        return {line: [each.rstrip("/") for each in answer.split("\n") if each]
                for line, answer in zip(lines, answers)}


def quoted_for_fish(text):
    return "'" + text.replace("\\", "\\\\").replace("'", "\\'") + "'"
