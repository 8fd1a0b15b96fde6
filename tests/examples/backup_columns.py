"""Runs backup in terminals of several widths and looks at its line: backup_columns.py PROGRAM FOLDER

The line has a percentage and a bar, and fits the terminal to the column.
"""

import fcntl
import os
import pty
import re
import shutil
import struct
import sys
import termios
import unicodedata


def columns(text):
    return sum(2 if unicodedata.east_asian_width(c) in "WF" else 1 for c in text)


def run(program, folder, width):
    child, terminal = pty.fork()
    if child == 0:
        fcntl.ioctl(0, termios.TIOCSWINSZ, struct.pack("HHHH", 24, width, 0, 0))
        os.chdir(folder)
        os.execv(program, [program, "--settings", "s%d.json" % width, "--to", "out%d" % width, "tree"])
    printed = b""
    try:
        while piece := os.read(terminal, 4096):
            printed += piece
    except OSError:  # The terminal of a process that has ended.
        pass
    assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 0, printed
    return printed.decode()


program, folder = sys.argv[1:]
shutil.rmtree(folder, ignore_errors=True)
os.makedirs(folder + "/tree/写真 with a long name that a narrow screen has no room for")
for i in range(4):
    with open("%s/tree/写真 with a long name that a narrow screen has no room for/%d" % (folder, i), "wb") as file:
        file.write(os.urandom(4_000_000))
for width in (30, 40, 80, 200, 300):
    lines = re.split(r"[\r\n]+", run(program, folder, width))
    bars = [line for line in lines if re.match(r" *\d+ % \[#*-*\]", line)]
    fit = min(max(width, 40), 200) - 1
    assert bars and all(columns(line) == fit for line in bars), (width, lines)
    rows = [line for line in lines if line.endswith(("state", "packed"))]
    assert rows and all(columns(line) <= fit for line in rows), (width, rows)
shutil.rmtree(folder)
