#!/usr/bin/env python3
"""Sums the coverage of files up by area: llvm-cov export -summary-only ... | coverage_by_area.py

The area of a file is the first row whose pattern is found in its path.
"""
import json
import os
import re
import sys

AREAS = (
    ("platform/system", r"^platform/system/"),
    ("platform/math", r"^platform/math/"),
    ("platform/opt", r"^platform/opt/"),
    ("platform/chem", r"^platform/chem/"),
    ("platform/likeness", r"^platform/likeness/"),
    ("platform/depict", r"^platform/depict/"),
    ("apps", r"^apps/"),
    ("stats: sample statistics", r"/(data_vector|data_table_column_functions|data_plot|kernel_density|kernel_sums"
                                 r"|kolmogorov|distance_covariance|ranking|quantile|sample_sums)"),
    ("stats: tables", r"/data_t"),
    ("stats: mixtures", r"/gaussian_mixture"),
    ("stats: distributions", r"/(n?pdf|n?ran_var|two_dim_function)"),
    ("stats: smoothers", r"/(linear_smoother|similarity_prediction)"),
    ("stats: clustering, enrichment", r"/(snn|nnstrength|calcauc)"),
    ("stats: regression", r"/(logistic|pls|svd_data|regression_result)"),
    ("stats: kriging", r"/(krige|full_variogram|variogram|mol_)"),
    ("stats: matrices, results, codes", r"^stats/"),
)
KINDS = ("lines", "branches")


def main():
    sums = {area: {kind: [0, 0] for kind in KINDS} for area, _ in AREAS}
    sums["all"] = {kind: [0, 0] for kind in KINDS}
    for file in json.load(sys.stdin)["data"][0]["files"]:
        path = os.path.relpath(file["filename"])
        areas = [area for area, pattern in AREAS if re.search(pattern, path)][:1]
        for area in areas and areas + ["all"]:
            for kind in KINDS:
                sums[area][kind][0] += file["summary"][kind]["covered"]
                sums[area][kind][1] += file["summary"][kind]["count"]
    print(f"{'area':<32} {'lines':>7} {'covered':>8} {'branches':>9} {'covered':>8}")
    for area, kinds in sums.items():
        cells = "".join(f"{count:>{9 - (kind == 'lines')}} {100.0 * covered / max(count, 1):>6.1f} % "
                        for kind, (covered, count) in kinds.items())
        print(f"{area:<32}{cells}".rstrip())


main()
