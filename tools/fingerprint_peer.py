#!/usr/bin/python3
"""An exact Gaussian process with a Tanimoto kernel on radius-2 circular counts, the yardstick of docs/fingerprint.md.

  fingerprint_peer.py RDKIT_DATA FILE

FILE holds the test indices of each split, as fingerprint_study writes it. The covariance is s2 (T + theta I) with a
constant mean; mean and s2 by generalised least squares, theta by marginal likelihood on the training molecules alone.
Needs python3-numpy, python3-scipy and python3-rdkit."""
import csv, sys
import numpy as np
from rdkit import Chem, DataStructs
from rdkit.Chem import AllChem
from scipy.optimize import minimize_scalar

stem = sys.argv[1] + "/Contrib/FreeWilson/data/CHEMBL2321810"
activity = {row["Name"]: float(row["Act"]) for row in csv.DictReader(open(stem + "_act.csv"))}
records = [line.split()[:2] for line in open(stem + ".smi")]
mols = [(Chem.MolFromSmiles(smiles), activity[name]) for smiles, name in records if name in activity]
y = np.array([value for _, value in mols])
fingerprints = [AllChem.GetMorganFingerprint(mol, 2) for mol, _ in mols]
tanimoto = np.array([DataStructs.BulkTanimotoSimilarity(f, fingerprints) for f in fingerprints])


def predict(train, test):
    values, vectors = np.linalg.eigh(tanimoto[np.ix_(train, train)])
    values = np.maximum(values, 0.0)
    one, response = vectors.T @ np.ones(len(train)), vectors.T @ y[train]

    def fit(log_theta):
        d = values + np.exp(log_theta)
        mean = (one * response / d).sum() / (one * one / d).sum()
        s2 = ((response - mean * one) ** 2 / d).mean()
        return 0.5 * (len(train) * np.log(s2) + np.log(d).sum()), mean, s2, np.exp(log_theta)

    best = minimize_scalar(lambda t: fit(t)[0], bounds=(-8, 4), method="bounded")
    _, mean, s2, theta = fit(best.x)
    d, projected = values + theta, tanimoto[np.ix_(test, train)] @ vectors
    return mean + projected @ ((response - mean * one) / d), s2 * (1 + theta - (projected**2 / d).sum(1))


scores = []
for line in open(sys.argv[2]):
    test = [int(word) for word in line.split()]
    train = sorted(set(range(len(y))) - set(test))
    predicted, variance = predict(train, test)
    error = y[test] - predicted
    r2 = 1 - (error**2).sum() / ((y[test] - y[test].mean()) ** 2).sum()
    scores.append((r2, np.sqrt((error**2).mean()), 100 * np.mean(np.abs(error) <= 1.96 * np.sqrt(variance))))
print("| Gaussian process, circular counts | %.3f | %.3f | %.1f %% | 0 |" % tuple(np.mean(scores, 0)))
