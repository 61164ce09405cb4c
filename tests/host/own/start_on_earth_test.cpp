// What is said of first coordinates in space on the ellipsoid, which leave scale and curvature of the grid out.

#include <fstream>
#include <iterator>

#include "host/earth/reference.h"
#include "host/own/own_run.h"

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
