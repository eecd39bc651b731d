#!/usr/bin/python3
"""Changes the sources at one point after the other, and runs the tests that reach it: do they see each change?

mutants.py FOLDER...: of the library's sources (src/asn1 src/zrz), or of the tool's and its library's (tools/zrasn src/json),
some --count points are chosen, evenly from all files by their names (or --all, or those of --only). A copy of the
repository in --work is built once, at -O1, with all of them in it (points.py, point.h); which of them is changed is said
when a test program starts. A first run tells which tests reach which points. Then each is
changed in runs of its tests, the quickest first, within ten times what those take unchanged. Points that do not compile,
and those that only the compiler evaluates, are left out.

survivors.txt names the changes that no test sees, with the reason: "changes nothing, because ...", or "hole: ..."; all tests
run before one is known to survive, so those are run --again only when asked for. Exit
code 1 when there is a survivor that is not listed, or when fewer than --least percent of the changes that change
something are seen; 2 when the copy cannot be built or its tests fail.
"""
import argparse
import hashlib
import json
import os
import pickle
import re
import resource
import shlex
import shutil
import subprocess
import sys
import time
from collections import Counter, defaultdict
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

sys.dont_write_bytecode = True
from points import find_points, with_points  # noqa: E402

HERE = Path(__file__).resolve().parent
ROOT = HERE.parents[1]
MEMORY = 6 << 30


def update(file, octets):
    """Writes the file when it differs, so that no more than that is built again."""
    if not file.exists() or file.read_bytes() != octets:
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_bytes(octets)


def command_lines(tree):
    """For each file that is compiled: itself in the repository, and the arguments that say how, with the repository's
    folders for the copy's but for what is made in the build."""
    for entry in json.loads((tree / "build/compile_commands.json").read_text()):
        file = Path(entry["file"])
        if file.is_relative_to(tree) and not file.is_relative_to(tree / "build"):
            words = [word for word in shlex.split(entry["command"])[1:]]
            kept = [word for word in words if word.startswith(("-D", "-I", "-std"))]
            kept = [re.sub(f"^(-I)?{re.escape(str(tree))}/(?!build/)", rf"\g<1>{ROOT}/", word) for word in kept]
            yield str(file.relative_to(tree)), [w if w != f"-I{tree}" else f"-I{ROOT}" for w in kept]


def configure(tree, targets):
    tree.mkdir(parents=True, exist_ok=True)
    subprocess.run(["cmake", "-S", tree, "-B", tree / "build", "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Mutants",
                    "-DCMAKE_CXX_COMPILER=clang++", "-DZRASN_STATIC=OFF", "-DZRASN_TESTS=ON",
                    f"-DZRASN_TOOL={'ON' if 'zrasn_cli' in targets else 'OFF'}",
                    f"-DCMAKE_CXX_FLAGS=-w -ferror-limit=0 -include {HERE}/point.h", "-DCMAKE_CXX_FLAGS_MUTANTS=-O1 -DNDEBUG"],
                   check=True, stdout=subprocess.DEVNULL)


def put_in(tree, names, points):
    by_file = defaultdict(list)
    for point in points:
        by_file[point.file].append(point)
    for name in names:
        octets = (ROOT / name).read_bytes()
        if name in by_file:
            octets = with_points(octets.decode("latin-1"), by_file[name]).encode("latin-1")
        update(tree / name, octets)


def build(tree, targets, names, points, jobs):
    """Builds with the points, without those that do not compile, now or before; returns the ones that did."""
    known = tree.parent / "do-not-compile"
    known.touch()
    while True:
        points = [p for p in points if p.name not in known.read_text().split()]
        put_in(tree, names, points)
        run = subprocess.run(["cmake", "--build", tree / "build", "--target", *targets, "-j", str(jobs), "--", "-k", "0"],
                             capture_output=True, text=True)
        if run.returncode == 0:
            return points
        bad = set()
        for error in re.split(r"(?m)^(?=\S+:\d+: error: )", run.stdout)[1:]:
            places = [(os.path.relpath(tree / "build" / file, tree), int(line))
                      for file, line in re.findall(r"(?m)^(\S+?):(\d+):\d+: ", error)]
            bad |= next(({p.number for p in points if p.file == file and p.line <= line <= p.last_line
                          and p.last_line - p.line < 12} for file, line in places
                         if any(p.file == file and p.line <= line <= p.last_line for p in points)), set())
        if not bad:
            print(run.stdout[-6000:])
            sys.exit(2)
        print("Do not compile: " + " ".join(p.name for p in points if p.number in bad), flush=True)
        known.write_text("\n".join([*known.read_text().split(), *(p.name for p in points if p.number in bad)]))


class Test:
    def __init__(self, name, command, program=None):
        self.name, self.command, self.program = name, command, program
        self.seconds, self.reached = 0.0, b""


def find_tests(tree, targets):
    tests = []
    for program in [t for t in targets if t.endswith("_tests")]:
        file = next(path for path in (tree / "build/tests").rglob(program) if path.is_file())
        suite = ""
        for line in subprocess.run([file, "--gtest_list_tests"], capture_output=True, text=True).stdout.splitlines():
            if line.startswith(" "):
                name = suite + line.split("#")[0].strip()
                tests.append(Test(name, [str(file), f"--gtest_filter={name}"], str(file)))
            elif line.endswith(".") or "#" in line:
                suite = line.split("#")[0].strip()
    if "zrasn_cli" in targets:
        listed = subprocess.run(["ctest", "--test-dir", tree / "build", "--show-only=json-v1", "-R", r"tool\.[a-z_]+$"],
                                capture_output=True, text=True).stdout
        tests += [Test(test["name"], test["command"]) for test in json.loads(listed)["tests"]
                  if test["name"] in ("tool.command_line", "tool.inspect", "tool.pages", "tool.vectors")]
    return tests


def run(command, seconds, **environment):
    """Whether the command passes, and the seconds of processor time it took."""
    def limit():
        os.setsid()
        resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
        resource.setrlimit(resource.RLIMIT_CPU, (int(seconds) + 1, int(seconds) + 2))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    child = subprocess.Popen(command, env={**os.environ, **environment}, stdin=subprocess.DEVNULL, preexec_fn=limit,
                             stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    end = time.monotonic() + 4 * seconds + 10
    while True:
        pid, status, used = os.wait4(child.pid, os.WNOHANG)
        if pid or time.monotonic() > end:
            break
        time.sleep(0.002)
    if not pid:
        os.killpg(child.pid, 9)
        pid, status, used = os.wait4(child.pid, 0)
        status = 9
    child.returncode = status
    return status == 0, used.ru_utime + used.ru_stime


def record(test, work):
    """Runs a test unchanged: how long it takes and what it reaches."""
    file = work / f"reached-{os.getpid()}-{abs(hash(test.name))}"
    file.unlink(missing_ok=True)
    passed, test.seconds = run(test.command, 600, ZR_REACHED=str(file))
    chunks = file.read_bytes() if file.exists() else b""
    size = 16384
    total = 0
    for at in range(0, len(chunks), size):
        total |= int.from_bytes(chunks[at:at + size], "little")
    test.reached = total.to_bytes(size, "little")
    file.unlink(missing_ok=True)
    return passed


def judge(point, tests):
    """The name of the test, or of one of those, that sees the change; empty when none does."""
    reaching = sorted((t for t in tests if t.reached[point.number]), key=lambda t: t.seconds)
    groups = defaultdict(list)  # tests of one program that are quick run together
    for test in reaching:
        pace = next((pace for pace in (0.05, 0.3, 1.5) if test.seconds < pace), None)
        key = (pace or test.seconds, test.program or test.name, "" if pace else test.name)
        groups[key].append(test)
    for key in sorted(groups):
        group = groups[key]
        # A script gets a folder of its own: the one it is given, with the number.
        own = {word: f"{word}-{point.number}" for word in group[0].command if "/build/tests/tool/" in word}
        command = [own.get(word, word) for word in group[0].command]
        if group[0].program:
            command = [group[0].program, "--gtest_fail_fast", "--gtest_filter=" + ":".join(t.name for t in group)]
        passed, _ = run(command, 2 + 10 * sum(t.seconds for t in group), ZR_MUTANT=str(point.number))
        for folder in own.values() if group[0].program is None else []:
            shutil.rmtree(folder, ignore_errors=True)
        if not passed:
            return group[0].name if len(group) == 1 else f"{group[0].name} or one of {len(group) - 1} others"
    return ""


def choose(points, count, only):
    """As many of each file as is its share, by the hash of their names: an edit changes few of those chosen."""
    if only:
        return [p for p in points if only in p.name]
    by_file = defaultdict(list)
    for point in sorted(points, key=lambda p: hashlib.sha1(p.name.encode()).digest()):
        by_file[point.file].append(point)
    share = count / len(points)
    least = min(3, count // len(by_file))
    return [p for file in sorted(by_file) for p in by_file[file][:max(least, -int(-len(by_file[file]) * share // 1))]]


def read_reasons():
    """From the name of a point to its line and the reason why its change survives."""
    reasons, name = {}, ""
    for line in (HERE / "survivors.txt").read_text().splitlines():
        if line.startswith("    "):
            reasons[name] = (reasons[name][0], (reasons[name][1] + " " + line.strip()).strip())
        elif line and not line.startswith("#"):
            name, text = line.split(" | ", 1)
            reasons[name] = (text, "")
    return reasons


def main():
    arguments = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    arguments.add_argument("folders", nargs="+", help="src/asn1 src/zrz, or tools/zrasn src/json")
    arguments.add_argument("--work", type=Path, default=ROOT / "build/mutants")
    arguments.add_argument("--count", type=int, default=800)
    arguments.add_argument("--least", type=float, default=97)
    arguments.add_argument("--only", default="", help="all points whose names contain this")
    arguments.add_argument("--all", action="store_true")
    arguments.add_argument("--jobs", type=int, default=os.cpu_count())
    arguments.add_argument("--within", type=float, default=600, help="leave tests out that take more seconds")
    arguments.add_argument("--again", action="store_true", help="run the tests with listed survivors too")
    arguments.add_argument("--survivors", action="store_true", help="only what survived the run before, and is not listed")
    arguments.add_argument("--holes", action="store_true", help="only the listed holes, with all tests")
    given = arguments.parse_args()
    work = given.work.resolve() / "-".join(given.folders).replace("/", "_")
    tree = work / "tree"
    targets = ["zrasn_tests"] if given.folders == ["src/asn1", "src/zrz"] else \
        ["zrasn_json_tests", "zrasn_tool_tests", "zrasn_cli", "zrasn_vectors"]

    names = subprocess.run(["git", "ls-files"], cwd=ROOT, check=True, capture_output=True, text=True).stdout.split("\n")
    names = [name for name in names if name and (ROOT / name).is_file()]
    put_in(tree, [name for name in names if not (tree / name).exists() or not name.startswith(tuple(given.folders))], [])
    for name in names:
        (tree / name).chmod((ROOT / name).stat().st_mode)
    configure(tree, targets)
    commands = sorted(command_lines(tree), key=lambda c: (not c[0].startswith(tuple(given.folders)), c[0]))
    print("Looking for points", flush=True)
    points, unseen = find_points(ROOT, given.folders, commands)
    print(f"{len(points)} points; not compiled: {' '.join(unseen) or 'no file'}", flush=True)
    chosen = choose(points, len(points) if given.all else given.count, given.only)
    chosen = build(tree, targets, names, chosen, given.jobs)
    programs = [path for target in targets for path in (tree / "build").rglob(target.replace("zrasn_cli", "zrasn"))
                if path.is_file() and os.access(path, os.X_OK)]
    made = set()
    for program in programs:
        subprocess.run(["objcopy", "-O", "binary", "-j", "zr_points", "--set-section-flags", "zr_points=alloc", program,
                        work / "numbers"], check=True)
        octets = (work / "numbers").read_bytes()
        made |= {int.from_bytes(octets[at:at + 4], "little") for at in range(0, len(octets), 4)}
    total, chosen = len(chosen), [p for p in chosen if p.number in made]
    print(f"{total} chosen compile, of {len(chosen)} the program has code", flush=True)

    tests, kept, state = find_tests(tree, targets), work / "recorded", [path.stat().st_mtime for path in programs]
    recorded_of, recorded = pickle.loads(kept.read_bytes()) if kept.exists() else ([], [])
    with ThreadPoolExecutor(given.jobs) as pool:
        if recorded_of == state:
            tests = recorded
        missing = [t for t in tests if not t.reached]
        failed = [t.name for t, passed in zip(missing, pool.map(lambda t: record(t, work), missing)) if not passed]
        if failed or not tests:
            print(f"Tests that fail without a change: {failed}")
            return 2
        kept.write_bytes(pickle.dumps((state, tests)))
        print(f"{len(tests)} tests take {sum(t.seconds for t in tests):.0f} s", flush=True)
        tests = [t for t in tests if t.seconds <= given.within]
        reasons, count, unlisted, survived = read_reasons(), Counter(), [], work / "survived"
        if given.survivors:
            chosen = [p for p in chosen if p.name in survived.read_text().split()]
        if given.holes:
            chosen = [p for p in chosen if reasons.get(p.name, ("", ""))[1].startswith("hole: ")]
            given.again = True
        seen = pool.map(lambda p: judge(p, tests) if given.again or p.name not in reasons else "", chosen)
        for point, test in zip(chosen, seen):
            text, reason = reasons.get(point.name, ("", ""))
            nothing = reason.startswith("changes nothing, because ")
            result = "killed" if test else "nothing" if nothing else "hole" if reason.startswith("hole: ") else "unlisted"
            count[result] += 1
            reach = "" if any(t.reached[point.number] for t in tests) else " (reached by no test)"
            print(f"{result}: {point.name} | {point.text}{' | ' + test if test else reach}", flush=True)
            if result == "unlisted" or (not test and text != point.text):
                unlisted.append(f"{point.name} | {point.text}")
            if test and reason:
                print(f"Listed as a survivor, but seen: {point.name}")
    survived.write_text("\n".join(line.split(" | ")[0] for line in unlisted))
    changed = len(chosen) - count["nothing"]
    share = 100 * count["killed"] / changed if changed else 0
    print(f"{len(chosen)} of {len(points)} points changed: {count['killed']} seen by a test, {count['nothing']} change nothing, "
          f"{count['hole']} holes, {len(unlisted)} survivors not listed, or with another text: {share:.1f} % seen")
    print("\n".join(unlisted))
    return 1 if unlisted or share < given.least else 0


if __name__ == "__main__":
    sys.exit(main())
