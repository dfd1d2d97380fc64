#!/usr/bin/env python3
"""Writes the node and weight tables of the one-dimensional quadrature rules: math/quadrature/tables/*.inc.

Gauss rules are zeros of Legendre polynomials. An optimal extension of a rule with nodes G (Kronrod 1965 of a Gauss rule, Patterson
1968 of an extended one) takes the zeros of the polynomial E, one degree higher, that is orthogonal to all lower degrees under the
weight G. Everything is symmetric about 0, so E has one parity; its Legendre coefficients solve a small linear system. Weights
integrate the Lagrange polynomials. All in 120 digits, written in 34.
"""
import pathlib
from mpmath import mp, mpf, matrix, lu_solve, legendre, cos, pi, findroot, nstr, sign

mp.dps = 120
OUT = pathlib.Path(__file__).resolve().parent.parent / "math" / "quadrature" / "tables"


def legendre_pair(n, x):
    p, q = mpf(1), mpf(0)
    for k in range(n):
        p, q = ((2 * k + 1) * x * p - k * q) / (k + 1), p
    return p, n * (x * p - q) / (x * x - 1)


def gauss(n):
    """Positive nodes in falling order (0 last if n is odd) with their weights."""
    nodes = []
    for k in range(1, (n + 1) // 2 + 1):
        if n % 2 and k == (n + 1) // 2:
            x = mpf(0)
        else:
            x = cos(pi * (k - mpf(1) / 4) / (n + mpf(1) / 2))
            for _ in range(12):
                p, dp = legendre_pair(n, x)
                x -= p / dp
        nodes.append((x, 2 / ((1 - x * x) * legendre_pair(n, x)[1] ** 2)))
    return nodes


FINE = [(s * x, w) for x, w in gauss(200) for s in (-1, 1)]  # integrates every polynomial below exactly


def full(nodes):
    return sorted([x for x in nodes] + [-x for x in nodes if x != 0], reverse=True)


def product(nodes, x):
    r = mpf(1)
    for t in nodes:
        r *= x - t
    return r


def legendre_row(n, x):
    row = [mpf(1), x]
    for k in range(1, n):
        row.append(((2 * k + 1) * x * row[k] - k * row[k - 1]) / (k + 1))
    return row


ROWS = None


def extension(nodes):
    """The positive zeros of the polynomial that extends the rule with all nodes `nodes`, in falling order."""
    global ROWS
    if ROWS is None:
        ROWS = [legendre_row(100, x) for x, _ in FINE]
    n = len(nodes)
    degree = n + 1
    weight = [product(nodes, x) * w * mpf(2) ** n for x, w in FINE]
    ks = list(range(degree % 2, degree, 2))  # coefficients of the lower degrees of the same parity; the highest is 1
    tests = [t for t in range(degree) if (t + n + degree) % 2 == 0]  # the others vanish by symmetry
    assert len(tests) == len(ks)
    a, b = matrix(len(ks)), matrix(len(ks), 1)
    for i, t in enumerate(tests):
        for j, k in enumerate(ks):
            a[i, j] = sum(w * row[t] * row[k] for w, row in zip(weight, ROWS))
        b[i] = -sum(w * row[t] * row[degree] for w, row in zip(weight, ROWS))
    c = lu_solve(a, b)

    def e(x):
        row = legendre_row(degree, x)
        return row[degree] + sum(c[j] * row[k] for j, k in enumerate(ks))

    ends = [mpf(1)] + [x for x in nodes if x >= 0]
    if ends[-1] != 0:
        ends.append(-ends[-1])
    zeros = []
    for high, low in zip(ends, ends[1:]):  # the zeros interlace with the nodes
        if low < 0:  # symmetric gap around 0: its zero is 0
            assert abs(e(mpf(0))) < mpf(10) ** -60
            zeros.append(mpf(0))
            continue
        assert sign(e(high)) != sign(e(low))
        f_high = e(high)
        for _ in range(30):
            middle = (high + low) / 2
            f = e(middle)
            if sign(f) == sign(f_high):
                high = middle
            else:
                low = middle
        zeros.append(findroot(e, (high + low) / 2))
    return zeros


def weights(nodes):
    """Weights of the interpolatory rule with all nodes `nodes`."""
    result = {}
    for i, x in enumerate(nodes):
        if x < 0:
            continue
        others = nodes[:i] + nodes[i + 1:]
        scale = product(others, x)
        result[x] = sum(w * product(others, t) for t, w in FINE) / scale
    return result


def row(name, values):
    text = ",\n    ".join("V(%s)" % nstr(v, 34, min_fixed=-1, max_fixed=1) for v in values)
    return "static constexpr Real %s[%d] = {\n    %s};\n" % (name, len(values), text)


HEAD = "// Written by tools/quadrature_rules.py.\n"


def write(name, text):
    (OUT / name).write_text(HEAD + text)


def main():
    for n in (7, 10, 15, 20, 25, 30):
        g = gauss(n)
        nodes = full([x for x, _ in g])
        both = full([x for x in nodes if x >= 0] + extension(nodes))
        w = weights(both)
        xgk = [x for x in both if x >= 0]
        write("kronrod%d.inc" % (2 * n + 1), row("xgk", xgk) + row("wgk", [w[x] for x in xgk]) + row("wg", [v for _, v in g]))
    x1 = [x for x, _ in gauss(10)]
    nodes = full(x1)
    text = row("x1", x1) + row("w10", [v for _, v in gauss(10)])
    known = list(x1)
    for count, name in ((21, "x2"), (43, "x3"), (87, "x4")):
        fresh = extension(nodes)
        new = [x for x in fresh if x != 0]
        nodes = full([x for x in nodes if x >= 0] + fresh)
        assert len(nodes) == count
        w = weights(nodes)
        old = [x for x in known if x != 0]
        text += row(name, new) + row("w%da" % count, [w[x] for x in old]) + row("w%db" % count, [w[x] for x in new] + [w[mpf(0)]])
        known += fresh
    write("patterson.inc", text)
    write("chebyshev24.inc", row("cosine", [cos(k * pi / 24) for k in range(12)] + [mpf(0)]))


main()
