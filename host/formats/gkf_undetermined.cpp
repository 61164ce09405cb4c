#include "host/formats/gkf_undetermined.h"

#include "host/formats/gkf_tag.h"

namespace vornhost {

namespace {

constexpr int needed = 2; // observations of x and y

// An observation that x and y of its points enter.
struct Sight {
    std::vector<std::string> points; // the station first
    int tells = 1;                   // coordinates of each of them
    int set = -1;                    // of directions
    bool height = false;             // z of its points enters too
    bool known = false;              // x and y of the other end may be known without taking part
};

bool is_free(const GkfPoint &point)
{
    return point.xy_state == GkfState::adjusted || point.xy_state == GkfState::datum;
}

class Counter {
public:
    Counter(const std::vector<const XmlElement *> &lists, GkfContext &its_context) : context(its_context)
    {
        for (const XmlElement *list : lists)
            for (const XmlElement &cluster : list->children)
                if (cluster.name != "height-differences" && cluster.name != "point") read_cluster(cluster);
    }

    // Points of which too little is told, the others being in the network.
    std::set<std::string> lonely() const
    {
        const std::map<int, std::set<std::string>> targets = targets_of_sets();
        std::map<std::string, int> told;
        for (const Sight &sight : sights) {
            if (!active(sight) || (sight.set >= 0 && targets.at(sight.set).size() < 2)) continue;
            for (const std::string &id : sight.points) told[id] += sight.tells;
        }
        for (const auto &[set, ends] : targets) // one of the directions of a set tells its orientation
            if (ends.size() > 1) told[stations.at(set)]--;
        std::set<std::string> found;
        for (const GkfPoint &point : context.points.all()) {
            const auto n = told.find(point.id);
            if (is_free(point) && n != told.end() && n->second < needed) found.insert(point.id);
        }
        return found;
    }

    // Whether an observation still reaches a point with unknown x and y.
    bool any_left() const
    {
        for (const Sight &sight : sights)
            for (const std::string &id : sight.points)
                if (const GkfPoint *point = context.points.find(id); point && is_free(*point) && active(sight))
                    return true;
        return false;
    }

private:
    void read_cluster(const XmlElement &cluster)
    {
        Faults unheard; // the clusters are read again
        GkfTag tag(cluster, {"from", "orientation", "from_dh", "extern"}, unheard);
        const std::string from = tag.id("from").value_or("");
        for (const XmlElement &row : cluster.children)
            if (row.name != "cov-mat") read_row(row, from);
        sets++;
    }

    void read_row(const XmlElement &row, const std::string &from)
    {
        Faults unheard;
        GkfTag tag(row, {}, unheard);
        Sight sight;
        if (row.name == "point") {
            if (!tag.given("x")) return;
            sight.points = {tag.id("id").value_or("")};
        } else {
            sight.points = {tag.id("from").value_or(from)};
            for (const char *end : {"to", "bs", "fs", "rs"})
                if (const std::optional<std::string> id = tag.id(end)) sight.points.push_back(*id);
        }
        if (row.name != "point" && sight.points.size() < 2) return;
        sight.tells = row.name == "point" || row.name == "vec" ? needed : 1;
        sight.known = row.name == "z-angle";
        sight.height = row.name == "s-distance" || sight.known;
        if (row.name == "direction") {
            sight.set = sets;
            stations[sets] = sight.points[0];
        }
        sights.push_back(std::move(sight));
    }

    bool active(const Sight &sight) const
    {
        for (const std::string &id : sight.points)
            if ((!sight.known && !context.points.xy_active(id)) || (sight.height && !context.points.z_active(id)))
                return false;
        return true;
    }

    std::map<int, std::set<std::string>> targets_of_sets() const
    {
        std::map<int, std::set<std::string>> targets;
        for (const Sight &sight : sights)
            if (sight.set >= 0) {
                std::set<std::string> &of = targets[sight.set];
                if (active(sight)) of.insert(sight.points[1]);
            }
        return targets;
    }

    const GkfContext &context;
    std::vector<Sight> sights;
    std::map<int, std::string> stations; // by set
    int sets = 0;
};

} // namespace

void leave_out_undetermined(const std::vector<const XmlElement *> &lists, GkfContext &context)
{
    const Counter counter(lists, context);
    const GkfPoints before = context.points;
    std::set<std::string> all;
    for (std::set<std::string> some = counter.lonely(); !some.empty(); some = counter.lonely()) {
        for (const std::string &id : some) context.points.leave_out_plan(id);
        all.insert(some.begin(), some.end());
    }
    if (all.empty()) return;
    if (!counter.any_left()) {
        context.points = before;
        return;
    }
    for (const GkfPoint &point : context.points.all())
        if (all.count(point.id) > 0)
            context.note(point.where, "x and y of point " + quote(point.id) +
                                          " left out: too few observations tell them; gama-local leaves it out too");
}

} // namespace vornhost
