// What is said of networks of lengths alone, which fit their mirror image as well.

#include "host/own/own_run.h"

namespace {

// A quadrilateral with both diagonals of sides 3, 4, 5, and tables more.
SolvedNetwork quadrilateral(const std::string &a, const std::string &b, const std::string &c,
                            const std::string &more = "")
{
    return solve_text("[run]\ndimension = 2\n[tables]\nstations = '''\nname x y code\nA " + a + "\nB " + b + "\nC " +
                      c +
                      "\nD - - free\n'''\ndistances = '''\nfrom to value sigma\nA B 300 0.003\nB C 400 0.003\n"
                      "C D 300 0.003\nD A 400 0.003\nA C 500 0.003\nB D 500 0.003\n'''\n" +
                      more);
}

bool speaks_of_an_image(const SolvedNetwork &n)
{
    for (const std::string &note : n.results().notes)
        if (note.find(
                "mirror image of the network fits the observations as well: give approximate coordinates of three "
                "points that do not lie on a line") != std::string::npos)
            return true;
    return false;
}

} // namespace

TEST(MirrorImage, IsSpokenOfWhereLengthsAloneTellTheShape)
{
    const SolvedNetwork free = quadrilateral("- - free", "- - free", "- - free");
    EXPECT_TRUE(free.adjusted()) << free.words();
    EXPECT_TRUE(speaks_of_an_image(free));
    const SolvedNetwork one = quadrilateral("0 0 fixed", "- - free", "- - free");
    EXPECT_TRUE(one.adjusted()) << one.words();
    EXPECT_TRUE(speaks_of_an_image(one));
}

TEST(MirrorImage, OfPointsBesideTwoFixedOnesIsRefused)
{
    const SolvedNetwork n = quadrilateral("0 0 fixed", "300 0 fixed", "- - free");
    EXPECT_FALSE(n.adjusted());
    EXPECT_NE(n.words().find("D fits in two places, 800.000 m apart"), std::string::npos) << n.words();
}

TEST(MirrorImage, IsNotSpokenOfWhereSomethingTellsTheSide)
{
    const SolvedNetwork approximate = quadrilateral("0 0 free", "299.5 1 free", "300 400 free");
    EXPECT_TRUE(approximate.adjusted()) << approximate.words();
    EXPECT_FALSE(speaks_of_an_image(approximate));
    const SolvedNetwork sighted = quadrilateral(
        "- - free", "- - free", "- - free", "directions = '''\nfrom to value sigma\nA B 0 0.001\nA D 100 0.001\n'''\n");
    EXPECT_TRUE(sighted.adjusted()) << sighted.words();
    EXPECT_FALSE(speaks_of_an_image(sighted));
}
