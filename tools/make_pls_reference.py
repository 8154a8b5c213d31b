#!/usr/bin/env python3
"""Writes tests/data/pls_molecules.csv and pls_reference.csv: PLS fits of measured activities.

The molecules are 80 of CHEMBL2321810 (rdkit-data package), every twelfth, with their measured activity
and descriptors that the RDKit computes, some of them nearly collinear. The fits are scikit-learn's
PLSRegression. A line of the reference has whether properties were scaled, the number of components,
R2, the coefficients, the constant, and the scores of the first molecule up to their sign.

usage: tools/make_pls_reference.py tests/data
"""
import csv
import sys

import numpy as np
from rdkit import Chem
from rdkit.Chem import Crippen, Descriptors, rdMolDescriptors
from sklearn.cross_decomposition import PLSRegression

SOURCE = "/usr/share/RDKit/Contrib/FreeWilson/data/CHEMBL2321810"
DESCRIPTORS = {
    "MolWt": Descriptors.MolWt,
    "HeavyAtoms": Descriptors.HeavyAtomCount,
    "logP": Crippen.MolLogP,
    "MR": Crippen.MolMR,
    "TPSA": rdMolDescriptors.CalcTPSA,
    "HBD": rdMolDescriptors.CalcNumHBD,
    "HBA": rdMolDescriptors.CalcNumHBA,
    "RotatableBonds": rdMolDescriptors.CalcNumRotatableBonds,
    "AromaticRings": rdMolDescriptors.CalcNumAromaticRings,
    "FractionCSP3": rdMolDescriptors.CalcFractionCSP3,
    "LabuteASA": rdMolDescriptors.CalcLabuteASA,
    "BertzCT": Descriptors.BertzCT,
}

with open(SOURCE + "_act.csv") as table:
    activities = {row["Name"]: float(row["Act"]) for row in csv.DictReader(table)}
with open(SOURCE + ".smi") as molecules:
    measured = [pair for pair in map(str.split, molecules) if pair[1] in activities]
rows = []
for smiles, name in measured[::12][:80]:
    mol = Chem.MolFromSmiles(smiles)
    rows.append([name, smiles, activities[name]] + [round(f(mol), 4) for f in DESCRIPTORS.values()])
with open(sys.argv[1] + "/pls_molecules.csv", "w") as out:
    writer = csv.writer(out, lineterminator="\n")
    writer.writerow(["id", "smiles", "activity", *DESCRIPTORS])
    writer.writerows(rows)

y = np.array([row[2] for row in rows])
x = np.array([row[3:] for row in rows], dtype=float)
with open(sys.argv[1] + "/pls_reference.csv", "w") as out:
    for scale in (False, True):
        for components in (1, 2, 3, 5, 8):
            fit = PLSRegression(components, scale=scale).fit(x, y)
            constant = fit.predict(np.zeros((1, x.shape[1]))).item()
            beta = np.ravel(fit.predict(np.eye(x.shape[1]))) - constant
            values = [fit.score(x, y), *beta, constant, *np.abs(fit.transform(x[:1])[0])]
            print(int(scale), components, *(repr(float(v)) for v in values), sep=",", file=out)
