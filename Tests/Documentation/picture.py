"""The picture of the README: what the user of an example tool sees on a terminal."""

import html
import os
import pathlib
import pty
import re
import subprocess
import tempfile

PICTURE = pathlib.Path(__file__).resolve().parents[2] / "docs" / "sessions.svg"
SETUP = ("sessions open web -p -5 -L prod", "sessions open mail")
SHOWN = ("sessions --help", "sessions lst", "sessions list --lmit=5", "sessions priority web 40")
COLUMNS = 80

CHARACTER, LINE, EDGE = 8.4, 18, 16  # in pixels
FRAME = "#1e2127"
PLAIN = "#c8ccd4"
DIM = "#8b929f"
COLOURS = {"31": "#e06c75", "32": "#98c379", "33": "#e5c07b", "34": "#61afef", "35": "#c678dd",
           "36": "#56b6c2"}
ESCAPE = re.compile(r"\x1b\[([0-9;]*)m")


def shown_by(command, directory, programs):
    """What a command shows on a terminal."""
    environment = {"PATH": f"{programs}:{os.environ['PATH']}", "TERM": "xterm", "COLUMNS": str(COLUMNS),
                   "LC_ALL": "C.UTF-8"}
    master, slave = pty.openpty()
    with subprocess.Popen(["sh", "-c", command], stdin=slave, stdout=slave, stderr=slave,
                          cwd=directory, env=environment):
        os.close(slave)
        shown = b""
        while True:
            try:
                part = os.read(master, 4096)
            except OSError:  # the other end is closed
                break
            if not part:
                break
            shown += part
    os.close(master)
    return shown.decode().replace("\r\n", "\n")


def session(programs):
    """The lines of the picture, with their escape sequences."""
    lines = []
    with tempfile.TemporaryDirectory() as directory:
        for command in SETUP:
            shown_by(command, directory, programs)
        for command in SHOWN:
            lines.append(f"\x1b[32m$\x1b[0m \x1b[1m{command}\x1b[0m")
            lines += shown_by(command, directory, programs).rstrip("\n").split("\n") + [""]
    return lines[:-1]


def style_after(style, codes):
    for code in codes.split(";"):
        if code in ("", "0"):
            style = {}
        elif code == "1":
            style = style | {"font-weight": "bold"}
        elif code == "2":
            style = style | {"fill": DIM}
        elif code == "4":
            style = style | {"text-decoration": "underline"}
        elif code in COLOURS:
            style = style | {"fill": COLOURS[code]}
        elif code == "39":
            style = {key: it for key, it in style.items() if key != "fill"}
        elif code in ("22", "24"):
            style = {key: it for key, it in style.items()
                     if key != ("font-weight" if code == "22" else "text-decoration")}
        else:
            raise ValueError(f"an escape sequence that the picture does not know: {codes}")
    return style


def spans(line):
    style = {}
    for index, part in enumerate(ESCAPE.split(line)):
        if index % 2:
            style = style_after(style, part)
        elif part:
            attributes = "".join(f' {key}="{it}"' for key, it in style.items())
            yield f"<tspan{attributes}>{html.escape(part, quote=False)}</tspan>"


def drawn(lines):
    width = round(2 * EDGE + COLUMNS * CHARACTER)
    height = 2 * EDGE + len(lines) * LINE
    texts = "\n".join(
        f'<text x="{EDGE}" y="{EDGE + 13 + index * LINE}">{"".join(spans(line))}</text>'
        for index, line in enumerate(lines) if line)
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
            f'viewBox="0 0 {width} {height}">\n'
            f'<rect width="{width}" height="{height}" rx="8" fill="{FRAME}"/>\n'
            f'<g font-family="ui-monospace, Menlo, Consolas, \'DejaVu Sans Mono\', monospace" '
            f'font-size="14" fill="{PLAIN}" xml:space="preserve">\n{texts}\n</g>\n</svg>\n')
