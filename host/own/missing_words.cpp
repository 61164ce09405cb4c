#include "host/own/missing_words.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <set>
#include <utility>

#include "host/input/names.h"
#include "host/own/item_names.h"
#include "host/own/start_words.h"
#include "host/preparation/start/degenerate.h"

namespace vornhost {

namespace {

namespace va = vornadjust;
using va::Kind;

constexpr size_t most_lines = 20; // of one kind
constexpr size_t most_names = 6;  // of an island
constexpr size_t few_ties = 3;    // that do not hold an island
const char *const remedy = "observe a distance, or a direction to or from a point that does not lie on it";

// "1 direction", "2 distances".
std::string counted(int n, const std::string &what) { return std::to_string(n) + " " + what + (n == 1 ? "" : "s"); }

const char *word_of(Kind kind)
{
    switch (kind) {
    case Kind::direction: return "direction";
    case Kind::angle: return "angle";
    case Kind::azimuth: return "azimuth";
    case Kind::vertical_angle: return "vertical angle";
    case Kind::height_difference: return "height difference";
    case Kind::bearing: return "bearing";
    case Kind::scale_bar: return "scale bar";
    case Kind::difference: return "coordinate difference";
    case Kind::baseline: return "baseline";
    case Kind::position: return "observed point";
    case Kind::image: return "image point";
    case Kind::unknown: return nullptr;
    default: return "distance";
    }
}

using Counts = std::map<std::string, int>;

std::map<int, Counts> sights_of(const va::Model &model, const std::vector<int> &points)
{
    std::map<int, Counts> counts;
    for (const int p : points) counts[p];
    for (const va::Observation &o : model.observations) {
        const char *word = word_of(o.kind);
        if (!o.use || !word) continue;
        for (const int p : {o.from, o.to, o.third}) {
            const auto at = counts.find(p);
            if (at != counts.end()) at->second[word]++;
        }
    }
    return counts;
}

// "has one direction and 2 distances only".
std::string sights_text(const Counts &counts)
{
    if (counts.empty()) return "nothing was observed of it";
    std::string text;
    size_t i = 0;
    for (const auto &[word, n] : counts) {
        text += (i == 0 ? "" : i + 1 == counts.size() ? " and " : ", ") + counted(n, word);
        i++;
    }
    return "it has " + text;
}

// "lies on the circle through A, B and C, and its directions fit anywhere on it".
std::string degenerate_text(const Model &network, const Numbers &numbers, const start::Degenerate &d)
{
    const auto name = [&](int k) { return name_of(network, numbers, d.through[k]); };
    if (d.through[2] < 0)
        return "lies on the line through " + name(0) + " and " + name(1) + ", and its directions fit anywhere on it";
    return "lies on the circle through " + name(0) + ", " + name(1) + " and " + name(2) +
           ", and its directions fit anywhere on it";
}

// Points without a place that observations tie to one another, and the observations that tie them to the rest.
struct Island {
    std::vector<int> points, ties;
};

class Islands {
public:
    Islands(const va::Model &its_model, const std::vector<int> &its_missing)
        : model(its_model), missing(its_missing), leader((size_t)model.n_points, -1)
    {
        for (const int p : missing) leader[(size_t)p] = p;
    }

    std::vector<Island> find();

private:
    bool is_missing(int p) const { return p >= 0 && leader[(size_t)p] >= 0; }
    int first_of(int p);
    void join(const va::Observation &o);
    void tie(int observation, std::map<int, Island> &islands);

    const va::Model &model;
    const std::vector<int> &missing;
    std::vector<int> leader; // [points] towards the first of those that belong together, -1 of points with a place
};

int Islands::first_of(int p)
{
    while (leader[(size_t)p] != p) p = leader[(size_t)p] = leader[(size_t)leader[(size_t)p]];
    return p;
}

void Islands::join(const va::Observation &o)
{
    for (const int p : {o.to, o.third}) {
        if (!o.use || !is_missing(o.from) || !is_missing(p)) continue;
        const int a = first_of(o.from), b = first_of(p);
        leader[(size_t)std::max(a, b)] = std::min(a, b);
    }
}

void Islands::tie(int observation, std::map<int, Island> &islands)
{
    const va::Observation &o = model.observations[(size_t)observation];
    std::set<int> ends;
    bool out = false;
    for (const int p : {o.from, o.to, o.third}) {
        if (is_missing(p)) ends.insert(first_of(p));
        out = out || (p >= 0 && !is_missing(p));
    }
    for (const int end : ends)
        if (o.use && out) islands[end].ties.push_back(observation);
}

std::vector<Island> Islands::find()
{
    for (const va::Observation &o : model.observations) join(o);
    std::map<int, Island> islands;
    for (const int p : missing) islands[first_of(p)].points.push_back(p);
    for (int i = 0; i < (int)model.observations.size(); i++) tie(i, islands);
    std::vector<Island> all;
    all.reserve(islands.size());
    for (auto &[first, island] : islands) all.push_back(std::move(island));
    return all;
}

// "P, Q and R", "P, Q and 12 more points".
std::string names_text(const Model &network, const Numbers &numbers, const std::vector<int> &points)
{
    const size_t n = points.size(), shown = n > most_names ? most_names - 1 : n - 1;
    std::string text;
    for (size_t i = 0; i < shown; i++) text += (i > 0 ? ", " : "") + name_of(network, numbers, points[i]);
    return text + " and " +
           (n > most_names ? std::to_string(n - shown) + " more points" : name_of(network, numbers, points[n - 1]));
}

std::string island_line(const Model &network, const Numbers &numbers, const Island &island)
{
    std::string line = "first coordinates of " + names_text(network, numbers, island.points) +
                       " could not be computed (" + where(network, numbers, island.points[0]) + "): ";
    if (island.ties.empty()) return line + "nothing was observed between them and the rest";
    line += std::string("only ") + (island.ties.size() == 1 ? "this ties" : "these tie") + " them to the rest: ";
    for (size_t i = 0; i < island.ties.size(); i++)
        line += (i > 0 ? ", " : "") + item_text(item_name(network, numbers, island.ties[i]));
    return line;
}

} // namespace

std::string name_of(const Model &network, const Numbers &numbers, int point)
{
    return shown_name(network, point_name(network, numbers.points[(size_t)point]));
}

std::string where(const Model &network, const Numbers &numbers, int point)
{
    return place(network, point_source(network, numbers.points[(size_t)point]));
}

void cut(std::vector<std::string> *lines, const char *what)
{
    if (lines->size() <= most_lines) return;
    const size_t more = lines->size() - most_lines;
    lines->resize(most_lines);
    lines->push_back("and " + std::to_string(more) + " more " + what);
}

std::vector<std::string> missing_lines(const Model &network, const Numbers &numbers, const start::Start &start)
{
    std::vector<std::string> lines;
    const std::map<int, Counts> counts = sights_of(numbers.model, start.missing);
    std::map<int, std::string> reasons;
    for (const start::Degenerate &d : start.degenerate) reasons[d.point] = degenerate_text(network, numbers, d);
    size_t lone = 0;
    for (const Island &island : Islands(numbers.model, start.missing).find()) {
        if (island.points.size() > 1 && island.ties.size() <= few_ties) {
            lines.push_back(island_line(network, numbers, island));
            continue;
        }
        for (const int p : island.points)
            lines.push_back("first coordinates of " + name_of(network, numbers, p) + " could not be computed (" +
                            where(network, numbers, p) +
                            "): " + (reasons.count(p) > 0 ? "it " + reasons[p] : sights_text(counts.at(p))));
        lone += island.points.size();
    }
    const bool islands = lone < start.missing.size();
    cut(&lines, "points");
    if (islands)
        lines.emplace_back("observe more between such points and the rest, or give the coordinates of two of them");
    if (!reasons.empty()) lines.emplace_back(std::string("no approximate coordinates help there: ") + remedy);
    if (lone > reasons.size())
        lines.push_back(
            "give their approximate coordinates, or observations that place them: directions from two stations, "
            "a direction and a distance, or for a station directions to three points");
    return lines;
}

std::vector<std::string> degenerate_words(const Model &network, const Numbers &numbers, const std::vector<int> &points)
{
    const std::vector<char> all((size_t)numbers.model.n_points, 1);
    std::vector<std::string> lines;
    for (const start::Degenerate &d : start::find_degenerate(numbers.model, all, points))
        lines.push_back(name_of(network, numbers, d.point) + " " + degenerate_text(network, numbers, d) + " (" +
                        where(network, numbers, d.point) + "): " + remedy);
    cut(&lines, "points");
    return lines;
}

} // namespace vornhost
