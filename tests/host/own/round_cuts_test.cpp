// Simulated stands whose circle was turned between the rounds while many targets are missing in them: readings under
// one orientation must have been read under one zero.

#include <cmath>
#include <cstdio>
#include <random>

#include "host/input/network_file.h"
#include "host/own/own_run.h"
#include "host/own/rounds.h"

namespace {

struct Stand {
    std::string rows;
    std::vector<int> round; // of each reading
};

// Targets keep their order in all rounds; each is missing with this probability, at least three are there.
Stand simulated(unsigned seed, double missing, bool wrong)
{
    std::mt19937 random(seed);
    const auto uniform = [&](double a, double b) { return std::uniform_real_distribution<double>(a, b)(random); };
    const int targets = 5 + (int)(random() % 6), rounds = 2 + (int)(random() % 4);
    std::vector<double> bearing;
    for (int t = 0; t < targets; t++) bearing.push_back(400.0 * (t + uniform(0.1, 0.9)) / targets);
    Stand stand;
    for (int r = 0; r < rounds; r++) {
        const double zero = 400.0 * r / rounds + uniform(0, 5);
        std::vector<int> there;
        while (there.size() < 3) {
            there.clear();
            for (int t = 0; t < targets; t++)
                if (uniform(0, 1) >= missing) there.push_back(t);
        }
        const int off = wrong && r == 1 ? (int)(random() % there.size()) : -1;
        for (size_t i = 0; i < there.size(); i++) {
            char row[80];
            const double value =
                bearing[(size_t)there[i]] + zero + uniform(-0.001, 0.001) + ((int)i == off ? 3.0 : 0.0);
            std::snprintf(row, sizeof row, "S T%d %.4f 0.001\n", there[i], std::fmod(value, 400.0));
            stand.rows += row;
            stand.round.push_back(r);
        }
    }
    return stand;
}

// Whether readings of different rounds share an orientation.
bool confused(const Stand &stand)
{
    const Folder folder;
    std::string text = "[run]\ndimension = 2\n[tables]\nstations = '''\nname x y code\nS 0 0 fixed\n'''\n"
                       "targets = '''\nname x y code\n";
    for (int t = 0; t < 11; t++) text += "T" + std::to_string(t) + " - - free\n";
    folder.write("net.inp", text + "'''\ndirections = '''\nfrom to value sigma\n" + stand.rows + "'''\n");
    vornhost::Model model;
    vornhost::Faults faults;
    EXPECT_TRUE(vornhost::read_network(folder.file("net.inp"), model, faults)) << faults.lines().at(0);
    const std::vector<int> zero = vornhost::find_rounds(model).orientation;
    for (size_t i = 0; i < zero.size(); i++)
        for (size_t k = i + 1; k < zero.size(); k++)
            if (zero[i] == zero[k] && stand.round[i] != stand.round[k]) return true;
    return false;
}

int count_confused(double missing, bool wrong, int stands)
{
    int n = 0;
    for (int i = 0; i < stands; i++) n += confused(simulated((unsigned)i, missing, wrong));
    return n;
}

} // namespace

TEST(RoundCuts, AreRightWhereNoTargetIsMissing)
{
    EXPECT_EQ(count_confused(0.0, false, 50), 0);
    EXPECT_EQ(count_confused(0.0, true, 50), 0); // with a gross error
}

// Where rounds share a target or none, nothing may tell where one of them begins.
TEST(RoundCuts, AreMostlyRightWhereTargetsAreMissing)
{
    EXPECT_LE(count_confused(0.05, false, 80), 2);
    EXPECT_LE(count_confused(0.1, false, 80), 3);
    EXPECT_LE(count_confused(0.3, false, 40), 8);
}

// T4 of the second round comes before anything comes again, and the third round tells where it belongs.
TEST(RoundCuts, GiveTheEndOfARoundToTheNextOneThatItAgreesWith)
{
    Stand stand;
    stand.rows = "S T1 10 0.001\nS T2 100 0.001\nS T3 200 0.001\n"
                 "S T4 50 0.001\nS T1 110 0.001\nS T2 200 0.001\nS T3 300 0.001\n"
                 "S T1 220 0.001\nS T2 310 0.001\nS T3 10 0.001\nS T4 160 0.001\n";
    stand.round = {0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2};
    EXPECT_FALSE(confused(stand));
}

// T4 of the second round comes before anything comes again, so that each round seems to end with the first of the next.
TEST(RoundCuts, MoveTheBeginningsOfSeveralRoundsTogether)
{
    Stand stand;
    stand.rows = "S T1 10 0.001\nS T2 100 0.001\nS T3 200 0.001\n"
                 "S T4 50 0.001\nS T1 110 0.001\nS T2 200 0.001\nS T3 300 0.001\n"
                 "S T4 160 0.001\nS T1 220 0.001\nS T2 310 0.001\nS T3 10 0.001\n";
    stand.round = {0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2};
    EXPECT_FALSE(confused(stand));
}

// Six targets, three of them in either of two rounds without a common one, all in the third.
TEST(RoundCuts, DivideRoundsThatHaveNoTargetInCommon)
{
    Stand stand;
    stand.rows = "S T1 10 0.001\nS T3 110 0.001\nS T5 230 0.001\n"
                 "S T2 310 0.001\nS T4 20 0.001\nS T6 150 0.001\n"
                 "S T1 20 0.001\nS T2 70 0.001\nS T3 120 0.001\nS T4 180 0.001\nS T5 240 0.001\nS T6 310 0.001\n";
    stand.round = {0, 0, 0, 1, 1, 1, 2, 2, 2, 2, 2, 2};
    EXPECT_FALSE(confused(stand));
}
