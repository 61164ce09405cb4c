#include "host/input/names.h"

#include <algorithm>

#include "host/input/faults.h"
#include "host/input/utf8.h"

namespace vornhost {

namespace {

char32_t small(char32_t c) { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c; }

void append_characters(std::u32string &out, std::string_view text)
{
    for (size_t at = 0; at < text.size();) {
        const size_t length = utf8_length(text, at);
        out += small(length ? utf8_value(text, at, length) : (unsigned char)text[at]);
        at += length ? length : 1;
    }
}

std::u32string characters(std::string_view text)
{
    std::u32string all;
    append_characters(all, text);
    return all;
}

size_t tolerance(size_t length)
{
    if (length < 3) return 1;
    return std::max<size_t>(2, length / 3);
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

WordDistance::WordDistance(std::string_view one) : a(characters(one)) {}

size_t WordDistance::to(std::string_view other, size_t limit)
{
    b.clear();
    append_characters(b, other);
    const size_t longer = std::max(a.size(), b.size()), shorter = std::min(a.size(), b.size());
    if (longer - shorter > limit) return limit + 1;
    for (auto *line : {&last, &previous, &row}) line->resize(b.size() + 1);
    for (size_t j = 0; j <= b.size(); j++) previous[j] = j;
    for (size_t i = 1; i <= a.size(); i++) {
        if (next_row(i) > limit) return limit + 1;
        last.swap(previous);
        previous.swap(row);
    }
    return std::min(previous[b.size()], limit + 1);
}

// Row i of the table of distances between the first letters of a and b; returns the least in it.
size_t WordDistance::next_row(size_t i)
{
    size_t least = row[0] = i;
    for (size_t j = 1; j <= b.size(); j++) {
        const size_t change = a[i - 1] == b[j - 1] ? 0 : 1;
        row[j] = std::min({previous[j] + 1, row[j - 1] + 1, previous[j - 1] + change});
        const bool swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
        if (swapped) row[j] = std::min(row[j], last[j - 2] + 1);
        least = std::min(least, row[j]);
    }
    return least;
}

size_t distance_of_words(std::string_view a, std::string_view b, size_t limit) { return WordDistance(a).to(b, limit); }

Similar::Similar(std::string_view wrong) : wanted(wrong), bound(tolerance(utf8_count(wrong)) + 1) {}

void Similar::offer(std::string_view word)
{
    if (bound == 0) return;
    const size_t distance = wanted.to(word, bound - 1);
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
