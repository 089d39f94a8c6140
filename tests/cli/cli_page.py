#!/usr/bin/env python3
"""Runs the commands in docs/cli.md on a simulated hub and compares their output with the page.

    cli_page.py PROGRAM EXAMPLES PAGE           fails if they differ
    cli_page.py PROGRAM EXAMPLES PAGE --write   writes the output into the page
"""

import difflib
import os
import re
import shutil
import subprocess
import sys
import tempfile

INDENT = "    "
PROMPT = INDENT + "$ "
MARK = "=== end of output ==="


def without_output(page):
    """The page without what stands between a command and the next one, or the end of its block."""
    lines = []
    in_block = False
    blank = []  # lines that may belong to the output
    for line in page:
        if in_block and not line:
            blank.append(line)
            continue
        in_block = line.startswith(PROMPT) or in_block and line.startswith(INDENT)
        if not in_block:
            lines += blank
        blank = []
        if not in_block or line.startswith(PROMPT):
            lines.append(line)
    return lines + blank


def outputs(program, examples, commands):
    with tempfile.TemporaryDirectory() as home:
        for name in os.listdir(examples):
            if name.endswith(".bin"):
                shutil.copy(os.path.join(examples, name), home)
        script = 'vornadelctl() { "$PROGRAM" --simulated-hub=latency=none,image=flash.bin "$@"; }\n'
        for command in commands:
            script += f"{command}\nstatus=$?\necho '{MARK}'\n(exit $status)\n"
        environment = {"HOME": home, "PATH": os.environ["PATH"], "PROGRAM": program}
        run = subprocess.run(["bash", "-c", script], cwd=home, env=environment, text=True,
                             stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                             stderr=subprocess.STDOUT, check=False)
        text = run.stdout.replace(home, "~")
    text = re.sub(r"_\d{8}T\d{6}\.\d{3}Z_[0-9a-f]{64}", "_TIME_HASH", text)
    text = re.sub(r"--simulated-hub=\S+ ", "", text)
    parts = text.split(MARK + "\n")
    if len(parts) != len(commands) + 1 or parts[-1]:
        sys.exit(f"cli_page: not every command has run:\n{text}")
    return parts[:-1]


def main():
    program, examples, page_file = map(os.path.abspath, sys.argv[1:4])
    with open(page_file, encoding="utf-8") as file:
        page = file.read().splitlines()
    lines = without_output(page)
    commands = [line[len(PROMPT):] for line in lines if line.startswith(PROMPT)]
    results = iter(outputs(program, examples, commands))
    true_page = []
    for line in lines:
        true_page.append(line)
        if line.startswith(PROMPT):
            true_page += [(INDENT + each).rstrip() for each in next(results).splitlines()]
    if sys.argv[4:] == ["--write"]:
        with open(page_file, "w", encoding="utf-8") as file:
            file.write("\n".join(true_page) + "\n")
        return
    differences = list(difflib.unified_diff(page, true_page, "the page", "what the commands print",
                                            lineterm=""))
    if differences or not commands:
        sys.exit("\n".join(differences) or "cli_page: the page has no commands")


main()
