#!/usr/bin/env python3
"""Compiles the C++ samples of README and docs, runs their command lines, compares what they print.

    tools/check_docs.py BUILD_FOLDER [PAGE ...]

A sample is a block fenced by ```cpp. One with a main() is compiled, linked and run; any other is the
body of a function and is only compiled. A using directive holds for the rest of its page. An HTML
comment right before a sample gives what the page leaves out:

    <!-- given
    std::vector<double> data;
    -->

A command line is an indented block whose first line begins with "qvstats ". It runs in an empty folder
that the comment right before it fills ($DATA: tests/data, $RDKIT: the chemistry library's data):

    <!-- before
    cp $DATA/galaxies.csv .
    -->

Every further line of the block must be a line of what the commands print or of a CSV file that they
write, blanks aside; a line "..." leaves lines out. So must the lines of a later indented block with
`<!-- printed -->` before it. An exit code of 2 (some records refused) is no failure. A block that shows how
something is used and cannot run here has `<!-- not run: reason -->` before it.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
FLAGS = ["-std=c++17", "-Wall", "-Wextra", "-Wno-unused", "-I", str(ROOT), "-isystem", "/usr/include/eigen3"]
ALWAYS = ["cmath", "iostream", "string", "utility", "vector"]


def blocks(text):
    """Yields (line number, kind, comment before, lines of the block)."""
    lines = text.split("\n")
    comment, i = "", 0
    while i < len(lines):
        start = i
        if lines[i].startswith("<!--"):
            while "-->" not in lines[i]:
                i += 1
            comment = "\n".join(lines[start : i + 1])[4:].rsplit("-->", 1)[0].strip("\n")
            i += 1
        elif lines[i].startswith("```"):
            i = lines.index("```", start + 1) + 1
            yield start + 1, lines[start][3:], comment, lines[start + 1 : i - 1]
            comment = ""
        elif lines[i].startswith("    qvstats ") or lines[i].startswith("    ") and comment.strip() == "printed":
            while i < len(lines) and (lines[i].startswith("    ") or
                                      (not lines[i] and "".join(lines[i : i + 2]).startswith("    "))):
                i += 1
            kind = "printed" if comment.strip() == "printed" else "command"
            yield start + 1, kind, comment, [line[4:] for line in lines[start:i]]
            comment = ""
        else:
            if lines[i].strip():
                comment = ""
            i += 1


def run(command, **options):
    return subprocess.run(command, capture_output=True, text=True, **options)


def check_sample(lines, comment, using, build):
    given = comment.strip().removeprefix("given").split("\n") if comment.strip().startswith("given") else []
    hoisted = sorted(line for line in given + lines if line.startswith("#include"))
    using.update(line for line in given + lines if line.startswith("using namespace"))
    def body(of):
        return [line for line in of if line not in hoisted and line not in using]

    head = [f"#include <{name}>" for name in ALWAYS] + hoisted + sorted(using)
    whole = any("int main(" in line for line in lines)
    source = head + (body(lines) if whole else
                     ["void Sample() {", *body(given), "{", *body(lines), "}}"])
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder, "sample.cpp")
        path.write_text("\n".join(source) + "\n")
        includes = FLAGS + ["-I", str(build / "generated")]
        if not whole:
            return run(["g++", *includes, "-fsyntax-only", str(path)]).stderr
        libraries = sorted(build.glob("stats/libqvstats.so")) + sorted(build.glob("platform/*/libqv*.so"))
        program = str(path.with_suffix(""))
        link = [str(library) for library in libraries]
        link += [f"-Wl,-rpath,{library.parent}" for library in libraries]
        made = run(["g++", *includes, str(path), *link, "-o", program])
        if made.returncode:
            return made.stderr
        result = run([program], cwd=folder)
        return f"exit code {result.returncode}\n{result.stderr}" if result.returncode else ""


def split_commands(lines):
    """The command lines of a block, continued lines joined, and the other lines."""
    commands, expected = [], []
    continued = False
    for line in lines:
        if continued:
            commands[-1] += line.strip()
        elif line.startswith("qvstats "):
            commands.append(line)
        elif line.strip() not in ("", "..."):
            expected.append(line)
        continued = (continued or line.startswith("qvstats ")) and line.endswith("\\")
        if continued:
            commands[-1] = commands[-1][:-1]
    return commands, expected


def check_printed(lines, printed):
    squeezed = {re.sub(r"\s+", " ", line).strip() for line in printed.split("\n")}
    lost = [line for line in lines if re.sub(r"\s+", " ", line).strip() not in squeezed]
    return "\n".join(["these lines are not printed:", *lost, "but:", printed[:3000]]) if lost else ""


def check_commands(lines, comment, build):
    """Returns what is wrong and what was printed."""
    if comment.strip().startswith("not run:"):
        return "", ""
    setup = comment.strip().removeprefix("before") if comment.strip().startswith("before") else ""
    commands, expected = split_commands(lines)
    environment = dict(os.environ, DATA=str(ROOT / "tests/data"), RDKIT="/usr/share/RDKit",
                       PATH=f"{build / 'apps'}:{os.environ['PATH']}")
    with tempfile.TemporaryDirectory() as folder:
        ready = run(["sh", "-ec", setup], cwd=folder, env=environment)
        if ready.returncode:
            return f"the files cannot be prepared\n{ready.stderr}", ""
        printed = ""
        for command in commands:
            result = run(["sh", "-c", command], cwd=folder, env=environment)
            printed += result.stdout + result.stderr
            if result.returncode not in (0, 2):
                return f"{command}\nexit code {result.returncode}\n{result.stdout}{result.stderr}", printed
        for path in sorted(pathlib.Path(folder).glob("*.csv")):
            printed += path.read_text(errors="replace")
    return check_printed(expected, printed), printed


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    pages = [pathlib.Path(page) for page in sys.argv[2:]] or [
        ROOT / "README.md", ROOT / "CONTRIBUTING.md", *sorted(ROOT.glob("docs/**/*.md"))]
    checked = failed = 0
    for page in pages:
        printed, using = "", set()
        for line, kind, comment, lines in blocks(page.read_text()):
            if kind == "cpp":
                fault = check_sample(lines, comment, using, build)
            elif kind == "command":
                fault, printed = check_commands(lines, comment, build)
            elif kind == "printed":
                fault = check_printed(lines, printed)
            else:
                continue
            checked += 1
            if fault:
                failed += 1
                print(f"{page}:{line}: {fault.strip()}\n")
    print(f"{checked} samples and command lines, {failed} with faults")
    return 1 if failed or not checked else 0


if __name__ == "__main__":
    sys.exit(main())
