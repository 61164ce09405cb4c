// Observations from a set-up: directions, distances, angles, zenith angles and azimuths of an element obs.

#include <cmath>
#include <map>

#include "host/formats/gkf_cluster.h"
#include "host/formats/gkf_tag.h"
#include "host/formats/number_text.h"
#include "host/input/network_tables.h"

namespace vornhost {

namespace {

constexpr double gon_per_degree = 1.0 / 0.9;
constexpr double arc_seconds_per_cc = 0.324;

enum class ObsKind { direction, distance, slope_distance, zenith_angle, azimuth, angle };

struct ObsWord {
    const char *element;
    ObsKind kind;
};

const ObsWord obs_words[] = {{"direction", ObsKind::direction},       {"distance", ObsKind::distance},
                             {"s-distance", ObsKind::slope_distance}, {"z-angle", ObsKind::zenith_angle},
                             {"azimuth", ObsKind::azimuth},           {"angle", ObsKind::angle}};

const ObsWord *word_of(const std::string &element)
{
    for (const ObsWord &word : obs_words)
        if (element == word.element) return &word;
    return nullptr;
}

const std::vector<std::string> &attributes_of(ObsKind kind)
{
    static const std::vector<std::string> direction = {"to", "val", "stdev", "from_dh", "to_dh", "extern"};
    static const std::vector<std::string> sight = {"from", "to", "val", "stdev", "from_dh", "to_dh", "extern"};
    static const std::vector<std::string> angle = {"from",  "bs",    "fs", "val", "stdev", "from_dh",
                                                   "bs_dh", "fs_dh", "to", "rs",  "extern"};
    return kind == ObsKind::direction ? direction : kind == ObsKind::angle ? angle : sight;
}

// Reads one element obs.
class ObsReader {
public:
    ObsReader(const XmlElement &element, const GkfDefaults &its_defaults, GkfContext &its_context)
        : tag(element, {"from", "orientation", "from_dh"}, its_context.faults), defaults(its_defaults),
          context(its_context), cluster(its_context), matrix(matrix_of(element, its_context.faults))
    {
        from = tag.id("from");
        from_height = tag.number("from_dh");
    }

    void read(std::map<std::string, std::pair<int, int>> &setups)
    {
        name_setup(setups);
        for (const XmlElement &child : tag.element().children) {
            const ObsWord *word = word_of(child.name);
            if (word)
                read_row(child, word->kind);
            else if (child.name != "cov-mat")
                unknown_element(child,
                                {"direction", "distance", "s-distance", "z-angle", "azimuth", "angle", "cov-mat"},
                                context.faults);
        }
        leave_out_lonely();
        cluster.finish(matrix);
    }

private:
    // A station with several sets of directions has as many set-ups.
    void name_setup(std::map<std::string, std::pair<int, int>> &setups)
    {
        if (!from || !has_directions(tag.element())) return;
        auto &[count, number] = setups[*from];
        if (count > 1) setup = std::to_string(++number);
    }

    static bool has_directions(const XmlElement &obs)
    {
        for (const XmlElement &child : obs.children)
            if (child.name == "direction") return true;
        return false;
    }

    void read_row(const XmlElement &element, ObsKind kind)
    {
        GkfTag row(element, attributes_of(kind), context.faults);
        GkfObservation observation;
        observation.row.where = element.at;
        observation.row.id = std::string(row.text("extern").value_or(""));
        if (!read_ends(row, kind, observation)) return;
        const bool good = is_length(kind) ? read_length(row, kind, observation) : read_angle(row, kind, observation);
        if (!good) return;
        read_heights(row, kind, observation.row);
        if (from && station(observation) == *from && kind != ObsKind::angle && kind != ObsKind::azimuth)
            observation.row.setup = setup;
        observation.reason = inactive(kind, observation.row);
        const bool active = observation.reason.empty();
        cluster.add(std::move(observation), {{0, scale, active}});
    }

    static bool is_length(ObsKind kind) { return kind == ObsKind::distance || kind == ObsKind::slope_distance; }
    static const std::string &station(const GkfObservation &o)
    {
        return o.kind == DraftKind::angle ? o.row.at : o.row.from;
    }

    bool read_ends(GkfTag &row, ObsKind kind, GkfObservation &observation)
    {
        const bool own = kind != ObsKind::direction && row.given("from");
        const std::optional<std::string> at = own ? row.id("from") : from;
        if (!own && !tag.given("from"))
            row.missing("from", kind == ObsKind::direction ? "write from in its obs" : "write from here or in its obs");
        const bool angle = kind == ObsKind::angle;
        const char *const second = !angle ? "to" : row.given("bs") || !row.given("to") ? "bs" : "to";
        const char *const third = !angle ? second : row.given("fs") || !row.given("rs") ? "fs" : "rs";
        if (!row.given(second)) row.missing(second, "name the point that was sighted");
        if (angle && !row.given(third)) row.missing(third, "name the point that was sighted");
        const std::optional<std::string> to = row.id(second), last = angle ? row.id(third) : to;
        if (!at || !to || !last) return false;
        set_ends(observation, row.element().name, kind, {*at, *to, *last});
        return different(row, kind, {*at, *to, *last}, second, third);
    }

    // An angle runs from its backsight to its foresight in the sense of the file.
    void set_ends(GkfObservation &o, const std::string &name, ObsKind kind,
                  const std::array<std::string, 3> &ends) const
    {
        if (kind != ObsKind::angle) {
            o.row.from = ends[0];
            o.row.to = ends[1];
            o.words = name + " from " + ends[0] + " to " + ends[1];
            return;
        }
        const bool turned = context.axes.turned();
        o.row.at = ends[0];
        o.row.from = turned ? ends[2] : ends[1];
        o.row.to = turned ? ends[1] : ends[2];
        o.words = "angle at " + ends[0] + " from " + ends[1] + " to " + ends[2];
    }

    static bool different(GkfTag &row, ObsKind kind, const std::array<std::string, 3> &ends, const char *second,
                          const char *third)
    {
        const char *same = ends[0] == ends[1] ? second : nullptr;
        if (kind == ObsKind::angle && (ends[2] == ends[0] || ends[2] == ends[1])) same = third;
        if (same) row.fault(same, "a point is sighted from itself or compared with itself", "name different points");
        return !same;
    }

    bool read_length(GkfTag &row, ObsKind kind, GkfObservation &observation)
    {
        const bool plane = context.draft.dimension == 2;
        const bool horizontal = kind == ObsKind::distance;
        observation.kind = horizontal && !plane ? DraftKind::horizontal_distance : DraftKind::distance;
        if (!row.given("val")) row.missing("val", "write the observed value");
        const std::optional<double> value = row.positive("val");
        if (!value) return false;
        observation.row.value[0] = *value;
        scale = 1.0;
        if (row.given("stdev") && !matrix)
            observation.row.sigma[0] = row.positive("stdev");
        else if (!matrix)
            observation.row.sigma[0] = default_length_sigma(*value);
        return true;
    }

    // a + b D^c millimetres, D in kilometres.
    std::optional<double> default_length_sigma(double metres) const
    {
        const std::vector<double> &d = defaults.distance;
        if (d.empty()) return std::nullopt;
        const double factor = d.size() > 1 ? d[1] : 0.0, power = d.size() > 2 ? d[2] : 1.0;
        const double sigma = factor == 0.0 ? d[0] : d[0] + factor * std::pow(metres / 1000.0, power);
        if (!(sigma > 0.0) || !std::isfinite(sigma)) return std::nullopt;
        return tidy(sigma, sigma);
    }

    const std::optional<double> &default_angle_sigma(ObsKind kind) const
    {
        if (kind == ObsKind::direction) return defaults.direction;
        if (kind == ObsKind::angle) return defaults.angle;
        return kind == ObsKind::azimuth ? defaults.azimuth : defaults.zenith_angle;
    }

    bool read_angle(GkfTag &row, ObsKind kind, GkfObservation &observation)
    {
        static const std::map<ObsKind, DraftKind> kinds = {{ObsKind::direction, DraftKind::direction},
                                                           {ObsKind::zenith_angle, DraftKind::vertical_angle},
                                                           {ObsKind::azimuth, DraftKind::azimuth},
                                                           {ObsKind::angle, DraftKind::angle}};
        observation.kind = kinds.at(kind);
        if (!row.given("val")) row.missing("val", "write the observed value");
        const std::optional<GkfAngle> written = row.angle("val");
        if (!written) return false;
        const bool converted = written->dms && !context.dms;
        scale = converted ? 1.0 / arc_seconds_per_cc : 1.0;
        double value = converted ? written->value * gon_per_degree : written->value;
        if (!settle_sense(row, kind, value)) return false;
        observation.row.value[0] = value;
        if (matrix) return true;
        const std::optional<double> sigma = row.given("stdev") ? row.positive("stdev") : default_angle_sigma(kind);
        if (sigma) observation.row.sigma[0] = *sigma * std::fabs(scale);
        return true;
    }

    // Directions and azimuths run from x to y, zenith angles are those of the first face.
    bool settle_sense(GkfTag &row, ObsKind kind, double &value)
    {
        const double full = context.full_circle();
        if (kind == ObsKind::zenith_angle) {
            if (!(value >= 0.0 && value <= full)) {
                row.fault("val", "zenith angle " + quote(*row.text("val")) + " is not within a circle",
                          "write it from 0 to half a circle");
                return false;
            }
            if (value <= full / 2) return true;
        } else if (kind == ObsKind::angle || !context.axes.turned()) {
            return true;
        }
        value = value == 0.0 ? 0.0 : tidy(full - value, full);
        scale = -scale;
        return true;
    }

    void read_heights(GkfTag &row, ObsKind kind, DraftRow &out)
    {
        const bool angle = kind == ObsKind::angle;
        const std::optional<double> own = row.number("from_dh");
        const std::optional<double> at = own ? own : from_height;
        const std::optional<double> target = angle ? row.number("bs_dh") : row.number("to_dh");
        if (angle) row.number("fs_dh");
        const bool count = kind == ObsKind::slope_distance || kind == ObsKind::zenith_angle;
        if (count && at && *at != 0.0) out.h1 = at;
        if (count && target && *target != 0.0) out.h2 = target;
        if (!count && (own || target || row.given("fs_dh"))) context.heights_ignored++;
    }

    // Why the observation cannot take part; empty when it can.
    std::string inactive(ObsKind kind, const DraftRow &row)
    {
        for (const std::string *id : {&row.at, &row.from, &row.to}) {
            if (id->empty()) continue;
            std::string reason = inactive_at(kind, *id);
            if (!reason.empty()) return reason;
        }
        if (kind == ObsKind::zenith_angle)
            for (const std::string &id : {row.from, row.to})
                if (!context.points.xy_active(id)) context.held_plan.insert(id);
        return std::string();
    }

    std::string inactive_at(ObsKind kind, const std::string &id) const
    {
        const GkfPoint *point = context.points.find(id);
        const std::string name = "point " + quote(id);
        if (!point) return name + " is not declared; add it with fix or adj";
        const bool z_counts = kind == ObsKind::slope_distance || kind == ObsKind::zenith_angle;
        const bool xy_known = kind == ObsKind::zenith_angle && point->x;
        if (point->undetermined && !xy_known) return name + " is left out";
        if (!xy_known && !context.points.xy_active(id)) return name + " has no fix or adj for xy; write one";
        if (z_counts && !context.points.z_active(id)) return name + " has no fix or adj for z; write one";
        return std::string();
    }

    // Several directions of a set to one target tell how well it repeats, nothing of the network.
    void leave_out_lonely()
    {
        std::set<std::string> targets;
        size_t count = 0;
        for (const GkfObservation &o : cluster.observations) {
            if (o.kind != DraftKind::direction || !o.reason.empty()) continue;
            targets.insert(o.row.to);
            count++;
        }
        if (targets.size() != 1 || count < 2) return;
        for (GkfObservation &o : cluster.observations)
            if (o.kind == DraftKind::direction && o.reason.empty())
                o.reason = "all directions of its set go to this one target";
    }

    GkfTag tag;
    const GkfDefaults &defaults;
    GkfContext &context;
    GkfCluster cluster;
    const XmlElement *matrix; // null: each observation has its own standard deviation
    double scale = 1.0;       // of the row in hand
    std::optional<std::string> from;
    std::optional<double> from_height;
    std::string setup;
};

} // namespace

void read_obs(const XmlElement &obs, const GkfDefaults &defaults, GkfContext &context,
              std::map<std::string, std::pair<int, int>> &setups)
{
    ObsReader(obs, defaults, context).read(setups);
}

} // namespace vornhost
