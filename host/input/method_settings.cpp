// How a network is adjusted and tested: reductions, baselines, lumps, tests, the connected net.

#include "host/input/section.h"
#include "host/input/settings.h"

namespace vornhost {

// Horizontal distances belong into the plane: in space they would be compared with slopes.
void read_reductions(const toml::table &root, Network &net)
{
    project &p = net.model.p;
    static const Words reductions = {
        {"none", 0}, {"mark_to_mark", 1}, {"horizontal_mixed", 2}, {"horizontal_origin", 9}};
    Section section(root, "reductions", net.faults);
    p.iredux = section.word("distances", 0, reductions, true);
    net.model.between_marks = section.find("distances") && p.iredux == 0;
    if (net.model.crs.given() && p.iredux > 1)
        section.fault(*section.find("distances"),
                      section.name("distances") + " reduces distances without the grid of [crs]",
                      "leave it out: [crs] reduces them into its grid");
    net.stated.atmosphere = section.number("atmosphere", 0.0, any, "of ppm");
    net.stated.prism = section.number("prism", 0.0, sensible_length, "of lengths") * net.metres;
    if (p.dim == 3 && (p.iredux == 2 || p.iredux == 9))
        section.fault(*section.find("distances"),
                      section.name("distances") + " makes distances horizontal: only in the plane",
                      "write \"mark_to_mark\", or dimension = 2");
}

void read_methods(const toml::table &root, Network &net)
{
    project &p = net.model.p;
    static const Words rules = {{"plain", 2}, {"scale_and_orientation", 1}, {"translations_only", 9}, {"ignore", 0}};
    static const Words methods = {{"0", 0}, {"1", 1}, {"9", 9}};
    p.igps = Section(root, "baselines", net.faults).word("datum_rule", 1, rules);
    net.stated.baseline_factor =
        Section(root, "baselines", net.faults).number("sigma_factor", 1.0, above_zero, "above 0");
    if (!net.named[TABLE_BASELINES]) p.igps = 0;
    p.lumpmethod = Section(root, "lumps", net.faults).word("method", no_lump_method, methods, true);
    // Epochs that are compared after the adjustment are the engine's affair.
    if (p.lumpmethod == 9 && !Section(root, "run", net.faults).find("solver")) net.model.solver = Solver::Compact;
    p.iphoto = net.named[TABLE_IMAGES] ? 1 : 0;
}

// Tests and precision of the program's own adjustment; the engine has its own, at 95 %.
void read_tests(const toml::table &root, Network &net)
{
    static const Words tests = {{"baarda", (int)ObservationTest::baarda},
                                {"tau", (int)ObservationTest::tau},
                                {"b_method", (int)ObservationTest::b_method}};
    static const Words corrections = {{"none", 0}, {"sidak", 1}};
    static const Words factors = {{"a_posteriori", 0}, {"a_priori", 1}};
    constexpr int most_suspects = 1000;
    Section section(root, "tests", net.faults);
    TestSettings &t = net.model.tests;
    t.given = section.place().line > 0;
    t.test = (ObservationTest)section.word("test", (int)t.test, tests);
    t.level = section.number("level", t.level, sensible_level, "from 1e-12 to 0.5");
    t.power = section.number("power", t.power, between_0_and_1, "between 0 and 1");
    t.sidak = section.word("correction", 0, corrections) == 1;
    t.global_level = section.number("global_level", t.global_level, sensible_level, "from 1e-12 to 0.5");
    t.least_redundancy = section.number("least_redundancy", t.least_redundancy, from_0_below_1, "from 0 to below 1");
    t.confidence = section.number("confidence", 0.0, between_0_and_1, "between 0 and 1");
    t.a_priori = section.word("precision", 0, factors) == 1;
    t.suspects = section.whole("suspects", t.suspects, 0, most_suspects);
    if (t.power <= t.level)
        net.faults.add(section.place(), "power in [tests] is not above level", "write a power such as 0.80");
    if (t.test == ObservationTest::b_method && (t.sidak || section.find("global_level")))
        section.fault(*section.find(t.sidak ? "correction" : "global_level"),
                      "the B-method finds the level of the global test from that of one observation",
                      t.sidak ? "leave correction out" : "leave global_level out");
    if (t.given && net.model.solver != Solver::Sparse)
        net.faults.add(section.place(), "the solvers of the engine have tests of their own at 95 %",
                       "leave [tests] out, or choose the solver sparse");
}

void read_connected_net(const toml::table &root, Network &net)
{
    project &p = net.model.p;
    Section section(root, "connected_net", net.faults);
    const toml::node *node = section.find("file");
    const std::string written = section.text("file");
    if (!node || written.empty()) return;
    net.connected_net = true;
    copy_text(p.confile, sizeof p.confile,
              data_file(net.faults, net.model.path, written, place_of(node->source()), sizeof p.confile));
}

} // namespace vornhost
