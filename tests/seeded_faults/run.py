"""run.py SOURCE_DIR WORK_DIR: every fault of README.md is caught by its test."""
import pathlib
import re
import shutil
import subprocess
import sys

source, work = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
table = pathlib.Path(__file__).with_name("README.md").read_text(encoding="utf-8")
faults = re.findall(r"^\| (.+) \| `(.+)` \| `(.+)` \| `(.+)` \| `(.+)` `(.+)` \|$", table, re.M)

shutil.rmtree(work, ignore_errors=True)
shutil.copytree(source, work / "source", ignore=shutil.ignore_patterns("build", "demo", ".git"))
texts = {}
for what, name, instead_of, *_ in faults:
    texts[name] = (work / "source" / name).read_text(encoding="utf-8")
    if texts[name].count(instead_of) != 1:
        sys.exit(f"{what}: `{instead_of}` does not stand exactly once in {name}")


def build(program):
    subprocess.run(["cmake", "--build", work / "build", "--target", program], check=True,
                   stdout=subprocess.DEVNULL)


def passes(test):
    return subprocess.run(["ctest", "--test-dir", work / "build", "-R", f"^{re.escape(test)}$",
                           "--no-tests=ignore"], capture_output=True).returncode == 0


subprocess.run(["cmake", "-S", work / "source", "-B", work / "build", "-G", "Ninja",
                "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O1",
                "-DSARNUM_BUILD_TESTS=ON"], check=True, stdout=subprocess.DEVNULL)
missed = []
for what, name, instead_of, stands, program, test in faults:
    path = work / "source" / name
    path.write_text(texts[name].replace(instead_of, stands), encoding="utf-8")
    build(program)
    caught = not passes(test)
    print("caught" if caught else "MISSED", "by", test + ":", what, flush=True)
    missed += [] if caught else [what]
    path.write_text(texts[name], encoding="utf-8")
for program, test in {fault[4:] for fault in faults}:
    build(program)
    if not passes(test):
        missed.append(test + " fails without a fault")
shutil.rmtree(work)
sys.exit("\n".join(missed) or 0)
