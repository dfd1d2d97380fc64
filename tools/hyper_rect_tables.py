#!/usr/bin/env python3
"""Writes math/quadrature/hyper_rect_tables.hpp to the standard output: Newton's method on the Legendre polynomials with 40 digits
(needs mpmath)."""
import mpmath

mpmath.mp.dps = 40


def rule(n):
    """Positive nodes, ascending, and weights of the Gauss-Legendre rule with n points."""
    nodes = []
    for i in range(n // 2):
        x = mpmath.cos(mpmath.pi * (n // 2 - i - mpmath.mpf(1) / 4) / (n + mpmath.mpf(1) / 2))
        for _ in range(8):
            before, p = mpmath.mpf(0), mpmath.mpf(1)
            for k in range(n):
                before, p = p, ((2 * k + 1) * x * p - k * before) / (k + 1)
            slope = n * (x * p - before) / (x * x - 1)
            x -= p / slope
        nodes.append((x, 2 / ((1 - x * x) * slope**2)))
    return nodes


def table(name, values):
    print(f"inline constexpr double {name}[255] = {{")
    line = "   "
    for v in values:
        word = f" {mpmath.nstr(v, 18, min_fixed=-30, max_fixed=5)},"
        if len(line + word) > 130:
            print(line)
            line = "   "
        line += word
    print(line)
    print("};")


both = [pair for k in range(1, 9) for pair in rule(2**k)]
print("// Positive nodes t and weights w of the Gauss-Legendre rules of 2, 4, ..., 256 points, one after the other; that of 2^k points")
print("// starts at 2^(k-1) - 1. Written by tools/hyper_rect_tables.py.")
print("#pragma once\n\nnamespace zent::hyper_rect {\n")
table("t", [x for x, _ in both])
print()
table("w", [w for _, w in both])
print("\n}  // namespace zent::hyper_rect")
