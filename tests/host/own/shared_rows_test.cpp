// Residuals that processes share, here as threads: what the first one fetches is what one machine makes.

#include "host/own/shared_rows.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "adjust/thread_ranks.h"
#include "host/own/collect.h"
#include "host/own/own_run.h"
#include "host/results/csv_writer.h"
#include "host/run/silence.h"

using namespace vornhost;

namespace {

// A residual of which every field says something, different from those of other numbers.
ResidualResult full(int n)
{
    ResidualResult r;
    const std::string number = std::to_string(n);
    r.kind = "kind " + number, r.component = "c" + number, r.unit = "u" + number;
    r.from = "a name that is longer than any room for short ones " + number, r.to = "to" + number;
    r.file = "file" + number, r.line = n;
    RowWords words;
    words.at = "at" + number, words.setup = "s" + number, words.set = "t" + number;
    words.id = "i" + number, words.remark = "wet, \"cold\" " + number;
    r.words = std::make_shared<const RowWords>(words);
    double next = n + 0.1;
    for (double *x : {&r.value, &r.sigma, &r.residual, &r.weight}) *x = next++ / 7;
    for (std::optional<double> *x : {&r.raw, &r.adjusted, &r.deviation, &r.redundancy, &r.normalised}) *x = next++ / 7;
    r.corrections = {{"ellipsoid", next / 7}, {"convergence", next / 9}};
    r.checked = n % 2 == 0;
    r.test = ObservationTestResult{next / 11, next / 13, next / 17, next / 19, n % 3 == 0};
    r.outside = n % 2 == 0, r.normal = n % 3 == 0, r.normal_divided = n % 5 == 0, r.tau = true, r.tau_divided = false;
    return r;
}

// All that tables say of residuals.
std::string tables(const Residuals &residuals)
{
    Results all;
    all.residuals = residuals;
    std::string text;
    for (const CsvTable &table : to_csv(all))
        if (table.name == "residuals.csv" || table.name == "reductions.csv") text += table.text;
    return text;
}

const char *const plan = R"([run]
dimension = 2
[tables]
stations = """
name x y code
A 0 0 fixed
B 300 10 free
C 310 290 free
D 5 305 free
E 150 160 free
"""
distances = """
from to value sigma id remark
A B 300.1686 0.003 1 first
B C 280.1805 0.003 2 -
C D 305.3690 0.003 3 -
D A 305.0390 0.003 4 -
A E 219.3190 0.003 5 -
B E 212.1290 0.003 6 -
C E 206.1540 0.003 7 -
D E 205.0600 0.003 8 -
A C 424.5010 0.003 9 -
B D 417.2230 0.003 10 last
"""
azimuths = """
from to value sigma
A B 2.1211 0.001
A E 51.9 0.5
"""
)";

struct Solved {
    Results results;
    size_t own = 0; // rows of the process
};

Solved solve_by(vornadjust::ThreadRanks *ranks)
{
    Model model;
    Faults faults;
    EXPECT_TRUE(read_network("net.inp", model, faults)) << (faults.lines().empty() ? "" : faults.lines()[0]);
    model.solver = Solver::Sparse;
    Silence silence;
    const auto own = std::make_shared<const OwnOutcome>(run_own(model, silence, false, {nullptr, nullptr, ranks}));
    if (ranks && own->ranks && ranks->own() > 0) serve_rows(ObservationResults(model, own), *own->ranks);
    Solved solved{collect_own(model, own, "test"), own->adjustment.statistics.rows.size()};
    solved.results.residuals.keep();
    if (ranks) ranks->dismiss();
    return solved;
}

void expect_near(const std::optional<double> &found, const std::optional<double> &wanted, double size)
{
    ASSERT_EQ(found.has_value(), wanted.has_value());
    if (wanted) {
        EXPECT_NEAR(*found, *wanted, 1e-9 * size);
    }
}

} // namespace

TEST(SharedRows, LoseNothingOnTheirWay)
{
    std::vector<ResidualResult> sent = {full(1), full(2), ResidualResult(), full(6)};
    std::vector<ResidualResult> block(5);
    unpack(packed(sent, {12, 14, 11, 10}), 10, &block);
    const Residuals wanted = {sent[3], sent[2], sent[0], ResidualResult(), sent[1]};
    Residuals found;
    for (const ResidualResult &r : block) found.push_back(r);
    EXPECT_EQ(tables(found), tables(wanted));
    EXPECT_EQ(block[0].weight, sent[3].weight);
    EXPECT_EQ(block[1].words, nullptr);
}

TEST(SharedRows, AreThoseOfOneMachine)
{
    const Folder folder;
    const InFolder inside(folder.path);
    folder.write("net.inp", plan);
    const Solved alone = solve_by(nullptr);
    ASSERT_TRUE(alone.results.adjusted) << alone.results.words.front();
    for (const int count : {2, 3}) {
        Solved shared;
        vornadjust::on_ranks(count, [&](vornadjust::ThreadRanks &ranks) {
            Solved solved = solve_by(&ranks);
            shared = std::move(solved);
        });
        const Results &a = shared.results, &b = alone.results;
        EXPECT_LT(shared.own, alone.own);
        ASSERT_TRUE(a.adjusted);
        ASSERT_EQ(a.residuals.size(), 12u);
        EXPECT_EQ(a.suspicious, b.suspicious);
        EXPECT_EQ(a.tests->tested, b.tests->tested);
        EXPECT_EQ(a.tests->unchecked, b.tests->unchecked);
        ASSERT_EQ(a.kinds.size(), b.kinds.size());
        for (size_t k = 0; k < a.kinds.size(); k++) {
            EXPECT_EQ(a.kinds[k].suspicious, b.kinds[k].suspicious);
            expect_near(a.kinds[k].sigma_aposteriori, b.kinds[k].sigma_aposteriori, 1.0);
        }
        for (size_t i = 0; i < a.residuals.size(); i++) {
            const ResidualResult &r = a.residuals[i], &s = b.residuals[i];
            EXPECT_EQ(r.kind + r.from + r.to + a.words_of(r).id + a.words_of(r).remark,
                      s.kind + s.from + s.to + b.words_of(s).id + b.words_of(s).remark);
            EXPECT_EQ(r.line, s.line);
            EXPECT_EQ(r.value, s.value);
            EXPECT_NEAR(r.residual, s.residual, 1e-9);
            expect_near(r.adjusted, s.adjusted, 400.0);
            expect_near(r.redundancy, s.redundancy, 1.0);
            expect_near(r.normalised, s.normalised, 10.0);
        }
    }
}
