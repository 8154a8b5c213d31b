#!/usr/bin/env bash
# make.sh QVSTATS CONTOURS: draws the pictures of the guides again: the report's from the molecules of
# the demo (1017 with measured activity, CHEMBL2321810, from Debian's rdkit-data), the contour lines
# by the example program examples/contours.cpp, plots from the test data.

# make.sh QVSTATS CONTOURS: draws the pictures of the guides again: the report's and the variogram from
# the molecules of the demo (1017 with measured activity, CHEMBL2321810, from Debian's rdkit-data), the
# contour lines by the example program examples/contours.cpp.
set -euo pipefail
program=$1
contours=$2
here=$(cd "$(dirname "$0")" && pwd)
data=/usr/share/RDKit/Contrib/FreeWilson/data
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

awk 'NR % 10 != 0' $data/CHEMBL2321810.smi >"$work/known.smi"
{
  echo 'smiles,id,series,source'
  awk 'NR == 100 { print $1 "," $2 ",sulphonamide,ChEMBL document 2321810" }' $data/CHEMBL2321810.smi
} >"$work/query.csv"

report() {
  "$program" report --quiet --train "$work/known.smi" --values $data/CHEMBL2321810_act.csv \
    --value Act --classes 5,7 "$@" "$work/query.csv"
}
report --page slide --out "$here/report.svg"
report --title 'Predicted activity of {id}' --property series,source --out "$here/report-title.svg"
"$contours" "$here/contours.svg"

# make.sh QVSTATS CONTOURS: draws the pictures of the guides again: the report's and the variogram from
# the molecules of the demo (1017 with measured activity, CHEMBL2321810, from Debian's rdkit-data), the
# contour lines by the example program examples/contours.cpp, plots from the test data.
