#!/usr/bin/env python3
"""Writes tests/data/pdf_reference.tsv: distribution functions to 50 digits.

Every value comes from its definition in arbitrary precision (mpmath), from the exact values of
the double-precision parameters and arguments. A line has the family, its parameters (separated by
commas), the function, the argument and the value. Percentiles need no lines of their own: the
argument of a distribution function is the percentile of its value.

usage: tools/make_pdf_reference.py > tests/data/pdf_reference.tsv
"""
import mpmath as mp

mp.mp.dps = 80
SMALLEST = mp.mpf("1e-305")


def gaussian(mean, precision):
    z = lambda x: (mp.mpf(x) - mean) * mp.sqrt(precision)
    return (
        lambda x: mp.sqrt(precision / (2 * mp.pi)) * mp.exp(-z(x) ** 2 / 2),
        lambda x: mp.erfc(-z(x) / mp.sqrt(2)) / 2,
        lambda x: mp.erfc(z(x) / mp.sqrt(2)) / 2,
    )


def beta_share(a, b, x, y):
    """I_x(a, b), from the series that does not cancel."""
    power = mp.exp(a * mp.log(x) + b * mp.log(y) + mp.loggamma(a + b) - mp.loggamma(a) - mp.loggamma(b))
    return power * mp.hyp2f1(a + b, 1, a + 1, x) / a


def students_t(nu, location, precision):
    def tail(x):
        square = precision * (mp.mpf(x) - location) ** 2
        if square == 0:
            return mp.mpf(1) / 2
        return beta_share(nu / 2, mp.mpf(1) / 2, nu / (nu + square), square / (nu + square)) / 2

    def density(x):
        constant = mp.loggamma((nu + 1) / 2) - mp.loggamma(nu / 2) + mp.log(precision / (mp.pi * nu)) / 2
        return mp.exp(constant - (nu + 1) / 2 * mp.log1p(precision * (mp.mpf(x) - location) ** 2 / nu))

    return (
        density,
        lambda x: tail(x) if x < location else 1 - tail(x),
        lambda x: 1 - tail(x) if x < location else tail(x),
    )


def gamma(shape, rate):
    return (
        lambda x: mp.exp(shape * mp.log(rate) - mp.loggamma(shape) + (shape - 1) * mp.log(x) - rate * x),
        lambda x: mp.gammainc(shape, 0, rate * mp.mpf(x), regularized=True),
        lambda x: mp.gammainc(shape, rate * mp.mpf(x), mp.inf, regularized=True),
    )


def chi_squared(nu):
    return gamma(nu / 2, mp.mpf(1) / 2)


def beta(a, b):
    def density(x):
        constant = mp.loggamma(a + b) - mp.loggamma(a) - mp.loggamma(b)
        return mp.exp(constant + (a - 1) * mp.log(x) + (b - 1) * mp.log1p(-mp.mpf(x)))

    return (
        density,
        lambda x: beta_share(a, b, mp.mpf(x), 1 - mp.mpf(x)),
        lambda x: beta_share(b, a, 1 - mp.mpf(x), mp.mpf(x)),
    )


def snedecors_f(d1, d2):
    def shares(x):
        odds = d1 * mp.mpf(x) / d2
        return odds / (1 + odds), 1 / (1 + odds)

    def density(x):
        constant = mp.loggamma((d1 + d2) / 2) - mp.loggamma(d1 / 2) - mp.loggamma(d2 / 2)
        constant += d1 / 2 * mp.log(d1 / d2)
        return mp.exp(constant + (d1 / 2 - 1) * mp.log(x) - (d1 + d2) / 2 * mp.log1p(d1 * mp.mpf(x) / d2))

    return (
        density,
        lambda x: beta_share(d1 / 2, d2 / 2, *shares(x)),
        lambda x: beta_share(d2 / 2, d1 / 2, *shares(x)[::-1]),
    )


def extreme_value(location, scale, shape):
    def reduced(x):
        z = (mp.mpf(x) - location) / scale
        return mp.exp(-z) if shape == 0 else (1 + shape * z) ** (-1 / shape)

    return (
        lambda x: reduced(x) ** (1 + shape) * mp.exp(-reduced(x)) / scale,
        lambda x: mp.exp(-reduced(x)),
        lambda x: -mp.expm1(-reduced(x)),
    )


def gumbel(location, scale):
    return extreme_value(location, scale, mp.mpf(0))


NEAR = [0.0, 1e-6, 0.01, 0.25, 0.5, 1.0, 1.5, 2.0, 3.0, 5.0, 8.0, 12.0, 20.0, 35.0]
SYMMETRIC = [-x for x in reversed(NEAR[1:])] + NEAR
POSITIVE = [1e-12, 1e-5, 0.01, 0.1, 0.3, 0.7, 1.0, 1.7, 2.5, 4.0, 7.0, 15.0, 40.0, 120.0, 600.0]
SHARES = [1e-10, 1e-4, 0.01, 0.1, 0.25, 0.4, 0.5, 0.6, 0.75, 0.9, 0.99, 1 - 2.0**-14, 1 - 2.0**-34]

CASES = [
    ("gaussian", gaussian, [(0.0, 1.0), (2.5, 0.04)], SYMMETRIC),
    ("students_t", students_t, [(5.3, 0.0, 1.0), (1.0, -1.5, 4.0), (0.4, 0.0, 1.0), (30.0, 0.0, 1.0),
                                (79.0, 1.0, 0.5), (1e4, 0.0, 1.0)], SYMMETRIC + [-1e8, 1e8]),
    ("gamma", gamma, [(2.7, 1.5), (0.3, 2.0), (1.0, 1.0), (18.0, 3.0), (39.5, 5.0), (150.0, 60.0)], POSITIVE),
    ("chi_squared", chi_squared, [(1.0,), (3.0,), (25.0,), (500.0,)], POSITIVE),
    ("snedecors_f", snedecors_f, [(4.0, 7.0), (1.0, 1.0), (2.5, 30.0), (60.0, 80.0)], POSITIVE),
    ("beta", beta, [(2.3, 3.1), (0.5, 0.5), (1.0, 4.0), (12.0, 25.0), (90.0, 40.0)], SHARES),
    # Large parameters, about the mode and some deviations away from it.
    ("students_t", students_t, [(1e8, 0.0, 1.0)], [-9.0, -4.0, -1.0, 0.0, 0.5, 2.0, 6.0]),
    ("gamma", gamma, [(1e5, 1e5)], [0.97, 0.985, 0.995, 1.0, 1.005, 1.02, 1.035]),
    ("chi_squared", chi_squared, [(2e4,)], [18500.0, 19600.0, 20000.0, 20300.0, 21900.0]),
    ("snedecors_f", snedecors_f, [(1e4, 3e4)], [0.9, 0.97, 1.0, 1.02, 1.1]),
    ("beta", beta, [(3e4, 5e4)], [0.36, 0.37, 0.375, 0.378, 0.39]),
    ("gumbel", gumbel, [(0.0, 1.0), (3.0, 0.5)], [-2.0, -1.0, 0.0, 0.5, 1.0, 2.0, 4.0, 8.0, 30.0, 300.0]),
    ("gev", extreme_value, [(0.0, 1.0, 0.2), (1.0, 2.0, -0.25), (0.0, 1.0, 1e-9)],
     [-2.5, -1.0, 0.0, 0.5, 1.0, 2.0, 4.0, 7.0, 8.75]),
]


def main():
    for family, make, parameters, arguments in CASES:
        for numbers in parameters:
            functions = make(*(mp.mpf(number) for number in numbers))
            label = ",".join(repr(number) for number in numbers)
            for x in arguments:
                for name, function in zip(("density", "cdf", "survival"), functions):
                    value = function(x)
                    if value >= SMALLEST:
                        print(family, label, name, repr(x), mp.nstr(value, 25), sep="\t")
                    if value > 0 and name != "cdf":
                        print(family, label, "log_" + name, repr(x), mp.nstr(mp.log(value), 25), sep="\t")


if __name__ == "__main__":
    main()
