#include "host/input/note_columns.h"

namespace vornhost {

namespace {

std::string setup_key(int station, std::string_view word) { return std::to_string(station) + ' ' + std::string(word); }

// An instrument as it stands where the file says nothing: that of the station where rows without a set-up belong to
// it, otherwise with a circle of its own.
SetupRecord default_setup(const Network &net, int station, std::string_view word)
{
    const station_input &s = net.model.stations.records[(size_t)station];
    SetupRecord setup;
    setup.station = station;
    setup.word = word;
    setup.levelled = s.ilevel == 1;
    const int dimension = net.model.p.dim, tilt = setup.levelled ? CODE_FIXED : CODE_FREE;
    for (int k = 0; k < 3; k++) {
        const bool exists = dimension == 3 || (dimension == 2 && k == 2);
        setup.ir[k] = !exists ? CODE_ABSENT : k < 2 ? tilt : CODE_FREE;
        if (!word.empty()) continue;
        setup.r[k] = s.r[k];
        setup.sr[k] = s.sr[k];
        setup.ir[k] = s.ir[k];
    }
    setup.orientation_given = word.empty() && net.model.station_notes[(size_t)station].orientation_given;
    return setup;
}

int read_set(Network &net, std::string_view word)
{
    const auto found = net.sets.emplace(std::string(word), (int)net.model.set_words.size());
    if (found.second) net.model.set_words.emplace_back(word);
    return found.first->second;
}

// The set-up that a row names, or that of its station.
int read_setup(Network &net, Row &row, int column, int station)
{
    const bool at_station = station >= 0 && (size_t)station < net.model.stations.size();
    if (!says(row, column)) return at_station ? own_setup(net, station) : -1;
    const std::string_view word = read_word(row, column);
    if (at_station) return setup_of(net, station, word, row.at(column));
    if (station >= 0)
        row.fault(column, "set-up " + quote(word) + " at a point that is no station", "list the point under stations");
    return -1;
}

int read_covariance(Network &net, Row &row, int column)
{
    const int covariance = net.covariances.find(row.text(column));
    if (covariance < 0)
        row.fault(column, "unknown covariance " + row.cell(column),
                  similar_name(net, net.covariances, row, column, "describe it in a section [covariances.NAME]"));
    return covariance;
}

void read_text(Row &row, int column, std::vector<std::string> &list, size_t index)
{
    if (!says(row, column)) return;
    const std::string text(row.text(column));
    if (printable(text) != text) row.fault(column, row.cell(column) + " holds a control character", "remove it");
    set_note(list, index, text, std::string());
}

} // namespace

std::string_view read_word(Row &row, int column)
{
    const std::string_view word = row.text(column);
    if (word.size() > longest_word)
        row.fault(column,
                  row.cell(column) + " has " + std::to_string(word.size()) + " bytes, at most " +
                      std::to_string(longest_word) + " fit",
                  "shorten it");
    else if (printable(word) != word)
        row.fault(column, row.cell(column) + " holds a control character", "remove it");
    return word;
}

int setup_of(Network &net, int station, std::string_view word, Source at)
{
    const auto found = net.setups.emplace(setup_key(station, word), (int)net.model.setups.size());
    if (found.second) net.model.setups.add(default_setup(net, station, word), at);
    return found.first->second;
}

int own_setup(const Network &net, int station)
{
    if (net.setups.empty()) return -1;
    const auto found = net.setups.find(setup_key(station, ""));
    return found == net.setups.end() ? -1 : found->second;
}

int read_notes(Network &net, Row &row, const NoteColumns &c, int station, RowNotes &notes, size_t index)
{
    read_text(row, c.id, notes.id, index);
    read_text(row, c.remark, notes.remark, index);
    if (says(row, c.covariance)) set_note(notes.covariance, index, read_covariance(net, row, c.covariance), -1);
    const int setup = c.setup < 0 ? -1 : read_setup(net, row, c.setup, station);
    if (setup >= 0) set_note(notes.setup, index, setup, -1);
    if (says(row, c.set)) set_note(notes.set, index, read_set(net, read_word(row, c.set)), -1);
    return setup;
}

void know_stand(Network &net, const Row &row, int station, int setup_column, int set_column)
{
    const bool at_station = station >= 0 && (size_t)station < net.model.stations.size();
    if (at_station && says(row, setup_column)) setup_of(net, station, row.text(setup_column), row.at(setup_column));
    if (says(row, set_column)) read_set(net, row.text(set_column));
}

} // namespace vornhost
