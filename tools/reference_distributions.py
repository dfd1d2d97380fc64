#!/usr/bin/env python3
"""Reference values of the distribution functions: python3 tools/reference_distributions.py [points a function] [directory] [names]
                                                 python3 tools/reference_distributions.py --wide [points a function]

Writes one file a function, distributions/<name>.tsv by default below tests/data. A row: function, number of arguments, arguments
(exact in binary), value, condition number (largest relative change of the value for a relative change of one real argument).
Values come from the defining integrals and sums in 50 digits; arguments are rounded to 24 bits, so that both precisions have them.
The two functions that are defined as approximations (chi-squared above 65 degrees of freedom, Student's t for degrees of freedom that
are not whole) are not in the tables; the tests bound their distance from the true distribution.

With --wide the points of the accuracy table of docs/distributions.md: bench/accuracy/distributions.tsv, down to the smallest normal
number, half of the arguments in double precision alone, also for inverses. There t_cdf_expansion is t_cdf inside sqrt(df) from 20
degrees of freedom on, and chi_squared_cdf_upper is chi_squared_cdf where its asymptotic series serves.
"""
import os
import random
import struct
import sys

import mpmath as mp

mp.mp.dps = 50
wide = len(sys.argv) > 1 and sys.argv[1] == "--wide"
reach = 6 if wide else 1  # how far out arguments go
in_single = True


def single(x):
    """x in the precision of the point."""
    return struct.unpack("f", struct.pack("f", float(x)))[0] if in_single else float(x)


def gamma_lower(a, x):
    return mp.gammainc(a, 0, x, regularized=True)


def beta_ratio(x, a, b):
    """I_x(a, b) by its hypergeometric series at the nearer end, which keeps the digits of the smaller tail."""
    if x * (a + b) > a and x > mp.mpf("0.3"):
        return 1 - beta_ratio(1 - x, b, a)
    return x**a * (1 - x) ** b / (a * mp.beta(a, b)) * mp.hyp2f1(a + b, 1, a + 1, x)


def normal(x):
    return mp.erfc(-x / mp.sqrt(2)) / 2


def student(t, df):
    tail = beta_ratio(df / (df + t * t), df / 2, mp.mpf(1) / 2) / 2
    return 1 - tail if t > 0 else tail


def binomial_pdf(k, n, p):
    return mp.binomial(n, k) * p**k * (1 - p) ** (n - k)


def poisson_pdf(k, theta):
    return theta**k * mp.exp(-theta) / mp.factorial(k)


def hyper_pdf(k, n, m, l):
    return mp.mpf(mp.binomial(m, k) * mp.binomial(l - m, n - k) / mp.binomial(l, n))


def noncentral_chi(x, df, lam):
    terms = lambda i: poisson_pdf(i, lam / 2) * gamma_lower(df / 2 + i, x / 2)
    total, i = mp.mpf(0), 0
    while True:
        term = terms(i)
        total += term
        if i > lam / 2 and term < total * mp.mpf(10) ** -30:
            return total
        i += 1


def noncentral_t_far(t, df, delta):
    """The integral over the logarithm of the chi variable by the trapezoidal rule, from its greatest term outwards."""
    df = mp.mpf(df)
    constant = mp.log(2) + df / 2 * mp.log(df / 2) - mp.loggamma(df / 2)
    f = lambda u: normal(t * mp.exp(u) - delta) * mp.exp(df * u - df * mp.exp(2 * u) / 2 + constant)
    step = min(mp.mpf(1) / 20, 1 / (mp.sqrt(2 * df) + abs(delta) + 2) / 6)
    peak = max((mp.mpf(i) / 10 for i in range(-400, 40)), key=f)
    total = f(peak)
    for side in (step, -step):
        u = peak
        for i in range(100000):
            u += side
            term = f(u)
            total += term
            if term < total * mp.mpf(10) ** -25 and i > 40:
                break
    return total * step


def noncentral_t(t, df, delta):
    """The integral over the chi variable, in panels around its mean."""
    if wide:
        return noncentral_t_far(t, df, delta)
    df = mp.mpf(df)
    density = lambda s: 2 * (df / 2) ** (df / 2) / mp.gamma(df / 2) * s ** (df - 1) * mp.exp(-df * s * s / 2)
    width = 1 / mp.sqrt(2 * df)
    peak = 1 if t * delta <= 0 else delta / t
    knots = sorted({mp.mpf(0), *[max(mp.mpf(0), c + k * width) for c in (1, peak) for k in (-12, -6, -3, -1, 0, 1, 3, 6, 12, 30)]})
    return mp.quad(lambda s: normal(t * s - delta) * density(s), knots)


def bivariate(x, y, rho):
    """The mean of the conditional probability of Y <= y over X <= x."""
    root = mp.sqrt(1 - rho * rho)
    f = lambda u: mp.exp(-u * u / 2) / mp.sqrt(2 * mp.pi) * normal((y - rho * u) / root)
    knots = [x - 30, x - 12, x - 6, x - 3, x - 1, x]
    if rho != 0:
        knots += [c for c in (y / rho - root, y / rho, y / rho + root) if x - 30 < c < x]
    return mp.quad(f, sorted(knots))


def uniform(low, high):
    return random.uniform(low, high)


def spread(low, high):
    return float(mp.mpf(low) * (mp.mpf(high) / mp.mpf(low)) ** mp.mpf(random.random()))


def cases():
    """name: (function, generator of arguments, positions of real arguments)"""
    whole = lambda low, high: int(spread(low, high + 1))
    dof = lambda: single(uniform(0.5, 65)) if random.random() < 0.5 else float(whole(1, 65))

    def around(mean, deviation):
        return max(abs(single(mean + deviation * uniform(-5 * reach, 5))), single(mean / 50))

    def chi():
        df = dof()
        return around(df, (2 * df) ** 0.5), df

    def gam():
        a = single(spread(0.05, 3000))
        return around(a, a**0.5), a

    def student_t():
        df = random.choice([1, 2, 3, 4, 5, 6, 9, 10, 14, 17, 18, 19, 20, 40, 100])
        t = single(random.choice([-1, 1]) * (spread(1e-6, 1e30) if wide and random.random() < 0.5 else spread(0.01, 200)))
        return (t if df < 20 or t * t >= df else single(t + 20)), float(df)

    def noncentral_chi_arguments():
        df, lam = single(spread(0.5, 200)), single(spread(0.01, 300))
        return around(df + lam, (2 * df + 4 * lam) ** 0.5), df, lam

    def noncentral_t_arguments():
        df, delta = whole(1, 900), single(uniform(-6, 6))
        return single(delta + uniform(-5, 8)), df, delta

    def binomial():
        n, p = whole(1, 2000), single(spread(0.001, 0.9))
        return min(n, max(0, int(n * p + uniform(-5 * reach, 5) * (n * p * (1 - p)) ** 0.5))), n, p

    def poisson():
        theta = single(spread(0.01, 2000))
        return max(0, int(theta + uniform(-5 * reach, 6) * theta**0.5)), theta

    def hyper():
        l = whole(2, 3000)
        n, m = random.randint(1, l), random.randint(1, l)
        mean, d = n * m / l, (n * m * (l - n) * (l - m) / max(1, l**3)) ** 0.5
        return min(n, max(0, int(mean + uniform(-4, 5) * (d + 1)))), n, m, l

    shapes = lambda: (single(spread(0.1, 500)), single(spread(0.1, 500)))

    def beta():
        a, b = shapes()
        mean, d = a / (a + b), (a * b / (a + b) ** 2 / (a + b + 1)) ** 0.5
        x = single(mean + d * uniform(-4 * reach, 4))
        return (x if 0 < x < 1 else single(uniform(0.001, 0.999))), a, b

    def ratio():
        a, b = shapes()
        return single(spread(0.05 / reach**4, 20)), a, b

    def expansion():
        df = single(spread(20, 1000))
        return single(uniform(-1, 1) * min(df**0.5, 6)), df

    def upper_chi():
        df = dof()
        return single(max(df / 2, 26) * (1 + 2 * random.random())), df

    more = {
        "t_cdf_expansion": (student, expansion, [0, 1]),
        "chi_squared_cdf_upper": (lambda x, df: gamma_lower(df / 2, x / 2), upper_chi, [0, 1]),
    }
    sums = lambda pdf: lambda k, *rest: mp.fsum(pdf(i, *rest) for i in range(k + 1))
    table = {
        "normal_cdf": (normal, lambda: (single(uniform(-37.5 if wide else -13, 8)),), [0]),
        "bivariate_normal_cdf": (bivariate, lambda: (single(uniform(-3, 3)), single(uniform(-3, 3)), single(uniform(-1, 1))), [0, 1, 2]),
        "chi_squared_cdf": (lambda x, df: gamma_lower(df / 2, x / 2), chi, [0, 1]),
        "gamma_cdf": (lambda x, a: gamma_lower(a, x), gam, [0, 1]),
        "t_cdf": (student, student_t, [0, 1]),
        "F_cdf": (lambda F, m, n: beta_ratio(F * m / (F * m + n), m / 2, n / 2), ratio, [0, 1, 2]),
        "beta_cdf": (beta_ratio, beta, [0, 1, 2]),
        "binomial_cdf": (sums(binomial_pdf), binomial, [2]),
        "binomial_pdf": (binomial_pdf, binomial, [2]),
        "poisson_cdf": (sums(poisson_pdf), poisson, [1]),
        "poisson_pdf": (poisson_pdf, poisson, [1]),
        "hyper_cdf": (sums(hyper_pdf), hyper, []),
        "hypergeometric_pdf": (hyper_pdf, hyper, []),
        "non_central_chi_sq": (noncentral_chi, noncentral_chi_arguments, [0, 1, 2]),
        "non_central_t_cdf": (noncentral_t, noncentral_t_arguments, [0, 2]),
    }
    return table | more if wide else table


def exact(arguments):
    return [mp.mpf(a) if isinstance(a, float) else a for a in arguments]


def condition(function, arguments, reals, value):
    largest = mp.mpf(0)
    for k in reals:
        moved = list(arguments)
        moved[k] = arguments[k] * (1 + mp.mpf(10) ** -12)
        largest = max(largest, abs(function(*moved) - value) / abs(value) * mp.mpf(10) ** 12)
    return largest


SLOW = ("bivariate_normal_cdf", "non_central_t_cdf", "non_central_chi_sq")
INVERSES = {
    "normal_cdf": "normal_inverse_cdf",
    "chi_squared_cdf": "chi_squared_inverse_cdf",
    "t_cdf": "t_inverse",
    "F_cdf": "F_inverse_cdf",
    "beta_cdf": "beta_inverse_cdf",
}


def row(name, arguments, value, cond, digits):
    texts = [repr(a) for a in arguments]
    return "\t".join([name, str(len(texts)), *texts, mp.nstr(value, digits), mp.nstr(cond, 3)]) + "\n"


def inverse_row(name, function, arguments, value):
    """The quantile of the rounded value, by the secant from the argument, which is near."""
    p = single(value)
    if not sys.float_info.min < p < 1:
        return None
    rest = exact(arguments)[1:]
    f = lambda x: function(x, *rest) - p
    x = mp.mpf(arguments[0])
    y = x * (1 + mp.mpf(10) ** -10)
    for _ in range(6):
        if f(y) == f(x):
            break
        x, y = y, y - f(y) * (y - x) / (f(y) - f(x))
    slope = (f(x * (1 + mp.mpf(10) ** -15)) - f(x)) / mp.mpf(10) ** -15
    if abs(f(x)) > p * mp.mpf(10) ** -30 or slope == 0:
        return None
    return row(name, [p, *arguments[1:]], x, abs(p / slope), 30)


def wide_points():
    global in_single
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 100
    with open(os.path.join(os.path.dirname(__file__), "../bench/accuracy/distributions.tsv"), "w") as file:
        file.write("# Written by tools/reference_distributions.py --wide\n")
        for name, (function, generate, reals) in cases().items():
            random.seed(name)
            mp.mp.dps = 30 if name in SLOW else 50
            inverses, rows = [], 0
            while rows < count // (3 if name in SLOW else 1):
                in_single = rows % 2 == 0
                arguments = generate()
                if name == "chi_squared_cdf" and arguments[0] >= max(arguments[1] / 2, 26):
                    continue
                if name == "chi_squared_cdf" and arguments[1] > 25 and arguments[0] < 2:
                    continue
                value = function(*exact(arguments))
                if not sys.float_info.min < value < 1 - 1e-12:
                    continue
                file.write(row(name, arguments, value, condition(function, exact(arguments), reals, value), 30))
                if name in INVERSES:
                    inverses.append(inverse_row(INVERSES[name], function, arguments, value))
                rows += 1
            file.writelines(line for line in inverses if line)


def main():
    count = int(sys.argv[1]) if len(sys.argv) > 1 else 60
    directory = sys.argv[2] if len(sys.argv) > 2 else os.path.join(os.path.dirname(__file__), "../tests/data/distributions")
    only = sys.argv[3:]
    for name, (function, generate, reals) in cases().items():
        if only and name not in only:
            continue
        random.seed(name)
        slow = name in SLOW
        mp.mp.dps = 25 if slow else 50
        rows = 0
        with open(os.path.join(directory, name + ".tsv"), "w") as file:
            file.write("# function, number of arguments, arguments, value, condition number; tools/reference_distributions.py\n")
            while rows < count // (2 if slow else 1):
                arguments = generate()
                value = function(*exact(arguments))
                if not mp.mpf("1e-30") < value < 1:
                    continue
                cond = condition(function, exact(arguments), reals, value)
                file.write(row(name, arguments, value, cond, 22))
                rows += 1


wide_points() if wide else main()
