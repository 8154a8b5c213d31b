#!/usr/bin/env python3
"""Regression on similarity beside scikit-learn's Gaussian process, on the same matrix and split.

    similarity_peer.py QVSTATS MOLECULES VALUES RESPONSE [--splits 5]

The program writes the similarities of all pairs, then every model of `qvstats smooth` predicts a
held-out fifth with parameters from the variogram of the rest. scikit-learn's
GaussianProcessRegressor gets the same matrix, through a kernel of precomputed similarities, and the
same rows; it maximises the likelihood over signal, noise and, for exp(-p (1 - s)), the kernel
parameter. The table holds the mean over the splits.
"""

import argparse
import csv
import pathlib
import subprocess
import tempfile
import warnings

import numpy as np
from sklearn.gaussian_process import GaussianProcessRegressor
from sklearn.gaussian_process.kernels import ConstantKernel, Hyperparameter, Kernel, WhiteKernel

MODELS = ("kernel", "gp", "krige", "okrige")


class SimilarityKernel(Kernel):
    """A matrix s of similarities itself, or exp(-p (1 - s)); X holds row numbers."""

    def __init__(self, matrix, p=3.0, p_bounds=(1e-2, 1e3)):
        self.matrix = matrix
        self.p = p
        self.p_bounds = p_bounds

    @property
    def hyperparameter_p(self):
        return Hyperparameter("p", "numeric", self.p_bounds)

    def __call__(self, X, Y=None, eval_gradient=False):
        rows = X[:, 0].astype(int)
        columns = rows if Y is None else Y[:, 0].astype(int)
        similarities = self.matrix[np.ix_(rows, columns)]
        if self.p_bounds == "fixed":
            return (similarities, np.empty((*similarities.shape, 0))) if eval_gradient else similarities
        exponent = self.p * (1.0 - similarities)
        values = np.exp(-exponent)
        if not eval_gradient:
            return values
        # In the logarithm of p.
        return values, (-exponent * values)[:, :, np.newaxis]

    def diag(self, X):
        return np.ones(len(X))

    def is_stationary(self):
        return False


def read_matrix(path):
    rows = [line.split(",")[2:] for line in path.read_text().splitlines()[3:]]
    matrix = np.zeros((len(rows), len(rows)))
    for k, row in enumerate(rows):
        matrix[k, : k + 1] = [float(value) for value in row]
    return np.maximum(matrix, matrix.T)


def read_predictions(path):
    """Row numbers, responses and predictions by set."""
    sets = {}
    with open(path, newline="") as file:
        for row in csv.reader(file):
            if row[2] in ("training", "test"):
                sets.setdefault(row[2], []).append((int(row[0]), float(row[3]), float(row[4])))
    return {name: np.array(rows) for name, rows in sets.items()}


def measure(response, predicted):
    squares = np.sum((response - predicted) ** 2)
    return (1 - squares / np.sum((response - response.mean()) ** 2),
            np.sqrt(squares / len(response)))


def fit_peer(matrix, p_bounds, sets):
    kernel = ConstantKernel(1.0, (1e-3, 1e4)) * SimilarityKernel(matrix, 3.0, p_bounds)
    kernel += WhiteKernel(0.1, (1e-6, 1e1))
    model = GaussianProcessRegressor(kernel, normalize_y=True, n_restarts_optimizer=0,
                                     random_state=0)
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")  # a parameter at a bound
        model.fit(sets["training"][:, :1], sets["training"][:, 1])
    return measure(sets["test"][:, 1], model.predict(sets["test"][:, :1]))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("qvstats")
    parser.add_argument("molecules")
    parser.add_argument("values")
    parser.add_argument("response")
    parser.add_argument("--splits", type=int, default=5)
    parser.add_argument("--kernel", default="Exponential")
    arguments = parser.parse_args()
    figures = {}
    with tempfile.TemporaryDirectory() as directory:
        table = pathlib.Path(directory) / "similarities.pgs"
        subprocess.run([arguments.qvstats, "similarity", "--quiet", arguments.molecules, table],
                       check=True)
        matrix = read_matrix(table)
        for seed in range(1, arguments.splits + 1):
            for model in MODELS:
                out = pathlib.Path(directory) / "predicted.csv"
                subprocess.run([arguments.qvstats, "smooth", "--table", table, "--values",
                                arguments.values, "--response", arguments.response, "--model",
                                model, "--kernel", arguments.kernel, "--fit-variogram", "--seed",
                                str(seed), "--out", out],
                               check=True, stderr=subprocess.DEVNULL)
                sets = read_predictions(out)
                figures.setdefault(model, []).append(
                    measure(sets["test"][:, 1], sets["test"][:, 2]))
            for name, bounds in (("sklearn, exp(-p(1-s))", (1e-2, 1e3)), ("sklearn, s", "fixed")):
                figures.setdefault(name, []).append(fit_peer(matrix, bounds, sets))
    print(f"{'model':22} {'R2':>8} {'RMSE':>8}   R2 of each split")
    for name, rows in figures.items():
        r2, rmse = np.mean(rows, axis=0)
        print(f"{name:22} {r2:8.4f} {rmse:8.4f}  ", " ".join(f"{row[0]:.3f}" for row in rows))


if __name__ == "__main__":
    main()
