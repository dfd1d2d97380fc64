"""Writes the Chebyshev tables of the elliptic integrals: python3 tools/series_elliptic.py"""

import mpmath as mp

import chebyshev

mp.mp.dps = 60
DIRECTORY = 'math/functions/tables/'


def table(name, count, meaning, f, low, high):
    def on_interval(t):
        with mp.workdps(100):  # what follows divides differences by small x
            return f(mp.mpf(low) + (mp.mpf(high) - mp.mpf(low)) * (t + 1) / 2)

    c = chebyshev.coefficients(on_interval, count)
    chebyshev.check(c, on_interval, '1e-20')
    chebyshev.write(f'{DIRECTORY}{name}.inc', name, c, meaning, __file__)


def near_one(f, coefficient, limit):
    """(f(1 - y) + coefficient(y) log(y) - limit)/y"""
    return lambda y: (f(1 - y) + coefficient(y) * mp.log(y) - limit) / y


def arctangent(u):
    if abs(u) < mp.mpf(10) ** -40:
        return -u / 3
    return mp.re(mp.atan(mp.sqrt(u)) / mp.sqrt(u)) - 1


def main():
    half = mp.mpf(1) / 2
    table('lv_ellks', 34, '(K(x) - pi/2)/x for x from 0 to 1/2, in 4x - 1', lambda x: (mp.ellipk(x) - mp.pi / 2) / x, 0, half)
    table('lv_elles', 34, '(pi/2 - E(x))/x for x from 0 to 1/2, in 4x - 1', lambda x: (mp.pi / 2 - mp.ellipe(x)) / x, 0, half)
    table('lv_ellkl', 34, '(K(1 - y) + K(y)/pi log(y) - log(4))/y for y from 0 to 1/2, in 4y - 1',
          near_one(mp.ellipk, lambda y: mp.ellipk(y) / mp.pi, mp.log(4)), 0, half)
    table('lv_ellel', 34, '(E(1 - y) + (K(y) - E(y))/pi log(y) - 1)/y for y from 0 to 1/2, in 4y - 1',
          near_one(mp.ellipe, lambda y: (mp.ellipk(y) - mp.ellipe(y)) / mp.pi, 1), 0, half)
    table('lv_atancs', 50, 'arctan(sqrt(u))/sqrt(u) - 1 for u from -1/2 to 1/2, in 2u', arctangent, -half, half)


if __name__ == '__main__':
    main()
