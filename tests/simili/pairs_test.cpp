#include <errno.h>

#include "simili/scene.h"

namespace {

class Pairs : public Scene {
protected:
    // A list with the given names and standard deviations of 1 mm.
    static std::vector<simpoint> list(const std::vector<std::string> &names)
    {
        std::vector<simpoint> points;
        for (const std::string &name : names) points.push_back(named(name, {1.0 * (double)points.size(), 0, 0}));
        return points;
    }

    // Places of each pair in both lists, as text.
    std::string pairs()
    {
        std::string text;
        for (int i = 0; i < SIM(*run, npair); i++)
            text += std::to_string(SIM(*run, pair)[i].first - ref.data()) + "-" +
                    std::to_string(SIM(*run, pair)[i].second - end.data()) + " ";
        return text;
    }

    int start(const std::vector<std::string> &first, const std::vector<std::string> &second)
    {
        ref = list(first);
        end = list(second);
        return make(1).startsimili();
    }
};

TEST_F(Pairs, AreThePointsOfOneNameInTheOrderOfTheFirstList)
{
    EXPECT_EQ(start({"D", "B", "A", "X", "C"}, {"A", "B", "Y", "C", "D", "Z"}), 0);
    EXPECT_EQ(pairs(), "0-4 1-1 2-0 4-3 ");
}

TEST_F(Pairs, TakeTheFirstOfTheSecondListWithTheName)
{
    EXPECT_EQ(start({"A", "B", "C"}, {"C", "B", "A", "B", "C", "A", "A"}), 0);
    EXPECT_EQ(pairs(), "0-2 1-1 2-0 ");
}

TEST_F(Pairs, GiveOneSecondPointToSeveralFirstPointsOfItsName)
{
    EXPECT_EQ(start({"A", "B", "A", "A"}, {"B", "A"}), 0);
    EXPECT_EQ(pairs(), "0-1 1-0 2-1 3-1 ");
}

TEST_F(Pairs, CompareNamesExactlyUpToTheirSixteenCharacters)
{
    EXPECT_EQ(start({"A ", "a", "ABCDEFGHIJKLMNOP", "ABCDEFGHIJKLMNOx", "", "AB"},
                    {"A", "AB", "ABCDEFGHIJKLMNOP", "", "ABCDEFGHIJKLMNO"}),
              0);
    EXPECT_EQ(pairs(), "2-2 4-3 5-1 ");
}

TEST_F(Pairs, IgnoreWhatStandsBehindTheEndOfAName)
{
    ref = list({"A", "B", "C"});
    end = list({"A", "B", "C"});
    std::memcpy(ref[1].name + 2, "rubbish", 7);
    std::memcpy(end[2].name + 2, "rubbish", 7);
    EXPECT_EQ(make(1).startsimili(), 0);
    EXPECT_EQ(pairs(), "0-0 1-1 2-2 ");
}

TEST_F(Pairs, MatchAsASearchThroughBothListsDoes)
{
    std::mt19937 random(7);
    for (int round = 0; round < 50; round++) {
        std::vector<std::string> first(random() % 12), second(random() % 12);
        for (std::string &name : first) name = std::string(1, (char)('A' + random() % 8));
        for (std::string &name : second) name = std::string(1, (char)('A' + random() % 8));
        const int code = start(first, second);
        std::string wanted;
        int n = 0;
        for (size_t i = 0; i < first.size(); i++) {
            const auto found = std::find(second.begin(), second.end(), first[i]);
            if (found == second.end()) continue;
            wanted += std::to_string(i) + "-" + std::to_string(found - second.begin()) + " ";
            n++;
        }
        EXPECT_EQ(pairs(), wanted);
        EXPECT_EQ(code, n < 3 ? 3 : 0);
    }
}

TEST_F(Pairs, MustBeThree)
{
    EXPECT_EQ(start({"A", "B", "C"}, {"A", "B", "C"}), 0);
    EXPECT_EQ(start({"A", "B", "X"}, {"A", "B", "C"}), 3);
    EXPECT_EQ(start({"A"}, {"A"}), 3);
    EXPECT_EQ(start({}, {"A", "B", "C"}), 3);
    EXPECT_EQ(start({"A", "B", "C"}, {}), 3);
    EXPECT_EQ(start({}, {}), 3);
}

TEST_F(Pairs, OfListsWithANegativeCountAreNone)
{
    ref = end = list({"A", "B", "C"});
    run = std::make_unique<simili>(-3, ref.data(), 3, end.data(), res, 1);
    EXPECT_EQ(run->startsimili(), 3);
    run = std::make_unique<simili>(3, ref.data(), -4, end.data(), res, 1);
    EXPECT_EQ(run->startsimili(), 3);
    run = std::make_unique<simili>(-1, nullptr, -1, nullptr, res, 1);
    EXPECT_EQ(run->startsimili(), 3);
}

TEST_F(Pairs, LeaveOnlyTheHeadingInTheReport)
{
    EXPECT_EQ(start({"A", "B", "C"}, {"A", "B", "C"}), 0);
    EXPECT_EQ(report(), "simili.out\n\n");
}

TEST_F(Pairs, BeginTheReportAnew)
{
    std::ofstream("simili.out") << "a long text that stands there from the last transformation";
    EXPECT_EQ(start({"A", "B", "C"}, {"A", "B", "C"}), 0);
    EXPECT_EQ(report(), "simili.out\n\n");
}

TEST_F(Pairs, AreNotMadeWhenTheReportCannotBeOpened)
{
    std::filesystem::create_directory("simili.out");
    EXPECT_EQ(start({"A", "B", "C"}, {"A", "B", "C"}), 1);
    EXPECT_EQ(SIM(*run, out), nullptr);
    EXPECT_EQ(SIM(*run, pair), nullptr);
    EXPECT_EQ(run->runsimili(), 1);
    EXPECT_EQ(res[0], -1.0);
}

TEST_F(Pairs, TellWhetherTheReportIsWhole)
{
    EXPECT_EQ(start({"A", "B", "C"}, {"A", "B", "C"}), 0);
    EXPECT_EQ(run->closereport(), 0);
    EXPECT_EQ(SIM(*run, out), nullptr);
    EXPECT_EQ(run->closereport(), 0);

    std::filesystem::remove("simili.out");
    std::filesystem::create_symlink("/dev/full", "simili.out");
    EXPECT_EQ(run->startsimili(), 0);
    EXPECT_EQ(run->closereport(), ENOSPC);
    EXPECT_EQ(run->closereport(), ENOSPC);

    std::filesystem::remove("simili.out");
    std::filesystem::create_directory("simili.out");
    EXPECT_EQ(run->startsimili(), 1);
    EXPECT_EQ(run->closereport(), EISDIR);

    std::filesystem::remove("simili.out");
    EXPECT_EQ(run->startsimili(), 0);
    EXPECT_EQ(run->closereport(), 0);
}

TEST_F(Pairs, AreNotMadeWithoutMemory)
{
    ref = end = list({"A", "B", "C"});
    make(1);
    fail_allocation(1);
    EXPECT_EQ(run->startsimili(), 2);
    EXPECT_EQ(SIM(*run, npair), 0);
    EXPECT_EQ(SIM(*run, pair), nullptr);
    EXPECT_EQ(report(), "simili.out\n\n");
    EXPECT_EQ(run->runsimili(), 1);
    EXPECT_EQ(run->startsimili(), 0);
}

TEST_F(Pairs, AreMadeAnewByASecondStart)
{
    EXPECT_EQ(start({"A", "B", "C", "D"}, {"A", "B", "C", "D"}), 0);
    ref[3].name[0] = 'X';
    EXPECT_EQ(run->startsimili(), 0);
    EXPECT_EQ(pairs(), "0-0 1-1 2-2 ");
}

class ZeroSigmas : public Pairs {
protected:
    void SetUp() override
    {
        ref = list({"A", "B", "C", "onlyref"});
        end = list({"A", "B", "C", "onlyend"});
    }
};

TEST_F(ZeroSigmas, OfTheFirstListAloneAreRefused)
{
    for (int k = 0; k < 3; k++) {
        SetUp();
        ref[1].sx[k] = 0.0;
        EXPECT_EQ(make(1).startsimili(), 4);
        EXPECT_EQ(ref[0].sx[0], 0.001);
    }
}

TEST_F(ZeroSigmas, OfTheSecondListAloneAreRefused)
{
    for (int k = 0; k < 3; k++) {
        SetUp();
        end[2].sx[k] = -0.0;
        EXPECT_EQ(make(1).startsimili(), 5);
        EXPECT_EQ(end[0].sx[0], 0.001);
    }
}

TEST_F(ZeroSigmas, OfBothListsMakeAllOfThemOne)
{
    ref[0].sx[2] = 0.0;
    end[1].sx[0] = 0.0;
    EXPECT_EQ(make(1).startsimili(), 0);
    for (const auto *points : {&ref, &end})
        for (const simpoint &p : *points)
            for (const double sx : p.sx) EXPECT_EQ(sx, 1.0) << p.name;
}

TEST_F(ZeroSigmas, OfPointsWithoutPartnerDoNotCount)
{
    ref[3].sx[0] = 0.0;
    end[3].sx[0] = 0.0;
    EXPECT_EQ(make(1).startsimili(), 0);
    EXPECT_EQ(ref[3].sx[0], 0.0);
    EXPECT_EQ(ref[0].sx[0], 0.001);
}

TEST_F(ZeroSigmas, AreLessUrgentThanTooFewPairs)
{
    ref[0].sx[0] = 0.0;
    end.erase(end.begin());
    EXPECT_EQ(make(1).startsimili(), 3);
    end[0].sx[0] = 0.0;
    EXPECT_EQ(make(1).startsimili(), 3);
    EXPECT_EQ(ref[1].sx[0], 0.001);
}

TEST_F(ZeroSigmas, AreExactlyZero)
{
    ref[0].sx[0] = 1e-300;
    end[0].sx[0] = -0.001;
    EXPECT_EQ(make(1).startsimili(), 0);
}

} // namespace
