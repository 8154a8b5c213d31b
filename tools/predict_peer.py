#!/usr/bin/python3
"""What users write for themselves, to measure `qvstats predict` against (docs/performance.md).

    predict_peer.py [--local 100] TRAIN N QUERIES M

Trains on the first N molecules of TRAIN and predicts the first M of QUERIES; both are files as
enumerate_molecules.py writes them. Morgan fingerprints of RDKit (radius 2, 2048 bits), and
scikit-learn's GaussianProcessRegressor with the Tanimoto similarity as its kernel, scale and noise
by maximum likelihood on the first 1000; queries go through it 1000 at a time. With --local, each
query is answered by the same process on its nearest training molecules, found by RDKit's bulk
similarities. Prints seconds of processor time by step and the peak of memory. Set
OPENBLAS_NUM_THREADS=1 for one thread. Needs python3-rdkit and python3-sklearn.
"""

import argparse
import gzip
import itertools
import resource
import time

import numpy as np
from rdkit import Chem, DataStructs, RDLogger
from rdkit.Chem import rdMolDescriptors
from scipy.linalg import cho_factor, cho_solve
from sklearn.gaussian_process import GaussianProcessRegressor
from sklearn.gaussian_process.kernels import ConstantKernel, Kernel, WhiteKernel

BITS = 2048
seconds = {}


class Tanimoto(Kernel):
    """The share of common bits, x'y / (x'x + y'y - x'y), for rows of zeros and ones."""

    def __init__(self):  # scikit-learn reads the parameters of a kernel from here
        pass

    def __call__(self, X, Y=None, eval_gradient=False):
        Y = X if Y is None else Y
        common = X @ Y.T
        values = common / (X.sum(1)[:, None] + Y.sum(1)[None, :] - common)
        return (values, np.empty((*values.shape, 0))) if eval_gradient else values

    def diag(self, X):
        return np.ones(len(X))

    def is_stationary(self):
        return False


class Timed:
    """Adds the processor time of a block to a step."""

    def __init__(self, step):
        self.step = step

    def __enter__(self):
        self.start = time.process_time()

    def __exit__(self, *_):
        seconds[self.step] = seconds.get(self.step, 0.0) + time.process_time() - self.start


def read_blocks(path, count, size=1000):
    """(fingerprints, values) of `size` molecules at a time."""
    with (gzip.open if path.endswith(".gz") else open)(path, "rt") as file:
        next(file)
        lines = itertools.islice(file, count)
        while block := list(itertools.islice(lines, size)):
            words = [line.split() for line in block]
            with Timed("parsing"):
                mols = [Chem.MolFromSmiles(word[0]) for word in words]
            with Timed("fingerprints"):
                prints = [rdMolDescriptors.GetMorganFingerprintAsBitVect(mol, 2, BITS)
                          for mol in mols]
            yield prints, np.array([float(word[2]) for word in words])


def to_matrix(prints):
    rows = np.zeros((len(prints), BITS))
    for row, fingerprint in zip(rows, prints):
        DataStructs.ConvertToNumpyArray(fingerprint, row)
    return rows


def fit(prints, values, kernel, optimizer):
    model = GaussianProcessRegressor(kernel, normalize_y=True, optimizer=optimizer)
    return model.fit(to_matrix(prints), values)


def predict_local(prints, values, count, scale, noise, query):
    similarity = np.array(DataStructs.BulkTanimotoSimilarity(query, prints))
    nearest = np.argpartition(-similarity, count)[:count]
    chosen = [prints[i] for i in nearest]
    within = np.array([DataStructs.BulkTanimotoSimilarity(p, chosen) for p in chosen])
    factor = cho_factor(scale * within + noise * np.eye(count))
    covariance = scale * similarity[nearest]
    mean = values[nearest].mean()
    weights = cho_solve(factor, covariance)
    return mean + weights @ (values[nearest] - mean), scale + noise - weights @ covariance


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--local", type=int, default=0)
    parser.add_argument("train")
    parser.add_argument("n", type=int)
    parser.add_argument("queries")
    parser.add_argument("m", type=int)
    arguments = parser.parse_args()
    RDLogger.DisableLog("rdApp.*")

    prints, values = [], []
    for block, measured in read_blocks(arguments.train, arguments.n):
        prints += block
        values.append(measured)
    values = np.concatenate(values)
    with Timed("fit"):
        head = min(1000, len(prints))
        kernel = ConstantKernel(1.0) * Tanimoto() + WhiteKernel(0.1)
        model = fit(prints[:head], values[:head], kernel, "fmin_l_bfgs_b")
        if head < len(prints) and not arguments.local:
            model = fit(prints, values, model.kernel_, None)
    if arguments.local:
        variance = values[:head].var()
        scale = model.kernel_.k1.k1.constant_value * variance
        noise = model.kernel_.k2.noise_level * variance
    training = sum(seconds.values())

    errors = []
    for block, measured in read_blocks(arguments.queries, arguments.m):
        with Timed("predict"):
            if arguments.local:
                predicted = np.array([predict_local(prints, values, arguments.local, scale, noise,
                                                    query)[0] for query in block])
            else:
                predicted, _ = model.predict(to_matrix(block), return_std=True)
        errors.append(predicted - measured)
    errors = np.concatenate(errors)
    total = sum(seconds.values())
    print("  ".join(f"{step} {value:.2f} s" for step, value in seconds.items()))
    print(f"training {training:.2f} s, queries {total - training:.2f} s, "
          f"{len(errors) / (total - training):.0f} molecules a second, "
          f"RMSE {np.sqrt(np.mean(errors**2)):.4f}, "
          f"peak {resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024:.0f} MB")


if __name__ == "__main__":
    main()
