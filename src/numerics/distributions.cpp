// Distribution functions of the statistical tests.
//
// Gamma and beta functions by series and continued fractions of at most ROUNDS terms,
// stopped at the relative change ACCURACY; the normal distribution by the rational and
// polynomial approximations of Abramowitz and Stegun, Handbook of Mathematical Functions.
// Reads and writes nothing but its arguments and the standard error stream.

#include "numerics/distributions.h"

#include <math.h>
#include <stdio.h>

namespace vornengine {

namespace distrib {

static const int ROUNDS = 100;
static const double ACCURACY = 3e-07;

void nrerror(const char *text) { fprintf(stderr, "%s\n", text); }

// Lanczos, SIAM J. Num. Anal. B 1 (1964), with six coefficients.
double gammln(double xx)
{
    static const double coef[6] = {76.18009173, -86.50532033, 24.01409822, -1.231739516, 0.00120858003, -5.36382e-06};
    double x = xx - 1.0, tmp = x + 5.5, ser = 1.0;
    tmp -= (x + 0.5) * log(tmp);
    for (int i = 0; i < 6; i++) {
        x += 1.0;
        ser += coef[i] / x;
    }
    return -tmp + log(2.50662827465 * ser);
}

// P(a, x) = x^a e^-x / Gamma(a) * sum of x^n / (a (a + 1) ... (a + n)). Leaves out
// untouched when the terms do not suffice.
void gser(double *out, double a, double x, double *gln)
{
    *gln = gammln(a);
    if (!(x > 0.0)) {
        if (x < 0.0) nrerror("x less than 0 in routine GSER");
        *out = 0.0;
        return;
    }
    double ap = a, del = 1.0 / a, sum = del;
    for (int n = 1; n <= ROUNDS; n++) {
        ap += 1.0;
        del *= x / ap;
        sum += del;
        if (fabs(del) < fabs(sum) * ACCURACY) {
            *out = sum * exp(-x + a * log(x) - *gln);
            return;
        }
    }
    nrerror("a too large, ITMAX too small in routine GSER");
}

// Q(a, x) by its continued fraction, rescaled each round by fac. Leaves out untouched,
// without a word, when the rounds do not suffice.
void gcf(double *out, double a, double x, double *gln)
{
    *gln = gammln(a);
    double gold = 0.0, a0 = 1.0, a1 = x, b0 = 0.0, b1 = 1.0, fac = 1.0;
    for (int n = 1; n <= ROUNDS; n++) {
        const double ana = n - a, anf = n * fac;
        a0 = (a1 + a0 * ana) * fac;
        b0 = (b1 + b0 * ana) * fac;
        a1 = x * a0 + anf * a1;
        b1 = x * b0 + anf * b1;
        if (a1 == 0.0) continue;
        fac = 1.0 / a1;
        const double g = b1 * fac;
        if (fabs(g - gold) / g < ACCURACY) {
            *out = g * exp(-x + a * log(x) - *gln);
            return;
        }
        gold = g;
    }
}

// The series converges fast below x = a + 1, the continued fraction from there on.
double gammp(double a, double x)
{
    double p = 0.0, q = 0.0, gln;
    if (x < 0.0 || !(a > 0.0)) nrerror("Invalid arguments in routine GAMMP");
    if (x < a + 1.0) {
        gser(&p, a, x, &gln);
        return p;
    }
    gcf(&q, a, x, &gln);
    return 1.0 - q;
}

double gammq(double a, double x)
{
    double p = 0.0, q = 0.0, gln;
    if (x < 0.0 || !(a > 0.0)) nrerror("Invalid arguments in routine GAMMQ");
    if (x < a + 1.0) {
        gser(&p, a, x, &gln);
        return 1.0 - p;
    }
    gcf(&q, a, x, &gln);
    return q;
}

double erff(double x) { return x < 0.0 ? -gammp(0.5, x * x) : gammp(0.5, x * x); }

double erffc(double x) { return x < 0.0 ? 1.0 + gammp(0.5, x * x) : gammq(0.5, x * x); }

double erfcc(double x)
{
    static const double c[10] = {-1.26551223, 1.00002368,  0.37409196, 0.09678418,  -0.18628806,
                                 0.27886807,  -1.13520398, 1.48851587, -0.82215223, 0.17087277};
    const double z = fabs(x), t = 1.0 / (1.0 + 0.5 * z);
    double poly = c[9];
    for (int i = 8; i >= 1; i--) poly = c[i] + t * poly;
    const double tail = t * exp(-z * z + c[0] + t * poly);
    return x < 0.0 ? 2.0 - tail : tail;
}

double betacf(double a, double b, double x)
{
    const double qab = a + b, qap = a + 1.0, qam = a - 1.0;
    double am = 1.0, bm = 1.0, az = 1.0, bz = 1.0 - qab * x / qap;
    for (int m = 1; m <= ROUNDS; m++) {
        const double tem = 2.0 * m;
        double d = m * (b - m) * x / ((qam + tem) * (a + tem));
        const double ap = az + d * am, bp = bz + d * bm;
        d = -(a + m) * (qab + m) * x / ((a + tem) * (qap + tem));
        const double app = ap + d * az, bpp = bp + d * bz, aold = az;
        am = ap / bpp;
        bm = bp / bpp;
        az = app / bpp;
        bz = 1.0;
        if (fabs(az - aold) < fabs(az) * ACCURACY) return az;
    }
    nrerror("a or b too big or ITMAX too small in routine BETACF");
    return 0.0;
}

double betai(double a, double b, double x)
{
    if (x < 0.0 || x > 1.0) nrerror("Bad x in routine BETAI");
    double bt = 0.0;
    if (x != 0.0 && x != 1.0) bt = exp(gammln(a + b) - gammln(a) - gammln(b) + a * log(x) + b * log(1.0 - x));
    if (x < (a + 1.0) / (a + b + 2.0)) return bt * betacf(a, b, x) / a;
    return 1.0 - bt * betacf(b, a, 1.0 - x) / b;
}

// Abramowitz and Stegun 26.2.23.
double normquant(double p)
{
    const double t = sqrt(log(1.0 / p / p));
    return t - (2.515517 + t * (0.802853 + t * 0.010328)) / (1.0 + t * (1.432788 + t * (0.189269 + t * 0.001308)));
}

// Abramowitz and Stegun 26.7.5.
double studquant(int nu, double p)
{
    const double x = normquant(p), y = x * x, v = 1.0 / nu;
    const double g1 = (y + 1.0) * x / 4.0;
    const double g2 = ((5.0 * y + 16.0) * y + 3.0) * x / 96.0;
    const double g3 = (((3.0 * y + 19.0) * y + 17.0) * y - 15.0) * x / 384.0;
    const double g4 = ((((79.0 * y + 776.0) * y + 1482.0) * y - 1920.0) * y - 945.0) * x / 92160.0;
    return (((g4 * v + g3) * v + g2) * v + g1) * v + x;
}

// tau = sqrt(nu) t / sqrt(nu - 1 + t^2) with t of nu - 1 degrees of freedom; for nu = 2
// that is an arc sine distribution.
double tauquant(int nu, double p)
{
    if (p > 0.5) return -1.0;
    if (nu < 2 || !(p > 0.0)) return 0.0;
    if (nu == 2) return sqrt(2.0) * sin((1.0 - 2.0 * p) * 3.1415926535898 / 2.0);
    const double t = studquant(nu - 1, p);
    return sqrt((double)nu) * t / sqrt(t * t + nu - 1.0);
}

// Abramowitz and Stegun 26.2.19.
double normtail(double x)
{
    const double poly =
        1.0 + x * (0.049867347 +
                   x * (0.0211410061 + x * (0.0032776263 + x * (3.80036e-05 + x * (4.88906e-05 + x * 5.383e-06)))));
    return pow(poly, -16.0) / 2.0;
}

double studtail(int nu, double t) { return betai(nu / 2.0, 0.5, nu / (t * t + nu)) / 2.0; }

double chi2tail(int nu, double x) { return gammq(nu / 2.0, x / 2.0); }

double ftail(int nu1, int nu2, double f) { return betai(nu2 / 2.0, nu1 / 2.0, nu2 / (nu1 * f + nu2)); }

} // namespace distrib

} // namespace vornengine
