#!/usr/bin/env python3
"""Coefficients of the uniform expansion of the incomplete gamma function for large parameters (DLMF 8.12.7 to 8.12.11), for
stat/distributions/gamma_expansion.hpp: python3 tools/gamma_expansion.py

c_k(eta) for k = 0 to 4 as power series in eta, from exact fractions; the series end where eta = 0.34 and a = 200 leave less than
2^-54 of c_0(0).
"""
from fractions import Fraction

DEGREE = 40
# Coefficients of gamma(a) (e/a)^a sqrt(a/(2 pi)) in powers of 1/a.
STIRLING = [Fraction(1), Fraction(1, 12), Fraction(1, 288), Fraction(-139, 51840), Fraction(-571, 2488320)]


def excess():
    """mu = lambda - 1 as a series in eta, eta^2/2 = mu - log(1 + mu): mu mu' = eta (1 + mu)."""
    m = [Fraction(0), Fraction(1)]
    for n in range(2, DEGREE + 2):
        inner = sum(m[i] * (n + 1 - i) * m[n + 1 - i] for i in range(2, n))
        m.append((m[n - 1] - inner) / (n + 1))
    return m


def reciprocal(series):
    r = [1 / series[0]]
    for n in range(1, len(series)):
        r.append(-sum(series[j] * r[n - j] for j in range(1, n + 1)) / series[0])
    return r


quotient = reciprocal(excess()[1:])  # eta/mu
c = quotient[1:]  # c_0 = 1/mu - 1/eta
for k in range(5):
    if k > 0:
        raised = [(j + 1) * c[j + 1] + (-1) ** k * STIRLING[k] * quotient[j] for j in range(len(c) - 1)]
        assert raised[0] == 0
        c = raised[1:]
    terms = [(x, abs(float(x)) * 0.34**j / 200.0**k) for j, x in enumerate(c)]
    last = max(j for j, (x, size) in enumerate(terms) if size > 2.0**-54 / 3)
    print("    {" + ", ".join("%.17g" % float(x) for x, size in terms[: last + 1]) + "},")
