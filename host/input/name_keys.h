// Names that the engine's records have no room for. A record holds 8 bytes of a name: a longer one stands in it as a
// key, "@12", and everything that a user reads shows the name again.

#ifndef VORNHOST_NAME_KEYS_H
#define VORNHOST_NAME_KEYS_H

#include <stddef.h>

#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace vornhost {

constexpr size_t name_width = 8; // bytes of a name in a record, blanks at the end included

class NameKeys {
public:
    // Makes a key for a name of more than 8 bytes. taken tells of a word whether it is somebody's own name, which is no
    // key then. A second call for the same name makes nothing.
    void add(std::string_view name, const std::function<bool(std::string_view)> &taken);

    // What a record holds for a name: its key, or the name itself; nothing for one that it can hold neither way.
    std::string key(std::string_view name) const;

    // The name that a field of a record stands for, without the blanks at its end.
    std::string_view name(std::string_view field) const;

    bool empty() const { return numbers.empty(); }

    // All names that have keys, in the order of these; those that no key stands for are empty.
    const std::deque<std::string> &all() const { return names; }
    static std::string word(size_t index); // the key of all()[index]

    // A line with its keys replaced by the names, cut where out (size bytes, with a zero byte at the end) is full.
    // Takes no memory.
    void replace(const char *line, char *out, size_t size) const;
    std::string replaced(const std::string &line) const;

private:
    // Index of the name whose key the text begins with, and how many bytes the key has; -1: none.
    int index_at(std::string_view text, size_t *length) const;

    std::deque<std::string> names;
    std::unordered_map<std::string_view, int> numbers; // index by name
};

} // namespace vornhost

#endif
