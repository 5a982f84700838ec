#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Checks sources of C++ with clang: sources.py all|some BUILD FILE...

For some of the project's sources, runs all checks on each of them. For all, checks each for the compiler's warnings and
with a few checks of clang-tidy, then the parts in which the release in BUILD compiles them with the other checks, which
take much longer for the headers of a source than for the source itself.
"""
import concurrent.futures
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]

# What only g++ understands, and precompiled headers, which hide a missing include.
UNWANTED = re.compile(r" -(femit-class-debug-always|fpch-preprocess|Winvalid-pch|Wno-subobject-linkage)"
                      r"| -include \S*cmake_pch\.hxx")

# Headers with findings of their own. Those of the build are generated.
OWN_HEADERS = f"^{re.escape(str(ROOT))}/(bench|include|python|src|tests|tools)/"

# These checks need to see one source at a time: they look only at the file that is compiled, or take a name that another
# source declares for the one they look for. The compiler's warnings are like that, too.
SEPARATE = ["bugprone-forward-declaration-namespace", "bugprone-suspicious-include", "misc-unused-alias-decls",
            "misc-unused-using-decls"]


def commands_together(build):
    """The commands of the release, by file. Some of the files include the sources that are compiled together."""
    return {entry["file"]: entry for entry in json.loads((build / "compile_commands.json").read_text())}


def commands_separate(build, work):
    """The same for each source separately. BUILD has the generated headers."""
    configured = work / "configured"
    done = subprocess.run(["cmake", "--preset", "release", "-B", configured, "-DCMAKE_UNITY_BUILD=OFF",
                           "-DBUILD_TESTING=ON", "-DZVIPTV_BENCH=ON"], cwd=ROOT, text=True, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT)
    if done.returncode != 0:
        sys.exit(f"{done.stdout}cannot configure a build of separate sources; the log is above")
    text = (configured / "compile_commands.json").read_text().replace(str(configured), str(build))
    return {entry["file"]: entry for entry in json.loads(text)}


def write(folder, commands):
    """Writes the commands for clang-tidy."""
    folder.mkdir()
    entries = [{**entry, "command": UNWANTED.sub("", entry["command"])} for entry in commands.values()]
    (folder / "compile_commands.json").write_text(json.dumps(entries))


def tidy(file, folder, *options):
    return subprocess.run(["clang-tidy-14", "-p", folder, "--quiet", f"--header-filter={OWN_HEADERS}", *options, file],
                          cwd=ROOT, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)


def every(files, folder, *options):
    """Runs clang-tidy for the files, and prints what it finds. Returns whether it finds nothing."""
    clean = True
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for done in pool.map(lambda file: tidy(file, folder, *options), files):
            if done.returncode != 0:
                print(done.stdout, end="", flush=True)
                clean = False
    return clean


def main():
    build = pathlib.Path(sys.argv[2]).resolve()
    wanted = [str(ROOT / name) for name in sys.argv[3:]]
    with tempfile.TemporaryDirectory() as name:
        work = pathlib.Path(name)
        separate = commands_separate(build, work)
        built = [file for file in wanted if file in separate]
        if len(built) < len(wanted):
            print(f"clang-tidy: {len(wanted) - len(built)} files are left out, which the release does not build")
        print(f"clang-tidy: {len(built)} files", flush=True)
        write(work / "separate", separate)
        if sys.argv[1] == "some":
            clean = every(built, work / "separate")
        else:
            clean = every(built, work / "separate", "--checks=" + ",".join(["-*", *SEPARATE]))
            together = commands_together(build)
            write(work / "together", together)
            parts = [file for file in together if file in built or "/Unity/" in file]
            print(f"clang-tidy: {len(parts)} parts of the release", flush=True)
            others = "--checks=" + ",".join("-" + check for check in SEPARATE)
            clean = every(parts, work / "together", "--extra-arg=-w", others) and clean
    sys.exit(0 if clean else 1)


if __name__ == "__main__":
    main()
