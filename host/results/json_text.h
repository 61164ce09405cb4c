// JSON as it grows: objects and arrays are opened, filled and closed, and the text goes on in pieces, so that a large
// one never stands in memory. Two blanks a level, and each object of a list on one line, as a table has its rows;
// numbers read back exactly, those that are not finite are null; bytes that are not UTF-8 are replaced.

#ifndef VORNHOST_JSON_TEXT_H
#define VORNHOST_JSON_TEXT_H

#include <string.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vornhost {

class JsonText {
public:
    using Take = std::function<void(std::string_view)>;

    explicit JsonText(Take its_take) : take(std::move(its_take)) {}

    JsonText &key(std::string_view name); // plain letters; the next value is that of this key
    template <size_t size> JsonText &key(const char (&name)[size])
    {
        constexpr size_t marks = 6; // before and behind it
        if (!in_row() || size - 1 + marks > room - used) return key(std::string_view(name, size - 1));
        char *to = text.data() + used;
        if (!levels.back().empty) to = copied(", ", 2, to);
        levels.back().empty = false;
        *to++ = '"';
        to = copied(name, size - 1, to);
        used = (size_t)(copied("\": ", 3, to) - text.data());
        keyed = true;
        return *this;
    }
    void open_object() { open('{'); }
    void open_array() { open('['); }
    void close(); // the innermost object or array

    void value(double number);
    void value(int number);
    void value(bool truth);
    void value(std::string_view words);
    void value(const char *words) { value(std::string_view(words)); }
    void null();

    // A name is a text or a literal, which is copied faster.
    template <class Name, class Value> void pair(const Name &name, const Value &v)
    {
        key(name);
        value(v);
    }
    template <class Name, class Value> void pair(const Name &name, const std::optional<Value> &v)
    {
        if (v) pair(name, *v);
    }

    // Hands on what is left, with a line end.
    void finish();

private:
    struct Level {
        char end;
        bool row = false; // on one line
        bool empty = true;
    };

    static char *copied(const char *from, size_t n, char *to)
    {
        memcpy(to, from, n);
        return to + n;
    }

    void open(char bracket);
    bool in_row() const { return !keyed && !levels.empty() && levels.back().row; }
    void separate()
    {
        if (keyed)
            keyed = false;
        else
            separate_elements();
    }
    void separate_elements();
    void add(std::string_view words)
    {
        if (words.size() > room - used) return add_beyond(words);
        memcpy(text.data() + used, words.data(), words.size());
        used += words.size();
    }
    void add(char c)
    {
        if (used == room) hand_on();
        text[used++] = c;
    }
    void add_beyond(std::string_view words); // what is left of the room
    void hand_on();

    static constexpr size_t room = 1 << 16; // bytes handed on at once

    Take take;
    std::vector<char> text = std::vector<char>(room);
    size_t used = 0;          // of the room
    std::string start = "\n"; // of a line outside rows: two blanks a level
    std::vector<Level> levels;
    bool keyed = false; // a key stands there without its value
};

} // namespace vornhost

#endif
