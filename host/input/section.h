// A section of the settings of a network file: its keys with their checks, each fault with its place.

#ifndef VORNHOST_SECTION_H
#define VORNHOST_SECTION_H

#include <string>
#include <vector>

#include "host/input/faults.h"
#include "host/input/row.h"
#include "host/input/toml_parser.h"

namespace vornhost {

// A section and its keys; without keys they are names that the file chooses.
struct SectionKeys {
    std::string name;
    std::vector<std::string> keys;
};

// A fault for a node that is no section, and for each of its keys that the section does not have.
void check_section(const SectionKeys &section, const toml::node &node, Faults &faults);

// Place in the network file, which is the first of all files.
Source place_of(const toml::source_region &region);

// The settings of one section. Each getter reports what is wrong with the value of its
// key and then returns the default.
class Section {
public:
    Section(const toml::table &root, const char *section, Faults &all);

    // The table that a key holds, as a section.
    Section inner(const char *key) const { return Section(*table, key, faults); }

    const toml::node *find(const char *key) const { return table ? table->get(key) : nullptr; }
    Source place() const { return table ? place_of(table->source()) : Source{0, 0, 0}; }

    void fault(const toml::node &node, const std::string &what, const std::string &remedy);

    std::string name(const char *key) const { return std::string(key) + " in [" + label + "]"; }

    std::string text(const char *key);

    // A finite number for which allowed holds; range says which those are.
    double number(const char *key, double otherwise, bool (*allowed)(double), const char *range);

    int whole(const char *key, int otherwise, int least, int most);

    // One of the words, or one of their numbers when numbers are allowed.
    int word(const char *key, int otherwise, const Words &words, bool numbers = false);

private:
    std::string label;
    Faults &faults;
    const toml::table *table;
};

// Ranges of numbers.
inline bool any(double) { return true; }
inline bool above_zero(double value) { return value > 0.0; }
inline bool between_0_and_1(double value) { return value > 0.0 && value < 1.0; }
inline bool from_0_below_1(double value) { return value >= 0.0 && value < 1.0; }
inline bool sensible_level(double value) { return value >= 1e-12 && value <= 0.5; }
inline bool within_quarter(double value) { return std::fabs(value) < 90.0; }
inline bool sensible_year(double value) { return value >= 1800.0 && value <= 2200.0; }
inline bool sensible_scale(double value) { return value >= 0.5 && value <= 2.0; }
inline bool sensible_slope(double value) { return std::fabs(value) <= 10.0; }
inline bool within_turn(double value) { return std::fabs(value) <= 360.0; }
inline bool sensible_length(double value) { return std::fabs(value) <= largest_length; }

} // namespace vornhost

#endif
