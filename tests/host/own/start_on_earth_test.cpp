// What is said of first coordinates in space on the ellipsoid, which leave scale and curvature of the grid out.

#include <fstream>
#include <iterator>
#include <utility>
#include <vector>

#include "host/earth/reference.h"
#include "host/own/own_run.h"
#include "host/own/road.h"
#include "host/own/start_words.h"
#include "host/run/silence.h"

namespace {

// The example, simulated without gross errors, with another text in the place of one.
SolvedNetwork example(const std::string &old, const std::string &changed)
{
    std::ifstream file(std::string(SOURCE_DIR) + "/examples/utm_space.inp");
    std::string text{std::istreambuf_iterator<char>(file), {}};
    const size_t at = text.find(old);
    EXPECT_NE(at, std::string::npos);
    return solve_text(text.replace(at, old.size(), changed));
}

size_t misfits(const SolvedNetwork &n)
{
    size_t count = 0;
    for (const std::string &note : n.results().notes)
        count += note.find("does not fit the others") != std::string::npos ||
                 note.find("standard deviations off") != std::string::npos ||
                 note.find("are rough") != std::string::npos;
    return count;
}

} // namespace

TEST(StartOnEarth, DoesNotTakeTheGridForErrors)
{
    if (!vornhost::has_proj()) GTEST_SKIP() << "built without PROJ";
    const SolvedNetwork n = example("1054.8069", "1054.8069");
    EXPECT_TRUE(n.adjusted()) << n.words();
    EXPECT_EQ(misfits(n), 0u);
}

TEST(StartOnEarth, TellsAReadingThatNoGridExplains)
{
    if (!vornhost::has_proj()) GTEST_SKIP() << "built without PROJ";
    const SolvedNetwork n = example("1054.8069", "1154.8069");
    EXPECT_TRUE(n.adjusted()) << n.words();
    ASSERT_EQ(misfits(n), 1u);
    for (const std::string &note : n.results().notes)
        if (note.find("does not fit") != std::string::npos) {
            EXPECT_NE(note.find("distance S1 to S2 does not fit the others: it reads 1154.807 m"), std::string::npos);
        }
}

// Words on a whole that does not fit are kept for what no grid explains: half as long again, with x and y exchanged.
TEST(StartOnEarth, TellsAWholeThatNoGridExplains)
{
    if (!vornhost::has_proj()) GTEST_SKIP() << "built without PROJ";
    vornhost::Model network;
    vornhost::Faults faults;
    ASSERT_TRUE(vornhost::read_network(std::string(SOURCE_DIR) + "/examples/utm_space.inp", network, faults));
    network.solver = Solver::Sparse;
    vornhost::Silence silence;
    vornhost::OwnOutcome own = vornhost::run_own(network, silence);
    ASSERT_TRUE(own.adjusted());
    vornhost::start::Start start;
    start.contradicts = true;
    start.scale = 80.0;
    start.rough = 30;
    EXPECT_TRUE(vornhost::start_notes(network, own.numbers, start).empty());
    std::vector<double> &x = own.numbers.model.value;
    for (size_t p = 0; p < 3 * (size_t)own.numbers.model.n_points; p += 3) {
        std::swap(x[p], x[p + 1]);
        for (size_t k = 0; k < 3; k++) x[p + k] *= 1.5;
    }
    EXPECT_EQ(vornhost::start_notes(network, own.numbers, start).size(), 2u);
}

// The coefficient of refraction is no length.
TEST(StartOnEarth, TellsAConstantThatDoesNotFitWithoutALength)
{
    if (!vornhost::has_proj()) GTEST_SKIP() << "built without PROJ";
    const SolvedNetwork n = example("[sigma]", "[units]\nangle = \"degree\"\n[sigma]");
    size_t constants = 0;
    for (const std::string &note : n.results().notes) {
        if (note.find("weighted constant") == std::string::npos) continue;
        EXPECT_EQ(note.find("it reads"), std::string::npos) << note;
        constants++;
    }
    EXPECT_GT(constants, 0u);
}
