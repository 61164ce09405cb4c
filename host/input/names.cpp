#include "host/input/names.h"

#include <algorithm>

#include "host/input/faults.h"

namespace vornhost {

namespace {

char small(char c) { return c >= 'A' && c <= 'Z' ? (char)(c - 'A' + 'a') : c; }

bool alike(char a, char b) { return small(a) == small(b); }

size_t tolerance(std::string_view word)
{
    if (word.size() < 3) return 1;
    return std::max<size_t>(2, word.size() / 3);
}

} // namespace

std::string held_name(const NameKeys &keys, std::string_view whole)
{
    char field[name_width + 1];
    hold_name(field, keys, whole);
    return field;
}

std::string full_name(const Model &model, std::string_view field) { return std::string(model.keys.name(field)); }

std::string shown_name(const Model &model, std::string_view field) { return printable(model.keys.name(field)); }

size_t distance_of_words(std::string_view a, std::string_view b, size_t limit)
{
    const size_t longer = std::max(a.size(), b.size()), shorter = std::min(a.size(), b.size());
    if (longer - shorter > limit) return limit + 1;
    std::vector<size_t> last, previous(b.size() + 1), row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); j++) previous[j] = j;
    for (size_t i = 1; i <= a.size(); i++) {
        row[0] = i;
        for (size_t j = 1; j <= b.size(); j++) {
            const size_t change = alike(a[i - 1], b[j - 1]) ? 0 : 1;
            row[j] = std::min({previous[j] + 1, row[j - 1] + 1, previous[j - 1] + change});
            const bool swapped = i > 1 && j > 1 && alike(a[i - 1], b[j - 2]) && alike(a[i - 2], b[j - 1]);
            if (swapped) row[j] = std::min(row[j], last[j - 2] + 1);
        }
        last = previous;
        previous = row;
    }
    return std::min(previous[b.size()], limit + 1);
}

Similar::Similar(std::string_view wrong) : wanted(wrong), bound(tolerance(wrong) + 1) {}

void Similar::offer(std::string_view word)
{
    if (bound == 0) return;
    const size_t distance = distance_of_words(wanted, word, bound - 1);
    if (distance >= bound) return;
    bound = distance;
    nearest = word;
}

bool NameIndex::add(std::string_view name, Source at)
{
    if (numbers.count(name)) return false;
    names.emplace_back(name);
    numbers.emplace(names.back(), (int)names.size() - 1);
    places.push_back(at);
    return true;
}

int NameIndex::find(std::string_view name) const
{
    const auto found = numbers.find(name);
    return found == numbers.end() ? -1 : found->second;
}

std::string_view NameIndex::similar(std::string_view name) const
{
    Similar best(name);
    for (const std::string &known : names) best.offer(known);
    return best.best();
}

} // namespace vornhost
