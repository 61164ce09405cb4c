// Faults of an input: each is one line with file, line and column, what is wrong, and
// what would be right, as compilers write them.

#ifndef VORNHOST_FAULTS_H
#define VORNHOST_FAULTS_H

#include <string>
#include <string_view>
#include <vector>

#include "host/input/model.h"

namespace vornhost {

struct Fault {
    std::string file; // as the user named it
    Source at;        // line and column 0: the fault concerns the file as a whole
    std::string what;
    std::string remedy;

    // "net.inp:12:25: what; remedy", without a newline; control characters are escaped.
    std::string line() const;
};

// Keeps the first faults in the order of their places, and counts all of them.
class Faults {
public:
    static constexpr size_t limit = 50;

    // Number of a file in the places of later faults.
    int add_file(const std::string &path);
    int file_count() const { return (int)files.size(); }
    const std::string &file(int index) const { return files[(size_t)index]; }

    void add(Source at, std::string what, std::string remedy);

    // False when a fault at this place would only be counted: its text, above all a
    // search for a similar name, need not be made.
    bool wants(Source at) const;

    bool empty() const { return total == 0; }
    size_t count() const { return total; }
    const std::vector<Fault> &kept() const { return faults; }

    // A line for each fault kept, and one that counts the others if there are any.
    std::vector<std::string> lines() const;

private:
    std::vector<std::string> files;
    std::vector<Fault> faults; // sorted by place
    size_t total = 0;
};

// Text in quotation marks for a message: at most 40 characters, control characters escaped.
std::string quote(std::string_view text);

// The text with control characters, line ends and broken UTF-8 written as \xNN or \uNNNN.
std::string printable(std::string_view text);

} // namespace vornhost

#endif
