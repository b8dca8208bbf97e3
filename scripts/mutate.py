#!/usr/bin/env python3
"""Measures how many faults the core tests catch.

Each line of scripts/mutants.txt names a source file, a piece of text in it, what
replaces it and the gtest filter of the suites that should notice. One mutant at a
time is written into the source, mutation_tests (the suites named in the list) is rebuilt incrementally in its own
build folder, the filtered tests run under a time limit, and the source is put back.

  scripts/mutate.py [--build build-mut] [--results mutation-results.txt] [--only ID,...]

A mutant is "killed" when the tests fail or time out, "survived" when they pass,
"stillborn" when it does not compile (left out of the score). Results already in the
results file are kept, so an interrupted run goes on where it stopped.
"""
import argparse
import os
import pathlib
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent


def load_mutants(path):
    mutants = []
    for number, line in enumerate(path.read_text().splitlines(), 1):
        if not line.strip() or line.lstrip().startswith("#"):
            continue
        fields = [f.strip() for f in line.split(" | ")]
        if len(fields) != 5:
            sys.exit(f"{path}:{number}: expected 'id | file | original | replacement | filter'")
        mutants.append(dict(zip(("id", "file", "original", "replacement", "filter"), fields)))
    return mutants


def check(mutants):
    problems = []
    for m in mutants:
        text = (ROOT / m["file"]).read_text()
        if text.count(m["original"]) != 1:
            problems.append(f'{m["id"]}: "{m["original"]}" occurs {text.count(m["original"])} times in {m["file"]}')
    return problems


def configure(build):
    if (build / "build.ninja").exists():
        return
    env = dict(os.environ, CMAKE_CXX_COMPILER_LAUNCHER=os.environ.get("CMAKE_CXX_COMPILER_LAUNCHER", "ccache"))
    # The same flags as the everyday build, so a warm compiler cache makes the first build cheap.
    subprocess.run(["cmake", "-S", str(ROOT), "-B", str(build), "-G", "Ninja",
                    "-DCMAKE_BUILD_TYPE=RelWithDebInfo"], check=True, env=env, stdout=subprocess.DEVNULL)


def build_tests(build, limit):
    try:
        done = subprocess.run(["cmake", "--build", str(build), "--target", "mutation_tests", "-j2"],
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=limit)
        return done.returncode == 0, done.stdout.decode(errors="replace")
    except subprocess.TimeoutExpired:
        return False, "build timed out"


def run_tests(build, gtest_filter, limit):
    env = dict(os.environ, QT_QPA_PLATFORM="offscreen")
    try:
        done = subprocess.run([str(build / "tests" / "mutation_tests"), f"--gtest_filter={gtest_filter}"],
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=limit, env=env)
        return "survived" if done.returncode == 0 else "killed"
    except subprocess.TimeoutExpired:
        return "killed"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--mutants", default=str(ROOT / "scripts" / "mutants.txt"))
    parser.add_argument("--build", default=str(ROOT / "build-mut"))
    parser.add_argument("--results", default=str(ROOT / "build-mut" / "mutation-results.txt"))
    parser.add_argument("--only", default="")
    parser.add_argument("--test-limit", type=int, default=180)
    parser.add_argument("--build-limit", type=int, default=900)
    args = parser.parse_args()

    mutants = load_mutants(pathlib.Path(args.mutants))
    if args.only:
        wanted = set(args.only.split(","))
        mutants = [m for m in mutants if m["id"] in wanted]
    problems = check(mutants)
    if problems:
        sys.exit("\n".join(problems))

    build = pathlib.Path(args.build).resolve()
    results = pathlib.Path(args.results)
    configure(build)
    ok, log = build_tests(build, args.build_limit)
    every_filter = ":".join(sorted({f for m in mutants for f in m["filter"].split(":")}))
    if not ok or run_tests(build, every_filter, args.test_limit * 4) != "survived":
        sys.exit("mutation_tests must build and pass before mutating:\n" + log[-3000:])

    done = {}
    if results.exists():
        for line in results.read_text().splitlines():
            parts = line.split("\t")
            if len(parts) >= 2:
                done[parts[0]] = parts[1]

    # Mutants of one file follow each other, so a file is rebuilt once per mutant.
    for m in sorted(mutants, key=lambda m: m["file"]):
        if m["id"] in done:
            continue
        source = ROOT / m["file"]
        original = source.read_text()
        started = time.time()
        try:
            source.write_text(original.replace(m["original"], m["replacement"], 1))
            ok, _ = build_tests(build, args.build_limit)
            outcome = run_tests(build, m["filter"], args.test_limit) if ok else "stillborn"
        finally:
            source.write_text(original)
        done[m["id"]] = outcome
        with results.open("a") as out:
            out.write(f'{m["id"]}\t{outcome}\t{m["file"]}\t{m["original"]} -> {m["replacement"]}'
                      f'\t{time.time() - started:.0f}s\n')
        print(f'{m["id"]}: {outcome}', flush=True)

    build_tests(build, args.build_limit)  # leave the build matching the sources
    scored = [m for m in mutants if done.get(m["id"]) in ("killed", "survived")]
    killed = [m for m in scored if done[m["id"]] == "killed"]
    print(f"killed {len(killed)} of {len(scored)}" +
          "".join(f'\n  survived {m["id"]}' for m in scored if done[m["id"]] == "survived"))


if __name__ == "__main__":
    main()
