// Least absolute values in a network without datum: costs and limits of its stages, which count
// the rows of the conditions in some places and not in others.

#include <gtest/gtest.h>

#include <random>
#include <sstream>

#include "support/simplex_hand.h"

namespace {

// Exchanges listed behind a heading of a report, and the costs that their lines show.
std::vector<double> exchanges(const std::string &report, const std::string &heading)
{
    std::vector<double> costs;
    std::istringstream lines(report.substr(report.find(heading) + heading.size()));
    std::string line;
    while (std::getline(lines, line) && line.compare(0, 5, "iter ") == 0)
        costs.push_back(std::stod(line.substr(line.find("cost") + 4)));
    return costs;
}

int result_of(const Network &n, int phase)
{
    const std::string start = "end of of phase " + std::to_string(phase) + " with res=";
    for (const std::string &line : n.messages.lines)
        if (line.compare(0, start.size(), start) == 0) return std::stoi(line.substr(start.size()));
    return 0;
}

// Four free heights and seven differences with errors of any size and weights of their own.
struct Levelling {
    explicit Levelling(unsigned seed) : h(1)
    {
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> error(-1.0, 1.0), sigma(0.5, 2.0);
        for (const char *name : {"A", "B", "C", "D"}) h.add(name, 0, 0, error(random));
        const int ends[7][2] = {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {0, 2}, {1, 3}, {0, 1}};
        for (const auto &e : ends) h.observe(h.difh, e[0], e[1], error(random), sigma(random));
        simplex &s = h.solver(0, 1);
        code = s.iterate();
        report = h.n.report();
    }
    static constexpr size_t nunk = 4, nobs = 7, ndatum = 1;
    Hand h;
    int code = -99;
    std::string report;
};

} // namespace

// The row of the condition, the last one, counts like the others once the unknowns enter.
TEST(FreeNetwork, CountsItsConditionsInTheCostsOfTheUnknowns)
{
    Hand h(1);
    simplex &s = h.tableau(2, 2, 1);
    const double pd[3] = {4, 2, 1}, misclosure[3] = {3, 5, 7};
    for (int i = 0; i < 3; i++) {
        L1(s, newpd)[i] = pd[i];
        S(s, delta)[i] = misclosure[i];
        for (int j = 0; j < 2; j++) L1(s, a)[i][j] = 1 + 2 * i + j;
        L1(s, ibase)[i] = i; // unknowns: nothing leaves
    }
    L1(s, unknownstage)(3, 2);
    const double w[3] = {1, 0.5, 0.25}; // divided by the largest
    for (int i = 0; i < 3; i++) EXPECT_EQ(L1(s, newpd)[i], w[i]);
    for (int j = 0; j < 2; j++) EXPECT_EQ(L1(s, cost)[j], w[0] * (1 + j) + w[1] * (3 + j) + w[2] * (5 + j));
    EXPECT_EQ(L1(s, gcost), -(w[0] * 3 + w[1] * 5 + w[2] * 7));
    EXPECT_EQ(result_of(h.n, 1), -2);
}

// Conditions enter first, one exchange each, at no cost; then the other unknowns; then residuals
// are exchanged as often as there are more observations than unknowns, conditions not counted.
TEST(FreeNetwork, EndsItsStagesAtTheirNumbersOfExchanges)
{
    const size_t most = Levelling::nobs - Levelling::nunk;
    int ended = 0, limited = 0;
    for (unsigned seed = 1; seed <= 200; seed++) {
        const Levelling net(seed);
        ASSERT_EQ(net.code, 0);
        const auto first = exchanges(net.report, "\nSimplex loop for artificial variables\n");
        EXPECT_EQ(first, std::vector<double>(Levelling::ndatum, 0.0));
        EXPECT_EQ(result_of(net.h.n, 0), -3);
        EXPECT_EQ(exchanges(net.report, "\nSimplex loop first step\n").size(), Levelling::nunk - Levelling::ndatum);
        EXPECT_EQ(result_of(net.h.n, 1), -3);
        const size_t n = exchanges(net.report, "\nSimplex loop second step\n").size();
        ASSERT_EQ(result_of(net.h.n, 2), n == most ? -3 : -1) << seed << " " << n;
        ended += n < most;
        limited += n == most;
    }
    EXPECT_GT(ended, 0);
    EXPECT_GT(limited, 0);
}
