// Residuals that are made while somebody goes through them, beside a list of the same.

#include "host/results/residuals.h"

#include <gtest/gtest.h>
#include <stdio.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/own/own_run.h"
#include "host/results/csv_writer.h"
#include "host/results/json_writer.h"
#include "host/results/verdict.h"

using namespace vornhost;

namespace {

const size_t many = 20000; // more than two blocks

ResidualResult numbered(size_t i)
{
    ResidualResult r;
    r.value = (double)i;
    r.from = "P" + std::to_string(i);
    return r;
}

// Made on demand; `made` counts them.
Residuals on_demand(size_t *made)
{
    return {many, [made](size_t first, size_t count) {
                std::vector<ResidualResult> block;
                for (size_t i = first; i < first + count; i++) block.push_back(numbered(i));
                *made += count;
                return block;
            }};
}

const char *const levelled = R"([run]
dimension = 1
[tables]
targets = """
name z code
A 1.0 fixed
B 2.0 free
C 3.0 free
"""
height_differences = """
from to value sigma id remark
A B 1.001 0.001 17 wet
B C 1.000 0.001 18 dry
C A -2.004 0.002 19 dry
A C 2.060 0.001 20 dry
"""
)";

// All that is written of a network: JSON, tables and the verdict.
std::string written(const NetworkRun &run)
{
    Results timeless = run.results;
    timeless.seconds = 0;
    std::string all = to_json(timeless);
    for (const CsvTable &table : to_csv(run.results)) all += table.text;
    for (const std::string &line : verdict(run.results)) all += line;
    return all;
}

} // namespace

TEST(Residuals, ComeEachOnceInTheirOrderWhenMadeInBlocks)
{
    size_t made = 0, next = 0;
    const Residuals all = on_demand(&made);
    ASSERT_EQ(all.size(), many);
    for (const ResidualResult &r : all) ASSERT_EQ(r.value, (double)next++);
    EXPECT_EQ(next, many);
    EXPECT_EQ(made, many);
}

TEST(Residuals, StayWhereTheyAreWhenAskedForOneByOne)
{
    size_t made = 0;
    const Residuals all = on_demand(&made);
    const ResidualResult &first = all[7], &last = all[many - 1];
    for (size_t i = 0; i < many; i += 1000) EXPECT_EQ(all[i].from, "P" + std::to_string(i));
    EXPECT_EQ(&first, &all[7]);
    EXPECT_EQ(first.from, "P7");
    EXPECT_EQ(last.from, "P" + std::to_string(many - 1));
    EXPECT_LT(made, many / 4);
}

TEST(Residuals, BecomeAListThatNeedsNothingElse)
{
    size_t made = 0;
    Residuals all = on_demand(&made);
    all.keep();
    ASSERT_EQ(made, many);
    ASSERT_EQ(all.size(), many);
    for (size_t i = 0; i < many; i++) ASSERT_EQ(std::as_const(all)[i].value, (double)i);
    EXPECT_EQ(made, many);
}

TEST(Residuals, OfARunAreWrittenAlikeKeptAndOnDemand)
{
    const Folder folder;
    const InFolder inside(folder.path);
    folder.write("net.inp", levelled);
    std::string texts[2];
    for (const Rows rows : {Rows::kept, Rows::on_demand}) {
        Model model;
        Faults faults;
        ASSERT_TRUE(read_network("net.inp", model, faults));
        model.solver = Solver::Sparse;
        Recorder messages;
        const std::unique_ptr<FILE, int (*)(FILE *)> report(tmpfile(), fclose);
        const NetworkRun run = run_network(model, report.get(), messages, "test", {}, rows);
        ASSERT_TRUE(run.results.adjusted);
        ASSERT_EQ(run.results.residuals.size(), 4u);
        texts[rows == Rows::kept] = written(run);
    }
    EXPECT_NE(texts[0].find("suspicious"), std::string::npos);
    EXPECT_NE(texts[0].find("wet"), std::string::npos);
    EXPECT_EQ(texts[0], texts[1]);
}
