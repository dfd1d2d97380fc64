"""Writes the Chebyshev tables of the error and gamma functions: python3 tools/series_gamma.py"""

import mpmath as mp

import chebyshev

mp.mp.dps = 60
DIRECTORY = 'math/functions/tables/'


def table(name, count, meaning, f, tolerance, extra=None):
    c = chebyshev.coefficients(f, count, extra)
    chebyshev.check(c, f, tolerance)
    chebyshev.write(f'{DIRECTORY}{name}.inc', name, c, meaning, __file__)


def erfcs(t):
    x = mp.sqrt((t + 1) / 2)
    return (mp.erf(x) / x if x else 2 / mp.sqrt(mp.pi)) - 1


def scaled_erfc(x):
    """x exp(x^2) erfc(x) - 1/2, which the two series for large x share."""
    if x > 25:
        # Asymptotic: erfc's own power series would cancel.
        total = term = mp.mpf(1)
        k = 0
        while True:
            k += 1
            new = -term * (2 * k - 1) / (2 * x * x)
            if abs(new) < mp.mpf(10) ** -65 or abs(new) > abs(term):
                break
            term = new
            total += term
        return total / mp.sqrt(mp.pi) - mp.mpf(1) / 2
    return x * mp.exp(x * x) * mp.erfc(x) - mp.mpf(1) / 2


def erfccs(t):
    return scaled_erfc(mp.sqrt(8 / (t + 1))) if t > -1 else 1 / mp.sqrt(mp.pi) - mp.mpf(1) / 2


def algmcs(t):
    x = 10 / mp.sqrt((t + 1) / 2)
    if x > mp.mpf(10) ** 8:
        return mp.mpf(1) / 12 - 1 / (360 * x ** 2) + 1 / (1260 * x ** 4)
    # The difference cancels about 2 log10(x) digits.
    with mp.workdps(60 + 3 * int(mp.log10(x)) + 10):
        return x * (mp.loggamma(x) - (mp.log(2 * mp.pi) / 2 + (x - mp.mpf(1) / 2) * mp.log(x) - x))


def middle_correction(t):
    """The same as algmcs for x from 3 to 10: 1/x^2 runs from 1/100 to 1/9."""
    low, high = mp.mpf(1) / 100, mp.mpf(1) / 9
    x = 1 / mp.sqrt(low + (high - low) * (t + 1) / 2)
    return x * (mp.loggamma(x) - (mp.log(2 * mp.pi) / 2 + (x - mp.mpf(1) / 2) * mp.log(x) - x))


def log_gamma_ratio(t):
    y = (t + 1) / 2
    with mp.workdps(120):
        if y == 0 or y == 1:  # the limits: -psi(1) and psi(2)
            return mp.euler if y == 0 else 1 - mp.euler
        return mp.loggamma(1 + y) / (y * (y - 1))


def erf_inverse(p):
    """The inverse by Newton's iteration from the start that mpmath has."""
    return mp.erfinv(p)


def inverse_ratio(y):
    """erf_inverse(sqrt(y))/sqrt(y) - 1."""
    if abs(y) < mp.mpf(10) ** -40:
        return mp.sqrt(mp.pi) / 2 - 1
    p = mp.sqrt(y)
    return erf_inverse(p) / p - 1


def erfc_inverse(p):
    """Newton's iteration on log erfc."""
    x = mp.sqrt(-mp.log(p))
    while True:
        e = mp.erfc(x)
        step = (mp.log(e) - mp.log(p)) * e * mp.exp(x * x) * mp.sqrt(mp.pi) / 2
        x += step
        if abs(step) < mp.mpf(10) ** -50 * x:
            return x


def tail(low, high):
    """erfc_inverse(p)/s - 1 for s = sqrt(-log p) from low to high, in 1/s."""
    low, high = 1 / mp.mpf(high), 1 / mp.mpf(low)

    def ratio(t):
        s = 1 / (low + (high - low) * (t + 1) / 2)
        return erfc_inverse(mp.exp(-s * s)) / s - 1

    return ratio


def main():
    table('lv_erfcs', 21, 'erf(x)/x - 1 for |x| up to 1, in 2x^2 - 1', erfcs, '1e-29')
    table('lv_erc2cs', 49, 'x exp(x^2) erfc(x) - 1/2 for x from 1 to 2, in (8/x^2 - 5)/3',
          lambda t: scaled_erfc(mp.sqrt(8 / (3 * t + 5))), '1e-30')
    table('lv_erfccs', 59, 'x exp(x^2) erfc(x) - 1/2 for x above 2, in 8/x^2 - 1', erfccs, '1e-30', 400)
    table('lv_gamcs', 42, 'gamma(1 + y) - 0.9375 for y from 0 to 1, in 2y - 1',
          lambda t: mp.gamma(1 + (t + 1) / 2) - mp.mpf('0.9375'), '1e-30')
    table('lv_algmcs', 15, 'x times the correction of Stirling\'s formula for log gamma, x from 10, in 2(10/x)^2 - 1',
          algmcs, '1e-30')
    table('lv_algm3cs', 40, 'the same for x from 3 to 10, in (1800/x^2 - 109)/91', middle_correction, '1e-25')
    table('lv_lgamcs', 42, 'log gamma(1 + y)/(y(y - 1)) for y from 0 to 1, in 2y - 1', log_gamma_ratio, '1e-30')
    table('lv_erfics', 44, 'erf_inverse(x)/x - 1 for |x| up to 0.75, in 32x^2/9 - 1',
          lambda t: inverse_ratio(9 * (t + 1) / 32), '1e-28')
    table('lv_erfi2cs', 59, 'erf_inverse(x)/x - 1 for |x| from 0.75 to 0.9375, in (512x^2 - 369)/81',
          lambda t: inverse_ratio((81 * t + 369) / 512), '1e-28')
    for name, low, high in (('lv_erfit1cs', '1.17', '3'), ('lv_erfit2cs', '3', '8'), ('lv_erfit3cs', '8', '27.4')):
        table(name, 44, f'erfc_inverse(p)/s - 1, s = sqrt(-log p) from {low} to {high}, in 1/s', tail(low, high), '1e-25')
    table('lv_alnrcs', 43, '(1 - log(1 + x)/x)/x for |x| up to 0.375, in x/0.375',
          lambda t: mp.mpf(1) / 2 if abs(t) < mp.mpf(10) ** -30 else
          (1 - mp.log1p(3 * t / 8) / (3 * t / 8)) / (3 * t / 8), '1e-29')


if __name__ == '__main__':
    main()
