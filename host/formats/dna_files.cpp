#include "host/formats/dna_files.h"

#include <cctype>
#include <filesystem>

#include "host/formats/dna_columns.h"
#include "host/formats/dynaml.h"

namespace vornhost {

namespace {

// The file of stations beside one of measurements, whose name ends in one of these; empty when there is none.
std::string stations_beside(const std::string &path, const std::string &measures, const std::string &stations)
{
    for (const bool capitals : {false, true}) {
        std::string from = measures, to = stations;
        for (std::string *text : {&from, &to})
            for (char &c : *text)
                if (capitals) c = (char)std::toupper((unsigned char)c);
        if (path.size() < from.size() || path.compare(path.size() - from.size(), from.size(), from) != 0) continue;
        std::string other = path.substr(0, path.size() - from.size()) + to;
        std::error_code ignored;
        if (std::filesystem::is_regular_file(other, ignored)) return other;
    }
    return std::string();
}

// What was found in the other file has no line in this one.
bool finish(const DnaNetwork &network, const std::string &stations, const std::string &geoid, Draft &draft,
            Faults &faults)
{
    if (network.measures.empty() && faults.empty())
        faults.add({0, 0, 0}, "the file holds no measurements",
                   "name the file of measurements, beside which its stations stand");
    if (!faults.empty() || !draft_dna(network, {0, 0, 0}, geoid, draft, faults)) return false;
    for (DraftPoint &point : draft.points)
        if (point.where.file != 0) point.where = Source();
    for (DraftNote &note : draft.notes) {
        if (note.at.file == 0) continue;
        note.text =
            std::filesystem::path(stations).filename().string() + ":" + std::to_string(note.at.line) + ": " + note.text;
        note.at = Source();
    }
    return true;
}

void note_missing_stations(const std::string &stations, const DnaNetwork &network, Draft &draft)
{
    if (stations.empty() && network.stations.empty())
        draft.notes.push_back(
            {Source(), "no file of stations stands beside it: no station has coordinates or is held"});
}

} // namespace

bool import_dna_columns(const std::string &path, const std::string &geoid, Draft &draft, Faults &faults)
{
    DnaNetwork network;
    TextFile measures, other;
    if (!measures.read_foreign(path, faults)) return false;
    const std::string stations = stations_beside(path, ".msr", ".stn");
    read_dna_columns(measures, network, faults);
    if (!stations.empty() && other.read_foreign(stations, faults)) {
        const std::string frame = network.frame, epoch = network.epoch;
        read_dna_columns(other, network, faults);
        if (!frame.empty()) network.frame = frame, network.epoch = epoch;
    }
    note_missing_stations(stations, network, draft);
    return finish(network, stations, geoid, draft, faults);
}

bool import_dynaml(const std::string &path, const XmlElement &root, const std::string &geoid, Draft &draft,
                   Faults &faults)
{
    DnaNetwork network;
    read_dynaml(root, network, faults);
    const std::string stations = network.stations.empty() ? stations_beside(path, "msr.xml", "stn.xml") : std::string();
    if (!stations.empty()) {
        XmlElement other;
        const std::string frame = network.frame, epoch = network.epoch;
        if (read_xml(stations, other, faults)) read_dynaml(other, network, faults);
        if (!frame.empty()) network.frame = frame, network.epoch = epoch;
    }
    note_missing_stations(stations, network, draft);
    return finish(network, stations, geoid, draft, faults);
}

} // namespace vornhost
