#!/usr/bin/env python3
"""Writes tests/data/pdf_fit_reference.tsv: maximum-likelihood fits to 25 digits.

Samples are drawn with scipy from a fixed seed and rounded to six digits. From scipy's own fit, or
from the parameters of the draw, the equations of the maximum are solved in arbitrary precision
(mpmath); the standard errors are those of the inverse of the negative second derivatives. A line
has the family, the parameters, their standard errors, the log-likelihood and the sample, each list
separated by commas.

usage: tools/make_pdf_fit_reference.py > tests/data/pdf_fit_reference.tsv
"""
import mpmath as mp
import numpy as np
from scipy import optimize, stats

mp.mp.dps = 40

LOG_DENSITIES = {
    "gaussian": lambda x, m, t: mp.log(t / (2 * mp.pi)) / 2 - t * (x - m) ** 2 / 2,
    "students_t": lambda x, n, m, t: mp.loggamma((n + 1) / 2) - mp.loggamma(n / 2)
    + mp.log(t / (mp.pi * n)) / 2 - (n + 1) / 2 * mp.log1p(t * (x - m) ** 2 / n),
    "gamma": lambda x, a, b: a * mp.log(b) - mp.loggamma(a) + (a - 1) * mp.log(x) - b * x,
    "chi_squared": lambda x, k: (k / 2 - 1) * mp.log(x) - x / 2 - k / 2 * mp.log(2) - mp.loggamma(k / 2),
    "snedecors_f": lambda x, a, b: mp.loggamma((a + b) / 2) - mp.loggamma(a / 2) - mp.loggamma(b / 2)
    + a / 2 * mp.log(a / b) + (a / 2 - 1) * mp.log(x) - (a + b) / 2 * mp.log1p(a * x / b),
    "beta": lambda x, a, b: mp.loggamma(a + b) - mp.loggamma(a) - mp.loggamma(b)
    + (a - 1) * mp.log(x) + (b - 1) * mp.log1p(-x),
    "gumbel": lambda x, m, s: -(x - m) / s - mp.exp(-(x - m) / s) - mp.log(s),
    "gev": lambda x, m, s, c: -mp.log(s) - (1 + 1 / c) * mp.log1p(c * (x - m) / s)
    - mp.power(1 + c * (x - m) / s, -1 / c),
}

# Family, where the search begins, the draw.
CASES = [
    ("gaussian", (1e4, 4.0), lambda g: 1e4 + 0.5 * g.standard_normal(40)),
    ("students_t", (3.0, -20.0, 0.04), lambda g: -20 + 5 * g.standard_t(3, 60)),
    ("students_t", (1.0, 0.0, 1.0), lambda g: g.standard_t(1, 80)),
    ("gamma", (0.4, 0.01), lambda g: g.gamma(0.4, 100.0, 50)),
    ("gamma", (200.0, 20.0), lambda g: g.gamma(200.0, 0.05, 50)),
    ("chi_squared", (4.5,), lambda g: g.chisquare(4.5, 40)),
    ("chi_squared", (0.3,), lambda g: g.chisquare(0.3, 40)),
    ("snedecors_f", (6.0, 9.0), lambda g: g.f(6, 9, 60)),
    ("snedecors_f", (1.5, 3.0), lambda g: g.f(1.5, 3, 60)),
    ("beta", (0.5, 0.7), lambda g: g.beta(0.5, 0.7, 50)),
    ("beta", (30.0, 4.0), lambda g: g.beta(30, 4, 50)),
    ("gumbel", (300.0, 40.0), lambda g: g.gumbel(300, 40, 50)),
    ("gev", (10.0, 2.0, 0.3), lambda g: stats.genextreme.rvs(-0.3, 10, 2, 80, random_state=g)),
    ("gev", (10.0, 2.0, -0.2), lambda g: stats.genextreme.rvs(0.2, 10, 2, 80, random_state=g)),
]


def rounded(sample):
    return [float(f"{x:.6g}") for x in sample]


def solve(family, start, sample):
    """The maximum, its standard errors and the log-likelihood there."""
    density = LOG_DENSITIES[family]
    values = [mp.mpf(x) for x in sample]

    def log_likelihood(*params):
        return mp.fsum(density(x, *params) for x in values)

    def cost(params):
        try:
            value = log_likelihood(*[mp.mpf(p) for p in params])
            return -float(value.real) if mp.im(value) == 0 else 1e30
        except (ValueError, ZeroDivisionError):
            return 1e30

    mp.mp.dps = 16
    rough = optimize.minimize(cost, start, method="Nelder-Mead",
                              options={"xatol": 1e-7, "fatol": 1e-9, "maxiter": 4000}).x
    mp.mp.dps = 40
    params = mp.matrix([mp.mpf(p) for p in rough])
    size = len(start)
    step = mp.mpf(10) ** -9

    def orders(*indices):
        return tuple(sum(1 for k in indices if k == i) for i in range(size))

    def derivative(params, *indices):
        return mp.diff(log_likelihood, tuple(params), orders(*indices))

    for _ in range(8):
        gradient = mp.matrix([derivative(params, i) for i in range(size)])
        hessian = mp.matrix(size, size)
        for i in range(size):
            for j in range(i + 1):
                hessian[i, j] = hessian[j, i] = derivative(params, i, j)
        move = mp.lu_solve(hessian, gradient)
        params -= move
        if all(abs(move[i]) < step * step * abs(params[i]) for i in range(size)):
            break
    else:
        raise RuntimeError(f"{family} {start}: no convergence")
    covariance = (-hessian) ** -1
    errors = [mp.sqrt(covariance[i, i]) for i in range(size)]
    return list(params), errors, log_likelihood(*params)


def text(values):
    return ",".join(mp.nstr(v, 18) for v in values)


def main():
    generator = np.random.default_rng(20261121)
    for family, start, draw in CASES:
        sample = rounded(draw(generator))
        params, errors, height = solve(family, start, sample)
        print(family, text(params), text(errors), mp.nstr(height, 18),
              ",".join(f"{x:.6g}" for x in sample), sep="\t")


if __name__ == "__main__":
    main()
