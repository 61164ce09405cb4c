#include "host/formats/datum_options.h"

#include <algorithm>
#include <map>
#include <set>

#include "host/formats/import.h"

namespace vornhost {

namespace {

using PointPlaces = std::map<std::string, size_t>;

PointPlaces places_of(const Draft &draft)
{
    PointPlaces places;
    for (size_t i = 0; i < draft.points.size(); i++) places.insert({draft.points[i].name, i});
    return places;
}

// Before the account, which stays the last note.
void add_note(Draft &draft, const std::string &text)
{
    const auto last = draft.notes.empty() ? draft.notes.end() : draft.notes.end() - 1;
    draft.notes.insert(last, {Source(), text});
}

void unknown_point(const std::string &name, const char *option, Faults &faults)
{
    faults.add(Source(), std::string(option) + " names point " + quote(name) + ", which no observation reaches",
               "write names as the file has them");
}

// Holds what has values; false when there is nothing to hold.
bool fix(DraftPoint &point, int dimension)
{
    const size_t first = dimension == 1 ? 2 : 0, end = dimension == 2 ? 2 : 3;
    bool any = false;
    for (size_t axis = first; axis < end; axis++) {
        if (!point.value[axis]) continue;
        point.code[axis] = CODE_FIXED;
        any = true;
    }
    return any;
}

} // namespace

bool add_known_points(const ImportOptions &options, Draft &draft, Faults &faults)
{
    if (options.points.empty()) return true;
    Draft known;
    if (!import_file(options.points, std::nullopt, known, faults)) return false;
    const PointPlaces places = places_of(draft);
    size_t taken = 0;
    for (const DraftPoint &point : known.points) {
        const auto place = places.find(point.name);
        if (place == places.end()) continue;
        draft.points[place->second].value = point.value;
        taken++;
    }
    // Its account is not that of the network.
    for (size_t i = 0; i + 1 < known.notes.size(); i++)
        add_note(draft, options.points +
                            (known.notes[i].at.line > 0 ? ":" + std::to_string(known.notes[i].at.line) : "") + ": " +
                            known.notes[i].text);
    add_note(draft, "coordinates of " + std::to_string(taken) + " points are from " + options.points + ", which has " +
                        std::to_string(known.points.size()));
    return true;
}

bool choose_datum(const ImportOptions &options, Draft &draft, Faults &faults)
{
    const PointPlaces places = places_of(draft);
    const std::set<std::string> datum(options.datum.begin(), options.datum.end());
    for (const std::string &name : datum)
        if (!places.count(name)) unknown_point(name, "--datum", faults);
    for (DraftPoint &point : draft.points)
        for (int &code : point.code)
            if (code == CODE_FREE && !datum.empty() && !datum.count(point.name)) code = CODE_NO_DATUM;
    for (const std::string &name : options.fixed) {
        const auto place = places.find(name);
        if (place == places.end())
            unknown_point(name, "--fix", faults);
        else if (!fix(draft.points[place->second], draft.dimension))
            faults.add(Source(), "--fix names point " + quote(name) + ", which has no coordinates",
                       "give them in a file with --points FILE");
    }
    return faults.empty();
}

} // namespace vornhost
