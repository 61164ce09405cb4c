#include "host/run/image_account.h"

#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <memory>

#include "host/input/faults.h"
#include "host/input/names.h"

namespace vornhost {

namespace {

constexpr size_t line_bytes = 90; // the engine reads so many at a time, the zero byte included

std::string name_of(const char *line) { return std::string(line, std::min(strcspn(line, "\r\n"), name_width)); }

// What the engine makes of a line; empty when it takes an observation from it.
std::string fault_of(const char *line, const PointFault &fault)
{
    double u, v;
    std::string wrong = fault(name_of(line).c_str());
    if (!wrong.empty()) return wrong;
    if (strlen(line) < name_width || sscanf(line + name_width, "%lf%lf", &u, &v) != 2)
        return "two numbers are missing behind the name";
    return {};
}

bool is_blank(const char *line) { return line[strspn(line, " \t\r\n")] == '\0'; }

void add_file(const image_input &image, const PointFault &fault, Account &account)
{
    const std::unique_ptr<FILE, int (*)(FILE *)> file(fopen(image.file, "r"),
                                                      [](FILE *f) { return f ? fclose(f) : 0; });
    char line[line_bytes];
    bool rest = false; // of a line that is too long
    for (int number = 1; file && fgets(line, sizeof line, file.get());) {
        const int at = number;
        const bool continues = rest;
        rest = !strchr(line, '\n');
        if (!rest) number++;
        if (is_blank(line)) continue;
        account.read++;
        std::string wrong = fault_of(line, fault);
        if (wrong.empty()) {
            account.used++;
            continue;
        }
        if (continues) wrong = "the line is longer than 89 bytes";
        account.left_out.push_back(
            {image.file, at, plain_name(image.station), printable(plain_name(name_of(line))), wrong});
    }
}

} // namespace

Account account_of_image_points(const Model &model, const PointFault &fault)
{
    Account account;
    account.kind = "image points";
    for (const image_input &image : model.images.records)
        if (image.status > 0) add_file(image, fault, account);
    return account;
}

} // namespace vornhost
