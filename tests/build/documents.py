#!/usr/bin/env python3
"""Runs what documents show, as it stands there, in a scratch folder with the sample files: a `sh` block succeeds, a
`console` block prints what it shows, a `c` block compiles, runs and prints the `text` block after it.

Usage: documents.py SOURCE_DIR TOOL LIBRARY DOCUMENT...
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

source, tool, library = (pathlib.Path(p).resolve() for p in sys.argv[1:4])
FILES = {"sample-panel.xml": "panel.xml", "sample-bare.csv": "bare.csv", "sample-measured.csv": "measured.csv",
         "sample-verified.csv": "verified.csv"}
CONTINUOUS_INTEGRATION = {"scripts/test": ".ci/run", "scripts/demo": "scripts/test"}  # what runs them


def run(command, scratch):
    env = dict(os.environ, PATH=f"{tool.parent}:{os.environ['PATH']}", LD_LIBRARY_PATH=str(library.parent))
    done = subprocess.run(["sh", "-euc", command], cwd=scratch, env=env, text=True, capture_output=True)
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


def check(document):
    text = (source / document).read_text()
    blocks = re.findall(r"^```(\w+)\n(.*?)^```$", text, re.MULTILINE | re.DOTALL)
    with tempfile.TemporaryDirectory() as name:
        scratch = pathlib.Path(name)
        for sample, file in FILES.items():
            shutil.copy(source / "examples" / sample, scratch / file)
        after_c = None
        for kind, block in blocks:
            if kind == "sh" and block.startswith("scripts/"):
                for line in block.splitlines():
                    script_is_run(line)
            elif kind == "sh":
                run(block, scratch)
            elif kind == "console":
                # A command is a line, or more to the END of a here-document.
                for command, _, shown in re.findall(
                        r"^\$ (.*<<END\n(?:.*\n)*?END|(.*))\n((?:(?!\$ ).*\n)*)", block, re.MULTILINE):
                    expect(command, run(command, scratch), shown)
            elif kind == "c":
                (scratch / "example.c").write_text(block)
                run(f"{os.environ.get('CC', 'cc')} -std=c99 -pedantic -Wall -Wextra -Werror example.c -o example"
                    f" -I{source}/include -L{library.parent} -lvexo", scratch)
                after_c = run("./example", scratch)
            elif kind == "text" and after_c is not None:
                expect("the C example", after_c, block)
                after_c = None
    return len(blocks)


for path in sys.argv[4:]:
    print(f"{path}: {check(path)} blocks")
