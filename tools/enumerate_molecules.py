#!/usr/bin/python3
"""Many molecules to measure speed on, made of the real ones that Debian's rdkit-data installs.

    enumerate_molecules.py [--seed 1] [--noise 0.3] FILE COUNT [FILE COUNT ...]

    enumerate_molecules.py train.smi.gz 100000 queries.smi.gz 100000

Every molecule is cut at each of its single bonds outside of rings. A new molecule takes one side of
a cut and, from another molecule, the other side of a cut of the same kind: between the same
elements, aromatic or not, in the same hybridisation. It must be whole for RDKit, have 10 to 40 heavy
atoms and be new. The property, "logP", is the Wildman-Crippen partition coefficient plus normal noise
of a given standard deviation: a sum over atoms that a model can learn up to the noise. The same
seed and version of RDKit give the same files; no molecule occurs twice, in one file or in two.
Needs python3-rdkit and rdkit-data.
"""

import argparse
import glob
import gzip
import random
import sys

from rdkit import Chem, RDLogger
from rdkit.Chem import Crippen

DATA = "/usr/share/RDKit"
FILES = ("Data/NCI/first_5K.smi", "Contrib/FreeWilson/data/CHEMBL2321810.smi",
         "Contrib/fraggle/data/ChEMBL_11265_actives.smi", "Contrib/Fastcluster/cdk2.smi",
         "Projects/DbCLI/testData/pubchem.200.sdf", "Projects/DbCLI/testData/bzr.sdf",
         "Contrib/PBF/testData/egfr.sdf", "Contrib/Fastcluster/testdata/cdk2.sdf")
CUTS = Chem.MolFromSmarts("[!#1]-!@[!#1]")
MIN_ATOMS, MAX_ATOMS = 10, 40


def read_molecules(path):
    if path.endswith(".sdf"):
        return [mol for mol in Chem.SDMolSupplier(path) if mol]
    with open(path) as file:
        words = [line.split()[0] for line in file if line.strip()]
    return [mol for mol in map(Chem.MolFromSmiles, words) if mol]


def read_sources(data):
    """The distinct molecules of all files, the largest part of each record, in a fixed order."""
    distinct = {}
    for name in FILES:
        for path in sorted(glob.glob(f"{data}/{name}")):
            for mol in read_molecules(path):
                part = max(Chem.GetMolFrags(mol, asMols=True), key=lambda p: p.GetNumHeavyAtoms())
                distinct.setdefault(Chem.MolToSmiles(part, isomericSmiles=False))
    return [Chem.MolFromSmiles(smiles) for smiles in distinct]


def describe(atom):
    return atom.GetSymbol(), atom.GetIsAromatic(), str(atom.GetHybridization())


def cut(mol):
    """(kind, one side, the other) of each cut and direction; a side is SMILES with a dummy atom
    where it was cut."""
    for begin, end in mol.GetSubstructMatches(CUTS):
        bond = mol.GetBondBetweenAtoms(begin, end)
        kind = describe(mol.GetAtomWithIdx(begin)), describe(mol.GetAtomWithIdx(end))
        pieces = Chem.FragmentOnBonds(mol, [bond.GetIdx()], dummyLabels=[(0, 0)])
        atoms = Chem.GetMolFrags(pieces)
        sides = [Chem.MolFragmentToSmiles(pieces, part) for part in atoms]
        if begin in atoms[1]:
            sides.reverse()
        yield kind, sides[0], sides[1]
        yield kind[::-1], sides[1], sides[0]


def read_side(smiles):
    """The molecule of a side, its dummy atom and the neighbour of that."""
    mol = Chem.MolFromSmiles(smiles, sanitize=False)
    dummy = next(atom for atom in mol.GetAtoms() if atom.GetAtomicNum() == 0)
    return mol, dummy.GetIdx(), dummy.GetNeighbors()[0].GetIdx()


def join(one, other):
    """The molecule of two sides, or None where RDKit refuses it."""
    first, first_dummy, first_end = one
    second, second_dummy, second_end = other
    shift = first.GetNumAtoms()
    if not MIN_ATOMS <= shift + second.GetNumAtoms() - 2 <= MAX_ATOMS:
        return None
    joined = Chem.RWMol(Chem.CombineMols(first, second))
    joined.AddBond(first_end, shift + second_end, Chem.BondType.SINGLE)
    joined.RemoveAtom(shift + second_dummy)
    joined.RemoveAtom(first_dummy)
    return joined if Chem.SanitizeMol(joined, catchErrors=True) == Chem.SANITIZE_NONE else None


def enumerate_molecules(sources, rng):
    """Distinct (SMILES, logP) without end."""
    firsts, seconds = [], {}
    for mol in sources:
        for kind, one, other in cut(mol):
            firsts.append((kind, one))
            seconds.setdefault(kind, []).append(other)
    sides = {}
    seen = set()
    while True:
        kind, one = rng.choice(firsts)
        other = rng.choice(seconds[kind])
        for smiles in (one, other):
            if smiles not in sides:
                sides[smiles] = read_side(smiles)
        mol = join(sides[one], sides[other])
        if not mol:
            continue
        smiles = Chem.MolToSmiles(mol)
        if smiles not in seen:
            seen.add(smiles)
            yield smiles, Crippen.MolLogP(mol)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--noise", type=float, default=0.3)
    parser.add_argument("--data", default=DATA)
    parser.add_argument("outputs", nargs="+", metavar="FILE COUNT")
    arguments = parser.parse_args()
    if len(arguments.outputs) % 2:
        parser.error("each FILE needs a COUNT")
    RDLogger.DisableLog("rdApp.*")
    rng = random.Random(arguments.seed)
    sources = read_sources(arguments.data)
    molecules = enumerate_molecules(sources, rng)
    number = 0
    for path, count in zip(arguments.outputs[::2], arguments.outputs[1::2]):
        with (gzip.open if path.endswith(".gz") else open)(path, "wt") as out:
            out.write("SMILES Name logP\n")
            for _ in range(int(count)):
                number += 1
                smiles, log_p = next(molecules)
                out.write(f"{smiles} M{number} {log_p + rng.gauss(0.0, arguments.noise):.4f}\n")
        print(f"{path}: {count} molecules from {len(sources)}", file=sys.stderr)


if __name__ == "__main__":
    main()
