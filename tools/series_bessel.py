#!/usr/bin/env python3
"""The series tables of the Bessel, Airy, Kelvin and Fresnel functions, in math/functions/tables/{bessel,airy,kelvin,fresnel}_*.inc.

Each function below is the smooth part that a table approximates, over t in -1 to 1; math/functions/{bessel,airy,kelvin,fresnel}.cpp
undo the scaling. Run without arguments from anywhere; every series is checked at points that are no nodes.
"""

import os
import sys

import mpmath as mp

import chebyshev

mp.mp.dps = 55

FOLDER = 'math/functions/tables'
families = {}  # family -> texts of its tables


def table(family, name, f, meaning, count=None):
    """With a count the length is given; without one the series ends where its terms fall below 1e-21 of the greatest."""
    c = chebyshev.coefficients(f, count or 75, extra=max(3 * (count or 0) // 2 + 30, 90) if count else 110)
    if count is None:
        top = max(abs(a) for a in c)
        count = max(k for k, a in enumerate(c) if abs(a) > top * mp.mpf('1e-21')) + 3
        c = c[:count]
    worst = chebyshev.check(c, f, mp.mpf('1e-19') * max(1, max(abs(a) for a in c)), points=23)
    singles = min(len(c), max(k for k, a in enumerate(c) if abs(a) > 1e-12) + 3)
    families.setdefault(family, []).append(chebyshev.text(name, c, meaning, __file__, singles=singles))
    print(f'{name:10} {len(c):3} {mp.nstr(worst, 3):>10} {mp.nstr(c[0], 3):>10} {mp.nstr(c[-1], 3):>10}', flush=True)


def bessel():
    i, k, e, sq, lg = mp.besseli, mp.besselk, mp.exp, mp.sqrt, mp.log

    def x3(t):
        return sq(mp.mpf(4.5) * (t + 1))

    def x8(t):
        return 48 / (5 * t + 11)

    def far(t):
        return 16 / (t + 1)

    def k2(t):
        return sq(2 * (t + 1))

    def k8(t):
        return 16 / (3 * t + 5)

    def scaled_i(n, x):
        return e(-x) * sq(x) * i(n, x) - mp.mpf(0.375)

    def scaled_k(n, x):
        return e(x) * sq(x) * k(n, x) - mp.mpf(1.25)
    rows = [
        ('lv_bi0cs', 18, lambda t: i(0, x3(t)) - 2.75, 'I0(x) - 2.75 on |x| <= 3, in x^2/4.5 - 1'),
        ('lv_bi1cs', 17, lambda t: i(1, x3(t)) / x3(t) - 0.875, 'I1(x)/x - 0.875 on |x| <= 3, in x^2/4.5 - 1'),
        ('lv_ai0cs', 46, lambda t: scaled_i(0, x8(t)), 'sqrt(x) exp(-x) I0(x) - 0.375 on 3 to 8, in (48/x - 11)/5'),
        ('lv_ai1cs', 46, lambda t: scaled_i(1, x8(t)), 'sqrt(x) exp(-x) I1(x) - 0.375 on 3 to 8, in (48/x - 11)/5'),
        ('lv_ai02cs', 69, lambda t: scaled_i(0, far(t)), 'sqrt(x) exp(-x) I0(x) - 0.375 from 8 on, in 16/x - 1'),
        ('lv_ai12cs', 69, lambda t: scaled_i(1, far(t)), 'sqrt(x) exp(-x) I1(x) - 0.375 from 8 on, in 16/x - 1'),
        ('bk0cs', 16, lambda t: k(0, k2(t)) + lg(k2(t) / 2) * i(0, k2(t)) + 0.25, 'K0(x) + log(x/2) I0(x) + 0.25 up to 2, in x^2/2 - 1'),
        ('bk1cs', 16, lambda t: k2(t) * (k(1, k2(t)) - lg(k2(t) / 2) * i(1, k2(t))) - 0.75,
         'x (K1(x) - log(x/2) I1(x)) - 0.75 up to 2, in x^2/2 - 1'),
        ('ak0cs', 38, lambda t: scaled_k(0, k8(t)), 'sqrt(x) exp(x) K0(x) - 1.25 on 2 to 8, in (16/x - 5)/3'),
        ('ak1cs', 38, lambda t: scaled_k(1, k8(t)), 'sqrt(x) exp(x) K1(x) - 1.25 on 2 to 8, in (16/x - 5)/3'),
        ('ak02cs', 33, lambda t: scaled_k(0, far(t)), 'sqrt(x) exp(x) K0(x) - 1.25 from 8 on, in 16/x - 1'),
        ('ak12cs', 33, lambda t: scaled_k(1, far(t)), 'sqrt(x) exp(x) K1(x) - 1.25 from 8 on, in 16/x - 1'),
    ]
    for name, count, f, meaning in rows:
        table('bessel_orders', name, f, meaning, count)


def airy():
    third = mp.mpf(1) / 3
    c1, c2 = mp.airyai(0), -mp.airyai(0, derivative=1)

    def f01(b, w):
        return mp.hyp0f1(b * third, w / 9)
    for name, scale, a, b, d, e in (('ai', 1, 0.375, 0.25, 0.125, 0.25), ('bi', mp.sqrt(3), 0.625, 0.4375, 0.25, 0.5)):
        table('airy_near', f'lv_{name}f', lambda w: scale * c1 * f01(2, w) - a, f'even part of {name} on -1 to 1, in x^3, less {a}', 13)
        table('airy_near', f'lv_{name}g', lambda w: scale * c2 * f01(4, w) - b, f'odd part of {name} over x, less {b}', 13)
        table('airy_near', f'lv_{name}df', lambda w: scale * c1 * f01(5, w) / 2 - d, f"even part of {name}' over x^2, less {d}", 13)
        table('airy_near', f'lv_{name}dg', lambda w: scale * c2 * f01(1, w) - e, f"odd part of {name}', less {e}", 13)

    # Positive x, s = x^(3/2): 1 to 8 and from 8 on; Bi also on x from 1 to 2, unscaled.
    def middle(t):
        return (16 / (7 * t + 9)) ** (2 * third)

    def far(t):
        return (16 / (t + 1)) ** (2 * third)

    def bi_near(t):
        return (t + 3) / 2

    def bi_middle(t):  # s from sqrt(8) to 8: 1/s from 1/8 to 1/sqrt(8)
        low, high = mp.mpf(1) / 8, 1 / mp.sqrt(8)
        return ((low + high) / 2 + t * (high - low) / 2) ** (-2 * third)

    def scaled(g, x, sign, derivative):
        zeta = 2 * x * mp.sqrt(x) / 3
        power = x ** (-mp.mpf(1) / 4 if derivative else mp.mpf(1) / 4)
        return mp.exp(sign * zeta) * power * g(x, derivative=derivative) * (-1 if derivative and sign > 0 else 1)
    for d, letter in ((0, ''), (1, 'd')):
        tick = "'" if d else ''
        meaning = f'scaled Ai{tick}'
        table('airy_positive', f'lv_ai{letter}m', lambda t: scaled(mp.airyai, middle(t), 1, d), meaning + ' on 1 to 4, in (16/s - 9)/7')
        table('airy_positive', f'lv_ai{letter}p', lambda t: scaled(mp.airyai, far(t), 1, d), meaning + ' from 4 on, in 16/s - 1')
        meaning = f'scaled Bi{tick}'
        table('airy_positive', f'lv_bi{letter}n', lambda t: mp.airybi(bi_near(t), derivative=d), f'Bi{tick} on 1 to 2, in 2x - 3')
        table('airy_positive', f'lv_bi{letter}m', lambda t: scaled(mp.airybi, bi_middle(t), -1, d), meaning + ' on 2 to 4, in 1/s')
        table('airy_positive', f'lv_bi{letter}p', lambda t: scaled(mp.airybi, far(t), -1, d), meaning + ' from 4 on, in 16/s - 1')

    # Negative x = -y: y from 1 to 2 in 2y - 3, 2 to 4 in y - 3, from 4 on in 128/y^3 - 1.
    ranges = (('1', lambda t: (t + 3) / 2), ('2', lambda t: t + 3), ('3', lambda t: (128 / (t + 1)) ** third))

    def polar(y, d):
        if d:
            w = mp.mpc(mp.airybi(-y, derivative=1), mp.airyai(-y, derivative=1))
        else:
            w = mp.mpc(mp.airyai(-y), -mp.airybi(-y))
        s = y * mp.sqrt(y)
        w *= mp.expj(mp.pi / 4 - 2 * s / 3) * y ** (-mp.mpf(1) / 4 if d else mp.mpf(1) / 4)
        return abs(w), mp.arg(w) * s
    for number, place in ranges:
        for d, letter in ((0, ''), (1, 'd')):
            what = "Ai' and Bi'" if d else 'Ai and Bi'
            table('airy_negative', f'lv_am{letter}{number}', lambda t: polar(place(t), d)[0], f'modulus of {what}, range {number}')
            table('airy_negative', f'lv_ap{letter}{number}', lambda t: polar(place(t), d)[1], f'phase correction of {what}, range {number}')


def kelvin():
    root = mp.expj(mp.pi / 4)

    def big(x, d):  # ber + i bei, or its derivative
        return root * mp.besseli(1, root * x) if d else mp.besseli(0, root * x)

    def small(x, d):  # ker + i kei
        return -root * mp.besselk(1, root * x) if d else mp.besselk(0, root * x)

    # Up to 5, and up to 2 for what ker and kei are beside the logarithm and pi/4: power series in (x/10)^4.
    def powers(name, coefficient, limit, meaning):
        c = [coefficient(k) * mp.mpf(10) ** (4 * k) for k in range(20)]
        size = [abs(a) * (mp.mpf(limit) / 10) ** (4 * k) / abs(c[0]) for k, a in enumerate(c)]
        counts = [max(k for k, a in enumerate(size) if a > mp.mpf(floor)) + 1 for floor in ('1e-18', '1e-9')]
        families.setdefault('kelvin_near', []).append(
            chebyshev.text(name, c[:counts[0]], meaning + ', powers of (x/10)^4', __file__, singles=counts[1]))
        print(f'{name:10} {counts}')

    def term(m):  # of I0(x sqrt(i)): i^m (x/2)^(2m) / m!^2
        return (-1) ** (m // 2) / (mp.mpf(4) ** m * mp.factorial(m) ** 2)

    def psi(m):
        return mp.digamma(m + 1)
    powers('lv_bern', lambda k: term(2 * k), 5, 'ber x')
    powers('lv_bein', lambda k: term(2 * k + 1), 5, 'bei x / x^2')
    powers('lv_berdn', lambda k: (4 * k + 4) * term(2 * k + 2), 5, "ber' x / x^3")
    powers('lv_beidn', lambda k: (4 * k + 2) * term(2 * k + 1), 5, "bei' x / x")
    powers('lv_kern', lambda k: psi(2 * k) * term(2 * k), 2, 'regular part of ker x')
    powers('lv_kein', lambda k: psi(2 * k + 1) * term(2 * k + 1), 2, 'regular part of kei x, over x^2')
    powers('lv_kerdn', lambda k: ((4 * k + 4) * psi(2 * k + 2) - 1) * term(2 * k + 2), 2, "regular part of ker' x + 1/x, over x^3")
    powers('lv_keidn', lambda k: ((4 * k + 2) * psi(2 * k + 1) - 1) * term(2 * k + 1), 2, "regular part of kei' x, over x")
    for x in (mp.mpf(1) / 2, mp.mpf(2)):  # the same parts from the functions themselves
        rest = [sum(psi(m) * term(m) * x ** (2 * m) for m in range(first, 60, 2)) for first in (0, 1)]
        whole = small(x, 0) + (mp.log(x / 2) + mp.mpc(0, mp.pi / 4)) * big(x, 0)
        assert abs(mp.mpc(*rest) - whole) < mp.mpf('1e-40')

    def middle(t):
        return mp.mpf(7.5) + mp.mpf(2.5) * t
    for name, f in (('ber', lambda x: big(x, 0).real), ('bei', lambda x: big(x, 0).imag), ('berd', lambda x: big(x, 1).real),
                    ('beid', lambda x: big(x, 1).imag)):
        table('kelvin_middle', f'lv_{name}m', lambda t: f(middle(t)) * mp.exp(-middle(t) / mp.sqrt(2)),
              f'{name} exp(-x/sqrt(2)) on 5 to 10, in (4x/10 - 3)')

    # Modulus and phase in u = 10/x: from 10 on in 2u - 1; ker, kei on 2 to 10 in (u - 3)/2.
    def dominant(x, d):
        w = big(x, d) - mp.mpc(0, 1) / mp.pi * small(x, d)
        h = x / mp.sqrt(2)
        w *= mp.exp(-h) * mp.sqrt(2 * mp.pi * x) * mp.expj(-h + mp.pi / 8 * (-1 if d else 1))
        return abs(w), mp.arg(w)

    def recessive(x, d):
        w = small(x, d) * (-1 if d else 1)
        h = x / mp.sqrt(2)
        w *= mp.exp(h) * mp.sqrt(2 * x / mp.pi) * mp.expj(h + mp.pi / 8 * (-1 if d else 1))
        return abs(w), mp.arg(w)

    def far(t):
        return 20 / (t + 1)

    def inner(t):
        return 10 / (2 * t + 3)
    for d, letter in ((0, ''), (1, 'd')):
        what = 'derivative of ' if d else ''
        for part, word in ((0, 'm'), (1, 'p')):
            table('kelvin_far', f'lv_be{letter}{word}', lambda t: dominant(far(t), d)[part], f'{what}ber + i bei from 10 on, in 20/x - 1')
            table('kelvin_far', f'lv_ke{letter}{word}', lambda t: recessive(far(t), d)[part], f'{what}ker + i kei from 10 on, in 20/x - 1')
            table('kelvin_far', f'lv_ke{letter}{word}2', lambda t: recessive(inner(t), d)[part], f'{what}ker + i kei on 2 to 10, in 5/x - 1.5')


def fresnel():
    def near(t):
        return 2 * ((t + 1) / 2) ** mp.mpf(0.25)

    def far(t):
        return 2 * ((t + 1) / 2) ** -mp.mpf(0.25)

    def auxiliary(x):
        c, s, phase = mp.fresnelc(x), mp.fresnels(x), mp.pi * x * x / 2
        half = mp.mpf(0.5)
        f = (half - s) * mp.cos(phase) - (half - c) * mp.sin(phase)
        g = (half - c) * mp.cos(phase) + (half - s) * mp.sin(phase)
        return f * mp.pi * x, g * mp.pi ** 2 * x ** 3
    table('fresnel', 'lv_fresc', lambda t: mp.fresnelc(near(t)) / near(t), 'C(x)/x on |x| <= 2, in 2 (x/2)^4 - 1', 22)
    table('fresnel', 'lv_fress', lambda t: mp.fresnels(near(t)) / near(t) ** 3, 'S(x)/x^3 on |x| <= 2, in 2 (x/2)^4 - 1', 22)
    table('fresnel', 'lv_fresf', lambda t: auxiliary(far(t))[0], 'pi x f(x) from 2 on, in 2 (2/x)^4 - 1')
    table('fresnel', 'lv_fresg', lambda t: auxiliary(far(t))[1], 'pi^2 x^3 g(x) from 2 on, in 2 (2/x)^4 - 1')


def temme():
    """Taylor coefficients of 1/Gamma(1 + mu) by parity, for the start of K at small arguments."""
    c = mp.taylor(lambda m: mp.rgamma(1 + m), 0, 34)
    for name, part in (('even', c[0::2]), ('odd', [-a for a in c[1::2]])):
        part = part[:14]
        families.setdefault('bessel_temme', []).append(
            chebyshev.text(f'lv_temme_{name}', part, f'{name} powers of 1/Gamma(1 + mu)', __file__, singles=9))


if __name__ == '__main__':
    wanted = sys.argv[1:] or ['bessel', 'airy', 'kelvin', 'fresnel', 'temme']
    for name in wanted:
        globals()[name]()
    for family, texts in families.items():
        with open(os.path.join(chebyshev.root(), FOLDER, family + '.inc'), 'w') as file:
            file.write('\n'.join(texts))
