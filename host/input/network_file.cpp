#include "host/input/network_file.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string_view>

#include "host/earth/reference.h"
#include "host/input/angle.h"
#include "host/input/covariances.h"
#include "host/input/date.h"
#include "host/preparation/lump_checks.h"
#include "host/input/network_tables.h"
#include "host/input/open_text.h"
#include "host/input/toml_parser.h"
#include "host/input/toml_texts.h"

namespace vornhost {

namespace {

// A section and its keys.
struct SectionKeys {
    const char *name;
    std::vector<std::string> keys;
};

const std::vector<SectionKeys> &all_sections()
{
    static const std::vector<SectionKeys> sections = {
        {"run", {"title", "date", "dimension", "solver", "mode", "iterations", "convergence", "trace"}},
        {"units", {"length", "angle", "vertical", "sigma_length", "sigma_angle"}},
        {"earth", {"model", "radius", "origin", "height", "latitude", "azimuth_rotation"}},
        {"crs", {"network", "stations", "targets", "coordinates", "heights", "geoid", "height", "scale", "epoch"}},
        {"reductions", {"distances", "atmosphere", "prism"}},
        {"apriori",
         {"distances", "height_differences", "directions", "vertical_angles", "azimuths", "baselines", "images",
          "horizontal_distances", "bearings", "angles", "coordinates", "coordinate_differences", "scale_bars"}},
        {"sigma",
         {"distances", "height_differences", "directions", "vertical_angles", "azimuths", "horizontal_distances",
          "bearings", "angles", "scale_bars", "distances_ppm", "height_difference_km", "height_difference_setup",
          "centring_instrument", "centring_target", "height_instrument", "height_target", "centring"}},
        {"baselines", {"datum_rule", "sigma_factor"}},
        {"lumps", {"method"}},
        {"connected_net", {"file"}},
        {"csv", {"separator", "decimal"}},
        {"tests",
         {"test", "level", "power", "correction", "global_level", "least_redundancy", "confidence", "precision",
          "suspects"}},
        {"covariances", {}}, // keys are names
        {"tables", std::vector<std::string>(table_names, table_names + TABLE_COUNT)},
    };
    return sections;
}

// Place in the network file, which is the first of all files.
Source place_of(const toml::source_region &region)
{
    return {0, std::max(1, (int)region.begin.line), std::max(1, (int)region.begin.column)};
}

// The settings of one section. Each getter reports what is wrong with the value of its
// key and then returns the default.
class Section {
public:
    Section(const toml::table &root, const char *section, Faults &all) : label(section), faults(all)
    {
        table = root[section].as_table();
    }

    // The table that a key holds, as a section.
    Section inner(const char *key) const { return Section(*table, key, faults); }

    const toml::node *find(const char *key) const { return table ? table->get(key) : nullptr; }
    Source place() const { return table ? place_of(table->source()) : Source{0, 0, 0}; }

    void fault(const toml::node &node, const std::string &what, const std::string &remedy)
    {
        faults.add(place_of(node.source()), what, remedy);
    }

    std::string name(const char *key) const { return std::string(key) + " in [" + label + "]"; }

    std::string text(const char *key)
    {
        const toml::node *node = find(key);
        if (!node) return std::string();
        const toml::value<std::string> *value = node->as_string();
        if (!value)
            fault(*node, name(key) + " is not a text", "write it in quotation marks");
        else if (printable(value->get()) != value->get())
            fault(*node, name(key) + " holds a control character", "write it on one line");
        return value ? value->get() : std::string();
    }

    // A finite number for which allowed holds; range says which those are.
    double number(const char *key, double otherwise, bool (*allowed)(double), const char *range)
    {
        const toml::node *node = find(key);
        if (!node) return otherwise;
        const std::optional<double> value = node->is_number() ? node->value<double>() : std::nullopt;
        if (value && std::isfinite(*value) && allowed(*value)) return *value;
        fault(*node, name(key) + " is not a number " + range, std::string("write a number ") + range);
        return otherwise;
    }

    int whole(const char *key, int otherwise, int least, int most)
    {
        const toml::node *node = find(key);
        if (!node) return otherwise;
        const std::optional<int64_t> value = node->is_integer() ? node->value<int64_t>() : std::nullopt;
        if (value && *value >= least && *value <= most) return (int)*value;
        const std::string range = "from " + std::to_string(least) + " to " + std::to_string(most);
        fault(*node, name(key) + " is not a whole number " + range, "write a whole number " + range);
        return otherwise;
    }

    // One of the words, or one of their numbers when numbers are allowed.
    int word(const char *key, int otherwise, const Words &words, bool numbers = false)
    {
        const toml::node *node = find(key);
        if (!node) return otherwise;
        const std::optional<std::string> text = node->value<std::string>();
        const std::optional<int64_t> number = numbers && node->is_integer() ? node->value<int64_t>() : std::nullopt;
        for (const Word &word : words)
            if ((text && *text == word.word) || (number && *number == word.value)) return word.value;
        std::vector<std::string> known;
        for (const Word &word : words) known.push_back('"' + std::string(word.word) + '"');
        const std::string shown = text ? quote(*text) : "value";
        fault(*node, shown + " is not known for " + name(key), suggestion(shown, known, "write one of"));
        return otherwise;
    }

private:
    std::string label;
    Faults &faults;
    const toml::table *table;
};

bool any(double) { return true; }
bool above_zero(double value) { return value > 0.0; }
bool between_0_and_1(double value) { return value > 0.0 && value < 1.0; }
bool from_0_below_1(double value) { return value >= 0.0 && value < 1.0; }
bool sensible_level(double value) { return value >= 1e-12 && value <= 0.5; }
bool within_quarter(double value) { return std::fabs(value) < 90.0; }
bool sensible_year(double value) { return value >= 1800.0 && value <= 2200.0; }
bool sensible_scale(double value) { return value >= 0.5 && value <= 2.0; }
bool sensible_slope(double value) { return std::fabs(value) <= 10.0; }
bool within_turn(double value) { return std::fabs(value) <= 360.0; }
bool sensible_length(double value) { return std::fabs(value) <= largest_length; }

constexpr int not_given = -1;

// Tables with a standard deviation for all rows, and whether it is an angle.
const std::pair<TableId, bool> sigma_tables[] = {{TABLE_DISTANCES, false}, {TABLE_HEIGHT_DIFFERENCES, false},
                                                 {TABLE_DIRECTIONS, true}, {TABLE_VERTICAL_ANGLES, true},
                                                 {TABLE_AZIMUTHS, true},   {TABLE_HORIZONTAL_DISTANCES, false},
                                                 {TABLE_BEARINGS, true},   {TABLE_ANGLES, true},
                                                 {TABLE_SCALE_BARS, false}};

// Reads one network file; the members are what its steps share.
class NetworkReader {
public:
    NetworkReader(Model &model, Faults &all) : net(model, all), p(model.p), faults(all) {}

    void read(const TextFile &file, const toml::table &root);

    // Hands on the tables, once they are read.
    void visit(const std::function<void(const Table &)> &take) const
    {
        for (int id = 0; id < TABLE_COUNT; id++)
            if (net.tables[id]) take(*net.tables[id]);
    }

private:
    void check_keys(const toml::table &root);
    void check_section(const SectionKeys &section, const toml::node &node);
    void stray_key(const toml::key &key, const toml::node &node);

    void read_run(const toml::table &root);
    void read_units(const toml::table &root);
    void read_lengths(Section &units);
    void read_angles(Section &units);
    void read_turn(Section &earth);
    void read_csv(const toml::table &root);
    void read_headings(const toml::node &node, const std::string &name, CsvForm &form);
    void read_earth(const toml::table &root);
    void read_origin(Section &earth);
    void read_crs(const toml::table &root);
    void read_geoid(Section &crs);
    void check_crs(const toml::table &root, Section &crs);
    void open_crs(Section &crs);
    void read_weights(const toml::table &root);
    void read_reduction(const toml::table &root);
    void read_methods(const toml::table &root);
    void read_tests(const toml::table &root);
    void read_connected_net(const toml::table &root);
    void read_covariances(const TextFile &file, const toml::table &root);
    void read_covariance(const TextFile &file, const toml::table &all, const std::string &name);
    std::optional<Passage> matrix_of(const TextFile &file, Section &section);
    TextFile *open_file(const toml::value<std::string> &path);

    void find_tables(const TextFile &file, const toml::table &root);
    void find_table(const TextFile &file, TableId id, const toml::node &node);
    void open_table(TableId id, const toml::table &entry);
    bool named(TableId id) const { return in_file[id]; }

    void read_tables();
    void check_network();
    void check_imports();
    void check_exports();

    Network net;
    project &p;
    Faults &faults;
    CsvForm csv;
    std::deque<TextFile> files; // of the tables outside the network file
    std::vector<MatrixText> matrices;
    std::array<bool, TABLE_COUNT> in_file{};
    bool connected_net = false; // the file of one is named, whether it can be read or not
};

void NetworkReader::read(const TextFile &file, const toml::table &root)
{
    check_keys(root);
    read_run(root);
    read_units(root);
    read_earth(root);
    read_crs(root);
    read_weights(root);
    read_csv(root);
    find_tables(file, root);
    read_methods(root);
    read_tests(root);
    read_connected_net(root);
    read_covariances(file, root);
    read_tables();
    complete_covariances(net, matrices);
    check_network();
}

void NetworkReader::check_keys(const toml::table &root)
{
    for (const auto &[key, node] : root) {
        const auto &sections = all_sections();
        const auto known = std::find_if(sections.begin(), sections.end(),
                                        [&name = key](const SectionKeys &section) { return name == section.name; });
        if (known == sections.end())
            stray_key(key, node);
        else
            check_section(*known, node);
    }
}

// A key of the file itself that is no section.
void NetworkReader::stray_key(const toml::key &key, const toml::node &node)
{
    const Source at = place_of(key.source());
    const std::string name(key.str());
    if (!node.is_table()) {
        for (const SectionKeys &section : all_sections())
            if (std::find(section.keys.begin(), section.keys.end(), name) != section.keys.end()) {
                faults.add(at, "key " + quote(name) + " stands outside a section",
                           "write it below [" + std::string(section.name) + "]");
                return;
            }
    }
    std::vector<std::string> known;
    for (const SectionKeys &section : all_sections()) known.push_back("[" + std::string(section.name) + "]");
    std::string remedy = faults.wants(at) ? suggestion("[" + name + "]", known, "known sections") : std::string();
    faults.add(at, std::string("unknown ") + (node.is_table() ? "section " : "key ") + quote(name), std::move(remedy));
}

void NetworkReader::check_section(const SectionKeys &section, const toml::node &node)
{
    const std::string name = "[" + std::string(section.name) + "]";
    if (!node.is_table()) {
        faults.add(place_of(node.source()), std::string(section.name) + " is not a section",
                   "write " + name + " on a line of its own and its keys below");
        return;
    }
    for (const auto &[key, value] : *node.as_table()) {
        const std::string word(key.str());
        if (section.keys.empty() || std::find(section.keys.begin(), section.keys.end(), word) != section.keys.end())
            continue;
        const Source at = place_of(key.source());
        faults.add(at, "unknown key " + quote(word) + " in " + name,
                   faults.wants(at) ? suggestion(word, section.keys, "known keys") : std::string());
    }
}

void NetworkReader::read_run(const toml::table &root)
{
    static const Words solvers = {{"sparse", (int)Solver::Sparse},
                                  {"compact", (int)Solver::Compact},
                                  {"jordan", (int)Solver::Jordan},
                                  {"simplex", (int)Solver::Simplex}};
    static const Words modes = {{"statistics", (int)Mode::Statistics},
                                {"solution", (int)Mode::Solution},
                                {"propagation", (int)Mode::Propagation}};
    Section run(root, "run", faults);
    net.model.title = run.text("title");
    net.model.date = run.text("date");
    if (!net.model.date.empty() && !days_of_date(net.model.date))
        run.fault(*run.find("date"), run.name("date") + " is not a date",
                  "write it like \"2026-05-01\" or \"2026-05-01 14:30\"");
    if (!run.find("dimension")) faults.add(run.place(), "dimension is missing in [run]", "write dimension = 1, 2 or 3");
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

void NetworkReader::read_units(const toml::table &root)
{
    static const Words verticals = {{"zenith", 1}, {"elevation", 0}};
    Section units(root, "units", faults);
    p.izenith = units.word("vertical", 1, verticals);
    read_lengths(units);
    read_angles(units);
}

void NetworkReader::read_lengths(Section &units)
{
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
void NetworkReader::read_angles(Section &units)
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
    p.iangle = record_angle(net.angle);
    if (p.iangle != net.angle) net.model.angle_unit = net.angle;
}

void NetworkReader::read_csv(const toml::table &root)
{
    static const Words separators = {{",", ','}, {";", ';'}, {"tab", '\t'}};
    static const Words decimals = {{".", '.'}, {",", ','}};
    Section section(root, "csv", faults);
    csv.separator = (char)section.word("separator", ',', separators);
    csv.decimal = (char)section.word("decimal", '.', decimals);
    net.model.separator = csv.separator, net.model.decimal = csv.decimal;
}

void NetworkReader::read_earth(const toml::table &root)
{
    static const Words models = {{"none", 0}, {"cartesian", 1}, {"mixed", 2}};
    Section earth(root, "earth", faults);
    p.iearth = earth.word("model", 0, models);
    p.radius = earth.number("radius", 6371000.0, above_zero, "above 0");
    p.horigin = earth.number("height", 0.0, sensible_length, "of metres");
    p.latitude = earth.number("latitude", 0.0, within_quarter, "between -90 and 90");
    read_turn(earth);
    read_origin(earth);
}

void NetworkReader::read_turn(Section &earth)
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
        p.azrot = to_radians(net.angle, turn);
}

void NetworkReader::read_origin(Section &earth)
{
    const toml::node *node = earth.find("origin");
    if (!node) return;
    const toml::array *origin = node->as_array();
    bool good = origin && origin->size() == 3;
    for (size_t i = 0; good && i < 3; i++) {
        const toml::node &element = (*origin)[i];
        const std::optional<double> value = element.is_number() ? element.value<double>() : std::nullopt;
        good = value && sensible_length(*value);
        if (good) p.trans[i] = *value;
    }
    if (!good) earth.fault(*node, earth.name("origin") + " is not three numbers", "write origin = [x, y, z] in metres");
}

void NetworkReader::read_crs(const toml::table &root)
{
    static const Words heights = {{"orthometric", 0}, {"ellipsoidal", 1}};
    Section crs(root, "crs", faults);
    Crs &c = net.model.crs;
    if (!root["crs"].as_table()) return;
    const size_t before = faults.count();
    c.network = crs.text("network");
    c.stations = crs.text("stations");
    c.targets = crs.text("targets");
    c.coordinates = crs.text("coordinates");
    c.ellipsoidal = crs.word("heights", 0, heights) == 1;
    if (crs.find("height")) c.height = crs.number("height", 0.0, sensible_length, "of metres");
    if (crs.find("epoch")) c.epoch = crs.number("epoch", 0.0, sensible_year, "of a year");
    c.scale = crs.number("scale", 1.0, sensible_scale, "from 0.5 to 2");
    read_geoid(crs);
    check_crs(root, crs);
    if (faults.count() == before && !c.local()) open_crs(crs);
}

// A number, a file, or a plane through a place.
void NetworkReader::read_geoid(Section &crs)
{
    const toml::node *node = crs.find("geoid");
    Geoid &geoid = net.model.crs.geoid;
    if (!node) return;
    if (node->is_number()) {
        geoid.form = Geoid::Form::constant;
        geoid.undulation = crs.number("geoid", 0.0, sensible_length, "of metres");
        return;
    }
    if (const toml::value<std::string> *file = node->as_string()) {
        constexpr size_t longest_path = 4096;
        geoid.form = Geoid::Form::grid;
        geoid.file = data_file(faults, net.model.path, file->get(), place_of(node->source()), longest_path);
        return;
    }
    const toml::table *plane = node->as_table();
    if (!plane)
        return crs.fault(*node, crs.name("geoid") + " is no height, file or plane",
                         "write geoid = 47.2, geoid = \"NAME.gtx\" or geoid = { undulation = 47.2, latitude = 50, "
                         "longitude = 9, north = -0.012, east = 0.004 }");
    check_section({"crs.geoid", {"undulation", "latitude", "longitude", "north", "east"}}, *plane);
    Section keys = crs.inner("geoid");
    constexpr double per_kilometre = 1e-3;
    geoid.form = Geoid::Form::plane;
    geoid.undulation = keys.number("undulation", 0.0, sensible_length, "of metres");
    geoid.latitude = to_radians(ANGLE_DEGREE, keys.number("latitude", 0.0, within_quarter, "between -90 and 90"));
    geoid.longitude = to_radians(ANGLE_DEGREE, keys.number("longitude", 0.0, within_turn, "from -360 to 360"));
    geoid.north = per_kilometre * keys.number("north", 0.0, sensible_slope, "of metres in a kilometre");
    geoid.east = per_kilometre * keys.number("east", 0.0, sensible_slope, "of metres in a kilometre");
}

// What does not go together.
void NetworkReader::check_crs(const toml::table &root, Section &crs)
{
    const Crs &c = net.model.crs;
    const auto at = [&](const char *key) { return crs.find(key) ? place_of(crs.find(key)->source()) : crs.place(); };
    if (c.network.empty())
        faults.add(at("network"), "network is missing in [crs]", "write network = \"EPSG:25832\" or \"local\"");
    if (p.dim == 1) faults.add(crs.place(), "heights alone have no reference system", "leave [crs] out");
    if (root["earth"].as_table())
        faults.add(Section(root, "earth", faults).place(), "[earth] and [crs] are both given", "leave [earth] out");
    if (!c.local() && crs.find("scale"))
        faults.add(at("scale"), "scale in [crs] is for a local system", "leave it out: a projection has its own");
    if (!c.local() && !crs.find("heights"))
        faults.add(crs.place(), "heights is missing in [crs]",
                   "write heights = \"ellipsoidal\", or \"orthometric\" with a geoid");
    if (!c.local() && crs.find("heights") && c.ellipsoidal == (crs.find("geoid") != nullptr))
        faults.add(at(c.ellipsoidal ? "geoid" : "heights"),
                   c.ellipsoidal ? "ellipsoidal heights need no geoid" : "orthometric heights need a geoid",
                   c.ellipsoidal ? "leave it out" : "write geoid = 47.2 or a file; 0 neglects it");
    if (p.dim == 3 && crs.find("height"))
        faults.add(at("height"), "height in [crs] is for points of the plane", "write z for each point");
    if (p.dim == 2 && crs.find("coordinates"))
        faults.add(at("coordinates"), "geocentric coordinates are observed in space", "write dimension = 3 in [run]");
    if (!c.local()) return;
    for (const char *key : {"stations", "targets", "coordinates", "heights", "geoid", "epoch"})
        if (crs.find(key))
            faults.add(at(key), std::string(key) + " in [crs] has no meaning for a local system", "leave it out");
    if (p.dim == 3) faults.add(at("network"), "a local system is for the plane", "leave [crs] out, or see [earth]");
    if (!c.height) faults.add(at("network"), "a local system needs the height of its level", "write height = 450");
}

// The systems of the network and of its tables.
void NetworkReader::open_crs(Section &crs)
{
    const Crs &c = net.model.crs;
    std::string fault;
    std::optional<Reference> reference = Reference::open(c, &fault);
    const auto fails = [&](const char *key) {
        const toml::node *node = crs.find(key);
        const char *const remedy = std::string(key) == "geoid" ? "name a grid that PROJ reads, GTX or GeoTIFF"
                                   : has_proj()
                                       ? "write another one, such as EPSG:25832"
                                       : "install it, take a program that was built with it, or leave [crs] out";
        faults.add(node ? place_of(node->source()) : crs.place(), fault, remedy);
    };
    if (!reference) return fails(fault.find("the geoid") != std::string::npos ? "geoid" : "network");
    net.places = std::make_unique<PlacesInput>(std::move(*reference), c);
    const std::pair<const char *, const std::string &> tables[] = {{"stations", c.stations}, {"targets", c.targets}};
    for (int k = 0; k < 2; k++) {
        fault.clear();
        net.places->set_table(k == 0, tables[k].second, &fault);
        if (!fault.empty()) fails(tables[k].first);
    }
    if (c.coordinates.empty()) return;
    fault.clear();
    if (const std::string word = net.places->no_geocentric(c.coordinates); !word.empty()) {
        fault = word;
        fails("coordinates");
    }
}

void NetworkReader::read_weights(const toml::table &root)
{
    Section apriori(root, "apriori", faults), sigma(root, "sigma", faults);
    Model::Apriori &own = net.model.apriori;
    const std::pair<const char *, double *> lists[] = {{"distances", &p.sdist},
                                                       {"height_differences", &p.sdifh},
                                                       {"directions", &p.sdir1},
                                                       {"vertical_angles", &p.sdir2},
                                                       {"azimuths", &p.saz},
                                                       {"baselines", &p.sgps},
                                                       {"images", &p.suv},
                                                       {"horizontal_distances", &own.horizontal_distance},
                                                       {"bearings", &own.bearing},
                                                       {"angles", &own.angle},
                                                       {"coordinates", &own.coordinate},
                                                       {"coordinate_differences", &own.coordinate_difference},
                                                       {"scale_bars", &own.scale_bar}};
    for (const auto &[key, value] : lists) *value = apriori.number(key, 1.0, above_zero, "above 0");
    for (const auto &[id, angle] : sigma_tables) {
        const char *const key = table_names[id];
        const double value = sigma.number(key, 0.0, above_zero, "above 0");
        if (angle && !readable_angle(net.sigma_angle, value))
            sigma.fault(*sigma.find(key), sigma.name(key) + " has minutes or seconds of 60 or more",
                        "write degrees as ddd.mmss");
        net.sigma[(size_t)id] = value;
    }
    net.stated.ppm = sigma.number("distances_ppm", 0.0, above_zero, "above 0");
    net.stated.per_km = sigma.number("height_difference_km", 0.0, above_zero, "above 0");
    net.stated.per_setup = sigma.number("height_difference_setup", 0.0, above_zero, "above 0");
    Model::Centring &c = net.model.centring;
    const std::pair<const char *, double *> centring[] = {{"centring_instrument", &c.instrument},
                                                          {"centring_target", &c.target},
                                                          {"height_instrument", &c.instrument_height},
                                                          {"height_target", &c.target_height}};
    for (const auto &[key, value] : centring) *value = sigma.number(key, 0.0, above_zero, "above 0") * net.sigma_metres;
    c.shared = sigma.word("centring", 0, {{"each_sight", 0}, {"each_stand", 1}}) == 1;
    if (c.shared && !c.any())
        sigma.fault(*sigma.find("centring"), "[sigma] centring shares out standard deviations that are not there",
                    "write centring_instrument or centring_target");
}

// Horizontal distances belong into the plane: in space they would be compared with slopes.
void NetworkReader::read_reduction(const toml::table &root)
{
    static const Words reductions = {
        {"none", 0}, {"mark_to_mark", 1}, {"horizontal_mixed", 2}, {"horizontal_origin", 9}};
    Section section(root, "reductions", faults);
    p.iredux = section.word("distances", 0, reductions, true);
    net.model.between_marks = section.find("distances") && p.iredux == 0;
    if (net.model.crs.given() && p.iredux > 1)
        section.fault(*section.find("distances"),
                      section.name("distances") + " reduces distances without the grid of [crs]",
                      "leave it out: [crs] reduces them into its grid");
    net.stated.atmosphere = section.number("atmosphere", 0.0, any, "of ppm");
    net.stated.prism = section.number("prism", 0.0, sensible_length, "of lengths") * net.metres;
    if (p.dim == 3 && (p.iredux == 2 || p.iredux == 9))
        section.fault(*section.find("distances"),
                      section.name("distances") + " makes distances horizontal: only in the plane",
                      "write \"mark_to_mark\", or dimension = 2");
}

void NetworkReader::read_methods(const toml::table &root)
{
    static const Words rules = {{"plain", 2}, {"scale_and_orientation", 1}, {"translations_only", 9}, {"ignore", 0}};
    static const Words methods = {{"0", 0}, {"1", 1}, {"9", 9}};
    read_reduction(root);
    p.igps = Section(root, "baselines", faults).word("datum_rule", 1, rules);
    net.stated.baseline_factor = Section(root, "baselines", faults).number("sigma_factor", 1.0, above_zero, "above 0");
    if (!named(TABLE_BASELINES)) p.igps = 0;
    p.lumpmethod = Section(root, "lumps", faults).word("method", not_given, methods, true);
    // Epochs that are compared after the adjustment are the engine's affair.
    if (p.lumpmethod == 9 && !Section(root, "run", faults).find("solver")) net.model.solver = Solver::Compact;
    p.iphoto = named(TABLE_IMAGES) ? 1 : 0;
}

// Tests and precision of the program's own adjustment; the engine has its own, at 95 %.
void NetworkReader::read_tests(const toml::table &root)
{
    static const Words tests = {{"baarda", (int)ObservationTest::baarda},
                                {"tau", (int)ObservationTest::tau},
                                {"b_method", (int)ObservationTest::b_method}};
    static const Words corrections = {{"none", 0}, {"sidak", 1}};
    static const Words factors = {{"a_posteriori", 0}, {"a_priori", 1}};
    constexpr int most_suspects = 1000;
    Section section(root, "tests", faults);
    TestSettings &t = net.model.tests;
    t.given = section.place().line > 0;
    t.test = (ObservationTest)section.word("test", (int)t.test, tests);
    t.level = section.number("level", t.level, sensible_level, "from 1e-12 to 0.5");
    t.power = section.number("power", t.power, between_0_and_1, "between 0 and 1");
    t.sidak = section.word("correction", 0, corrections) == 1;
    t.global_level = section.number("global_level", t.global_level, sensible_level, "from 1e-12 to 0.5");
    t.least_redundancy = section.number("least_redundancy", t.least_redundancy, from_0_below_1, "from 0 to below 1");
    t.confidence = section.number("confidence", 0.0, between_0_and_1, "between 0 and 1");
    t.a_priori = section.word("precision", 0, factors) == 1;
    t.suspects = section.whole("suspects", t.suspects, 0, most_suspects);
    if (t.power <= t.level)
        faults.add(section.place(), "power in [tests] is not above level", "write a power such as 0.80");
    if (t.test == ObservationTest::b_method && (t.sidak || section.find("global_level")))
        section.fault(*section.find(t.sidak ? "correction" : "global_level"),
                      "the B-method finds the level of the global test from that of one observation",
                      t.sidak ? "leave correction out" : "leave global_level out");
    if (t.given && net.model.solver != Solver::Sparse)
        faults.add(section.place(), "the solvers of the engine have tests of their own at 95 %",
                   "leave [tests] out, or choose the solver sparse");
}

void NetworkReader::read_connected_net(const toml::table &root)
{
    Section section(root, "connected_net", faults);
    const toml::node *node = section.find("file");
    const std::string written = section.text("file");
    if (!node || written.empty()) return;
    connected_net = true;
    copy_text(p.confile, sizeof p.confile,
              data_file(faults, net.model.path, written, place_of(node->source()), sizeof p.confile));
}

// The passage between the quotation marks of a text.
Passage passage_of(const TextFile &file, const toml::source_region &region)
{
    const size_t begin = file.offset((int)region.begin.line, (int)region.begin.column);
    const size_t end = file.offset((int)region.end.line, (int)region.end.column);
    const std::string_view raw = std::string_view(file.text()).substr(begin, end - begin);
    const bool basic = raw[0] == '"';
    const bool several_lines = raw.size() >= 6 && raw[1] == raw[0] && raw[2] == raw[0];
    const size_t marks = several_lines ? 3 : 1;
    return basic ? Passage::unescaped(file, begin + marks, end - marks) : Passage(file, begin + marks, end - marks);
}

void NetworkReader::find_tables(const TextFile &file, const toml::table &root)
{
    Section tables(root, "tables", faults);
    for (int id = 0; id < TABLE_COUNT; id++) {
        const toml::node *node = tables.find(table_names[id]);
        if (!node) continue;
        in_file[(size_t)id] = true;
        find_table(file, (TableId)id, *node);
    }
}

void NetworkReader::find_table(const TextFile &file, TableId id, const toml::node &node)
{
    const Source at = place_of(node.source());
    if (node.is_string())
        net.tables[id] = std::make_unique<Table>(table_names[id], passage_of(file, node.source()), Layout::Blanks, at);
    else if (node.is_table())
        open_table(id, *node.as_table());
    else
        faults.add(at, std::string("table ") + table_names[id] + " is neither a text nor a file",
                   "write \"\"\"...\"\"\" or { file = \"" + std::string(table_names[id]) + ".csv\" }");
}

void NetworkReader::open_table(TableId id, const toml::table &entry)
{
    const std::string name = std::string("table ") + table_names[id];
    CsvForm form = csv;
    for (const auto &[key, value] : entry) {
        if (key == "columns")
            read_headings(value, name, form);
        else if (key != "file")
            faults.add(place_of(key.source()), "unknown key " + quote(std::string(key.str())) + " in " + name,
                       "known keys: file, columns");
    }
    const toml::value<std::string> *file = entry["file"].as_string();
    if (!file) {
        faults.add(place_of(entry.source()), name + " names no file",
                   "write { file = \"" + std::string(table_names[id]) + ".csv\" }");
        return;
    }
    const TextFile *text = open_file(*file);
    if (!text) return;
    const Source heading = {text->file(), 1, 1};
    net.tables[id] =
        std::make_unique<Table>(table_names[id], Passage(*text, 0, text->text().size()), Layout::Commas, heading, form);
}

// columns = { from = "Standpunkt", ... }: the words of the file's heading.
void NetworkReader::read_headings(const toml::node &node, const std::string &name, CsvForm &form)
{
    const toml::table *columns = node.as_table();
    if (!columns) {
        faults.add(place_of(node.source()), "columns of " + name + " are no list of columns",
                   "write columns = { from = \"...\" }");
        return;
    }
    for (const auto &[key, value] : *columns) {
        const toml::value<std::string> *word = value.as_string();
        if (word)
            form.headings.push_back({std::string(key.str()), word->get(), place_of(key.source())});
        else
            faults.add(place_of(value.source()),
                       "column " + quote(std::string(key.str())) + " of " + name + " is not a text",
                       "write the word of the file's heading in quotation marks");
    }
}

// A file that the network file names, null with a fault when it cannot be read.
TextFile *NetworkReader::open_file(const toml::value<std::string> &path)
{
    const auto whole = std::filesystem::path(net.model.path).parent_path() / path.get();
    TextFile &text = files.emplace_back();
    return text.read(whole.string(), place_of(path.source()), faults) ? &text : nullptr;
}

void NetworkReader::read_covariances(const TextFile &file, const toml::table &root)
{
    const toml::table *all = root["covariances"].as_table();
    if (!all) return;
    for (const auto &[key, node] : *all) {
        const std::string name(key.str());
        if (node.is_table())
            read_covariance(file, *all, name);
        else
            faults.add(place_of(key.source()), "covariance " + quote(name) + " is not a section",
                       "write [covariances." + printable(name) + "] and its keys below");
    }
}

void NetworkReader::read_covariance(const TextFile &file, const toml::table &all, const std::string &name)
{
    static const Words forms = {{"full", (int)MatrixForm::full},
                                {"lower", (int)MatrixForm::lower},
                                {"upper", (int)MatrixForm::upper},
                                {"band", (int)MatrixForm::band}};
    static const std::vector<std::string> keys = {"form", "width", "unit", "sigma_factor", "matrix", "file"};
    constexpr int widest = 1000000;
    check_section({("covariances." + name).c_str(), keys}, *all.get(name));
    Section section(all, name.c_str(), faults);
    MatrixText text;
    text.at = section.place();
    text.form = (MatrixForm)section.word("form", (int)MatrixForm::full, forms);
    text.width = section.whole("width", 0, 0, widest);
    text.sigma_factor = section.number("sigma_factor", 1.0, above_zero, "above 0");
    section.word("unit", 0, {{"sigma", 0}});
    text.numbers = matrix_of(file, section);
    matrices.push_back(text);
    net.covariances.add(name, text.at);
    CovarianceRecord record;
    record.name = printable(name);
    net.model.covariances.add(record, text.at);
}

// The numbers, in the section itself or in a file of their own.
std::optional<Passage> NetworkReader::matrix_of(const TextFile &file, Section &section)
{
    const toml::node *inside = section.find("matrix"), *outside = section.find("file");
    if (!inside == !outside)
        faults.add(section.place(), inside ? "matrix and file are both given" : "the covariance has no numbers",
                   inside ? "keep one of the two" : "write matrix = \"\"\"...\"\"\" or file = \"NAME.cov\"");
    else if (const toml::node *node = inside ? inside : outside; !node->is_string())
        section.fault(*node, section.name(inside ? "matrix" : "file") + " is not a text",
                      "write it in quotation marks");
    else if (inside)
        return passage_of(file, node->source());
    else if (const TextFile *text = open_file(*node->as_string()))
        return Passage(*text, 0, text->text().size());
    return std::nullopt;
}

void NetworkReader::read_tables()
{
    enter_names(net);
    read_groups(net);
    read_stations(net);
    read_targets(net);
    read_setups(net);
    read_measures(net);
    read_deflections(net);
    read_transformations(net);
    read_baselines(net);
    read_field_kinds(net);
    read_cameras(net);
    read_images(net);
    read_lumps(net);
    read_pairs(net);
    read_derived(net);
    read_left_out(net);
}

void NetworkReader::check_network()
{
    if (p.lumpmethod == not_given) p.lumpmethod = named(TABLE_LUMPS) || has_lumps(net.model) ? 1 : 0;
    check_lumps(net.model, faults);
    if (!named(TABLE_STATIONS) && !named(TABLE_TARGETS))
        faults.add({0, 0, 0}, "no points", "list them in table stations or targets");
    bool observed = named(TABLE_IMAGES) || named(TABLE_BASELINES);
    for (int id = TABLE_DISTANCES; id <= TABLE_AZIMUTHS; id++) observed = observed || named((TableId)id);
    for (int id = TABLE_HORIZONTAL_DISTANCES; id <= TABLE_SCALE_BARS; id++) observed = observed || named((TableId)id);
    if (!observed) faults.add({0, 0, 0}, "no observations", "list them in a table such as distances");
    if (net.model.images.size() > 0 && (p.dim == 1 || p.dim == 2))
        faults.add(net.model.images.where[0], "images need three dimensions", "write dimension = 3 in [run]");
    check_imports();
    check_exports();
}

// Imported points take their coordinates from the file of the connected net.
void NetworkReader::check_imports()
{
    if (connected_net) return;
    const auto check = [this](const auto &list) {
        for (size_t i = 0; i < list.size(); i++) {
            if (list.records[i].iconn != 2) continue;
            faults.add(list.where[i], "imported point without a connected net", "write file in [connected_net]");
            return;
        }
    };
    check(net.model.stations);
    check(net.model.targets);
}

// The heading of the file of exported points, "File: NAME.con for 12 connections in dimension 3", is
// read back with 78 letters.
void NetworkReader::check_exports()
{
    constexpr size_t heading = 78;
    Source first;
    int count = 0;
    const auto look = [&](const auto &list) {
        for (size_t i = 0; i < list.size(); i++) {
            if (list.records[i].iconn != 1) continue;
            if (count++ == 0) first = list.where[i];
        }
    };
    look(net.model.stations);
    look(net.model.targets);
    if (count == 0) return;
    const std::string name = std::filesystem::path(net.model.path).stem().string();
    const std::string words = "File: .con for " + std::to_string(count) + " connections in dimension 3";
    if (words.size() + name.size() <= heading) return;
    faults.add(first, name + ".con, which the exported points need, has too long a name to be read back",
               "give the network file a name of at most " + std::to_string(heading - words.size()) +
                   " bytes before its extension");
}

// A key with very many points would nest tables deeper than the stack allows.
bool check_depth(const TextFile &file, Faults &faults)
{
    constexpr int most = 1000;
    const std::string &text = file.text();
    for (size_t begin = 0, end = 0; begin < text.size(); begin = end + 1) {
        end = std::min(text.find('\n', begin), text.size());
        if (end - begin <= (size_t)most) continue;
        int points = 0;
        for (size_t i = begin; i < end; i++) {
            if (text[i] != '.' || ++points <= most) continue;
            faults.add(file.place(i), "line has more than " + std::to_string(most) + " points", "break it into lines");
            return false;
        }
    }
    return true;
}

// What the parser cannot read may be a table that was never closed.
bool tell_open_text(const TextFile &file, Faults &faults)
{
    const std::optional<OpenText> open = find_open_text(file.text());
    if (!open) return false;
    faults.add(file.place(open->offset), (open->key.empty() ? "text" : "text of " + open->key) + " is not closed",
               "write " + open->marks + " on a line of its own behind its last line");
    return true;
}

// The engine finds the extension behind the first point, and its files take no blanks.
std::string run_name(const std::string &path)
{
    std::string stem = std::filesystem::path(path).stem().string().substr(0, sizeof(project::filename) - 5);
    for (char &c : stem)
        if (c == '.' || (unsigned char)c <= ' ') c = '_';
    return stem + ".inp";
}

// What of the file is not rows, for the parser; tables and matrices are read from the file itself.
std::string settings_of(const TextFile &file)
{
    std::vector<std::string_view> keys(table_names, table_names + TABLE_COUNT);
    keys.emplace_back("matrix");
    return without_rows(file.text(), keys);
}

using TakeTable = std::function<void(const Table &)>;

// Reads the network out of its text, which is in memory. The mode of the model is the usual one. Where there is one,
// `take` gets the tables.
bool read_text(const std::string &path, const TextFile &file, Model &model, Faults &faults,
               const TakeTable &take = TakeTable())
{
    if (!check_depth(file, faults)) return false;
    Model network;
    network.mode = model.mode;
    network.path = path;
    network.p.imixed = -1;
    copy_text(network.p.filename, sizeof network.p.filename, run_name(path));
    try {
        const toml::table root = toml::parse(std::string_view(settings_of(file)), std::string_view(path));
        NetworkReader reader(network, faults);
        reader.read(file, root);
        if (take && faults.empty()) reader.visit(take);
    } catch (const toml::parse_error &error) {
        if (!tell_open_text(file, faults))
            faults.add(place_of(error.source()), std::string(error.description()), "correct it as TOML");
    } catch (const std::logic_error &) {
        faults.add({0, 0, 0}, "settings are not TOML", "compare them with the reference");
    }
    if (!faults.empty()) return false;
    for (int i = 0; i < faults.file_count(); i++) network.files.push_back(faults.file(i));
    model = std::move(network);
    model.attach();
    return true;
}

} // namespace

bool read_network(const std::string &path, Model &model, Faults &faults, Mode usual)
{
    model = Model();
    model.mode = usual;
    faults = Faults();
    TextFile file;
    return file.read(path, Source(), faults) && read_text(path, file, model, faults);
}

bool read_network_text(const std::string &name, std::string_view text, Model &model, Faults &faults, Mode usual)
{
    model = Model();
    model.mode = usual;
    faults = Faults();
    TextFile file;
    return file.take(name, text, faults) && read_text(name, file, model, faults);
}

bool read_network_text(const std::string &name, MadeText made, Model &model, Faults &faults)
{
    model = Model();
    faults = Faults();
    TextFile file;
    const bool taken = file.take(name, made.text, faults);
    for (const std::string &source : made.sources) faults.add_file(source);
    if (!taken) return false;
    file.stands_for(std::move(made.origins));
    return read_text(name, file, model, faults);
}

bool visit_tables(const std::string &name, std::string_view text, Faults &faults,
                  const std::function<void(const Table &)> &take)
{
    Model unused;
    TextFile file;
    return file.take(name, text, faults) && read_text(name, file, unused, faults, take);
}

} // namespace vornhost
