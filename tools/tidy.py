#!/usr/bin/python3
"""Runs clang-tidy over our sources.

    tools/tidy.py BUILD-TREE [FILE...]

The compile commands are those in BUILD-TREE. A source that passed is not looked at again until it,
something that it includes or one of the files named .clang-tidy has changed.
"""

import hashlib
import json
import multiprocessing.pool
import pathlib
import shlex
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent


def fingerprint(command):
    """Of all that the outcome depends on; the comments too, for they can silence a check."""
    words = shlex.split(command["command"])
    del words[words.index("-o") : words.index("-o") + 2]
    preprocessed = subprocess.run(
        words + ["-E", "-C"], cwd=command["directory"], stdout=subprocess.PIPE, check=True
    )
    rules = b"".join(path.read_bytes() for path in sorted(ROOT.glob("*/.clang-tidy")))
    rules += (ROOT / ".clang-tidy").read_bytes()
    return hashlib.sha256(rules + preprocessed.stdout).hexdigest()


def tidy(tree, command):
    """Whether a source passes, and whether it was looked at now."""
    source = pathlib.Path(command["file"]).relative_to(ROOT)
    mark = tree / "passed" / str(source).replace("/", "_")
    wanted = fingerprint(command)
    if mark.exists() and mark.read_text() == wanted:
        return True, False
    words = ["clang-tidy-14", "-p", str(tree), "--quiet", str(ROOT / source)]
    run = subprocess.run(words, capture_output=True, text=True, check=False)
    if run.returncode == 0:
        mark.parent.mkdir(exist_ok=True)
        mark.write_text(wanted)
    else:
        print(run.stdout, run.stderr, sep="", flush=True)
    return run.returncode == 0, True


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    tree = pathlib.Path(sys.argv[1]).resolve()
    commands = json.loads((tree / "compile_commands.json").read_text())
    commands = {command["file"]: command for command in commands}
    wanted = {str(pathlib.Path(name).resolve()) for name in sys.argv[2:]} or set(commands)
    chosen = [commands[name] for name in sorted(wanted & set(commands))]
    with multiprocessing.pool.ThreadPool() as pool:
        results = pool.map(lambda command: tidy(tree, command), chosen, 1)
    failed = sum(not passed for passed, _ in results)
    looked = sum(now for _, now in results)
    print(f"{len(results)} sources, {looked} of them changed, {failed} FAILED")
    sys.exit(1 if failed or not results else 0)


if __name__ == "__main__":
    main()
