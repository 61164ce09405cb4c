// What the report says of tests: of the variance factor, of observations, alone and together, of variance components.

#include "host/results/report_sections.h"
#include "host/results/test_rule.h"
#include "host/results/verdict.h"

namespace vornhost {

namespace {

// The two tests of the variance factor with the question that each answers.
std::string global_test(const VarianceTest &t)
{
    const auto line = [](const std::string &question, const std::string &range, double p, bool passed) {
        return question + "\n  sum of squares expected " + range + ", p " + probability_text(p) + ": " +
               (passed ? "yes" : "no") + "\n";
    };
    return "test of the variance factor at level " + level_text(t.level) + ", sum of squares " + decimal(t.squares, 2) +
           "\n" +
           line("Do the observations agree with their standard deviations, neither worse nor better?",
                "between " + decimal(t.lower, 2) + " and " + decimal(t.upper, 2), t.probability, t.passed()) +
           line("Are the observations at least as good as their standard deviations say?",
                "up to " + decimal(t.one_sided_limit, 2), t.one_sided_probability, t.one_sided_passed());
}

std::string observation_test(const TestsResult &t, int freedom)
{
    std::string text = t.words + ": ";
    if (!t.limit)
        return text + "no observation was tested" +
               (freedom == 1 ? ": with one degree of freedom every tau is 1\n" : "\n");
    return text + std::to_string(t.tested) + " tested, " + std::to_string(t.rejected) +
           " suspicious (normalised residual beyond " + decimal(*t.limit, 2) + "), " + std::to_string(t.unchecked) +
           " not checked (redundancy below " + level_text(t.least_redundancy) + ")\n";
}

} // namespace

std::string TextReport::tests() const
{
    if (!results.sigma_aposteriori && !results.tests) return {};
    std::string text = "\n" + underlined("Tests", '-');
    if (results.sigma_aposteriori)
        text += "sigma a priori " + decimal(results.sigma_apriori.value_or(1.0), 4) + ", a posteriori " +
                decimal(*results.sigma_aposteriori, 4) + "\n";
    if (results.variance_test) text += global_test(*results.variance_test);
    if (results.tests) text += observation_test(*results.tests, results.degrees_of_freedom.value_or(0));
    TextTable table({{"kind", "", Align::left},
                     {"a priori", ""},
                     {"a posteriori", ""},
                     {"goodness of fit", "", Align::left},
                     {"suspicious", ""},
                     {"not checked", ""}});
    for (const KindResult &k : results.kinds)
        table.add({k.kind, decimal(k.sigma_apriori, 4), decimal(k.sigma_aposteriori, 4),
                   k.goodness_of_fit ? (*k.goodness_of_fit ? "passed" : "failed") : "", std::to_string(k.suspicious),
                   std::to_string(k.unchecked)});
    return table.empty() ? text : text + "\n" + table.text();
}

// One block a suspect: table rows for those that cannot be told apart from it.
std::string TextReport::suspects() const
{
    if (results.suspects.empty()) return {};
    const size_t all = results.suspicious.size(), shown = results.suspects.size();
    std::string text = "\n" + underlined("Suspicious observations", '-');
    if (shown < all) text += "the worst " + std::to_string(shown) + " of " + std::to_string(all) + "\n";
    for (const SuspectResult &s : results.suspects) {
        const ResidualResult &r = results.residuals[s.residual];
        const double sign = r.kind == "vertical angle" ? units.vertical_sign() : 1.0;
        text += residual_name(results, r) + "\n  normalised residual " + decimal(sign * r.normalised.value_or(0.0), 2) +
                "; reads " + value(r, r.raw.value_or(r.value)) + ", would have to read " + value(r, s.would_read) +
                " " + kind_unit(r, false) + ", off by " + small(r, sign * s.error) + " " + kind_unit(r, true) + "\n";
        if (!s.point.empty())
            text += "  moves " + s.point + " by " + units.small_length(s.shift) + " " + units.small_length_name() +
                    ", most of all points\n";
        for (const AlikeResult &a : s.alike)
            text += "  not told apart from " + residual_name(results, results.residuals[a.residual]) +
                    ", correlation of tests " + decimal(a.correlation, 3) + "\n";
    }
    return text;
}

// Components tested together, those rejected; all where the report is not brief.
std::string TextReport::together() const
{
    TextTable table({{"from", "", Align::left},
                     {"to", "", Align::left},
                     {"components", ""},
                     {"rank", ""},
                     {"squares", ""},
                     {"p", ""},
                     {"", "", Align::left},
                     {"place", "", Align::left}});
    for (const JointTestResult &t : results.joint_tests) {
        if (brief && !t.rejected) continue;
        const ResidualResult &r = results.residuals[t.first];
        table.add({r.from, r.to, std::to_string(t.components), std::to_string(t.rank), decimal(t.squares, 2),
                   t.probability ? probability_text(*t.probability) : "",
                   t.rejected    ? "suspicious"
                   : t.rank == 0 ? "not checked"
                                 : "",
                   r.file + ":" + std::to_string(r.line)});
    }
    return section("Components tested together", table);
}

std::string TextReport::components() const
{
    TextTable table({{"observations", "", Align::left},
                     {"number", ""},
                     {"redundancy", ""},
                     {"factor", ""},
                     {"standard deviation", ""},
                     {"sigma", ""},
                     {"proposed", ""},
                     {"", "", Align::left},
                     {"", "", Align::left}});
    for (const ComponentResult &c : results.components) {
        const auto shown = [&](double x) {
            return c.unit == "m" ? units.small_length(x) : c.unit == "rad" ? units.small_angle(x) : decimal(x, 3);
        };
        const std::string unit = c.unit == "m"     ? units.small_length_name()
                                 : c.unit == "rad" ? units.small_angle_name()
                                                   : c.unit;
        table.add({c.name, std::to_string(c.rows), decimal(c.redundancy, 1), c.factor ? decimal(*c.factor, 3) : "",
                   c.deviation ? decimal(*c.deviation, 3) : "", c.sigma ? shown(*c.sigma) : "",
                   c.sigma && c.factor ? shown(*c.sigma * *c.factor) : "", c.sigma ? unit : "",
                   !c.factor      ? "too little redundancy"
                   : !c.deviation ? "not told apart from others"
                   : c.used       ? "used"
                                  : ""});
    }
    return section("Variance components: factors of the standard deviations", table);
}

} // namespace vornhost
