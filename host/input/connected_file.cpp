#include "host/input/connected_file.h"

#include <stdio.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>

#include "host/input/faults.h"
#include "host/input/names.h"

namespace vornhost {

namespace {

constexpr int most_points = 10000;

bool read_head(const std::string &line, int *points, int *dimension)
{
    char word[80];
    const int n =
        sscanf(line.c_str(), "%79s%79s%79s%9d%79s%79s%79s%9d", word, word, word, points, word, word, word, dimension);
    return n == 8 && *points > 0 && *points <= most_points && *dimension >= 1 && *dimension <= 3;
}

// The name at the beginning of a line; returns where it ends.
size_t read_name(const std::string &line, std::string &name)
{
    size_t at = 1;
    for (; line[0] == '"' && at < line.size(); at++) {
        if (line[at] == '"' && line[++at] != '"') return at;
        name += line[at];
    }
    name = line.substr(0, std::min(line.find_last_not_of(' ', name_width - 1) + 1, name_width));
    return name_width;
}

// The name as it stands in the file, with blanks up to 8 bytes.
std::string written_name(const std::string &name)
{
    if (name.size() <= name_width && name[0] != '"') return name + std::string(name_width - name.size(), ' ');
    std::string text = "\"";
    for (const char c : name) text += c == '"' ? std::string(2, c) : std::string(1, c);
    return text + "\"";
}

bool read_point(const std::string &line, ConnectedFile &content)
{
    std::array<double, 3> x;
    std::string name;
    const size_t end = read_name(line, name);
    if (line.size() <= end || sscanf(line.c_str() + end, "%lf%lf%lf", &x[0], &x[1], &x[2]) != 3) return false;
    for (double c : x)
        if (!std::isfinite(c)) return false;
    content.names.push_back(name);
    content.coordinates.push_back(x);
    return true;
}

size_t packed_size(size_t n) { return n * (n + 1) / 2; }

} // namespace

std::string read_connected_file(const std::string &path, ConnectedFile &content)
{
    content = ConnectedFile();
    const std::string name = "the file of the connected net " + quote(path);
    std::ifstream file(path);
    std::string line;
    int points = 0;
    if (!file) return name + " cannot be opened";
    if (!std::getline(file, line) || !read_head(line, &points, &content.dimension))
        return name + " does not begin with the heading of a connected net";
    for (int i = 0; i < points; i++)
        if (!std::getline(file, line) || !read_point(line, content))
            return name + " does not hold a name and three coordinates in line " + std::to_string(i + 2);
    const size_t wanted = packed_size((size_t)content.dimension * (size_t)points);
    for (double q; std::getline(file, line) && content.cofactors.size() <= wanted;) {
        if (sscanf(line.c_str(), "%lf", &q) != 1 || !std::isfinite(q)) break;
        content.cofactors.push_back(q);
    }
    if (content.cofactors.size() != wanted)
        return name + " does not hold the " + std::to_string(wanted) + " cofactors that its heading promises";
    return {};
}

std::string connected_text(const std::string &name, const ConnectedFile &content)
{
    char line[400];
    snprintf(line, sizeof line, " for %d connections in dimension %d\n", (int)content.names.size(), content.dimension);
    std::string text = "File: " + name + line;
    for (size_t i = 0; i < content.names.size(); i++) {
        const std::array<double, 3> &x = content.coordinates[i];
        snprintf(line, sizeof line, "  %22.6f%22.6f%22.6f\n", x[0], x[1], x[2]);
        text += written_name(content.names[i]) + line;
    }
    for (double q : content.cofactors) {
        snprintf(line, sizeof line, "%25.21f\n", q);
        text += line;
    }
    return text;
}

} // namespace vornhost
