#!/usr/bin/env python3
"""Puts the faults of faults.txt into a copy of the repository, one after the other, and runs the tests with each.

run.py [--work DIRECTORY] [--only WORDS] [--jobs N]: the copy is made of what git knows, as it stands, and built with the
preset "release" and -O1, since a fault in a header builds most of it again. Prints for each fault which test found it,
or that none did. Exit code 1 when one was not found, 2 when one does not fit the sources, does not compile, or the tests
fail without any.
"""
import argparse
import re
import resource
import shutil
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


def faults():
    found, old, new = [], [], []
    for line in (ROOT / "tests/mutants/faults.txt").read_text().splitlines() + ["= "]:
        mark, text = line[:1], line[1:]
        if mark == "=" and found:
            found[-1] += ["\n".join(old), "\n".join(new)]
            old, new = [], []
        if mark == "=":
            found.append([text.strip()])
        elif mark == "@":
            found[-1].append(text.strip())
        elif mark in ("-", "+"):
            (old if mark == "-" else new).append(text)
        elif mark not in ("", "#"):
            sys.exit(f"faults.txt: a line without its mark: {line}")
    return found[:-1]


def update(file, text):
    """Writes the file when it differs, so that no more than that is built again."""
    if not file.exists() or file.read_text() != text:
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)


def copy(tree):
    names = subprocess.run(["git", "ls-files"], cwd=ROOT, check=True, capture_output=True, text=True).stdout.split("\n")
    for name in filter(None, names):
        source, target = ROOT / name, tree / name
        if not source.exists():
            target.unlink(missing_ok=True)
        elif not target.exists() or target.read_bytes() != source.read_bytes():
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, target)


def build(tree, jobs):
    return subprocess.run(["cmake", "--build", "build/release", "--target", "zrasn_tests", "-j", jobs], cwd=tree,
                          capture_output=True, text=True)


def run_tests(tree, seconds):
    """What ended the run: empty when all tests pass. The seconds are of processor time, however busy the machine is."""
    command = ["prlimit", "--as=8000000000", f"--cpu={seconds}", "build/release/tests/zrasn_tests", "--gtest_fail_fast"]
    run = subprocess.run(command, cwd=tree, capture_output=True, text=True, errors="replace")
    if run.returncode == 0:
        return ""
    failed = re.findall(r"\[  FAILED  \] ([^\s,]+).* \(", run.stdout)
    begun = re.findall(r"\[ RUN      \] (\S+)", run.stdout)
    return failed[0] if failed else f"{begun[-1] if begun else 'the start'}, which ends with {run.returncode}"


def main():
    arguments = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    arguments.add_argument("--work", type=Path, default=ROOT / "build/mutants")
    arguments.add_argument("--only", default="", help="faults whose words or file contain this")
    arguments.add_argument("--jobs", default="1")
    given = arguments.parse_args()
    tree = given.work / "tree"
    copy(tree)
    subprocess.run(["cmake", "--preset", "release", "-DZRASN_WERROR=OFF", "-DZRASN_FUZZ=OFF", "-DZRASN_TOOL=OFF",
                    "-DCMAKE_CXX_FLAGS_RELEASE=-O1 -DNDEBUG"], cwd=tree, check=True, stdout=subprocess.DEVNULL)
    built = build(tree, given.jobs)
    before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
    ended = "it does not compile:\n" + built.stdout[-3000:] if built.returncode != 0 else run_tests(tree, 1000)
    if ended:
        print(f"Without a fault: {ended}")
        return 2
    seconds = 60 + 5 * int(resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime - before)

    missed, unfit, tried = 0, 0, 0
    for words, name, old, new in faults():
        if given.only not in words + name:
            continue
        tried += 1
        source = ROOT / name
        text = source.read_text() if source.exists() else ""
        if text.count(old) != 1:
            result = f"DOES NOT FIT: the text is there {text.count(old)} times"
        else:
            update(tree / name, text.replace(old, new))
            if build(tree, given.jobs).returncode != 0:
                result = "DOES NOT COMPILE"
            else:
                result = run_tests(tree, seconds) or "SURVIVED"
            update(tree / name, text)
        missed += result == "SURVIVED"
        unfit += result.startswith("DOES NOT")
        print(f"{name}: {words}: {result}", flush=True)
    print(f"{tried} faults, {missed} not found, {unfit} of no use")
    return 2 if unfit else 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())
