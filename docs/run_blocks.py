#!/usr/bin/env python3
"""run_blocks.py PAGE.md FOLDER COMPILER [FLAG ...]: does what a page tells its reader to do.

The fenced blocks of a page are taken in order, in FOLDER, which is made anew: `sh` blocks are run,
`cpp` blocks are saved as program.cpp, compiled and run, `cmake` blocks are saved as CMakeLists.txt,
and what a block prints is what a `text` block behind it shows. Commands are found on PATH. For pages
that build sarnum its sources are the folder `sarnum`, where `make` is called. HOME is a folder that
is removed at the end. Fails at the first block that does not do what the page says.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile


def run(command, folder, what, **options):
    result = subprocess.run(command, cwd=folder, capture_output=True, text=True, **options)
    if result.returncode != 0:
        sys.exit(f"{what}: status {result.returncode}\n{result.stdout}{result.stderr}")
    return result.stdout


def bring_sources(folder):
    """What a clone holds, but that building in it leaves the sources alone."""
    folder.mkdir()
    for entry in pathlib.Path(__file__).parents[1].iterdir():
        if entry.name not in ("build", "demo", ".git"):
            (folder / entry.name).symlink_to(entry)


def do_blocks(page, folder, compile_command, home):
    printed = None
    environment = dict(os.environ, HOME=home)
    text = page.read_text(encoding="utf-8")
    blocks = re.findall(r"^```(\w*)\n(.*?)^```$", text, re.M | re.S)
    if re.search("^(make|cmake -S sarnum) ", text, re.M):
        bring_sources(folder / "sarnum")
    for number, (kind, block) in enumerate(blocks):
        what = f"{page.name}, block {number + 1} ({kind})"
        if kind == "sh":
            place = folder / "sarnum" if block.startswith("make ") else folder
            printed = run(["sh", "-eu", "-c", block], place, what, env=environment)
        elif kind == "cpp":
            program = str(folder / "program")
            (folder / "program.cpp").write_text(block, encoding="utf-8")
            run([compile_command[0], "program.cpp", "-o", program, *compile_command[1:]], folder, what)
            printed = run([program], folder, what)
        elif kind == "cmake":
            (folder / "CMakeLists.txt").write_text(block, encoding="utf-8")
        elif kind == "text":
            if printed != block:
                sys.exit(f"{what}: what stands above prints\n{printed}")
        else:
            sys.exit(f"{what}: expected sh, cpp, cmake or text")
    if not blocks:
        sys.exit(f"{page.name}: no blocks")
    print(f"{page.name}: {len(blocks)} blocks")


def main():
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    folder = pathlib.Path(sys.argv[2])
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    with tempfile.TemporaryDirectory() as home:
        do_blocks(pathlib.Path(sys.argv[1]), folder, sys.argv[3:], home)


if __name__ == "__main__":
    main()
