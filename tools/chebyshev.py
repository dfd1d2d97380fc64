"""Chebyshev coefficients of a function on [-1, 1] in arbitrary precision, and the tables made of them.

The convention is that of math/functions/series.hpp: f(t) = c[0]/2 + sum c[k] T_k(t), k from 1. A generator (tools/series_*.py)
calls write() for each of its tables; the result is a type with the coefficients in double and the leading ones in single.

    import chebyshev, mpmath as mp
    c = chebyshev.coefficients(lambda t: mp.exp(t), 20)
    chebyshev.write('math/functions/tables/lv_expcs.inc', 'lv_expcs', c, 'exp(t) on -1 to 1', __file__)
"""

import os

import mpmath as mp

mp.mp.dps = 60


def coefficients(f, count, extra=None):
    """The first `count` coefficients of f, sampled at enough nodes that aliasing stays below 1e-40 for a smooth function."""
    n = extra or max(3 * count, 60)
    nodes = [mp.cos(mp.pi * (k + mp.mpf(1) / 2) / n) for k in range(n)]
    values = [f(t) for t in nodes]
    cosines = [mp.cos(mp.pi * m / (2 * n)) for m in range(4 * n)]
    return [2 * mp.fsum(values[k] * cosines[(j * (2 * k + 1)) % (4 * n)] for k in range(n)) / n for j in range(count)]


def evaluate(c, t):
    b0 = b1 = b2 = mp.mpf(0)
    for a in reversed(c):
        b2, b1 = b1, b0
        b0 = 2 * t * b1 - b2 + a
    return (b0 - b2) / 2


def check(c, f, tolerance, points=201):
    """The largest difference between series and function at points that are no nodes; an error when it is too great."""
    worst = max(abs(evaluate(c, t) - f(t)) for t in (mp.mpf(2 * i + 1) / points - 1 for i in range(points)))
    if worst > mp.mpf(tolerance):
        raise SystemExit(f'difference {mp.nstr(worst, 3)} is above {mp.nstr(mp.mpf(tolerance), 3)}')
    return worst


def double(x):
    return float(x).hex() if float(x) != 0 else '0.0'


def single(x):
    """The nearest 32-bit value of x, in hexadecimal."""
    if x == 0:
        return '0.0F'
    with mp.workprec(24):
        return float(+mp.mpf(x)).hex() + 'F'


def lines(texts, width=120):
    line = '     '
    for text in texts:
        if len(line) + len(text) + 2 > width:
            yield line.rstrip()
            line = '     '
        line += ' ' + text + ','
    yield line.rstrip()


def text(name, c, meaning, generator, singles=None, single_floor='1e-13'):
    """The type `name` with real[] (all of c) and single[] (the leading terms, those that matter to 24 bits and two more)."""
    if singles is None:
        singles = max([k for k, a in enumerate(c) if abs(a) > mp.mpf(single_floor)] + [0]) + 1
        singles = min(len(c), singles)
    out = [f'// Written by {os.path.relpath(os.path.abspath(generator), root())}: {meaning}.']
    out += [f'struct {name} {{', f'  static constexpr double real[{len(c)}] = {{']
    out += list(lines(double(a) for a in c)) + ['  };', f'  static constexpr float single[{singles}] = {{']
    out += list(lines(single(a) for a in c[:singles])) + ['  };', '};', '']
    return '\n'.join(out)


def root():
    return os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def write(path, name, c, meaning, generator, **settings):
    with open(os.path.join(root(), path), 'w') as file:
        file.write(text(name, c, meaning, generator, **settings))
