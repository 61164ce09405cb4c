// Every expectation comes from a closed form: finite sums of Poisson and binomial terms,
// elementary functions for one and two degrees of freedom, erfc of the C library.

#include "numerics/distributions.h"

#include <gtest/gtest.h>
#include <math.h>

#include <string>

using namespace vornengine;

namespace {

const double PI = 3.14159265358979323846;

// The series and fractions stop at a relative change of 3e-7; gammln is good to 1e-9.
const double SERIES = 1e-6;

// Q of chi-square, nu even: the Poisson sum of nu / 2 terms.
double chi2_even(int nu, double x)
{
    double term = exp(-x / 2.0), sum = 0.0;
    for (int k = 0; k < nu / 2; k++) {
        sum += term;
        term *= x / 2.0 / (k + 1);
    }
    return sum;
}

// Upper tail of Student's t, nu = 1 to 4.
double student(int nu, double t)
{
    const double c = sqrt(nu / (nu + t * t));
    if (nu == 1) return 0.5 - atan(t) / PI;
    if (nu == 2) return 0.5 - t / 2.0 / sqrt(2.0 + t * t);
    if (nu == 3) return 0.5 - (atan(t / sqrt(3.0)) + t / sqrt(3.0) * c * c) / PI;
    return 0.5 - t / 2.0 / sqrt(4.0 + t * t) * (1.0 + c * c / 2.0);
}

// I_x(a, b), a and b whole: probability of at least a successes in a + b - 1 trials.
double beta_whole(int a, int b, double x)
{
    const int n = a + b - 1;
    double sum = 0.0;
    for (int k = a; k <= n; k++)
        sum += exp(lgamma(n + 1.0) - lgamma(k + 1.0) - lgamma(n - k + 1.0)) * pow(x, k) * pow(1.0 - x, n - k);
    return sum;
}

// Point with upper tail p by bisection; tail falls from 0 on.
template <class Tail> double point(Tail tail, double p)
{
    double low = 0.0, high = 1000.0;
    for (int i = 0; i < 200; i++) {
        const double mid = (low + high) / 2.0;
        (tail(mid) > p ? low : high) = mid;
    }
    return low;
}

double normal_tail(double x) { return 0.5 * erfc(x / sqrt(2.0)); }

// Runs f and returns what it wrote on the standard error stream.
template <class Call> std::string complaints(Call f)
{
    testing::internal::CaptureStderr();
    f();
    return testing::internal::GetCapturedStderr();
}

} // namespace

TEST(Nrerror, WritesOneLineAndReturns)
{
    EXPECT_EQ(complaints([] { distrib::nrerror("Some text"); }), "Some text\n");
}

TEST(Gammln, GivesLogarithmsOfFactorialsAndHalfIntegers)
{
    double factorial = 1.0; // Gamma(n) = (n - 1)!
    for (int n = 1; n <= 20; factorial *= n++) EXPECT_NEAR(distrib::gammln(n), log(factorial), 1e-8) << n;
    EXPECT_NEAR(distrib::gammln(0.5), 0.5 * log(PI), 1e-8);
    EXPECT_NEAR(distrib::gammln(1.5), log(sqrt(PI) / 2.0), 1e-8);
}

TEST(Gammln, UsesTheSixGivenCoefficients)
{
    // The form at 1: x = 0, ser = 1 + sum of c / k.
    const double ser = 1.0 + 76.18009173 - 86.50532033 / 2.0 + 24.01409822 / 3.0 - 1.231739516 / 4.0 +
                       0.00120858003 / 5.0 - 5.36382e-06 / 6.0;
    EXPECT_DOUBLE_EQ(distrib::gammln(1.0), -(5.5 - 0.5 * log(5.5)) + log(2.50662827465 * ser));
}

TEST(Gser, GivesTheLowerIncompleteGammaAndTheLogarithmOfGamma)
{
    double out = -7.0, gln = -7.0;
    distrib::gser(&out, 1.0, 0.5, &gln); // P(1, x) = 1 - exp(-x)
    EXPECT_NEAR(out, 1.0 - exp(-0.5), SERIES);
    distrib::gser(&out, 3.0, 2.0, &gln);
    EXPECT_NEAR(out, 1.0 - chi2_even(6, 4.0), SERIES);
    EXPECT_NEAR(gln, log(2.0), 1e-8);
}

TEST(Gser, AnswersZeroAtZeroInSilence)
{
    double out = -7.0, gln = -7.0;
    EXPECT_EQ(complaints([&] { distrib::gser(&out, 1.0, 0.0, &gln); }), "");
    EXPECT_EQ(out, 0.0);
}

TEST(Gser, ComplainsBelowZeroAndAnswersZero)
{
    double out = -7.0, gln = -7.0;
    EXPECT_EQ(complaints([&] { distrib::gser(&out, 1.0, -1.0, &gln); }), "x less than 0 in routine GSER\n");
    EXPECT_EQ(out, 0.0);
    EXPECT_NEAR(gln, 0.0, 1e-8);
}

TEST(Gser, ComplainsAfterAHundredTermsAndLeavesTheResult)
{
    double out = -7.0, gln = -7.0;
    EXPECT_EQ(complaints([&] { distrib::gser(&out, 10000.0, 10000.0, &gln); }),
              "a too large, ITMAX too small in routine GSER\n");
    EXPECT_EQ(out, -7.0);
}

TEST(Gcf, GivesTheUpperIncompleteGamma)
{
    double out = -7.0, gln = -7.0;
    distrib::gcf(&out, 3.0, 8.0, &gln);
    EXPECT_NEAR(out, chi2_even(6, 16.0), SERIES * chi2_even(6, 16.0));
    EXPECT_NEAR(gln, log(2.0), 1e-8);
}

TEST(Gcf, LeavesTheResultInSilenceAfterAHundredRounds)
{
    double out = -7.0, gln = -7.0;
    EXPECT_EQ(complaints([&] { distrib::gcf(&out, 10000.0, 10001.0, &gln); }), "");
    EXPECT_EQ(out, -7.0);
}

TEST(Gcf, GoesOnWhenTheDenominatorIsZero)
{
    // a = 1, x = 0: every a1 is 0, so no round ever yields a value.
    double out = -7.0, gln = -7.0;
    distrib::gcf(&out, 1.0, 0.0, &gln);
    EXPECT_EQ(out, -7.0);
}

// x = a - 2: the first denominator x (x + 1 - a) + x is 0, the others are not. For half a by the
// recurrence Q(a + 1, x) = Q(a, x) + x^a exp(-x) / Gamma(a + 1) from Q(1/2, x) = erfc(sqrt x).
TEST(Gcf, GoesOnBehindOneDenominatorThatIsZero)
{
    for (double a : {3.5, 4.5, 5.5, 8.5}) {
        const double x = a - 2.0;
        double wanted = erfc(sqrt(x)), out = -7.0, gln = -7.0;
        for (double k = 0.5; k < a - 0.25; k += 1.0) wanted += pow(x, k) * exp(-x) / tgamma(k + 1.0);
        distrib::gcf(&out, a, x, &gln);
        EXPECT_NEAR(out, wanted, SERIES) << a;
    }
}

TEST(Gammp, ComplementsGammqOnBothSidesOfTheSwitch)
{
    for (double a : {0.5, 1.0, 2.5, 7.0, 20.0})
        for (double x : {0.1, 0.9 * a, a + 0.999, a + 1.0, 2.0 * a + 3.0})
            EXPECT_NEAR(distrib::gammp(a, x) + distrib::gammq(a, x), 1.0, 1e-12) << a << " " << x;
}

TEST(Gammp, TakesTheContinuedFractionFromAPlusOneOn)
{
    double series = 0.0, fraction = 0.0, gln;
    distrib::gser(&series, 2.0, 3.0, &gln);
    distrib::gcf(&fraction, 2.0, 3.0, &gln);
    ASSERT_NE(series, 1.0 - fraction); // the two differ in their last digits
    EXPECT_EQ(distrib::gammp(2.0, 3.0), 1.0 - fraction);
    EXPECT_EQ(distrib::gammq(2.0, 3.0), fraction);
    distrib::gser(&series, 2.0, 2.999, &gln);
    EXPECT_EQ(distrib::gammp(2.0, 2.999), series);
    EXPECT_EQ(distrib::gammq(2.0, 2.999), 1.0 - series);
}

TEST(Gammp, ComplainsOfBadArgumentsAndGoesOn)
{
    double p = -7.0;
    EXPECT_EQ(complaints([&] { p = distrib::gammp(1.0, -1.0); }),
              "Invalid arguments in routine GAMMP\nx less than 0 in routine GSER\n");
    EXPECT_EQ(p, 0.0);
    EXPECT_EQ(complaints([&] { distrib::gammp(0.0, 1.0); }), "Invalid arguments in routine GAMMP\n");
    EXPECT_EQ(complaints([&] { distrib::gammp(-0.5, 0.7); }), "Invalid arguments in routine GAMMP\n");
}

TEST(Gammq, IsOneAtZeroWithoutAMessage)
{
    double q = -7.0;
    EXPECT_EQ(complaints([&] { q = distrib::gammq(2.0, 0.0); }), "");
    EXPECT_EQ(q, 1.0);
}

TEST(Gammq, ComplainsBelowZeroTwiceAndIsOne)
{
    double q = -7.0;
    EXPECT_EQ(complaints([&] { q = distrib::gammq(2.0, -1.0); }),
              "Invalid arguments in routine GAMMQ\nx less than 0 in routine GSER\n");
    EXPECT_EQ(q, 1.0);
    EXPECT_EQ(complaints([&] { distrib::gammq(0.0, 1.0); }), "Invalid arguments in routine GAMMQ\n");
}

TEST(Gammq, IsDefinedWhenNeitherExpansionReachesItsAccuracy)
{
    double p = -7.0, q = -7.0;
    EXPECT_EQ(complaints([&] { q = distrib::gammq(10000.0, 10000.0); }),
              "a too large, ITMAX too small in routine GSER\n");
    EXPECT_EQ(q, 1.0); // the series left its 0
    EXPECT_EQ(complaints([&] { q = distrib::gammq(10000.0, 10001.0); }), "");
    EXPECT_EQ(q, 0.0); // the fraction left its 0
    p = distrib::gammp(10000.0, 10001.0);
    EXPECT_EQ(p, 1.0);
}

TEST(ErrorFunctions, AgreeWithTheCLibrary)
{
    for (double x : {-3.0, -1.3, -0.4, -1e-3, 1e-3, 0.2, 0.9, 1.5, 2.7}) {
        EXPECT_NEAR(distrib::erff(x), erf(x), SERIES) << x;
        EXPECT_NEAR(distrib::erffc(x), erfc(x), SERIES * erfc(x)) << x;
        EXPECT_NEAR(distrib::erfcc(x), erfc(x), 1.2e-7 * erfc(x)) << x; // its published error
    }
    EXPECT_EQ(distrib::erff(0.0), 0.0);
    EXPECT_EQ(distrib::erffc(0.0), 1.0);
}

TEST(Erfcc, UsesTheGivenExpansion)
{
    // At z = 2, t = 1/2: the polynomial by its powers.
    const double c[10] = {-1.26551223, 1.00002368,  0.37409196, 0.09678418,  -0.18628806,
                          0.27886807,  -1.13520398, 1.48851587, -0.82215223, 0.17087277};
    double poly = 0.0;
    for (int k = 0; k < 10; k++) poly += c[k] * pow(0.5, k);
    EXPECT_NEAR(distrib::erfcc(2.0), 0.5 * exp(-4.0 + poly), 1e-16);
    EXPECT_DOUBLE_EQ(distrib::erfcc(-2.0), 2.0 - distrib::erfcc(2.0));
}

TEST(Betai, EqualsTheBinomialSum)
{
    for (int a = 1; a <= 6; a++)
        for (int b = 1; b <= 6; b++)
            for (double x : {0.05, 0.3, 0.5, 0.77, 0.98})
                EXPECT_NEAR(distrib::betai(a, b, x), beta_whole(a, b, x), SERIES) << a << " " << b << " " << x;
}

TEST(Betai, IsZeroAtZeroAndOneAtOne)
{
    double low = -7.0, high = -7.0;
    EXPECT_EQ(complaints([&] { low = distrib::betai(2.0, 3.0, 0.0), high = distrib::betai(2.0, 3.0, 1.0); }), "");
    EXPECT_EQ(low, 0.0);
    EXPECT_EQ(high, 1.0);
}

TEST(Betai, ComplainsOutsideZeroToOneAndGoesOn)
{
    EXPECT_EQ(complaints([] { distrib::betai(2.0, 3.0, -0.1); }).find("Bad x in routine BETAI\n"), 0u);
    EXPECT_EQ(complaints([] { distrib::betai(2.0, 3.0, 1.1); }).find("Bad x in routine BETAI\n"), 0u);
}

TEST(Betacf, ComplainsAfterAHundredRoundsAndAnswersZero)
{
    double cf = -7.0;
    EXPECT_EQ(complaints([&] { cf = distrib::betacf(1e6, 1e6, 0.5); }),
              "a or b too big or ITMAX too small in routine BETACF\n");
    EXPECT_EQ(cf, 0.0);
}

TEST(Betacf, IsTheFractionOfTheIncompleteBeta)
{
    // I_x(1, b) = 1 - (1 - x)^b = x (1 - x)^b b * betacf.
    for (double x : {0.05, 0.2, 0.33}) {
        const double b = 3.0, i = 1.0 - pow(1.0 - x, b);
        EXPECT_NEAR(distrib::betacf(1.0, b, x), i / (x * pow(1.0 - x, b) * b), SERIES * 2.0);
    }
}

TEST(Normquant, StaysWithinItsPublishedErrorOfTheNormalPoint)
{
    for (double p : {0.5, 0.4, 0.25, 0.1, 0.025, 0.005, 1e-4, 1e-7})
        EXPECT_NEAR(distrib::normquant(p), point(normal_tail, p), 4.5e-4) << p;
    EXPECT_NEAR(distrib::normquant(0.025), 1.959964, 4.5e-4);
}

TEST(Normquant, IsTheGivenRationalFunction)
{
    const double p = 0.025, t = sqrt(-2.0 * log(p));
    const double wanted = t - (2.515517 + 0.802853 * t + 0.010328 * t * t) /
                                  (1.0 + 1.432788 * t + 0.189269 * t * t + 0.001308 * t * t * t);
    EXPECT_NEAR(distrib::normquant(p), wanted, 1e-14);
}

TEST(Studquant, FollowsStudentsPoints)
{
    // The expansion's next term falls with nu^-5; the rest is that of the normal point.
    EXPECT_NEAR(distrib::studquant(4, 0.05), point([](double t) { return student(4, t); }, 0.05), 3e-3);
    EXPECT_NEAR(distrib::studquant(4, 0.25), point([](double t) { return student(4, t); }, 0.25), 1e-3);
    EXPECT_NEAR(distrib::studquant(1000000, 0.025), distrib::normquant(0.025), 1e-5);
}

TEST(Studquant, IsTheGivenExpansion)
{
    const double x = distrib::normquant(0.1), v = 1.0 / 3.0;
    const double g1 = (pow(x, 3) + x) / 4.0;
    const double g2 = (5.0 * pow(x, 5) + 16.0 * pow(x, 3) + 3.0 * x) / 96.0;
    const double g3 = (3.0 * pow(x, 7) + 19.0 * pow(x, 5) + 17.0 * pow(x, 3) - 15.0 * x) / 384.0;
    const double g4 =
        (79.0 * pow(x, 9) + 776.0 * pow(x, 7) + 1482.0 * pow(x, 5) - 1920.0 * pow(x, 3) - 945.0 * x) / 92160.0;
    EXPECT_NEAR(distrib::studquant(3, 0.1), x + g1 * v + g2 * v * v + g3 * pow(v, 3) + g4 * pow(v, 4), 1e-13);
}

TEST(Tauquant, RefusesLevelsAboveOneHalfWhateverTheFreedom)
{
    for (int nu : {-1, 0, 1, 2, 3, 50}) EXPECT_EQ(distrib::tauquant(nu, 0.5000001), -1.0) << nu;
}

TEST(Tauquant, IsZeroBelowTwoDegreesOfFreedomAndForALevelThatIsNotPositive)
{
    EXPECT_EQ(distrib::tauquant(1, 0.025), 0.0);
    EXPECT_EQ(distrib::tauquant(0, 0.025), 0.0);
    EXPECT_EQ(distrib::tauquant(-3, 0.025), 0.0);
    EXPECT_EQ(distrib::tauquant(10, 0.0), 0.0);
    EXPECT_EQ(distrib::tauquant(10, -0.1), 0.0);
    EXPECT_EQ(distrib::tauquant(10, NAN), 0.0);
}

TEST(Tauquant, HasAnArcSineDistributionWithTwoDegreesOfFreedom)
{
    // tail(x) = acos(x / sqrt(2)) / pi
    for (double p : {0.4, 0.1, 0.025}) EXPECT_NEAR(distrib::tauquant(2, p), sqrt(2.0) * cos(PI * p), 1e-12);
    EXPECT_EQ(distrib::tauquant(2, 0.5), 0.0);
}

TEST(Tauquant, TransformsStudentsPointOfOneDegreeLess)
{
    const double t = distrib::studquant(4, 0.025);
    EXPECT_NEAR(distrib::tauquant(5, 0.025), sqrt(5.0) * t / sqrt(t * t + 4.0), 1e-14);
    const double t2 = distrib::studquant(2, 0.025); // the first of the general form
    EXPECT_NEAR(distrib::tauquant(3, 0.025), sqrt(3.0) * t2 / sqrt(t2 * t2 + 2.0), 1e-14);
}

TEST(Tauquant, ApproachesTheNormalPointWithManyDegreesOfFreedom)
{
    EXPECT_NEAR(distrib::tauquant(100000, 0.025), distrib::normquant(0.025), 1e-4);
}

TEST(Normtail, StaysWithinItsPublishedErrorOfTheNormalTail)
{
    for (double x = 0.0; x <= 6.0; x += 0.25) EXPECT_NEAR(distrib::normtail(x), normal_tail(x), 1.5e-7) << x;
    EXPECT_EQ(distrib::normtail(0.0), 0.5);
}

TEST(Normtail, IsTheGivenPolynomial)
{
    // At 1 the polynomial is the sum of the coefficients.
    const double poly = 1.0 + 0.049867347 + 0.0211410061 + 0.0032776263 + 3.80036e-05 + 4.88906e-05 + 5.383e-06;
    EXPECT_NEAR(distrib::normtail(1.0), 0.5 / pow(poly, 16.0), 1e-16);
}

TEST(Studtail, AgreesWithTheClosedForms)
{
    for (int nu = 1; nu <= 4; nu++)
        for (double t : {0.0, 0.3, 1.0, 2.5, 12.0})
            EXPECT_NEAR(distrib::studtail(nu, t), student(nu, t), SERIES) << nu << " " << t;
}

TEST(Chi2tail, AgreesWithThePoissonSumForEvenDegreesOfFreedom)
{
    for (int nu : {2, 4, 8, 20, 60})
        for (double q : {0.0, 0.2, 0.7, 1.0, 1.4, 2.5})
            EXPECT_NEAR(distrib::chi2tail(nu, q * nu), chi2_even(nu, q * nu), SERIES) << nu << " " << q;
}

TEST(Chi2tail, AgreesWithTheNormalTailsForOneDegreeOfFreedom)
{
    for (double x : {0.01, 0.5, 2.0, 3.0, 3.841, 10.0})
        EXPECT_NEAR(distrib::chi2tail(1, x), erfc(sqrt(x / 2.0)), SERIES) << x;
    EXPECT_NEAR(distrib::chi2tail(1, 3.841), 0.05, 1e-4);
}

TEST(Chi2tail, AgreesWithTheClosedFormForThreeDegreesOfFreedom)
{
    for (double x : {0.1, 1.0, 7.815})
        EXPECT_NEAR(distrib::chi2tail(3, x), erfc(sqrt(x / 2.0)) + sqrt(2.0 * x / PI) * exp(-x / 2.0), SERIES);
}

TEST(Ftail, AgreesWithTheBinomialSumForEvenDegreesOfFreedom)
{
    for (int n1 : {2, 4, 8})
        for (int n2 : {2, 6, 10})
            for (double f : {0.1, 1.0, 3.3})
                EXPECT_NEAR(distrib::ftail(n1, n2, f), beta_whole(n2 / 2, n1 / 2, n2 / (n1 * f + n2)), SERIES);
    EXPECT_NEAR(distrib::ftail(2, 2, 3.0), 0.25, SERIES); // 1 / (1 + f)
}
