#!/usr/bin/python3
"""Time and memory of `qvstats predict` as training and queries grow: the tables of docs/performance.md.

    growth.py QVSTATS TRAIN QUERIES [--sizes 500,1000,...] [--limit 300]

TRAIN and QUERIES are files as enumerate_molecules.py writes them, with at least as many molecules as
the largest size. Each row is a run of its own: seconds of processor time, and the peak of resident
memory. Training on n molecules is the run with one query. What training takes beside its molecules
is what remains after n times the reading of a molecule, from runs that read 5000 and 10000 queries,
and n times the memory of one, from local models, which have no tables, on 2000 and 4000. Exponents
are slopes of a least-squares line through the logarithms of the last four rows.
A size is left out, with the reason, when the run before lets expect more than --limit seconds, or
more memory than there is.
"""

import argparse
import gzip
import os
import pathlib
import tempfile

import numpy as np

SOME_REFUSED = 2  # qvstats has done its work; some predictions were out of their bounds


def read_lines(path, count):
    with (gzip.open if str(path).endswith(".gz") else open)(path, "rt") as file:
        return [line for line, _ in zip(file, range(count + 1))]


def run(command):
    """Processor seconds and peak memory in bytes."""
    pid = os.fork()
    if pid == 0:
        null = os.open(os.devnull, os.O_WRONLY)
        os.dup2(null, 1)
        os.dup2(null, 2)
        os.execv(command[0], command)
    _, status, usage = os.wait4(pid, 0)
    if os.waitstatus_to_exitcode(status) not in (0, SOME_REFUSED):
        raise SystemExit(f"{' '.join(command)} failed: {status}")
    return usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024


def available_memory():
    for line in open("/proc/meminfo"):
        if line.startswith("MemAvailable:"):
            return int(line.split()[1]) * 1024
    return float("inf")


def exponent(sizes, values):
    kept = [(n, v) for n, v in zip(sizes, values) if v > 0][-4:]
    return np.polyfit(*np.log(np.array(kept)).T, 1)[0] if len(kept) > 1 else float("nan")


class Program:
    def __init__(self, path, directory, train, queries):
        self.path = str(path.resolve())
        self.directory = pathlib.Path(directory)
        self.train, self.queries = train, queries

    def write(self, name, lines):
        path = self.directory / name
        path.write_text("".join(lines))
        return str(path)

    def predict(self, n, m, neighbours=3, extra=()):
        return run([self.path, "predict", "--quiet", "--value", "logP", "--train",
                    self.write("train.smi", self.train[:n + 1]), "--neighbours", str(neighbours),
                    "--out", str(self.directory / "predicted.csv"), *extra,
                    self.write("queries.smi", self.queries[:m + 1])])


def print_training(program, sizes, limit):
    few, many = (program.predict(20, m, 0)[0] for m in (5000, 10000))
    reading = (many - few) / 5000
    base = program.predict(20, 1)[1]
    few, many = (program.predict(n, 1, 3, ("--local", "3"))[1] for n in (2000, 4000))
    molecule = (many - few) / 2000
    print(f"A molecule: {reading * 1e3:.3f} ms to read, {molecule / 2**10:.1f} KB.\n")
    print("| n | seconds | without reading | peak, MB | without molecules, of 1.7 n^2 doubles |")
    print("|---|---|---|---|---|")
    done, last = [], None
    for n in sizes:
        table = 1.7 * 8 * n * n
        if last and last * (n / done[-1][0]) ** 3 > limit:
            print(f"| {n} | left out: expected to take more than {limit:.0f} s | | | |")
        elif table + base > 0.9 * available_memory():
            print(f"| {n} | left out: {table / 2**20:.0f} MB are not there | | | |")
        else:
            last, peak = program.predict(n, 1)
            tables = peak - base - n * molecule
            done.append((n, last, last - n * reading, peak - base))
            share = f"{tables / table:.2f}" if table > base else "too small to tell"
            print(f"| {n} | {last:.2f} | {done[-1][2]:.2f} | {peak / 2**20:.0f} | {share} |",
                  flush=True)
    n, seconds, training, memory = zip(*done)
    print(f"| exponent | {exponent(n, seconds):.2f} | {exponent(n, training):.2f} | "
          f"{exponent(n, memory):.2f} | |\n")


def print_queries(program, counts):
    trained = program.predict(1000, 1)[0]
    print("| queries | seconds, without training | a second | peak, MB |")
    print("|---|---|---|---|")
    rows = []
    for m in counts:
        seconds, peak = program.predict(1000, m)
        rows.append((m, seconds - trained, peak))
        print(f"| {m} | {seconds - trained:.2f} | {m / (seconds - trained):.0f} | "
              f"{peak / 2**20:.0f} |", flush=True)
    m, seconds, peak = zip(*rows)
    print(f"| exponent | {exponent(m, seconds):.2f} | | {exponent(m, peak):.2f} |")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("qvstats", type=pathlib.Path)
    parser.add_argument("train", type=pathlib.Path)
    parser.add_argument("queries", type=pathlib.Path)
    numbers = lambda text: [int(word) for word in text.split(",")]
    parser.add_argument("--sizes", type=numbers, default=[500, 1000, 2000, 4000, 8000, 16000])
    parser.add_argument("--counts", type=numbers, default=[1000, 3000, 10000, 30000, 100000])
    parser.add_argument("--limit", type=float, default=300.0)
    arguments = parser.parse_args()
    train = read_lines(arguments.train, max(arguments.sizes + [4000]))
    queries = read_lines(arguments.queries, max(arguments.counts + [10000]))
    with tempfile.TemporaryDirectory() as directory:
        program = Program(arguments.qvstats, directory, train, queries)
        print_training(program, arguments.sizes, arguments.limit)
        print_queries(program, arguments.counts)


if __name__ == "__main__":
    main()
