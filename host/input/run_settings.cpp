// What a run is, the units of its numbers, and the earth that the engine knows.

#include "host/input/angle.h"
#include "host/input/date.h"
#include "host/input/section.h"
#include "host/input/settings.h"

namespace vornhost {

namespace {

void read_lengths(Section &units, Network &net)
{
    project &p = net.model.p;
    static const Words words = {{"m", LENGTH_METRE},      {"mm", LENGTH_MILLIMETRE}, {"cm", LENGTH_CENTIMETRE},
                                {"km", LENGTH_KILOMETRE}, {"ft", LENGTH_FOOT},       {"us_ft", LENGTH_US_FOOT},
                                {"inch", LENGTH_INCH}};
    const int values = units.word("length", LENGTH_METRE, words), sigmas = units.word("sigma_length", values, words);
    p.iunit = record_length(values);
    if (p.iunit != values) net.model.length_unit = values;
    net.metres = metres_in(values);
    net.sigma_metres = metres_in(sigmas);
    net.model.sigma_metres = net.sigma_metres;
    net.length = net.metres / metres_in(p.iunit);
    net.sigma_length = net.sigma_metres / metres_in(p.iunit);
}

// Standard deviations of degrees, minutes and seconds are arc seconds.
void read_angles(Section &units, Network &net)
{
    static const Words words = {{"gon", ANGLE_GON},       {"mgon", ANGLE_MGON},
                                {"degree", ANGLE_DEGREE}, {"arc_second", ANGLE_ARC_SECOND},
                                {"mil", ANGLE_MIL},       {"packed_degree", ANGLE_PACKED},
                                {"radian", ANGLE_RADIAN}, {"dms", ANGLE_DMS}};
    static const Words sigma_words = {{"gon", ANGLE_GON},       {"mgon", ANGLE_MGON},
                                      {"cc", ANGLE_CC},         {"degree", ANGLE_DEGREE},
                                      {"mil", ANGLE_MIL},       {"arc_second", ANGLE_ARC_SECOND},
                                      {"radian", ANGLE_RADIAN}, {"packed_degree", ANGLE_PACKED}};
    net.angle = units.word("angle", ANGLE_GON, words);
    net.sigma_angle =
        units.word("sigma_angle", net.angle == ANGLE_DMS ? (int)ANGLE_ARC_SECOND : net.angle, sigma_words);
    net.model.p.iangle = record_angle(net.angle);
    if (net.model.p.iangle != net.angle) net.model.angle_unit = net.angle;
}

void read_turn(Section &earth, Network &net)
{
    const char *const key = "azimuth_rotation";
    const toml::node *node = earth.find(key);
    double turn = 0.0;
    if (node && node->is_string() && net.angle == ANGLE_DMS) {
        if (!read_dms(earth.text(key), turn))
            earth.fault(*node, earth.name(key) + " is not an angle in degrees, minutes and seconds",
                        "write it like \"12-30-36.5\"");
    } else {
        turn = earth.number(key, 0.0, any, "in the file's unit of angle");
    }
    if (!readable_angle(net.angle, turn))
        earth.fault(*node, earth.name(key) + " has minutes or seconds of 60 or more", "write degrees as ddd.mmss");
    else
        net.model.p.azrot = to_radians(net.angle, turn);
}

void read_origin(Section &earth, Network &net)
{
    const toml::node *node = earth.find("origin");
    if (!node) return;
    const toml::array *origin = node->as_array();
    bool good = origin && origin->size() == 3;
    for (size_t i = 0; good && i < 3; i++) {
        const toml::node &element = (*origin)[i];
        const std::optional<double> value = element.is_number() ? element.value<double>() : std::nullopt;
        good = value && sensible_length(*value);
        if (good) net.model.p.trans[i] = *value;
    }
    if (!good) earth.fault(*node, earth.name("origin") + " is not three numbers", "write origin = [x, y, z] in metres");
}

} // namespace

void read_run(const toml::table &root, Network &net)
{
    project &p = net.model.p;
    static const Words solvers = {{"sparse", (int)Solver::Sparse},
                                  {"compact", (int)Solver::Compact},
                                  {"jordan", (int)Solver::Jordan},
                                  {"simplex", (int)Solver::Simplex}};
    static const Words modes = {{"statistics", (int)Mode::Statistics},
                                {"solution", (int)Mode::Solution},
                                {"propagation", (int)Mode::Propagation}};
    Section run(root, "run", net.faults);
    net.model.title = run.text("title");
    net.model.date = run.text("date");
    if (!net.model.date.empty() && !days_of_date(net.model.date))
        run.fault(*run.find("date"), run.name("date") + " is not a date",
                  "write it like \"2026-05-01\" or \"2026-05-01 14:30\"");
    if (!run.find("dimension"))
        net.faults.add(run.place(), "dimension is missing in [run]", "write dimension = 1, 2 or 3");
    p.dim = run.whole("dimension", 0, 1, 3);
    net.model.solver = (Solver)run.word("solver", (int)Solver::Sparse, solvers);
    const Mode usual = net.model.solver == Solver::Simplex ? Mode::Statistics : net.model.mode;
    net.model.mode = (Mode)run.word("mode", (int)usual, modes);
    p.itmax = run.whole("iterations", 20, 1, 1000);
    if (run.find("iterations")) net.model.steps = p.itmax;
    p.convergence = run.number("convergence", 1e-6, above_zero, "above 0");
    p.idebug = run.whole("trace", 0, 0, 9);
    const bool simplex = net.model.solver == Solver::Simplex, propagation = net.model.mode == Mode::Propagation;
    p.irun = simplex ? -1 : propagation ? -2 : net.model.mode == Mode::Solution ? 0 : 1;
    if (simplex && propagation)
        run.fault(*run.find("mode"), "the simplex solver has no error propagation", "choose compact or jordan");
}

void read_units(const toml::table &root, Network &net)
{
    static const Words verticals = {{"zenith", 1}, {"elevation", 0}};
    Section units(root, "units", net.faults);
    net.model.p.izenith = units.word("vertical", 1, verticals);
    read_lengths(units, net);
    read_angles(units, net);
}

void read_earth(const toml::table &root, Network &net)
{
    project &p = net.model.p;
    static const Words models = {{"none", 0}, {"cartesian", 1}, {"mixed", 2}};
    Section earth(root, "earth", net.faults);
    p.iearth = earth.word("model", 0, models);
    p.radius = earth.number("radius", 6371000.0, above_zero, "above 0");
    p.horigin = earth.number("height", 0.0, sensible_length, "of metres");
    p.latitude = earth.number("latitude", 0.0, within_quarter, "between -90 and 90");
    read_turn(earth, net);
    read_origin(earth, net);
}

} // namespace vornhost
