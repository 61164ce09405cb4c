// Names of points as the file has them and as the engine holds them, and the search for what a wrong name may mean.

#ifndef VORNHOST_NAMES_H
#define VORNHOST_NAMES_H

#include <stddef.h>
#include <stdint.h>

#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/input/model.h"

namespace vornhost {

constexpr size_t longest_name = 40; // characters

// Writes what a record holds for the name, with blanks up to 8 bytes and a zero byte.
template <size_t size> void hold_name(char (&field)[size], const NameKeys &keys, std::string_view whole)
{
    static_assert(size > name_width, "a name and its zero byte");
    const std::string name = keys.key(whole);
    for (size_t i = 0; i < size; i++) field[i] = i < name_width ? (i < name.size() ? name[i] : ' ') : '\0';
}

// The same as a text of 8 bytes.
std::string held_name(const NameKeys &keys, std::string_view whole);

// The name that a field of a record stands for: as the file has it, and for messages.
std::string full_name(const Model &model, std::string_view field);
std::string shown_name(const Model &model, std::string_view field);

// Numbers of names in the order in which they were added, found by hash.
class NameIndex {
public:
    NameIndex() = default;
    NameIndex(const NameIndex &) = delete; // its numbers lie by views of its own names
    NameIndex &operator=(const NameIndex &) = delete;

    // False when the name is there already.
    bool add(std::string_view name, Source at);

    // Number of the name, -1 when it is unknown.
    int find(std::string_view name) const;

    // The most similar name, empty when none is similar.
    std::string_view similar(std::string_view name) const;

    Source where(int number) const { return places[(size_t)number]; }
    const std::string &name(int number) const { return names[(size_t)number]; }
    size_t size() const { return names.size(); }

private:
    std::deque<std::string> names; // they stay where they are
    std::vector<Source> places;
    std::unordered_map<std::string_view, int> numbers;
};

// Distances of words from one word; keeps its work space from one to the next.
class WordDistance {
public:
    explicit WordDistance(std::string_view one);
    size_t to(std::string_view other, size_t limit); // as distance_of_words

private:
    size_t next_row(size_t i);

    std::u32string a, b;                     // characters, small where they are letters of ASCII
    std::vector<size_t> last, previous, row; // of the table of distances
};

// Fewest letters to change, insert, leave out or swap with their neighbour to turn a
// into b, capital and small letters of ASCII being alike; limit + 1 if above limit.
size_t distance_of_words(std::string_view a, std::string_view b, size_t limit);

// Keeps the word that is most similar to a wrong one; one that differs in more than a
// third of its letters (but always one or two) is not similar.
class Similar {
public:
    explicit Similar(std::string_view wrong);
    void offer(std::string_view word);
    std::string_view best() const { return nearest; }

private:
    WordDistance wanted;
    std::string_view nearest;
    size_t bound; // a word must be nearer than this
};

} // namespace vornhost

#endif
