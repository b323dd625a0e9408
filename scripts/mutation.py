#!/usr/bin/env python3
"""A small mutation check of the format code (paragraph/, msg/, server/,
lib/): COUNT mutants drawn at random with a fixed seed, each a flipped
comparison, a dropped statement line or a changed integer constant. Each is
built into a native test build (build/mutation) and the native suite is run;
the mutant is killed when a test fails. A mutant that does not compile is
put back and another is drawn. Prints each mutant and the score; the source
is restored whatever happens.

    scripts/mutation.py [--count 30] [--seed 1] [--killers]

With --killers each mutant is run against the whole suite and the tests that
kill it are listed: a test that is some mutant's only killer is one to keep.
"""
import argparse
import pathlib
import random
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = ROOT / "build" / "mutation"
FOLDERS = ["paragraph", "msg", "server", "lib"]
FLIPS = {"==": "!=", "!=": "==", "<=": "<", ">=": ">", "<": "<=", ">": ">="}
COMPARISON = re.compile(r"(?<=[\w)\] ])\s(==|!=|<=|>=|<|>)\s(?=[\w(!-])")
CONSTANT = re.compile(r"(?<![\w.])(\d+)(?![\w.])")


def candidates():
    """Every place a mutant can be made: (file, line number, kind)."""
    sites = []
    for folder in FOLDERS:
        for path in sorted((ROOT / folder).glob("*.cpp")):
            lines = path.read_text().splitlines()
            for number, line in enumerate(lines):
                code = line.split("//")[0]
                stripped = code.strip()
                if not stripped or stripped.startswith(("#", "*", "/*")) or '"' in code:
                    continue
                if COMPARISON.search(code) and "template" not in code and "<<" not in code:
                    sites.append((path, number, "flip"))
                if CONSTANT.search(code):
                    sites.append((path, number, "constant"))
                if stripped.endswith(";") and not stripped.startswith(("return", "}", "case")) \
                        and "{" not in stripped and lines[number - 1].rstrip().endswith((";", "{", "}")):
                    sites.append((path, number, "drop"))
    return sites


def mutate(line, kind, rng):
    if kind == "flip":
        match = rng.choice(list(COMPARISON.finditer(line)))
        op = match.group(1)
        return line[:match.start(1)] + FLIPS[op] + line[match.end(1):]
    if kind == "constant":
        match = rng.choice(list(CONSTANT.finditer(line)))
        value = int(match.group(1))
        return line[:match.start(1)] + str(value + 1 if value != 1 else 0) + line[match.end(1):]
    return ""


def run(command, timeout):
    try:
        return subprocess.run(command, cwd=BUILD, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL, timeout=timeout).returncode
    except subprocess.TimeoutExpired:
        return -1


def failing_tests():
    """Runs the whole suite; the names of the tests that fail or time out."""
    try:
        out = subprocess.run(["ctest", "-j2", "--timeout", "120"], cwd=BUILD, text=True,
                             stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                             timeout=1800).stdout
    except subprocess.TimeoutExpired:
        return ["(the suite timed out)"]
    return re.findall(r"^\s*\d+ - (\S+) \(", out.split("tests FAILED:")[-1], re.M) \
        if "tests FAILED:" in out else []


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--count", type=int, default=30)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--killers", action="store_true")
    args = parser.parse_args()
    subprocess.run(["cmake", "-S", str(ROOT), "-B", str(BUILD), "-G", "Ninja",
                    "-DCMAKE_BUILD_TYPE=Release"], check=True, stdout=subprocess.DEVNULL)
    subprocess.run(["cmake", "--build", str(BUILD)], check=True, stdout=subprocess.DEVNULL)
    if run(["ctest", "-j2"], 900) != 0:
        sys.exit("mutation: the suite fails without mutants")

    rng = random.Random(args.seed)
    sites = candidates()
    rng.shuffle(sites)
    killed = made = 0
    for path, number, kind in sites:
        if made == args.count:
            break
        original = path.read_text()
        lines = original.splitlines(keepends=True)
        mutant = mutate(lines[number].rstrip("\n"), kind, rng)
        lines[number] = mutant + "\n"
        try:
            path.write_text("".join(lines))
            if run(["cmake", "--build", "."], 600) != 0:
                continue
            made += 1
            if args.killers:
                killers = failing_tests()
                dead = bool(killers)
            else:
                dead = run(["ctest", "-j2", "--stop-on-failure"], 900) != 0
            killed += dead
            where = f"{path.relative_to(ROOT)}:{number + 1}"
            print(f"{'killed' if dead else 'LIVED '} {kind:8} {where}: {mutant.strip()[:70]}",
                  flush=True)
            if args.killers and killers:
                print("    by " + " ".join(killers), flush=True)
        finally:
            path.write_text(original)
    subprocess.run(["cmake", "--build", str(BUILD)], stdout=subprocess.DEVNULL)
    print(f"mutation score: {killed} of {made} killed ({100 * killed // max(made, 1)}%)")


if __name__ == "__main__":
    main()
