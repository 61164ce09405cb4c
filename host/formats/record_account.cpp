#include "host/formats/record_account.h"

#include <algorithm>

namespace vornhost {

namespace {

bool before(const Source &a, const Source &b) { return a.line < b.line; }

// "3, 5 to 9, 12": lines in order.
std::string line_list(const std::vector<Source> &places, size_t from)
{
    std::string text;
    for (size_t i = from; i < places.size();) {
        size_t end = i;
        while (end + 1 < places.size() && places[end + 1].line <= places[end].line + 1) end++;
        text += (text.empty() ? "" : ", ") + std::to_string(places[i].line);
        if (places[end].line > places[i].line) text += " to " + std::to_string(places[end].line);
        i = end + 1;
    }
    return text;
}

std::string other_lines(const std::vector<Source> &places)
{
    if (places.size() < 2) return std::string();
    return (places.size() == 2 ? " (so is line " : " (so are lines ") + line_list(places, 1) + ")";
}

} // namespace

void RecordAccount::close(Draft &draft)
{
    size_t lost = 0;
    for (auto &[reason, places] : left_out) {
        lost += places.size();
        std::stable_sort(places.begin(), places.end(), before);
        notes.push_back({places[0], std::string("left out: ").append(reason).append(other_lines(places))});
    }
    std::stable_sort(notes.begin(), notes.end(),
                     [](const DraftNote &a, const DraftNote &b) { return before(a.at, b.at); });
    draft.notes.insert(draft.notes.end(), notes.begin(), notes.end());
    draft.notes.push_back({Source(), "records read " + std::to_string(read) + " = taken " +
                                         std::to_string(read - std::min(lost, read)) + " + left out " +
                                         std::to_string(lost)});
}

} // namespace vornhost
