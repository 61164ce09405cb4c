#include "host/input/section.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "host/input/table.h"

namespace vornhost {

void check_section(const SectionKeys &section, const toml::node &node, Faults &faults)
{
    const std::string name = "[" + section.name + "]";
    if (!node.is_table()) {
        faults.add(place_of(node.source()), section.name + " is not a section",
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

// Place in the network file, which is the first of all files.
Source place_of(const toml::source_region &region)
{
    return {0, std::max(1, (int)region.begin.line), std::max(1, (int)region.begin.column)};
}

Section::Section(const toml::table &root, const char *section, Faults &all) : label(section), faults(all)
{
    table = root[section].as_table();
}

void Section::fault(const toml::node &node, const std::string &what, const std::string &remedy)
{
    faults.add(place_of(node.source()), what, remedy);
}

std::string Section::text(const char *key)
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

double Section::number(const char *key, double otherwise, bool (*allowed)(double), const char *range)
{
    const toml::node *node = find(key);
    if (!node) return otherwise;
    const std::optional<double> value = node->is_number() ? node->value<double>() : std::nullopt;
    if (value && std::isfinite(*value) && allowed(*value)) return *value;
    fault(*node, name(key) + " is not a number " + range, std::string("write a number ") + range);
    return otherwise;
}

int Section::whole(const char *key, int otherwise, int least, int most)
{
    const toml::node *node = find(key);
    if (!node) return otherwise;
    const std::optional<int64_t> value = node->is_integer() ? node->value<int64_t>() : std::nullopt;
    if (value && *value >= least && *value <= most) return (int)*value;
    const std::string range = "from " + std::to_string(least) + " to " + std::to_string(most);
    fault(*node, name(key) + " is not a whole number " + range, "write a whole number " + range);
    return otherwise;
}

int Section::word(const char *key, int otherwise, const Words &words, bool numbers)
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

} // namespace vornhost
