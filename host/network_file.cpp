#include "network_file.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <filesystem>
#include <stdexcept>
#include <string_view>

#include "angle.h"
#include "lump_checks.h"
#include "network_tables.h"
#include "toml_guard.h"

// The parser's own checks would end the program. Some input makes them fail, so they
// throw instead; the check of a key's first letter is left to the code that follows it,
// which reports the fault with its place.
static constexpr void check_parser(bool good, std::string_view condition)
{
    if (!good && condition.substr(0, 21) != "is_bare_key_character") throw std::logic_error(condition.data());
}

#undef NDEBUG
#define TOML_ASSERT(condition) check_parser(static_cast<bool>(condition), #condition)
#include <toml++/toml.h>

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
        {"run", {"title", "dimension", "solver", "mode", "iterations", "convergence", "trace"}},
        {"units", {"length", "angle", "vertical"}},
        {"earth", {"model", "radius", "origin", "height", "latitude", "azimuth_rotation"}},
        {"reductions", {"distances"}},
        {"apriori",
         {"distances", "height_differences", "directions", "vertical_angles", "azimuths", "baselines", "images"}},
        {"sigma", {"distances", "height_differences", "directions", "vertical_angles", "azimuths"}},
        {"baselines", {"datum_rule"}},
        {"lumps", {"method"}},
        {"connected_net", {"file"}},
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
bool within_quarter(double value) { return std::fabs(value) < 90.0; }
bool sensible_length(double value) { return std::fabs(value) <= largest_length; }

constexpr int not_given = -1;

// Reads one network file; the members are what its steps share.
class NetworkReader {
public:
    NetworkReader(Model &model, Faults &all) : net(model, all), p(model.p), faults(all) {}

    void read(const TextFile &file, const toml::table &root);

private:
    void check_keys(const toml::table &root);
    void check_section(const SectionKeys &section, const toml::node &node);
    void stray_key(const toml::key &key, const toml::node &node);

    void read_run(const toml::table &root);
    void read_units(const toml::table &root);
    void read_earth(const toml::table &root);
    void read_origin(Section &earth);
    void read_weights(const toml::table &root);
    void read_reduction(const toml::table &root);
    void read_methods(const toml::table &root);
    void read_connected_net(const toml::table &root);

    void find_tables(const TextFile &file, const toml::table &root);
    void find_table(const TextFile &file, TableId id, const toml::node &node);
    void open_table(TableId id, const toml::table &entry);
    bool named(TableId id) const { return in_file[id]; }

    void read_tables();
    void check_network();
    void check_imports();

    Network net;
    project &p;
    Faults &faults;
    std::deque<TextFile> files; // of the tables outside the network file
    std::array<bool, TABLE_COUNT> in_file{};
};

void NetworkReader::read(const TextFile &file, const toml::table &root)
{
    check_keys(root);
    read_run(root);
    read_units(root);
    read_earth(root);
    read_weights(root);
    find_tables(file, root);
    read_methods(root);
    read_connected_net(root);
    read_tables();
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
        if (std::find(section.keys.begin(), section.keys.end(), word) != section.keys.end()) continue;
        const Source at = place_of(key.source());
        faults.add(at, "unknown key " + quote(word) + " in " + name,
                   faults.wants(at) ? suggestion(word, section.keys, "known keys") : std::string());
    }
}

void NetworkReader::read_run(const toml::table &root)
{
    static const Words solvers = {
        {"compact", (int)Solver::Compact}, {"jordan", (int)Solver::Jordan}, {"simplex", (int)Solver::Simplex}};
    static const Words modes = {{"statistics", (int)Mode::Statistics},
                                {"solution", (int)Mode::Solution},
                                {"propagation", (int)Mode::Propagation}};
    Section run(root, "run", faults);
    net.model.title = run.text("title");
    if (!run.find("dimension")) faults.add(run.place(), "dimension is missing in [run]", "write dimension = 1, 2 or 3");
    p.dim = run.whole("dimension", 0, 1, 3);
    net.model.solver = (Solver)run.word("solver", (int)Solver::Compact, solvers);
    net.model.mode = (Mode)run.word("mode", (int)Mode::Statistics, modes);
    p.itmax = run.whole("iterations", 20, 1, 1000);
    p.convergence = run.number("convergence", 1e-6, above_zero, "above 0");
    p.idebug = run.whole("trace", 0, 0, 9);
    const bool simplex = net.model.solver == Solver::Simplex, propagation = net.model.mode == Mode::Propagation;
    p.irun = simplex ? -1 : propagation ? -2 : net.model.mode == Mode::Solution ? 0 : 1;
    if (simplex && propagation)
        run.fault(*run.find("mode"), "the simplex solver has no error propagation", "choose compact or jordan");
}

void NetworkReader::read_units(const toml::table &root)
{
    static const Words lengths = {{"m", 0}, {"mm", 1}, {"inch", 2}};
    static const Words angles = {
        {"gon", ANGLE_GON}, {"degree", ANGLE_DEGREE}, {"packed_degree", ANGLE_PACKED}, {"radian", ANGLE_RADIAN}};
    static const Words verticals = {{"zenith", 1}, {"elevation", 0}};
    static const double metres[] = {1.0, 0.001, 0.0254};
    Section units(root, "units", faults);
    p.iunit = units.word("length", 0, lengths);
    p.iangle = units.word("angle", ANGLE_GON, angles);
    p.izenith = units.word("vertical", 1, verticals);
    net.metres = metres[p.iunit];
}

void NetworkReader::read_earth(const toml::table &root)
{
    static const Words models = {{"none", 0}, {"cartesian", 1}, {"mixed", 2}};
    Section earth(root, "earth", faults);
    p.iearth = earth.word("model", 0, models);
    p.radius = earth.number("radius", 6371000.0, above_zero, "above 0");
    p.horigin = earth.number("height", 0.0, sensible_length, "of metres");
    p.latitude = earth.number("latitude", 0.0, within_quarter, "between -90 and 90");
    const double turn = earth.number("azimuth_rotation", 0.0, any, "in the file's unit of angle");
    if (!readable_angle(p.iangle, turn))
        earth.fault(*earth.find("azimuth_rotation"),
                    earth.name("azimuth_rotation") + " has minutes or seconds of 60 or more",
                    "write degrees as ddd.mmss");
    else
        p.azrot = to_radians(p.iangle, turn);
    read_origin(earth);
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

void NetworkReader::read_weights(const toml::table &root)
{
    Section apriori(root, "apriori", faults), sigma(root, "sigma", faults);
    const std::pair<const char *, double *> lists[] = {{"distances", &p.sdist},  {"height_differences", &p.sdifh},
                                                       {"directions", &p.sdir1}, {"vertical_angles", &p.sdir2},
                                                       {"azimuths", &p.saz},     {"baselines", &p.sgps},
                                                       {"images", &p.suv}};
    for (const auto &[key, value] : lists) *value = apriori.number(key, 1.0, above_zero, "above 0");
    for (int id = TABLE_DISTANCES; id <= TABLE_AZIMUTHS; id++) {
        const char *const key = table_names[id];
        const double value = sigma.number(key, 0.0, above_zero, "above 0");
        const bool angle = id == TABLE_DIRECTIONS || id == TABLE_VERTICAL_ANGLES || id == TABLE_AZIMUTHS;
        if (angle && !readable_angle(p.iangle, value))
            sigma.fault(*sigma.find(key), sigma.name(key) + " has minutes or seconds of 60 or more",
                        "write degrees as ddd.mmss");
        net.sigma[(size_t)id] = value;
    }
}

// Horizontal distances belong into the plane: in space they would be compared with slopes.
void NetworkReader::read_reduction(const toml::table &root)
{
    static const Words reductions = {
        {"none", 0}, {"mark_to_mark", 1}, {"horizontal_mixed", 2}, {"horizontal_origin", 9}};
    Section section(root, "reductions", faults);
    p.iredux = section.word("distances", 0, reductions, true);
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
    if (!named(TABLE_BASELINES)) p.igps = 0;
    p.lumpmethod = Section(root, "lumps", faults).word("method", not_given, methods, true);
    p.iphoto = named(TABLE_IMAGES) ? 1 : 0;
}

void NetworkReader::read_connected_net(const toml::table &root)
{
    Section section(root, "connected_net", faults);
    const toml::node *node = section.find("file");
    const std::string written = section.text("file");
    if (!node || written.empty()) return;
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
    for (const auto &[key, value] : entry)
        if (key != "file")
            faults.add(place_of(key.source()), "unknown key " + quote(std::string(key.str())) + " in " + name,
                       "known key: file");
    const toml::value<std::string> *file = entry["file"].as_string();
    if (!file) {
        faults.add(place_of(entry.source()), name + " names no file",
                   "write { file = \"" + std::string(table_names[id]) + ".csv\" }");
        return;
    }
    const Source at = place_of(file->source());
    const auto path = std::filesystem::path(net.model.path).parent_path() / file->get();
    TextFile &text = files.emplace_back();
    if (!text.read(path.string(), at, faults)) return;
    const Source heading = {text.file(), 1, 1};
    net.tables[id] =
        std::make_unique<Table>(table_names[id], Passage(text, 0, text.text().size()), Layout::Commas, heading);
}

void NetworkReader::read_tables()
{
    read_groups(net);
    read_stations(net);
    read_targets(net);
    read_measures(net);
    read_baselines(net);
    read_cameras(net);
    read_images(net);
    read_lumps(net);
    read_pairs(net);
}

void NetworkReader::check_network()
{
    if (p.lumpmethod == not_given) p.lumpmethod = named(TABLE_LUMPS) || has_lumps(net.model) ? 1 : 0;
    check_lumps(net.model, faults);
    if (!named(TABLE_STATIONS) && !named(TABLE_TARGETS))
        faults.add({0, 0, 0}, "no points", "list them in table stations or targets");
    bool observed = named(TABLE_IMAGES) || named(TABLE_BASELINES);
    for (int id = TABLE_DISTANCES; id <= TABLE_AZIMUTHS; id++) observed = observed || named((TableId)id);
    if (!observed) faults.add({0, 0, 0}, "no observations", "list them in a table such as distances");
    if (net.model.images.size() > 0 && (p.dim == 1 || p.dim == 2))
        faults.add(net.model.images.where[0], "images need three dimensions", "write dimension = 3 in [run]");
    check_imports();
}

// Imported points take their coordinates from the file of the connected net.
void NetworkReader::check_imports()
{
    if (p.confile[0] != '\0') return;
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

// The engine finds the extension behind the first point, and its files take no blanks.
std::string run_name(const std::string &path)
{
    std::string stem = std::filesystem::path(path).filename().string();
    stem = stem.substr(0, std::min(stem.find('.', 1), sizeof(project::filename) - 5));
    for (char &c : stem)
        if (c == '.' || (unsigned char)c <= ' ') c = '_';
    return stem + ".inp";
}

} // namespace

bool read_network(const std::string &path, Model &model, Faults &faults)
{
    model = Model();
    faults = Faults();
    TextFile file;
    if (!file.read(path, Source(), faults) || !check_toml(file, faults)) return false;
    Model network;
    network.path = path;
    network.p.imixed = -1;
    copy_text(network.p.filename, sizeof network.p.filename, run_name(path));
    try {
        const toml::table root = toml::parse(std::string_view(file.text()), std::string_view(path));
        NetworkReader(network, faults).read(file, root);
    } catch (const toml::parse_error &error) {
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

} // namespace vornhost
