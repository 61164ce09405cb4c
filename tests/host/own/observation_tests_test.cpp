// Tests of observations, suspects, snooping and derived quantities through whole runs, against what can be worked out
// by hand.

#include <algorithm>
#include <cmath>

#include "host/own/own_run.h"
#include "host/results/json_writer.h"
#include "host/results/test_limits.h"
#include "host/results/text_report.h"
#include "host/results/verdict.h"

using namespace vornhost;

namespace {

// n times the height of B above A, the last one off by so many metres; sigma 10 mm.
std::string repeated(int n, double off, const std::string &tests = "")
{
    std::string text = "[run]\ndimension = 1\n" + tests +
                       "[tables]\ntargets = '''\nname z code\nA 100 fixed\nB 101 free\n'''\n"
                       "height_differences = '''\nfrom to value sigma\n";
    for (int i = 0; i + 1 < n; i++) text += "A B 1.0 0.01\n";
    return text + "A B " + std::to_string(1.0 + off) + " 0.01\n'''\n";
}

const ResidualResult &last(const SolvedNetwork &s) { return s.results().residuals.back(); }

bool near(double x, double y, double relative = 1e-9) { return std::fabs(x - y) <= relative * std::fabs(y); }

const double delta = std::sqrt(noncentrality(0.001, 0.80, 1));

} // namespace

// A mean of n has the redundancy 1 - 1/n; an undetected bias moves B by an nth of it.
TEST(ObservationTests, OfAMeanAreWhatOneWorksOutByHand)
{
    for (const int n : {2, 5, 20}) {
        const SolvedNetwork s = solve_text(repeated(n, 0.05));
        ASSERT_TRUE(s.adjusted()) << s.words();
        const double r = 1.0 - 1.0 / n, v = 0.05 * r, w = v / (0.01 * std::sqrt(r));
        const ResidualResult &o = last(s);
        ASSERT_TRUE(o.test && o.test->probability && o.checked);
        EXPECT_TRUE(*o.checked);
        EXPECT_TRUE(near(o.normalised.value(), w)) << *o.normalised;
        EXPECT_NEAR(*o.test->probability, std::erfc(w / std::sqrt(2.0)), 1e-9);
        EXPECT_TRUE(near(o.test->detectable, delta * 0.01 / std::sqrt(r)));
        EXPECT_TRUE(near(o.test->bias_to_noise, delta * std::sqrt((1 - r) / r)));
        EXPECT_TRUE(near(o.test->shift, o.test->detectable / n));
        EXPECT_EQ(o.test->rejected, w > 3.2905);
    }
}

TEST(ObservationTests, AnswerBothQuestionsOfTheVarianceFactor)
{
    const SolvedNetwork s = solve_text(repeated(3, 0.05)); // f = 2: chi-square is exponential
    const VarianceTest &t = s.results().variance_test.value();
    const double squares = 25.0 * 2.0 / 3.0;
    EXPECT_TRUE(near(t.squares, squares));
    EXPECT_NEAR(t.lower, -2 * std::log(0.975), 1e-9);
    EXPECT_NEAR(t.upper, -2 * std::log(0.025), 1e-9);
    EXPECT_NEAR(t.one_sided_limit, -2 * std::log(0.05), 1e-9);
    EXPECT_NEAR(t.one_sided_probability, std::exp(-squares / 2), 1e-12);
    EXPECT_NEAR(t.probability, 2 * std::exp(-squares / 2), 1e-12);
    EXPECT_FALSE(t.passed() || t.one_sided_passed());
}

TEST(ObservationTests, TakeTheirLevelsFromTheFile)
{
    const std::string tests = "[tests]\nlevel = 0.05\npower = 0.9\nglobal_level = 0.01\n";
    const SolvedNetwork s = solve_text(repeated(5, 0.02, tests));
    const TestsResult &t = s.results().tests.value();
    EXPECT_NEAR(t.limit.value(), 1.959964, 1e-6);
    EXPECT_EQ(s.results().variance_test->level, 0.01);
    EXPECT_NEAR(last(s).test->detectable / 0.01 * std::sqrt(0.8), 1.959964 + 1.281552, 1e-3);
    const SolvedNetwork sidak = solve_text(repeated(5, 0.02, "[tests]\nlevel = 0.05\ncorrection = \"sidak\"\n"));
    EXPECT_NEAR(sidak.results().tests->single_level, 1 - std::pow(0.95, 0.2), 1e-12);
    EXPECT_NEAR(*last(sidak).test->probability, 1 - std::pow(1 - *last(s).test->probability, 5), 1e-12);
}

// f = 4: tau of the last one is its normalised residual by sigma; t of three degrees has a closed distribution.
TEST(ObservationTests, TauTakesSigmaFromTheAdjustment)
{
    std::string text = repeated(5, 0.02, "[tests]\ntest = \"tau\"\nlevel = 0.05\n");
    text.replace(text.find("A B 1.0 0.01"), 12, "A B 1.004 0.01");
    const SolvedNetwork s = solve_text(text);
    const double tau = last(s).normalised.value() / s.results().sigma_aposteriori.value(), f = 4;
    const double t = std::fabs(tau) * std::sqrt((f - 1) / (f - tau * tau)), x = t / std::sqrt(3.0);
    const double p = 1 - 2 / std::acos(-1.0) * (x / (1 + x * x) + std::atan(x));
    EXPECT_NEAR(last(s).test->probability.value(), p, 1e-9);
    EXPECT_EQ(last(s).test->rejected, p < 0.05);
}

TEST(ObservationTests, ThereIsNoTauAtOneDegreeOfFreedom)
{
    const SolvedNetwork s = solve_text(repeated(2, 0.5, "[tests]\ntest = \"tau\"\n"));
    EXPECT_FALSE(last(s).test);
    EXPECT_EQ(s.results().tests->tested, 0);
    EXPECT_EQ(verdict(s.results())[1], "No observation was tested.");
}

TEST(ObservationTests, TheBMethodPrintsBothLevels)
{
    const SolvedNetwork s = solve_text(repeated(5, 0.02, "[tests]\ntest = \"b_method\"\n"));
    const double level = level_of_same_power(noncentrality(0.001, 0.80, 1), 0.80, 4);
    EXPECT_TRUE(near(s.results().variance_test->level, level));
    char text[40];
    snprintf(text, sizeof text, "%.3g", level);
    EXPECT_NE(
        s.report.find("Baarda's test at level 0.001, of the variance factor at " + std::string(text) + " (B-method)"),
        std::string::npos)
        << s.report;
}

// C hangs on one line: nothing checks it, and its error is no one's to find.
TEST(ObservationTests, SayWhatIsNotChecked)
{
    std::string text = repeated(3, 0.0);
    text.replace(text.find("B 101 free"), 10, "B 101 free\nC 102 free");
    text.insert(text.rfind("'''"), "B C 1.0 0.01\n");
    const SolvedNetwork s = solve_text(text);
    ASSERT_TRUE(s.adjusted()) << s.words();
    EXPECT_EQ(last(s).checked, false);
    EXPECT_FALSE(last(s).test);
    EXPECT_EQ(s.results().tests->unchecked, 1);
    EXPECT_EQ(s.results().tests->tested, 3);
    EXPECT_EQ(verdict(s.results())[2],
              "1 of 4 observations is not checked by others: height difference B to C (net.inp:15).");
    EXPECT_NE(s.report.find("not checked  net.inp:15"), std::string::npos) << s.report;
}

TEST(ObservationTests, FindTheSuspectAndWhatItWouldHaveToRead)
{
    const SolvedNetwork s = solve_text(repeated(5, 0.5));
    ASSERT_EQ(s.results().suspects.size(), 5u); // the error spreads into the others
    const SuspectResult &worst = s.results().suspects[0];
    EXPECT_EQ(s.results().residuals[worst.residual].line, last(s).line);
    EXPECT_NEAR(worst.error, 0.5, 1e-9);
    EXPECT_NEAR(worst.would_read, 1.0, 1e-9);
    EXPECT_NEAR(worst.shift, 0.1, 1e-9);
    EXPECT_EQ(worst.point, "B");
    EXPECT_TRUE(worst.alike.empty()); // correlation 1/4
    EXPECT_NE(s.report.find("reads 1.50000, would have to read 1.00000 m, off by 500.00 mm"), std::string::npos)
        << s.report;
    const SolvedNetwork none = solve_text(repeated(5, 0.5, "[tests]\nsuspects = 0\n"));
    EXPECT_TRUE(none.results().suspects.empty());
    EXPECT_EQ(none.results().suspicious.size(), 5u);
}

TEST(ObservationTests, TwoThatContradictOneAnotherAreNotToldApart)
{
    const SolvedNetwork s = solve_text(repeated(2, 0.5));
    ASSERT_EQ(s.results().suspects.size(), 2u);
    ASSERT_EQ(s.results().suspects[0].alike.size(), 1u);
    EXPECT_NEAR(std::fabs(s.results().suspects[0].alike[0].correlation), 1.0, 1e-9);
    EXPECT_NE(s.report.find("  not told apart from height difference A to B (net.inp:"), std::string::npos);
}

TEST(ObservationTests, PrecisionAPrioriIsThatOfTheFile)
{
    const SolvedNetwork s = solve_text(repeated(4, 0.5, "[tests]\nprecision = \"a_priori\"\n"));
    EXPECT_TRUE(near(s.point("B").deviation[2].value(), 0.005));
    EXPECT_TRUE(s.results().precision->a_priori);
    EXPECT_NE(s.report.find("precision  a priori"), std::string::npos) << s.report;
    const SolvedNetwork other = solve_text(repeated(4, 0.5));
    EXPECT_TRUE(near(other.point("B").deviation[2].value(), 0.005 * other.results().sigma_aposteriori.value()));
    EXPECT_TRUE(near(other.point("B").uncertainty.value(), 1.959964 * other.point("B").deviation[2].value(), 1e-6));
}

TEST(ObservationTests, SettingsThatCannotHoldAreRefused)
{
    const auto first = [](const std::string &tests) {
        const Lines lines = faults_of(repeated(3, 0.0, tests));
        return lines.empty() ? std::string() : lines[0];
    };
    EXPECT_EQ(first("[tests]\nlevel = 0.6\n"),
              "net.inp:4:9: level in [tests] is not a number from 1e-12 to 0.5; write a number from 1e-12 to 0.5");
    EXPECT_EQ(first("[tests]\nlevel = nan\n").find("net.inp:4:9: level in [tests] is not a number"), 0u);
    EXPECT_EQ(first("[tests]\ntest = \"w\"\n").find("net.inp:4:8: \"w\" is not known for test in [tests]"), 0u);
    EXPECT_EQ(first("[tests]\nlevel = 0.5\npower = 0.4\n"),
              "net.inp:3:1: power in [tests] is not above level; write a power such as 0.80");
    EXPECT_EQ(first("[tests]\ntest = \"b_method\"\ncorrection = \"sidak\"\n"),
              "net.inp:5:14: the B-method finds the level of the global test from that of one observation; leave "
              "correction out");
    std::string engine = repeated(3, 0.0, "[tests]\nlevel = 0.01\n");
    engine.insert(engine.find("dimension"), "solver = \"compact\"\n");
    EXPECT_EQ(faults_of(engine)[0], "net.inp:4:1: the solvers of the engine have tests of their own at 95 %; leave "
                                    "[tests] out, or choose the solver sparse");
}

namespace {

// Three baselines of A-B, of which the second is off along no axis alone; covariances of 1 cm.
const char baselines[] =
    "[run]\ndimension = 3\n[tables]\ntargets = '''\nname x y z code\nA 0 0 0 fixed\nB 100 0 0 free\n'''\n"
    "baselines = '''\nfrom to dx dy dz cxx cyy czz cxy\nA B 100 0 0 1e-4 1e-4 1e-4 5e-5\n"
    "A B 100.02 0.02 0.02 1e-4 1e-4 1e-4 5e-5\nA B 100 0 0 1e-4 1e-4 1e-4 5e-5\n'''\n";

} // namespace

// Of three equal baselines each has Qvv = 2/3 S: T = v' S^-1 v / (2/3), with v = 2/3 of the error.
TEST(ObservationTests, TestBaselinesByTheirComponentsTogether)
{
    const SolvedNetwork s = solve_text(baselines);
    ASSERT_TRUE(s.adjusted()) << s.words();
    ASSERT_EQ(s.results().joint_tests.size(), 3u);
    const JointTestResult &t = s.results().joint_tests[1];
    const double e = 0.02, own = 2 * e * e / 1.5e-4 + e * e / 1e-4; // e' S^-1 e
    EXPECT_EQ(t.components, 3);
    EXPECT_EQ(t.rank, 3);
    EXPECT_EQ(s.results().residuals[t.first].line, 12);
    EXPECT_NEAR(t.squares, own * 2.0 / 3.0, 1e-6);
    EXPECT_NEAR(t.probability.value(), chi_square_above(own * 2.0 / 3.0, 3), 1e-9);
    // normalised residuals of correlated components: e'Pv by the root of e'PQvvPe
    const double pv = 2.0 / 3.0 * e / 1.5e-4, pp = 1e-4 / 0.75e-8 * 2.0 / 3.0;
    EXPECT_NEAR(s.results().residuals[3].normalised.value(), pv / std::sqrt(pp), 1e-6);
}

TEST(ObservationTests, SnoopingLeavesOutTellsAndAccounts)
{
    const Folder folder;
    const InFolder inside(folder.path);
    std::string text = repeated(6, 0.5);
    text.replace(text.find("A B 1.0 0.01"), 12, "A B 1.3 0.01");
    folder.write("net.inp", text);
    Model model;
    Faults faults;
    ASSERT_TRUE(read_network("net.inp", model, faults));
    model.tests.snoop = true;
    const SolvedNetwork s = solve(model);
    ASSERT_TRUE(s.adjusted()) << s.words();
    const Results &r = s.results();
    ASSERT_EQ(r.snooping.size(), 2u);
    EXPECT_EQ(r.snooping[0].line, 16);
    EXPECT_EQ(r.snooping[1].line, 11);
    EXPECT_NEAR(s.point("B").adjusted[2].value(), 101.0, 1e-12);
    EXPECT_EQ(r.degrees_of_freedom, 3);
    ASSERT_EQ(r.accounts[0].left_out.size(), 2u);
    EXPECT_EQ(r.accounts[0].used, 4);
    EXPECT_EQ(r.accounts[0].left_out[0].reason.find("left out by its test: normalised residual "), 0u);
    EXPECT_TRUE(std::any_of(r.notes.begin(), r.notes.end(), [](const std::string &note) {
        return note.find("net.inp:16: height difference A to B: left out, normalised residual ") == 0;
    }));
    EXPECT_EQ(verdict(r)[1], "No observation is suspicious.");
    EXPECT_NE(to_json(r).find("\"snooping\""), std::string::npos);
    EXPECT_NE(s.report.find("Left out by the tests, step by step"), std::string::npos);
}

// Beyond the engine's limit for the largest of all (5 % divided by the number), within that of Baarda's test.
TEST(ObservationTests, AreWhatTheVerdictGoesBy)
{
    Model model;
    Faults faults;
    ASSERT_TRUE(read_network(SOURCE_DIR "/examples/grossmann_directions.inp", model, faults));
    const SolvedNetwork s = solve(model);
    ASSERT_TRUE(s.adjusted()) << s.words();
    const Results &r = s.results();
    const auto doubtful = [](const ResidualResult &one) { return one.normal_divided.value_or(false); };
    ASSERT_TRUE(std::any_of(r.residuals.begin(), r.residuals.end(), doubtful));
    ASSERT_TRUE(r.suspicious.empty());
    EXPECT_EQ(verdict(r)[1], "No observation is suspicious.");
}

// A right triangle of 30, 40, 50 m with coordinates that are known to 10 and 20 mm.
TEST(ObservationTests, DerivedQuantitiesHaveTheStandardDeviationsOfErrorPropagation)
{
    const SolvedNetwork s = solve_text(
        "[run]\ndimension = 2\n[tests]\nprecision = \"a_priori\"\n[tables]\ntargets = '''\nname x y code\nA 0 0 fixed\n"
        "B 30 40 free\nC 30 0 fixed\n'''\ncoordinates = '''\nname x y sx sy\nB 30 40 0.01 0.02\n'''\n"
        "derived = '''\nkind from to at\ndistance A B -\nbearing A B -\nangle C B A\nhorizontal_distance B C -\n'''\n");
    ASSERT_TRUE(s.adjusted()) << s.words();
    const std::vector<DerivedResult> &d = s.results().derived;
    ASSERT_EQ(d.size(), 4u);
    const double angle = std::atan2(40, 30);
    const double along = std::hypot(0.6 * 0.01, 0.8 * 0.02), across = std::hypot(0.8 * 0.01, 0.6 * 0.02) / 50;
    EXPECT_NEAR(d[0].value, 50, 1e-12);
    EXPECT_NEAR(d[0].deviation.value(), along, 1e-12);
    EXPECT_NEAR(d[1].value, angle, 1e-12);
    EXPECT_NEAR(d[1].deviation.value(), across, 1e-12);
    EXPECT_EQ(d[2].at, "A");
    EXPECT_NEAR(d[2].value, angle, 1e-12); // from C, along x, to B
    EXPECT_NEAR(d[2].deviation.value(), across, 1e-12);
    EXPECT_NEAR(d[3].value, 40, 1e-12);
    EXPECT_NEAR(d[3].deviation.value(), 0.02, 1e-12);
    EXPECT_NE(s.report.find("Derived quantities"), std::string::npos);
}

TEST(ObservationTests, DerivedQuantitiesThatHaveNoMeaningAreRefused)
{
    const std::string head =
        "[run]\ndimension = 1\n[tables]\ntargets = '''\nname z code\nA 1 fixed\nB 2 free\n'''\n"
        "height_differences = '''\nfrom to value sigma\nA B 1 0.01\n'''\nderived = '''\nkind from to at\n";
    EXPECT_EQ(faults_of(head + "distance A B -\n'''\n")[0],
              "net.inp:15:1: \"distance\" in column kind has no meaning in dimension 1; write height_difference");
    EXPECT_EQ(faults_of(head + "height_difference A A -\n'''\n")[0],
              "net.inp:15:21: points of a derived quantity are the same; name different points");
    EXPECT_EQ(faults_of(head + "height_difference A B A\n'''\n")[0],
              "net.inp:15:23: only an angle has a point at; leave the cell empty: -");
    EXPECT_TRUE(faults_of(head + "height_difference A B -\n'''\n").empty());
}

// P is known to 10 and 20 mm: 95 % of normal numbers with these lie within the circle, by simulation 41.4 mm.
TEST(ObservationTests, TheUncertaintyOfAPointIsACircle)
{
    const SolvedNetwork s = solve_text("[run]\ndimension = 2\n[tests]\nconfidence = 0.95\n[tables]\ntargets = '''\n"
                                       "name x y code\nA 0 0 fixed\nB 30 40 free\n'''\ncoordinates = '''\nname x y sx "
                                       "sy\nB 30 40 0.01 0.02\n'''\n");
    ASSERT_TRUE(s.adjusted()) << s.words();
    const double radius = s.point("B").uncertainty.value();
    // P(x^2 + y^2 > R^2): mean over the angle of exp(-R^2 (cos^2 / 2a^2 + sin^2 / 2b^2)) by the density in polar form
    double inside = 0;
    const int n = 2000;
    const double pi = std::acos(-1.0), a = 0.01, b = 0.02;
    for (int i = 0; i < n; i++) {
        const double t = 2 * pi * (i + 0.5) / n, c = std::cos(t) / a, d = std::sin(t) / b, h = c * c + d * d;
        inside += (1 - std::exp(-0.5 * radius * radius * h)) / h / (2 * pi * a * b) * 2 * pi / n;
    }
    EXPECT_NEAR(inside, 0.95, 0.001);
    EXPECT_NEAR(s.results().precision->ellipse_factor, std::sqrt(-2 * std::log(0.05)), 1e-9); // no redundancy: a priori
}
