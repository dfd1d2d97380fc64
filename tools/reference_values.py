"""Writes tests/data/functions/*.tsv: values of special functions to 40 digits, with condition numbers.

    python3 tools/reference_values.py [points [directory]]       a file for each function
    python3 tools/reference_values.py points bench/accuracy/gamma.tsv    all of them in one, for bench_accuracy

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
    """x^a exp(-x) sum x^k/(a (a + 1) ... (a + k)), all terms positive; far out what the upper integral leaves of gamma(a)."""
    a, x = mp.mpf(a), mp.mpf(x)
    if x > 2 * a + 300:
        return mp.gamma(a)  # but for less than 1e-60 of it
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


def fresnel(x, cosine):
    """mpmath's series cancels far out: there by the complementary error function of a complex argument."""
    if abs(x) <= 8:
        return mp.fresnelc(x) if cosine else mp.fresnels(x)
    value = (1 + mp.j) / 2 * (1 - mp.erfc(mp.sqrt(mp.pi) / 2 * (1 - mp.j) * abs(x)))
    return mp.sign(x) * (value.real if cosine else value.imag)


def near(x):
    """A few steps of single or double precision to either side of x, where one method gives way to another."""
    return x * (1 + random.randint(-4, 4) * random.choice((2.0 ** -52, 2.0 ** -22, 2.0 ** -10)))


def beta_arguments(i):
    if i % 8 == 6:  # within some standard deviations of the mean of a narrow density
        a, b = log_uniform(100, 1e5), log_uniform(100, 1e5)
        x = (a + random.uniform(-6, 6) * math.sqrt(a * b / (a + b))) / (a + b)
        return min(max(x, 1e-3), 0.999), a, b
    if i % 8 == 7:
        return random.choice((log_uniform(1e-30, 1), 1 - log_uniform(1e-7, 1))), log_uniform(1e-6, 50), log_uniform(1e-6, 50)
    return random.uniform(0, 1), log_uniform(1e-2, 300 if i % 2 else 5), log_uniform(1e-2, 300 if i % 2 else 5)


def carlson(count, low, high):
    def draw(i):
        x = [log_uniform(1e-3, 1e3) if i % 4 < 2 else log_uniform(low, high) for k in range(count)]
        if i % 8 == 5:
            x[0] = 0.0
        return tuple(x)

    return draw


def modulus(i):
    return (random.uniform(0, 1) if i % 4 == 0 else log_uniform(1e-20, 0.5) if i % 4 == 1 else
            near(0.5) if i % 16 == 2 else 1 - log_uniform(1e-7, 0.5),)


FUNCTIONS = {
    'erf': (mp.erf, lambda i: (signed(log_uniform(1e-300, 1e-3) if i % 8 == 0 else near(random.choice((1, 2))) if i % 8 == 3 else
                                      random.uniform(0, 6.2)),)),
    'erfc': (mp.erfc, lambda i: (near(random.choice((-1, 1, 2))) if i % 8 == 3 else
                                 random.uniform(-6, 9) if i % 2 else random.uniform(-1, 26.5),)),
    'erf_inverse': (mp.erfinv, lambda i: (signed(log_uniform(1e-300, 1e-3) if i % 8 == 0 else
                                                 near(random.choice((0.75, 0.9375))) if i % 8 == 3 else
                                                 1 - log_uniform(1e-6, 1) if i % 2 else random.uniform(0, .999)),)),
    'erfc_inverse': (erfc_inverse, lambda i: (log_uniform(1e-307, .3) if i % 4 == 0 else log_uniform(1e-36, .3) if i % 4 == 1 else
                                              near(random.choice((0.25, 1.75))) if i % 8 == 3 else
                                              random.uniform(0.0001, 1.9999),)),
    'gamma': (mp.gamma, lambda i: (random.uniform(0, 33) if i % 4 == 0 else random.uniform(-33, 0) if i % 4 == 1 else
                                   random.uniform(-170, 171) if i % 4 == 2 else near(10) if i % 8 == 3 else
                                   log_uniform(1e-36, 10),)),
    'log_gamma': (lambda x: mp.log(abs(mp.gamma(x))) if x < 0 else mp.loggamma(x),
                  lambda i: (random.uniform(0.5, 3) if i % 4 == 0 else log_uniform(1e-36, 1e30) if i % 4 == 1 else
                             random.uniform(-40, 0) if i % 4 == 2 else near(random.choice((1, 2, 3, 10))) if i % 8 == 3 else
                             random.uniform(0, 40),)),
    'beta': (lambda a, b: mp.exp(mp.loggamma(a) + mp.loggamma(b) - mp.loggamma(mp.mpf(a) + b)),
             lambda i: (log_uniform(1e-30 if i % 4 == 2 else 1e-3, 100), log_uniform(1e-3, 200 if i % 2 else 30))),
    'log_beta': (lambda a, b: mp.loggamma(a) + mp.loggamma(b) - mp.loggamma(mp.mpf(a) + b),
                 lambda i: (log_uniform(1e-30 if i % 4 == 2 else 1e-3, 1e5),
                            log_uniform(1e-2, 1e15 if i % 8 == 4 else 1e6))),
    'gamma_incomplete': (incomplete_gamma, lambda i: (log_uniform(1e-30 if i % 8 == 2 else 1e-3, 170 if i % 2 else 20),
                                                      log_uniform(1e-30 if i % 8 == 6 else 1e-3, 1e9 if i % 8 == 4 else 200))),
    'beta_incomplete': (incomplete_beta, beta_arguments),
    'elliptic_integral_K': (mp.ellipk, modulus),
    'elliptic_integral_E': (mp.ellipe, modulus),
    'elliptic_integral_RF': (mp.elliprf, carlson(3, 1e-20, 1e20)),
    'elliptic_integral_RC': (mp.elliprc, carlson(2, 1e-20, 1e20)),
    'elliptic_integral_RD': (mp.elliprd, carlson(3, 1e-8, 1e8)),
    'elliptic_integral_RJ': (mp.elliprj, carlson(4, 1e-6, 1e6)),
    'fresnel_integral_C': (lambda x: fresnel(x, True), lambda i: (signed(log_uniform(1e-10, 2) if i % 4 == 0 else
                           log_uniform(2, 1e4) if i % 4 == 1 else near(2) if i % 16 == 2 else random.uniform(0, 8)),)),
    'fresnel_integral_S': (lambda x: fresnel(x, False), lambda i: (signed(log_uniform(1e-10, 2) if i % 4 == 0 else
                           log_uniform(2, 1e4) if i % 4 == 1 else near(2) if i % 16 == 2 else random.uniform(0, 8)),)),
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
    return '\t'.join(fields + [mp.nstr(value, 40), mp.nstr(condition(f, arguments, value), 3)])


def main():
    points = int(sys.argv[1]) if len(sys.argv) > 1 else 48
    target = sys.argv[2] if len(sys.argv) > 2 else 'tests/data/functions'
    header = '# Written by tools/reference_values.py: function, number of arguments, arguments, value, condition number\n'
    together = []
    for name in FUNCTIONS:
        if not target.endswith('.tsv') and name.startswith(('elliptic', 'fresnel')):
            continue  # the tests have those from reference_bessel.py
        lines = [text for text in (line(name, i) for i in range(points)) if text]
        together += lines
        if not target.endswith('.tsv'):
            with open(f'{target}/{name}.tsv', 'w') as file:
                file.write(header + '\n'.join(lines) + '\n')
    if target.endswith('.tsv'):
        with open(target, 'w') as file:
            file.write(header + '\n'.join(together) + '\n')


if __name__ == '__main__':
    main()
