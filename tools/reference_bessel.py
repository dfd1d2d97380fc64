#!/usr/bin/env python3
"""Reference values of the Bessel, Airy, Kelvin, Fresnel and elliptic functions to 25 digits, by mpmath.

    reference_bessel.py    writes tests/data/functions/bessel.tsv and bessel_sequences.tsv
    reference_bessel.py 100 bench/accuracy/bessel.tsv    100 points a function for bench_accuracy, to 40 digits

The scale of an error is the value; for functions that oscillate, the modulus of the function and its companion.
"""

import os
import random
import struct
import sys

import mpmath as mp

mp.mp.dps = 40
ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
root_i = mp.expj(mp.pi / 4)


def ber(x, d):
    return root_i * mp.besseli(1, root_i * x) if d else mp.besseli(0, root_i * x)


def ker(x, d):
    return -root_i * mp.besselk(1, root_i * x) if d else mp.besselk(0, root_i * x)


def fresnel(x, part):  # mpmath's series loses itself far out: auxiliary functions there
    if x <= 8:
        return (mp.fresnels if part else mp.fresnelc)(x)
    value = (1 + mp.j) / 2 * (1 - mp.erfc(mp.sqrt(mp.pi) / 2 * (1 - mp.j) * x))
    return value.imag if part else value.real


# name -> (value, scale or None, ranges of each argument: (low, high, logarithmic))
def airy_scale(d):
    return lambda x: mp.sqrt(mp.airyai(x, derivative=d) ** 2 + mp.airybi(x, derivative=d) ** 2) if x < -1 else None


def polar(f, d):
    return lambda x: abs(f(x, d))


wide = [(1e-8, 1, True), (1, 40, False), (40, 80, False)]
REAL = {
    'bessel_exp_I0': (lambda x: mp.exp(-x) * mp.besseli(0, x), None, [wide + [(80, 1e6, True)]]),
    'bessel_exp_I1': (lambda x: mp.exp(-x) * mp.besseli(1, x), None, [wide + [(80, 1e6, True)]]),
    'bessel_exp_K0': (lambda x: mp.exp(x) * mp.besselk(0, x), None, [wide + [(1, 2, False), (80, 1e6, True)]]),
    'bessel_exp_K1': (lambda x: mp.exp(x) * mp.besselk(1, x), None, [wide + [(1, 2, False), (80, 1e6, True)]]),
    'bessel_I0': (lambda x: mp.besseli(0, x), None, [wide]),
    'bessel_I1': (lambda x: mp.besseli(1, x), None, [wide]),
    'airy_Ai': (lambda x: mp.airyai(x), airy_scale(0), [[(-1, 1, False), (1, 18, False), (-5, -1, False), (-1000, -5, True)]]),
    'airy_Ai_derivative': (lambda x: mp.airyai(x, derivative=1), airy_scale(1),
                           [[(-1, 1, False), (1, 18, False), (-5, -1, False), (-1000, -5, True)]]),
    'airy_Bi': (lambda x: mp.airybi(x), airy_scale(0), [[(-1, 1, False), (1, 18, False), (-5, -1, False), (-1000, -5, True)]]),
    'airy_Bi_derivative': (lambda x: mp.airybi(x, derivative=1), airy_scale(1),
                           [[(-1, 1, False), (1, 18, False), (-5, -1, False), (-1000, -5, True)]]),
    'fresnel_integral_C': (lambda x: fresnel(x, 0), None, [[(1e-6, 1, True), (1, 2, False), (1, 8, False), (8, 5000, True)]]),
    'fresnel_integral_S': (lambda x: fresnel(x, 1), None, [[(1e-6, 1, True), (1, 2, False), (1, 8, False), (8, 5000, True)]]),
    'elliptic_integral_K': (lambda m: mp.ellipk(m), None, [[(0, 1, False), (1e-6, 1, True)]]),
    'elliptic_integral_E': (lambda m: mp.ellipe(m), None, [[(0, 1, False), (0.9, 0.9999, False)]]),
    'elliptic_integral_RF': (mp.elliprf, None, [[(1e-3, 1e3, True), (1e-20, 1e20, True)]] * 3),
    'elliptic_integral_RC': (mp.elliprc, None, [[(1e-3, 1e3, True), (1e-20, 1e20, True)]] * 2),
    'elliptic_integral_RD': (mp.elliprd, None, [[(1e-3, 1e3, True), (1e-6, 1e6, True)]] * 3),
    'elliptic_integral_RJ': (mp.elliprj, None, [[(1e-3, 1e3, True), (1e-4, 1e4, True)]] * 4),
}
for _d, _suffix in ((0, ''), (1, '_derivative')):
    near = [(1e-4, 1, True), (0, 5, False), (5, 10, False), (10, 80, False)]
    for _name, _f, _part in (('ber', ber, 'real'), ('bei', ber, 'imag'), ('ker', ker, 'real'), ('kei', ker, 'imag')):
        REAL[f'kelvin_{_name}0{_suffix}'] = (lambda x, f=_f, d=_d, p=_part: getattr(f(x, d), p),
                                             lambda x, f=_f, d=_d, p=_part: abs(f(x, d)) if x > 1 else None, [near])
DOUBLE_ONLY = {  # ranges where single precision has no value
    'bessel_I0': (80, 700, False), 'bessel_I1': (80, 700, False), 'airy_Ai': (18, 103, False), 'airy_Bi': (18, 103, False),
    'airy_Ai_derivative': (18, 103, False), 'airy_Bi_derivative': (18, 103, False),
}
for _d in ('', '_derivative'):
    for _name in ('ber', 'bei'):
        DOUBLE_ONLY[f'kelvin_{_name}0{_d}'] = (80, 119, False)
    for _name in ('ker', 'kei'):
        DOUBLE_ONLY[f'kelvin_{_name}0{_d}'] = (80, 900, False)


def single(x):
    return struct.unpack('f', struct.pack('f', x))[0]


def draw(rng, low, high, logarithmic):
    if not logarithmic:
        return rng.uniform(low, high)
    sign = -1 if low < 0 else 1
    a, b = mp.log(abs(low)), mp.log(abs(high))
    return sign * float(mp.exp(rng.uniform(float(a), float(b))))


def points(name, n, rng, double=False):
    ranges = [list(r) for r in REAL[name][2]]
    if double and name in DOUBLE_ONLY:
        ranges[0].append(DOUBLE_ONLY[name])
    for k in range(n):
        x = [draw(rng, *r[k % len(r)]) for r in ranges]
        yield x if double else [single(a) for a in x]


def reference(name, x):
    f, scale, _ = REAL[name]
    value = mp.re(f(*x))
    s = scale(*x) if scale else None
    return value, abs(value) if s is None else s


def sequence(kind, nu, z):
    z = mp.mpc(z)
    return {'I': mp.besseli, 'J': mp.besselj, 'K': mp.besselk, 'Y': mp.bessely}[kind](nu, z)


def sequence_scale(kind, nu, z, value):
    """The value, or its companion where that is what the value oscillates against."""
    w = -z if z.real < 0 else z
    if abs(z) <= abs(nu):
        return abs(value)
    if kind == 'I':
        other = sequence('K', nu, w) / mp.pi
    elif kind == 'K':
        other = sequence('I', nu, w) * mp.pi if z.real < 0 else mp.mpf(0)
    else:
        other = sequence('Y' if kind == 'J' else 'J', nu, z)
    return max(abs(value), abs(mp.mpc(other)))


def sequence_points(n, rng, single_range):
    most = 60 if single_range else 300
    for k in range(n):
        r = float(mp.exp(rng.uniform(-4, float(mp.log(most)))))
        angle = rng.choice([0, 0.5, 1, -0.5]) if k % 3 == 0 else rng.uniform(-1, 1)
        z = complex(mp.mpc(r) * mp.expjpi(angle))
        if angle in (0, 1):
            z = complex(z.real, 0.0)
        if angle in (0.5, -0.5):
            z = complex(0.0, z.imag)
        nu = rng.choice([0, 0.5, 1, 0.25]) if k % 2 else rng.uniform(-0.5, 3 if k % 4 else (10 if single_range else 60))
        yield single(nu), complex(single(z.real), single(z.imag))


def text(x):
    return mp.nstr(x, 25, min_fixed=0, max_fixed=0)


def write():
    folder = os.path.join(ROOT, 'tests/data/functions')
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, 'bessel.tsv'), 'w') as out:
        out.write('# Written by tools/reference_bessel.py: function, number of arguments, arguments, value, scale of the error\n')
        for name in REAL:
            rng = random.Random(name)
            for x in points(name, 14 if len(REAL[name][2]) == 1 else 8, rng):
                value, scale = reference(name, x)
                out.write('\t'.join([name, str(len(x))] + [float(a).hex() for a in x] + [text(value), text(scale)]) + '\n')
            if name in DOUBLE_ONLY:
                x = [single(draw(rng, *DOUBLE_ONLY[name]))]
                value, scale = reference(name, x)
                out.write('\t'.join([name, '1', x[0].hex(), text(value), text(scale)]) + '\n')
    with open(os.path.join(folder, 'bessel_sequences.tsv'), 'w') as out:
        out.write('# Written by tools/reference_bessel.py: kind, xnu, z, four values of the orders xnu + 0, 1, 2, 3\n')
        rng = random.Random('sequences')
        for kind in 'IJKY':
            for nu, z in sequence_points(16, rng, True):
                row = [kind, nu.hex(), z.real.hex(), z.imag.hex()]
                for k in range(4):
                    v = mp.mpc(sequence(kind, mp.mpf(nu) + k, z))
                    row += [text(v.real), text(v.imag)]
                out.write('\t'.join(row) + '\n')


# The points of the accuracy table: ranges as above (None: of double precision only), and where one formula gives way to another.
tail = (1e-290, 1e-3, True)
far_phase = (-1e10, -1000, True)
GREAT = [(80, 1e15, True)]
MEASURED = {
    'bessel_exp_I0': ([tail, (0, 3, False), (3, 8, False), (8, 60, False)] + GREAT, [], (3, 8)),
    'bessel_exp_K0': ([tail, (1e-3, 2, True), (0, 2, False), (2, 8, False), (8, 60, False)] + GREAT, [], (2, 8)),
    'bessel_I0': ([tail, (0, 3, False), (3, 8, False), (8, 88, False)], [(88, 709.7, False)], (3, 8)),
    'airy_Ai': ([tail, (-1, 1, False), (1, 4, False), (4, 25, False), (-4, -1, False), (-60, -4, False), (-1000, -60, True)],
                [(25, 104, False), far_phase], (-4, -2, -1, 1, 2, 4)),
    'kelvin_ber0': ([(1e-9, 1, True), (0, 5, False), (5, 10, False), (10, 119, False)], [tail], (5, 10)),
    'kelvin_ker0': ([(1e-9, 1, True), (0, 2, False), (2, 10, False), (10, 110, False)], [tail, (110, 950, False)], (2, 10)),
}
for _like, _names in (('bessel_exp_I0', ['bessel_exp_I1']), ('bessel_exp_K0', ['bessel_exp_K1']), ('bessel_I0', ['bessel_I1']),
                      ('airy_Ai', ['airy_Ai_derivative', 'airy_Bi', 'airy_Bi_derivative']),
                      ('kelvin_ber0', ['kelvin_bei0', 'kelvin_ber0_derivative', 'kelvin_bei0_derivative']),
                      ('kelvin_ker0', ['kelvin_kei0', 'kelvin_ker0_derivative', 'kelvin_kei0_derivative'])):
    MEASURED.update((_name, MEASURED[_like]) for _name in _names)


def measured_points(name, n):
    """Every other one is a number of single precision."""
    both, double, seams = MEASURED[name]
    rng = random.Random(name)
    for k in range(n):
        if k % 10 == 9:
            x = rng.choice(seams) * (1 + rng.randint(-3, 3) * 2.0 ** -23)
        else:
            x = draw(rng, *rng.choice(both if k % 2 else both + double))
        yield single(x) if k % 2 and abs(x) > 1e-37 else x


def condition(f, x, value, scale):
    """Relative change of the value for one of the argument; for functions that oscillate at least modulus over value."""
    h = mp.mpf(10) ** -20
    return max(abs((f(x * (1 + h)) - value) / (value * h)), scale / abs(value))


def accuracy_rows(name, n):
    f, scale, _ = REAL[name]
    for x in measured_points(name, n):
        # the parts of complex references may differ by x^2, and great phases lose their digits
        mp.mp.dps = 70 + int(3 * abs(mp.log10(abs(x))))
        value = mp.re(f(mp.mpf(x)))
        s = scale(mp.mpf(x)) if scale else None
        if 2.0 ** -1022 < abs(value) < 1.7e308:
            c = condition(lambda t: mp.re(f(t)), mp.mpf(x), value, abs(value) if s is None else s)
            yield [name, '1', float(x).hex(), mp.nstr(value, 40), mp.nstr(c, 3)]
    mp.mp.dps = 40


def sequence_rows(kind, n, real):
    """Arguments order, re z, im z, and which part of the value; order and x for positive z."""
    rng = random.Random(kind + str(real))
    for k in range(n):
        nu, z = next(sequence_points(1, rng, k % 2 == 1))
        if real:
            z = complex(single(abs(z)), 0.0)
        mp.mp.dps = 60
        value = mp.mpc(sequence(kind, mp.mpf(nu), z))
        if not 1e-300 < abs(value) < 1e300:
            continue
        scale = sequence_scale(kind, mp.mpf(nu), mp.mpc(z), value)
        c = condition(lambda t: mp.mpc(sequence(kind, mp.mpf(nu), t)), mp.mpc(z), value, scale)
        part = k // 2 % 2 if z.imag != 0 or value.imag != 0 and not real else 0
        v = value.imag if part else value.real
        if v == 0:
            continue
        arguments = [nu, z.real] if real else [nu, z.real, z.imag]
        fields = [float(a).hex() for a in arguments] + ([] if real else [str(part)])
        name = f'bessel_{kind}x{" (x > 0)" if real else ""}'
        yield [name, str(len(fields))] + fields + [mp.nstr(v, 40), mp.nstr(c * abs(value) / abs(v), 3)]
    mp.mp.dps = 40


def write_accuracy(n, path):
    with open(path, 'w') as out:
        out.write('# Written by tools/reference_bessel.py: function, number of arguments, arguments, value, condition number\n')
        for name in (name for name in REAL if name in MEASURED):
            out.writelines('\t'.join(row) + '\n' for row in accuracy_rows(name, n))
        for real in (True, False):
            for kind in 'IJKY':
                out.writelines('\t'.join(row) + '\n' for row in sequence_rows(kind, n, real))


if __name__ == '__main__':
    if len(sys.argv) < 2:
        write()
    else:
        write_accuracy(int(sys.argv[1]), sys.argv[2])
