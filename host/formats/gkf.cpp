#include "host/formats/gkf.h"

#include <algorithm>
#include <map>

#include "host/formats/gkf_cluster.h"
#include "host/formats/gkf_misclosures.h"
#include "host/formats/gkf_tag.h"
#include "host/formats/gkf_undetermined.h"
#include "host/formats/gkf_usage.h"
#include "host/formats/number_text.h"
#include "host/input/number.h"

namespace vornhost {

namespace {

const char *const name_space = "http://www.gnu.org/software/gama/gama-local";

bool is_angular(const std::string &element)
{
    return element == "direction" || element == "angle" || element == "z-angle" || element == "azimuth";
}

// Reads one file; the members are what its steps share.
class GkfReader {
public:
    GkfReader(const XmlElement &its_root, Draft &its_draft, Faults &all)
        : root(its_root), draft(its_draft), faults(all), context(its_draft, all)
    {
    }

    bool read()
    {
        if (!find_network()) return false;
        read_axes();
        read_parameters();
        read_description();
        read_points();
        find_units();
        settle_dimension();
        if (!faults.empty()) return false;
        leave_out_undetermined(lists, context);
        count_setups();
        for (const XmlElement *list : lists) read_clusters(*list);
        if (!faults.empty()) return false;
        finish();
        return faults.empty();
    }

private:
    bool find_network()
    {
        std::vector<std::string> known = {"xmlns", "version"};
        for (const XmlAttribute &attribute : root.attributes) // where other programs look for a schema
            if (attribute.name.find(':') != std::string::npos) known.push_back(attribute.name);
        GkfTag tag(root, known, faults);
        if (root.name == "gama-local" && tag.given("xmlns") && *tag.text("xmlns") != name_space)
            tag.fault("xmlns", "the namespace is not that of gama-local", std::string("write ") + name_space);
        for (const XmlElement &child : root.children) {
            if (child.name != "network")
                unknown_element(child, {"network"}, faults);
            else if (network)
                faults.add(child.at, "a second network", "write a file for each");
            else
                network = &child;
        }
        if (network)
            sort_children();
        else if (faults.empty())
            faults.add(root.at, "no element network", "put the points and observations into one");
        return faults.empty();
    }

    void sort_children()
    {
        for (const XmlElement &child : network->children) {
            if (child.name == "points-observations")
                lists.push_back(&child);
            else if (child.name == "parameters")
                parameters.push_back(&child);
            else if (child.name != "description")
                unknown_element(child, {"description", "parameters", "points-observations"}, faults);
        }
    }

    void read_axes()
    {
        GkfTag tag(*network, {"axes-xy", "angles", "epoch"}, faults);
        const std::string_view axes = tag.text("axes-xy").value_or("ne"),
                               sense = tag.text("angles").value_or("left-handed");
        if (const std::optional<GkfAxes> found = GkfAxes::of(axes, sense)) {
            context.axes = *found;
            return;
        }
        const bool bad_sense = !GkfAxes::of("ne", sense);
        if (bad_sense)
            tag.fault("angles", quote(sense) + " is not known for angles", "write left-handed or right-handed");
        else
            tag.fault("axes-xy", quote(axes) + " is not known for axes-xy",
                      "write one of ne, sw, es, wn, en, nw, se, ws");
    }

    static std::vector<std::string> names_of(const XmlElement &element)
    {
        std::vector<std::string> names(element.attributes.size());
        std::transform(element.attributes.begin(), element.attributes.end(), names.begin(),
                       [](const XmlAttribute &attribute) { return attribute.name; });
        return names;
    }

    // Versions of that program add parameters of their own; none of them changes what was observed.
    void note_unknown_parameters(const XmlElement &element, const std::vector<std::string> &known)
    {
        for (const XmlAttribute &attribute : element.attributes)
            if (std::find(known.begin(), known.end(), attribute.name) == known.end())
                context.note(attribute.at, "parameter " + quote(attribute.name) + " is not known and not taken over");
    }

    void read_parameters()
    {
        static const std::vector<std::string> known = {"sigma-apr",
                                                       "conf-pr",
                                                       "tol-abs",
                                                       "sigma-act",
                                                       "algorithm",
                                                       "language",
                                                       "encoding",
                                                       "angular",
                                                       "angles",
                                                       "latitude",
                                                       "ellipsoid",
                                                       "cov-band",
                                                       "update-constrained-coordinates"};
        for (const XmlElement *element : parameters) {
            GkfTag tag(*element, names_of(*element), faults);
            note_unknown_parameters(*element, known);
            if (const std::optional<double> sigma = tag.positive("sigma-apr")) context.sigma_apriori = *sigma;
            if (const std::optional<double> limit = tag.positive("tol-abs")) tolerance = *limit / 1000.0;
            if (tag.text("sigma-act").value_or("") == "apriori")
                context.note(tag.at("sigma-act"),
                             "sigma-act=\"apriori\" is not taken over: both variance factors are reported");
            for (const char *earth : {"latitude", "ellipsoid"})
                if (tag.given(earth))
                    context.note(tag.at(earth), std::string(earth) +
                                                    " is not taken over: verticals are parallel here; "
                                                    "gama-local would correct zenith angles and directions for "
                                                    "the convergence of verticals");
        }
    }

    void read_description()
    {
        std::string line;
        const auto end_line = [&] {
            const size_t begin = line.find_first_not_of(" \t\r"), end = line.find_last_not_of(" \t\r");
            if (begin != std::string::npos) draft.description.push_back(line.substr(begin, end - begin + 1));
            line.clear();
        };
        for (const XmlElement &child : network->children) {
            if (child.name != "description") continue;
            for (const char c : child.text)
                if (c == '\n')
                    end_line();
                else
                    line += c;
            end_line();
        }
        if (!draft.description.empty()) draft.title = draft.description[0];
    }

    void read_points()
    {
        static const std::vector<std::string> known = {"id", "x", "y", "z", "fix", "adj"};
        for (const XmlElement *list : lists)
            for (const XmlElement &child : list->children) {
                if (child.name == "point") {
                    GkfTag tag(child, known, faults);
                    context.points.read(tag);
                }
                if (child.name != "coordinates") continue;
                for (const XmlElement &point : child.children) {
                    if (point.name != "point") continue;
                    GkfTag tag(point, known, faults);
                    context.points.read(tag);
                }
            }
        context.points.check(faults);
        for (const auto &[at, id] : context.points.moved())
            context.note(at, "point " + quote(id) +
                                 " is fixed and gets other coordinates here: these count, as in gama-local");
    }

    template <class Take> void each_observation(const Take &take) const
    {
        for (const XmlElement *list : lists)
            for (const XmlElement &cluster : list->children)
                for (const XmlElement &row : cluster.children)
                    if (cluster.name != "point" && row.name != "cov-mat") take(cluster, row);
    }

    // Degrees-minutes-seconds where all angles are, otherwise gon.
    void find_units()
    {
        size_t angles = 0, dms = 0;
        each_observation([&](const XmlElement &, const XmlElement &row) {
            const XmlAttribute *value = is_angular(row.name) ? row.find("val") : nullptr;
            if (!value) return;
            angles++;
            if (looks_like_dms(value->value)) dms++;
        });
        context.dms = angles > 0 && dms == angles;
        draft.units.dms = context.dms;
        draft.units.length = "m";
        draft.units.sigma_length = "mm";
        draft.units.angle = context.dms ? "dms" : "gon";
        draft.units.sigma_angle = context.dms ? "arc_second" : "cc";
        if (dms > 0 && dms < angles)
            context.note(root.at,
                         "angles are written in gon and in degrees: all become gon, their standard deviations cc");
    }

    // Heights and plane are both there where points take part in both and observations need both.
    void settle_dimension()
    {
        bool xy = false, z = false, xy_free = false, z_free = false, plan_seen = false, height_seen = false;
        for (const GkfPoint &point : context.points.all()) {
            xy = xy || point.xy_state != GkfState::none;
            z = z || point.z_state != GkfState::none;
            xy_free = xy_free || (point.xy_state != GkfState::none && point.xy_state != GkfState::fixed);
            z_free = z_free || (point.z_state != GkfState::none && point.z_state != GkfState::fixed);
        }
        each_observation([&](const XmlElement &cluster, const XmlElement &row) {
            const bool both = cluster.name == "vectors" || row.name == "s-distance" || row.name == "z-angle";
            const bool height = row.name == "dh" || (cluster.name == "coordinates" && row.find("z"));
            plan_seen =
                plan_seen || both || (cluster.name == "obs") || (cluster.name == "coordinates" && row.find("x"));
            height_seen = height_seen || both || height;
        });
        if (!xy && !z && faults.empty()) faults.add(network->at, "no point has fix or adj", "write them in the points");
        const bool plane = xy && (!z || (!z_free && !height_seen));
        const bool heights = z && (!xy || (!xy_free && !plan_seen));
        draft.dimension = plane ? 2 : heights ? 1 : 3;
    }

    void count_setups()
    {
        for (const XmlElement *list : lists)
            for (const XmlElement &obs : list->children) {
                const bool directions = std::any_of(obs.children.begin(), obs.children.end(),
                                                    [](const XmlElement &row) { return row.name == "direction"; });
                Faults unheard; // the set-up is read again with its observations
                GkfTag tag(obs, {"from", "orientation", "from_dh"}, unheard);
                const std::optional<std::string> from = tag.id("from");
                if (obs.name == "obs" && directions && from) setups[*from].first++;
            }
    }

    void read_clusters(const XmlElement &list)
    {
        const GkfDefaults defaults = read_defaults(list);
        for (const XmlElement &cluster : list.children) {
            if (cluster.name == "obs")
                read_obs(cluster, defaults, context, setups);
            else if (cluster.name == "height-differences")
                read_height_differences(cluster, context);
            else if (cluster.name == "coordinates")
                read_coordinates(cluster, context);
            else if (cluster.name == "vectors")
                read_vectors(cluster, context);
            else if (cluster.name != "point")
                unknown_element(cluster, {"point", "obs", "height-differences", "coordinates", "vectors"}, faults);
        }
    }

    GkfDefaults read_defaults(const XmlElement &list)
    {
        GkfTag tag(list, {"distance-stdev", "direction-stdev", "angle-stdev", "zenith-angle-stdev", "azimuth-stdev"},
                   faults);
        GkfDefaults defaults;
        defaults.direction = tag.positive("direction-stdev");
        defaults.angle = tag.positive("angle-stdev");
        defaults.zenith_angle = tag.positive("zenith-angle-stdev");
        defaults.azimuth = tag.positive("azimuth-stdev");
        if (tag.given("distance-stdev")) read_distance_default(tag, defaults.distance);
        return defaults;
    }

    void read_distance_default(GkfTag &tag, std::vector<double> &values)
    {
        const std::string_view text = *tag.text("distance-stdev");
        constexpr std::string_view blanks = " \t\n\r";
        for (size_t at = text.find_first_not_of(blanks); at != std::string_view::npos;) {
            const size_t end = std::min(text.find_first_of(blanks, at), text.size());
            double value = 0.0;
            const bool good = read_number(text.substr(at, end - at), value) == Reading::Number && value >= 0.0;
            values.push_back(good ? value : -1.0);
            at = text.find_first_not_of(blanks, end);
        }
        const bool good = !values.empty() && values.size() <= 3 &&
                          std::all_of(values.begin(), values.end(), [](double value) { return value >= 0.0; });
        if (good) return;
        tag.fault("distance-stdev", quote(text) + " is not a constant in mm, a factor and a power of the length in km",
                  "write one to three numbers, like 2 3 1");
        values.clear();
    }

    void finish()
    {
        const double degrees = context.dms ? 0.9 : 1.0;
        const double rotation = context.axes.azimuth_rotation() * degrees;
        if (!draft.of(DraftKind::azimuth).empty() && rotation != 0.0) draft.azimuth_rotation = rotation;
        add_points(context);
        note_misclosures(context, tolerance);
        note_whole_file();
        if (context.observations > context.left_out) return;
        faults.add(network->at, "no observations that can take part", "write fix or adj in the points that they name");
    }

    bool has_turned_rows() const
    {
        return !draft.of(DraftKind::direction).empty() || !draft.of(DraftKind::azimuth).empty() ||
               !draft.of(DraftKind::angle).empty();
    }

    void note_whole_file()
    {
        if (context.axes.turned() && has_turned_rows())
            context.note(network->at,
                         "angles do not run from x to y here: directions and azimuths are turned (full circle less "
                         "value), angles change their ends, coordinates stay");
        if (context.tie_y_reflected)
            context.note(network->at,
                         "gama-local reflects y of these axes and leaves the covariances as they are: those of y with "
                         "other coordinates take the other sign, so that the results agree; where the matrix is one "
                         "in the axes of the file, give them their sign back");
        if (context.heights_ignored > 0)
            context.note(network->at, "heights of instrument or target of " + std::to_string(context.heights_ignored) +
                                          " observations are left out: they count in s-distance and z-angle only");
        context.note(network->at, "observations read " + std::to_string(context.observations) + " = taken " +
                                      std::to_string(context.observations - context.left_out) + " + left out " +
                                      std::to_string(context.left_out));
    }

    const XmlElement &root;
    Draft &draft;
    Faults &faults;
    GkfContext context;
    const XmlElement *network = nullptr;
    double tolerance = 1.0; // metres, of misclosures there
    std::vector<const XmlElement *> lists, parameters;
    std::map<std::string, std::pair<int, int>> setups; // by station: sets of directions, those named so far
};

} // namespace

bool read_gkf(const XmlElement &root, Draft &draft, Faults &faults) { return GkfReader(root, draft, faults).read(); }

} // namespace vornhost
