// Networks that processes, here threads, read by parts: results are those of one that reads the whole file.

#include "host/own/parts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "adjust/thread_ranks.h"
#include "host/own/collect.h"
#include "host/own/own_run.h"
#include "host/own/shared_rows.h"
#include "host/results/json_writer.h"
#include "host/run/silence.h"

using namespace vornhost;

namespace {

const double gon = std::atan(1.0) / 50.0;

struct Place {
    std::string name;
    double x[3];
};

// A grid of stations with every kind of observation, true values and normal errors.
class Survey {
public:
    Survey(int its_dimension, bool its_freedom) : dimension(its_dimension), free(its_freedom)
    {
        for (int i = 0; i < rows; i++)
            for (int k = 0; k < columns; k++)
                at.push_back(
                    {"P" + std::to_string(columns * i + k), {110.0 * i + shift(), 90.0 * k + shift(), 50.0 + shift()}});
    }

    std::string text()
    {
        std::string all = "[run]\ndimension = " + std::to_string(dimension) + "\n[tables]\n";
        if (dimension == 1) return all + heights();
        all += table("stations", dimension == 3 ? "name x y z code sx sy sz group" : "name x y code sx sy group",
                     points());
        all += table("groups", "name additive s_additive code_additive code_scale",
                     {"early 0.001 0.002 weighted fixed", "late 0 - fixed free"});
        all += table("distances", "from to value sigma id use constants", some(&Survey::distance, 1));
        all += table("directions", "from to value sigma set remark", directions());
        all += table("angles", "from at to value sigma", angles());
        all += table("horizontal_distances", "from to value sigma", some(&Survey::horizontal, 5));
        all += table("bearings", "from to value sigma", some(&Survey::bearing, 11));
        all += table("azimuths", "from to value sigma", some(&Survey::azimuth, 17));
        all += table("baselines",
                     dimension == 3 ? "from to dx dy dz cxx cyy czz cxy cxz cyz" : "from to dx dy cxx cyy cxy",
                     some(&Survey::baseline, 7));
        all += table("coordinates", dimension == 3 ? "name x y z sx sy sz" : "name x y sx sy", coordinates());
        all += table("coordinate_differences", "from to dx dy sx sy", some(&Survey::difference, 9));
        all += table("scale_bars", "from to value sigma", some(&Survey::bar, 23));
        all += table("pairs", "from to", {"P1 P27", "P4 P5"});
        all += table("derived", "kind from to", {"distance P0 P28", "bearing P12 P13"});
        if (dimension < 3) return all;
        all += table("vertical_angles", "from to value sigma", some(&Survey::vertical, 1));
        return all + table("height_differences", "from to value sigma", some(&Survey::levelled, 4));
    }

private:
    using Lines = std::vector<std::string>;

    static constexpr int rows = 6, columns = 5;

    std::string heights()
    {
        return table("targets", "name z code sz", points()) +
               table("height_differences", "from to value sigma", some(&Survey::levelled, 1)) +
               table("baselines", "from to dz czz", some(&Survey::baseline, 7)) +
               table("coordinates", "name z sz", coordinates());
    }

    double shift() { return std::uniform_real_distribution<double>(-9.0, 9.0)(random); }
    double error() { return std::normal_distribution<double>(0.0, 1.0)(random); }
    static std::string number(double x)
    {
        char text[40];
        snprintf(text, sizeof text, " %.9f", x);
        return text;
    }
    static std::string table(const std::string &name, const std::string &heading, const Lines &lines)
    {
        if (lines.empty()) return "";
        std::string all = name + " = \"\"\"\n" + heading + "\n";
        for (const std::string &line : lines) all += line + "\n";
        return all + "\"\"\"\n";
    }

    int first_axis() const { return dimension == 1 ? 2 : 0; }
    int last_axis() const { return dimension == 2 ? 2 : 3; }

    double between(const Place &a, const Place &b, int axis) const { return b.x[axis] - a.x[axis]; }
    double plan(const Place &a, const Place &b) const { return std::hypot(between(a, b, 0), between(a, b, 1)); }
    double rise(const Place &a, const Place &b) const { return dimension == 3 ? between(a, b, 2) : 0.0; }
    static double circle(double angle) { return std::fmod(angle + 800.0, 400.0); }
    double turned(const Place &a, const Place &b) const { return std::atan2(between(a, b, 1), between(a, b, 0)) / gon; }

    Lines points()
    {
        Lines lines;
        for (size_t i = 0; i < at.size(); i++) {
            std::string line = at[i].name;
            const bool fixed = !free && (i == 3 || i == 26), weighted = !free && (i == 11 || i == 19);
            for (int k = first_axis(); k < last_axis(); k++)
                line += number(at[i].x[k] + (fixed ? 0.0 : 0.02 * error()));
            line += fixed ? " fixed" : weighted ? " weighted" : " free";
            for (int k = first_axis(); k < last_axis(); k++) line += weighted ? " 0.01" : " -";
            lines.push_back(line + (dimension == 1 ? "" : i % 2 == 0 ? " early" : " late"));
        }
        std::shuffle(lines.begin(), lines.end(), random);
        return lines;
    }

    // Pairs of neighbours, both ways.
    template <class Visit> void visit_pairs(Visit visit)
    {
        for (const Place &a : at)
            for (const Place &b : at)
                if (&a != &b && plan(a, b) < 150.0) visit(a, b);
    }

    template <class Line> Lines some(Line line, size_t step)
    {
        Lines lines;
        size_t n = 0;
        visit_pairs([&](const Place &a, const Place &b) {
            if (n++ % step == 0) lines.push_back((this->*line)(a, b));
        });
        std::shuffle(lines.begin(), lines.end(), random);
        return lines;
    }

    std::string distance(const Place &a, const Place &b)
    {
        count++;
        const double d = std::hypot(plan(a, b), rise(a, b)) + 0.002 * error() + (count == 30 ? 0.05 : 0.0);
        return a.name + " " + b.name + number(d) + " 0.002 n" + std::to_string(count) +
               (count % 20 == 0 ? " no yes" : " - yes");
    }
    std::string horizontal(const Place &a, const Place &b)
    {
        return a.name + " " + b.name + number(plan(a, b) + 0.003 * error()) + " 0.003";
    }
    std::string bar(const Place &a, const Place &b)
    {
        return a.name + " " + b.name + number(std::hypot(plan(a, b), rise(a, b)) + 0.0005 * error()) + " 0.0005";
    }
    std::string levelled(const Place &a, const Place &b)
    {
        return a.name + " " + b.name + number(between(a, b, 2) + 0.001 * error()) + " 0.001";
    }
    std::string difference(const Place &a, const Place &b)
    {
        return a.name + " " + b.name + number(between(a, b, 0) + 0.004 * error()) +
               number(between(a, b, 1) + 0.004 * error()) + " 0.004 0.004";
    }
    std::string bearing(const Place &a, const Place &b)
    {
        return a.name + " " + b.name + number(circle(turned(a, b) + 0.001 * error())) + " 0.001";
    }
    std::string azimuth(const Place &a, const Place &b) { return bearing(a, b); }
    std::string vertical(const Place &a, const Place &b)
    {
        const double zenith = std::atan2(plan(a, b), rise(a, b)) / gon + 0.001 * error();
        return a.name + " " + b.name + number(zenith) + " 0.001";
    }
    std::string baseline(const Place &a, const Place &b)
    {
        std::string line = a.name + " " + b.name;
        for (int k = first_axis(); k < last_axis(); k++) line += number(between(a, b, k) + 0.003 * error());
        return line + (dimension == 3 ? " 9e-6 9e-6 9e-6 1e-6 0 0" : dimension == 2 ? " 9e-6 9e-6 1e-6" : " 9e-6");
    }

    // Two rounds at each station: named sets at some, a turned circle without names at others.
    Lines directions()
    {
        Lines lines;
        for (size_t i = 0; i < at.size(); i++)
            for (int round = 0; round < 2; round++) {
                const double zero = 13.0 * (double)i + (round == 1 && i % 3 == 0 ? 100.0 : 0.0);
                for (const Place &b : at) {
                    if (&b == &at[i] || plan(at[i], b) >= 150.0) continue;
                    const std::string set = i % 3 == 1 ? "set" + std::to_string(10 * i + (size_t)round) : "-";
                    lines.push_back(at[i].name + " " + b.name +
                                    number(circle(turned(at[i], b) - zero + 0.001 * error())) + " 0.001 " + set + " r" +
                                    std::to_string(count++));
                }
            }
        return lines;
    }

    Lines angles()
    {
        Lines lines;
        for (size_t i = 1; i + 1 < at.size(); i += 4) {
            const double angle = turned(at[i], at[i + 1]) - turned(at[i], at[i - 1]) + 0.001 * error();
            lines.push_back(at[i - 1].name + " " + at[i].name + " " + at[i + 1].name + number(circle(angle)) +
                            " 0.001");
        }
        return lines;
    }

    Lines coordinates()
    {
        Lines lines;
        for (size_t i = 2; i < at.size() && !free; i += 6) {
            std::string line = at[i].name;
            for (int k = first_axis(); k < last_axis(); k++) line += number(at[i].x[k] + 0.004 * error());
            for (int k = first_axis(); k < last_axis(); k++) line += " 0.004";
            lines.push_back(line);
        }
        return lines;
    }

    const int dimension;
    const bool free; // nothing is known of its points
    std::mt19937 random{7};
    std::vector<Place> at;
    size_t count = 0;
};

nlohmann::json adjusted(vornadjust::ThreadRanks *ranks)
{
    Model model;
    Faults faults;
    const FileShare share = ranks ? FileShare{ranks->size(), ranks->own()} : FileShare();
    EXPECT_TRUE(read_network("net.inp", model, faults, Mode::Statistics, share))
        << (faults.lines().empty() ? "" : faults.lines()[0]);
    model.solver = Solver::Sparse;
    Silence silence;
    const auto own = std::make_shared<const OwnOutcome>(run_own(model, silence, false, {nullptr, nullptr, ranks}));
    if (ranks && own->ranks && ranks->own() > 0) serve_rows(ObservationResults(model, own), *own->ranks);
    nlohmann::json results = nlohmann::json::parse(to_json(collect_own(model, own, "test")));
    if (ranks) ranks->dismiss();
    return results;
}

// What is not told alike: notes, time, and what is looked for in whole networks only.
nlohmann::json without_words(nlohmann::json results)
{
    for (const char *key : {"notes", "seconds", "closures"}) results.erase(key);
    return results;
}

void expect_same(const nlohmann::json &found, const nlohmann::json &wanted, const std::string &where)
{
    if (wanted.is_number_float() || found.is_number_float()) {
        const double a = found.get<double>(), b = wanted.get<double>();
        ASSERT_NEAR(a, b, 1e-9 * std::max(100.0, std::fabs(b))) << where;
        return;
    }
    ASSERT_EQ(found.type(), wanted.type()) << where;
    if (!wanted.is_structured()) {
        ASSERT_EQ(found, wanted) << where;
        return;
    }
    ASSERT_EQ(found.size(), wanted.size()) << where;
    for (auto i = wanted.begin(); i != wanted.end(); ++i) {
        const std::string key = wanted.is_object() ? i.key() : std::to_string(i - wanted.begin());
        const nlohmann::json &other = wanted.is_object() ? found.at(key) : found[(size_t)(i - wanted.begin())];
        ASSERT_NO_FATAL_FAILURE(expect_same(other, *i, where + "/" + key));
    }
}

void expect_parts_like_whole(int dimension, bool free = false)
{
    const Folder folder;
    const InFolder inside(folder.path);
    folder.write("net.inp", Survey(dimension, free).text().c_str());
    const nlohmann::json whole = adjusted(nullptr);
    ASSERT_EQ(whole["adjusted"], true) << whole.dump(1);
    for (const int count : {2, 3, 5}) {
        nlohmann::json shared;
        vornadjust::on_ranks(count, [&](vornadjust::ThreadRanks &ranks) { shared = adjusted(&ranks); });
        expect_same(without_words(shared), without_words(whole), std::to_string(count));
    }
}

} // namespace

TEST(Parts, OfAPlaneNetworkGiveTheResultsOfTheWhole) { expect_parts_like_whole(2); }

TEST(Parts, OfANetworkInSpaceGiveTheResultsOfTheWhole) { expect_parts_like_whole(3); }

TEST(Parts, OfANetworkOfHeightsGiveTheResultsOfTheWhole) { expect_parts_like_whole(1); }

TEST(Parts, OfFreeNetworksGiveTheResultsOfTheWhole)
{
    expect_parts_like_whole(1, true);
    expect_parts_like_whole(2, true);
    expect_parts_like_whole(3, true);
}

// Directions of two stations far from each other, read 50 gon off.
TEST(Parts, NameStationsThatContradictTheRestInOneLine)
{
    const Folder folder;
    const InFolder inside(folder.path);
    std::string text = Survey(2, false).text();
    for (const char *sight : {"\nP0 P1 ", "\nP29 P28 "}) {
        const size_t at = text.find(sight, text.find("directions = ")) + std::strlen(sight);
        const size_t end = text.find(' ', at);
        text.replace(at, end - at, std::to_string(std::stod(text.substr(at, end - at)) + 50.0));
    }
    folder.write("net.inp", text.c_str());
    nlohmann::json shared;
    vornadjust::on_ranks(3, [&](vornadjust::ThreadRanks &ranks) { shared = adjusted(&ranks); });
    std::vector<std::string> lines;
    for (const std::string line : shared["notes"])
        if (line.find("contradict the rest") != std::string::npos) lines.push_back(line);
    ASSERT_EQ(lines.size(), 1u) << shared["notes"].dump(1);
    EXPECT_NE(lines[0].find("P0"), std::string::npos) << lines[0];
}
