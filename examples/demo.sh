#!/usr/bin/env bash
# demo.sh QVSTATS OUTDIR: the main job on real data. 1017 molecules with measured activity (pIC50,
# CHEMBL2321810) come with Debian's rdkit-data: validate by five folds, predict a held-back tenth.
set -euo pipefail
program=$1
out=$2
data=/usr/share/RDKit/Contrib/FreeWilson/data
mkdir -p "$out"

# Exit code 2 says that some molecules have no prediction; their rows say why.
run() {
  printf '\n$ %s\n' "$*"
  "$@" || [ $? -eq 2 ]
}

# Every tenth molecule is held back.
awk 'NR % 10 != 0' $data/CHEMBL2321810.smi >"$out/known.smi"
awk 'NR % 10 == 0' $data/CHEMBL2321810.smi >"$out/held_back.smi"

run "$program" validate --train $data/CHEMBL2321810.smi --values $data/CHEMBL2321810_act.csv \
  --value Act --folds 5 --out "$out/validation.csv"
run "$program" predict --train "$out/known.smi" --values $data/CHEMBL2321810_act.csv --value Act \
  --neighbours 3 --out "$out/predicted.csv" "$out/held_back.smi"
printf '\nThe first rows of %s:\n' "$out/predicted.csv"
head -n 4 "$out/predicted.csv" | cut -c 1-160

# Who resembles whom: the similarities of all pairs as a table with a triangular column.
run "$program" similarity --quiet $data/CHEMBL2321810.smi "$out/similarities.pgs"
run "$program" table "$out/similarities.pgs"

# A page for each of the first five, and what it looks like.
head -n 5 "$out/held_back.smi" >"$out/five.smi"
run "$program" report --train "$out/known.smi" --values $data/CHEMBL2321810_act.csv --value Act \
  --classes 5,7 --page slide --out "$out/report.pdf" "$out/five.smi"
