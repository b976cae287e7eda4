#!/usr/bin/env python3
"""run_blocks.py PAGE.md FOLDER COMPILER [FLAG ...]: does what a page tells its reader to do.

The fenced blocks of a page are taken in order, in FOLDER, which is made anew: `sh` blocks are run,
`cpp` blocks are compiled as programs and run, `python` blocks are run by this interpreter (or passed
over where there is no module sarnum), and what they print is what a `text` block behind them shows.
Commands are found on PATH. Fails at the first block that does not do what the page says.
"""
import importlib.util
import pathlib
import re
import shutil
import subprocess
import sys


def run(command, folder, what, **options):
    result = subprocess.run(command, cwd=folder, capture_output=True, text=True, **options)
    if result.returncode != 0:
        sys.exit(f"{what}: status {result.returncode}\n{result.stdout}{result.stderr}")
    return result.stdout


def main():
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    page, folder = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    compile_command = sys.argv[3:]
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    printed = None
    blocks = re.findall(r"^```(\w*)\n(.*?)^```$", page.read_text(encoding="utf-8"), re.M | re.S)
    for number, (kind, block) in enumerate(blocks):
        what = f"{page.name}, block {number + 1} ({kind})"
        if kind == "sh":
            printed = run(["sh", "-eu", "-c", block], folder, what)
        elif kind == "cpp":
            source = folder / f"{page.stem}_{number}.cpp"
            source.write_text(block, encoding="utf-8")
            program = str(source.with_suffix(""))
            run([compile_command[0], str(source), "-o", program, *compile_command[1:]], folder, what)
            printed = run([program], folder, what)
        elif kind == "python":
            has_module = importlib.util.find_spec("sarnum") is not None
            printed = run([sys.executable, "-c", block], folder, what) if has_module else None
        elif kind == "text":
            if printed not in (None, block):
                sys.exit(f"{what}: what stands above prints\n{printed}")
        elif kind != "cmake":  # the installed package is tried with it
            sys.exit(f"{what}: expected sh, cpp, python, text or cmake")
    if not blocks:
        sys.exit(f"{page.name}: no blocks")
    print(f"{page.name}: {len(blocks)} blocks")


if __name__ == "__main__":
    main()
