#include "host/input/image_file.h"

#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <fstream>
#include <memory>
#include <sstream>

#include "host/input/names.h"
#include "host/input/row.h"

namespace vornhost {

namespace {

constexpr size_t line_bytes = 90; // the zero byte included

bool is_blank(const char *line) { return line[strspn(line, " \t\r\n")] == '\0'; }

ImageLine image_line(const char *text, int number, bool rest)
{
    ImageLine line;
    line.line = number;
    line.rest = rest;
    const std::string_view name(text, std::min(strcspn(text, "\r\n"), name_width));
    line.name = name.substr(0, name.find_last_not_of(' ') + 1);
    double su, sv;
    const int n = strlen(text) < name_width ? 0 : sscanf(text + name_width, "%lf%lf%lf%lf", &line.u, &line.v, &su, &sv);
    line.numbers = n >= 2;
    if (n >= 3) line.su = su;
    if (n >= 4) line.sv = sv;
    return line;
}

std::optional<std::vector<ImageLine>> read_fixed(const std::string &path)
{
    const std::unique_ptr<FILE, int (*)(FILE *)> file(fopen(path.c_str(), "r"),
                                                      [](FILE *f) { return f ? fclose(f) : 0; });
    if (!file) return std::nullopt;
    std::vector<ImageLine> lines;
    char text[line_bytes];
    bool rest = false;
    for (int number = 1; fgets(text, sizeof text, file.get());) {
        const int at = number;
        const bool continues = rest;
        rest = !strchr(text, '\n');
        if (!rest) number++;
        if (!is_blank(text)) lines.push_back(image_line(text, at, continues));
    }
    return lines;
}

enum { NAME, U, V, SU, SV };

const std::vector<Column> columns = {{"name", true}, {"u", true}, {"v", true}, {"su"}, {"sv"}};

// A row whose numbers cannot all be read has none.
ImageLine image_row(const Table &table, size_t i)
{
    Faults faults;
    Row row(table, i, faults);
    ImageLine line;
    line.line = row.at().line;
    line.name = row.name(NAME);
    line.u = row.needed(U);
    line.v = row.needed(V);
    if (row.given(SU)) line.su = row.number(SU, 0.0);
    if (row.given(SV)) line.sv = row.number(SV, 0.0);
    line.numbers = faults.empty() && table.whole(i);
    return line;
}

std::optional<std::vector<ImageLine>> read_wide(const std::string &path)
{
    Faults faults;
    TextFile file;
    if (!file.read(path, Source(), faults)) return std::nullopt;
    Table table("image", Passage(file, 0, file.text().size()), Layout::Blanks, Source());
    table.parse(columns, faults);
    std::vector<ImageLine> lines;
    for (size_t i = 0; i < table.rows(); i++) lines.push_back(image_row(table, i));
    return lines;
}

} // namespace

bool is_wide_image_file(const std::string &path)
{
    std::ifstream file(path);
    std::string line, words[3];
    std::getline(file, line);
    if (line.compare(0, 3, "\xEF\xBB\xBF") == 0) line.erase(0, 3);
    std::istringstream heading(line);
    for (std::string &word : words) heading >> word;
    return words[0] == "name" && words[1] == "u" && words[2] == "v";
}

std::optional<std::vector<ImageLine>> read_image_file(const std::string &path)
{
    return is_wide_image_file(path) ? read_wide(path) : read_fixed(path);
}

} // namespace vornhost
