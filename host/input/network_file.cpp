#include "host/input/network_file.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string_view>

#include "host/input/covariances.h"
#include "host/input/network_tables.h"
#include "host/input/open_text.h"
#include "host/input/point_parts.h"
#include "host/input/section.h"
#include "host/input/settings.h"
#include "host/input/table_sources.h"
#include "host/input/toml_parser.h"
#include "host/input/toml_texts.h"
#include "host/preparation/lump_checks.h"

namespace vornhost {

namespace {

using TakeTable = std::function<void(const Table &)>;

void read_tables(Network &net)
{
    enter_names(net);
    read_groups(net);
    read_stations(net);
    read_targets(net);
    if (!net.model.share.whole()) net.model.part_of = parts_of_points(net.model);
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

// Imported points take their coordinates from the file of the connected net.
void check_imports(Network &net)
{
    if (net.connected_net) return;
    const auto check = [&net](const auto &list) {
        for (size_t i = 0; i < list.size(); i++) {
            if (list.records[i].iconn != 2) continue;
            net.faults.add(list.where[i], "imported point without a connected net", "write file in [connected_net]");
            return;
        }
    };
    check(net.model.stations);
    check(net.model.targets);
}

// The heading of the file of exported points, "File: NAME.con for 12 connections in dimension 3", is
// read back with 78 letters.
void check_exports(Network &net)
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
    net.faults.add(first, name + ".con, which the exported points need, has too long a name to be read back",
                   "give the network file a name of at most " + std::to_string(heading - words.size()) +
                       " bytes before its extension");
}

void check_network(Network &net)
{
    if (net.model.p.lumpmethod == no_lump_method)
        net.model.p.lumpmethod = net.named[TABLE_LUMPS] || has_lumps(net.model) ? 1 : 0;
    if (net.model.share.whole()) check_lumps(net.model, net.faults);
    if (!net.named[TABLE_STATIONS] && !net.named[TABLE_TARGETS])
        net.faults.add({0, 0, 0}, "no points", "list them in table stations or targets");
    bool observed = net.named[TABLE_IMAGES] || net.named[TABLE_BASELINES];
    for (int id = TABLE_DISTANCES; id <= TABLE_AZIMUTHS; id++) observed = observed || net.named[(size_t)id];
    for (int id = TABLE_HORIZONTAL_DISTANCES; id <= TABLE_SCALE_BARS; id++)
        observed = observed || net.named[(size_t)id];
    if (!observed) net.faults.add({0, 0, 0}, "no observations", "list them in a table such as distances");
    if (net.model.images.size() > 0 && (net.model.p.dim == 1 || net.model.p.dim == 2))
        net.faults.add(net.model.images.where[0], "images need three dimensions", "write dimension = 3 in [run]");
    check_imports(net);
    check_exports(net);
}

// Reads a parsed network file, in the order in which one thing needs another. Where there is one, `take` gets the
// tables.
void read_parsed(const TextFile &file, const toml::table &root, Network &net, const TakeTable &take)
{
    check_sections(root, net.faults);
    read_run(root, net);
    read_units(root, net);
    read_earth(root, net);
    read_crs(root, net);
    read_weights(root, net);
    TableSources sources(net, file);
    sources.find_tables(root);
    read_reductions(root, net);
    read_methods(root, net);
    read_tests(root, net);
    read_connected_net(root, net);
    sources.find_covariances(root);
    read_tables(net);
    if (net.model.share.whole()) complete_covariances(net, sources.matrices);
    check_network(net);
    if (!take || !net.faults.empty()) return;
    for (const std::unique_ptr<Table> &table : net.tables) {
        if (!table) continue;
        table->keep_rows();
        take(*table);
    }
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

// Reads the network out of its text, which is in memory. The mode of the model is the usual one.
bool read_text(const std::string &path, const TextFile &file, Model &model, Faults &faults,
               const TakeTable &take = TakeTable())
{
    if (!check_depth(file, faults)) return false;
    Model network;
    network.mode = model.mode;
    network.share = model.share;
    network.path = path;
    network.p.imixed = -1;
    copy_text(network.p.filename, sizeof network.p.filename, run_name(path));
    try {
        const toml::table root = toml::parse(std::string_view(settings_of(file)), std::string_view(path));
        Network net(network, faults);
        net.digest(file);
        read_parsed(file, root, net, take);
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

bool read_network(const std::string &path, Model &model, Faults &faults, Mode usual, FileShare share)
{
    model = Model();
    model.mode = usual;
    model.share = share;
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
