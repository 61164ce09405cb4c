#include "host/input/image_file.h"

#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <memory>

#include "host/input/names.h"

namespace vornhost {

namespace {

constexpr size_t line_bytes = 90; // the zero byte included

bool is_blank(const char *line) { return line[strspn(line, " \t\r\n")] == '\0'; }

ImageLine image_line(const char *text, int number, bool rest)
{
    ImageLine line;
    line.line = number;
    line.rest = rest;
    line.name.assign(text, std::min(strcspn(text, "\r\n"), name_width));
    double su, sv;
    const int n = strlen(text) < name_width ? 0 : sscanf(text + name_width, "%lf%lf%lf%lf", &line.u, &line.v, &su, &sv);
    line.numbers = n >= 2;
    if (n >= 3) line.su = su;
    if (n >= 4) line.sv = sv;
    return line;
}

} // namespace

std::optional<std::vector<ImageLine>> read_image_file(const std::string &path)
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

} // namespace vornhost
