"""Writes tests/data/functions/*.tsv: values of special functions to 30 digits, with condition numbers.

    python3 tools/reference_values.py [points [directory]]

Each line: function, number of arguments, the arguments in hexadecimal, the value, the largest relative change of the value for a
relative change of one argument. Every second point has arguments that single precision represents.
"""

import math
import random
import struct
import sys

import mpmath as mp

mp.mp.dps = 60
random.seed(20261121)


def single(x):
    return struct.unpack('f', struct.pack('f', x))[0]


def log_uniform(low, high):
    return math.exp(random.uniform(math.log(low), math.log(high)))


def signed(x):
    return x if random.random() < 0.5 else -x


def erfc_inverse(y):
    y = mp.mpf(y)
    if y == 1:
        return mp.mpf(0)
    if y > 1:
        return -erfc_inverse(2 - y)
    if y > mp.mpf('0.01'):
        return mp.erfinv(1 - y)
    x = mp.sqrt(-mp.log(y))
    return mp.findroot(lambda t: mp.log(mp.erfc(t)) - mp.log(y), x)


def incomplete_gamma(a, x):
    """x^a exp(-x) sum x^k/(a (a + 1) ... (a + k)), all terms positive."""
    a, x = mp.mpf(a), mp.mpf(x)
    total = term = 1 / a
    k = 0
    while term > total * mp.mpf(10) ** -50:
        k += 1
        term *= x / (a + k)
        total += term
    return mp.exp(a * mp.log(x) - x) * total


def incomplete_beta(x, a, b):
    """The series in x of 1 - sum, with positive terms: x^a (1-x)^b/(a B(a,b)) sum (a+b)_k/(a+1)_k x^k."""
    x, a, b = mp.mpf(x), mp.mpf(a), mp.mpf(b)
    if x > (a + 1) / (a + b + 2):
        return 1 - incomplete_beta(1 - x, b, a)
    total = term = mp.mpf(1)
    k = 0
    while term > total * mp.mpf(10) ** -55:
        term *= (a + b + k) / (a + 1 + k) * x
        total += term
        k += 1
    log_beta = mp.loggamma(a) + mp.loggamma(b) - mp.loggamma(a + b)
    return mp.exp(a * mp.log(x) + b * mp.log1p(-x) - log_beta) / a * total


FUNCTIONS = {
    'erf': (mp.erf, lambda i: (signed(log_uniform(1e-300, 1e-3) if i % 8 == 0 else random.uniform(0, 6.2)),)),
    'erfc': (mp.erfc, lambda i: (random.uniform(-6, 9) if i % 2 else random.uniform(-1, 26.5),)),
    'erf_inverse': (mp.erfinv, lambda i: (signed(log_uniform(1e-300, 1e-3) if i % 8 == 0 else
                                                 1 - log_uniform(1e-6, 1) if i % 2 else random.uniform(0, .999)),)),
    'erfc_inverse': (erfc_inverse, lambda i: (log_uniform(1e-307, .3) if i % 4 == 0 else
                                              log_uniform(1e-36, .3) if i % 4 == 1 else random.uniform(0.0001, 1.9999),)),
    'gamma': (mp.gamma, lambda i: (random.uniform(0, 33) if i % 4 == 0 else random.uniform(-33, 0) if i % 4 == 1 else
                                   random.uniform(-170, 171) if i % 4 == 2 else log_uniform(1e-36, 10),)),
    'log_gamma': (lambda x: mp.log(abs(mp.gamma(x))) if x < 0 else mp.loggamma(x),
                  lambda i: (random.uniform(0.5, 3) if i % 4 == 0 else log_uniform(1e-36, 1e30) if i % 4 == 1 else
                             random.uniform(-40, 0) if i % 4 == 2 else random.uniform(0, 40),)),
    'beta': (lambda a, b: mp.exp(mp.loggamma(a) + mp.loggamma(b) - mp.loggamma(mp.mpf(a) + b)),
             lambda i: (log_uniform(1e-3, 100), log_uniform(1e-3, 200 if i % 2 else 30))),
    'log_beta': (lambda a, b: mp.loggamma(a) + mp.loggamma(b) - mp.loggamma(mp.mpf(a) + b),
                 lambda i: (log_uniform(1e-3, 1e5), log_uniform(1e-2, 1e6))),
    'gamma_incomplete': (incomplete_gamma, lambda i: (log_uniform(1e-3, 150 if i % 2 else 20), log_uniform(1e-3, 200))),
    'beta_incomplete': (incomplete_beta, lambda i: (random.uniform(0, 1), log_uniform(1e-2, 300 if i % 2 else 5),
                                                    log_uniform(1e-2, 300 if i % 2 else 5))),
}


def condition(f, arguments, value):
    worst = mp.mpf(0)
    step = mp.mpf(10) ** -18
    for k, x in enumerate(arguments):
        moved = list(map(mp.mpf, arguments))
        moved[k] *= 1 + step
        worst = max(worst, abs((f(*moved) - value) / value) / step)
    return worst


def line(name, i):
    f, draw = FUNCTIONS[name]
    arguments = [single(x) if i % 2 else x for x in draw(i)]
    value = f(*map(mp.mpf, arguments))
    if not mp.mpf(10) ** -307 < abs(value) < mp.mpf(10) ** 308:
        return None
    fields = [name, str(len(arguments))] + [x.hex() for x in arguments]
    return '\t'.join(fields + [mp.nstr(value, 30), mp.nstr(condition(f, arguments, value), 3)])


def main():
    points = int(sys.argv[1]) if len(sys.argv) > 1 else 48
    directory = sys.argv[2] if len(sys.argv) > 2 else 'tests/data/functions'
    for name in FUNCTIONS:
        lines = [text for text in (line(name, i) for i in range(points)) if text]
        with open(f'{directory}/{name}.tsv', 'w') as file:
            file.write('# Written by tools/reference_values.py\n' + '\n'.join(lines) + '\n')


if __name__ == '__main__':
    main()
