#!/usr/bin/env python3
"""Runs what documents and transcripts show, as it stands there, each in a scratch folder with the sample files.

Of a document, an `sh` block succeeds, a `console` block prints what it shows, a `c` block compiles, runs and prints the
`text` block after it. A transcript (.txt) is one console block with comments: tests/golden/README.md.

Usage: documents.py [--update] SOURCE_DIR TOOL LIBRARY FILE...    (files: from SOURCE_DIR)
--update writes what transcripts print into them. Read the difference before you keep it.
"""
import difflib
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

update = "--update" in sys.argv
arguments = [a for a in sys.argv[1:] if a != "--update"]
source, tool, library = (pathlib.Path(a).resolve() for a in arguments[:3])
SAMPLES = {"sample-panel.xml": "panel.xml", "sample-bare.csv": "bare.csv", "sample-measured.csv": "measured.csv",
           "sample-verified.csv": "verified.csv",
           "sample-mix.csv": "mix.csv"}
CONTINUOUS_INTEGRATION = {"scripts/test": ".ci/run", "scripts/demo": "scripts/test"}  # what runs them
# A command is a line, or more to the END of a here-document. What it prints ends before a command or a comment.
COMMAND = re.compile(r"^\$ (.*<<'?END\b.*\n(?:.*\n)*?END|.*)\n((?:(?!\$ |\n*# ).*\n)*)", re.MULTILINE)


def run(command, scratch):
    env = dict(os.environ, PATH=f"{tool.parent}:{os.environ['PATH']}", LD_LIBRARY_PATH=str(library.parent))
    return subprocess.run(["sh", "-euc", command], cwd=scratch, env=env, encoding="utf-8", errors="backslashreplace",
                          stdin=subprocess.DEVNULL, capture_output=True)


def succeed(command, scratch):
    done = run(command, scratch)
    if done.returncode != 0:
        sys.exit(f"{command}\nexit status {done.returncode}\n{done.stdout}{done.stderr}")
    return done.stdout


def expect(what, printed, shown):
    if printed != shown:
        sys.exit(f"{what}\nprints\n{printed}the document shows\n{shown}")


def script_is_run(line):
    """The commands that build everything run this test: they are not run from here."""
    name = line.split()[0]
    runner = (source / CONTINUOUS_INTEGRATION[name]).read_text()
    if not os.access(source / name, os.X_OK) or name not in runner:
        sys.exit(f"{name} is not run by {CONTINUOUS_INTEGRATION[name]}")


def check_document(document, scratch):
    after_c = None
    for kind, block in re.findall(r"^```(\w+)\n(.*?)^```$", document.read_text(), re.MULTILINE | re.DOTALL):
        if kind == "sh" and block.startswith("scripts/"):
            for line in block.splitlines():
                script_is_run(line)
        elif kind == "sh":
            succeed(block, scratch)
        elif kind == "console":
            for command, shown in COMMAND.findall(block):
                expect(command, succeed(command, scratch), shown)
        elif kind == "c":
            (scratch / "example.c").write_text(block)
            succeed(f"{os.environ.get('CC', 'cc')} -std=c99 -pedantic -Wall -Wextra -Werror example.c -o example"
                    f" -I{source}/include -L{library.parent} -lvexo", scratch)
            after_c = succeed("./example", scratch)
        elif kind == "text" and after_c is not None:
            expect("the C example", after_c, block)
            after_c = None


def check_transcript(transcript, scratch):
    def again(shown):
        done = run(f"{os.environ.get('VEXO_LIMITS', '')}\n{shown[1]}", scratch)
        out = re.sub("\n+$", "\n", done.stdout)
        out += "" if out.endswith("\n") or not out else "\n[no end of line]\n"
        errors = "".join(f"! {line}\n" for line in done.stderr.splitlines())
        return f"$ {shown[1]}\n{out}{errors}" + (f"[exit {done.returncode}]\n" if done.returncode else "")

    shown = transcript.read_text()
    printed = COMMAND.sub(again, shown)
    if update:
        transcript.write_text(printed)
    elif printed != shown:
        difference = difflib.unified_diff(shown.splitlines(), printed.splitlines(), "shown", "printed", lineterm="")
        sys.exit("\n".join([*difference, f"{transcript}: to accept what is printed, run tests/golden/update"]))


for file in (source / argument for argument in arguments[3:]):
    with tempfile.TemporaryDirectory() as name:
        for sample, copy in SAMPLES.items():
            shutil.copy(source / "examples" / sample, pathlib.Path(name, copy))
        (check_transcript if file.suffix == ".txt" else check_document)(file, pathlib.Path(name))
