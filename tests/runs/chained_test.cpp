// Networks adjusted one after the other, each on the points of the one before with their full
// covariance: the last points are those of one adjustment of everything.

#include <gtest/gtest.h>

#include <filesystem>

#include "runs/chain.h"
#include "support/workfolder.h"

namespace {

// Runs of a test in a folder of their own.
class Folder : public WorkFolder {
public:
    std::vector<std::string> files() const
    {
        std::vector<std::string> names;
        for (const auto &entry : std::filesystem::directory_iterator(path)) names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }
};

struct Case {
    int dim;
    Way way;
};

class Chained : public testing::TestWithParam<Case> {
protected:
    using Points = std::map<std::string, Found>;

    // The points of each of n networks in a chain, later ones last; factor is the a-posteriori
    // standard deviation of each.
    std::vector<Points> chained(Chain &chain, int n, int irun, std::vector<double> &factor)
    {
        std::vector<Points> all;
        for (int part = 0; part < n; part++) {
            const auto net = chain.network(part);
            net->p.irun = irun;
            const std::string import = part == 0 ? "" : "net" + std::to_string(part - 1) + ".con";
            EXPECT_EQ(chain.run(*net, GetParam().way, "net" + std::to_string(part) + ".inp", import), 0)
                << net->report();
            all.push_back(chain.found);
            factor.push_back(net->p.runresults ? net->p.runresults->sigpost : 0);
        }
        return all;
    }

    void expect_coordinates(const Points &found, const Points &whole, double tolerance)
    {
        for (const auto &[name, f] : found)
            for (int k = 0; k < 3; k++) EXPECT_NEAR(f.x[k], whole.at(name).x[k], tolerance) << name << " " << k;
    }
    void expect_deviations(const Points &found, double factor, const Points &whole, double whole_factor, double part)
    {
        for (const auto &[name, f] : found) {
            if (name == "A       ") continue; // fixed
            for (size_t k = 0; k < f.s.size(); k++) {
                const double wanted = whole.at(name).s[k] / whole_factor;
                EXPECT_NEAR(f.s[k] / factor, wanted, part * wanted) << name << " " << k;
                EXPECT_GT(wanted, 0.0);
            }
        }
    }

    Folder folder;
};

// With observations that contradict each other. The file gives micrometres, which some of the
// points enlarge; a network that is not linear adds the product of corrections of millimetres
// over tens of metres.
TEST_P(Chained, GivesTheCoordinatesOfOneAdjustment)
{
    for (unsigned seed = 1; seed <= 5; seed++) {
        Chain chain(GetParam().dim, 1.0, seed);
        std::vector<double> factor;
        const auto parts = chained(chain, 3, 1, factor);
        const auto net = chain.network(Chain::WHOLE);
        net->p.irun = 1;
        ASSERT_EQ(chain.run(*net, GetParam().way, "whole.inp"), 0) << net->report();
        expect_coordinates(parts[2], chain.found, 1e-5);
        // 1e-4: the networks differ by the slopes of a millimetre over some ten metres
        expect_deviations(parts[2], factor[2], chain.found, net->p.runresults->sigpost, 1e-4);
    }
}

// Error propagation takes the coordinates as they are, so that the cofactors of both roads are
// those of one place: they agree to the digits of the file.
TEST_P(Chained, GivesTheStandardDeviationsOfOneAdjustment)
{
    Chain chain(GetParam().dim, 0.0, 3);
    std::vector<double> factor;
    const auto parts = chained(chain, 3, -2, factor);
    const auto net = chain.network(Chain::WHOLE);
    net->p.irun = -2;
    ASSERT_EQ(chain.run(*net, GetParam().way, "whole.inp"), 0) << net->report();
    expect_coordinates(parts[2], chain.found, 1e-9);
    expect_deviations(parts[2], 1.0, chain.found, 1.0, 1e-8);
    // what a later network adds to the points of an earlier one is missing there
    EXPECT_GT(parts[1].at("J       ").s[0], chain.found.at("J       ").s[0] * 1.001);
}

// A solution only imports, and exports nothing of use.
TEST_P(Chained, ImportsInASolutionOnly)
{
    Chain chain(GetParam().dim, 1.0, 4);
    std::vector<double> factor;
    const auto parts = chained(chain, 2, 1, factor);
    const auto net = chain.network(1);
    net->p.irun = 0;
    EXPECT_EQ(chain.run(*net, GetParam().way, "again.inp", "net0.con"), 0);
    expect_coordinates(chain.found, parts[1], 1e-9);
}

TEST_P(Chained, LeavesOneFileANetworkThatExports)
{
    Chain chain(GetParam().dim, 1.0, 1);
    std::vector<double> factor;
    chained(chain, 3, 1, factor);
    EXPECT_EQ(folder.files(), (std::vector<std::string>{"net0.con", "net1.con"}));
}

std::string name_of(const testing::TestParamInfo<Case> &info)
{
    return std::to_string(info.param.dim) + "D_" + (info.param.way == Way::Jordan ? "jordan" : "compact");
}

INSTANTIATE_TEST_SUITE_P(Networks, Chained,
                         testing::Values(Case{1, Way::Jordan}, Case{1, Way::Compact}, Case{2, Way::Jordan},
                                         Case{2, Way::Compact}, Case{3, Way::Jordan}, Case{3, Way::Compact}),
                         name_of);

} // namespace
