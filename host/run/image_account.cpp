#include "host/run/image_account.h"

#include "host/input/faults.h"
#include "host/input/image_file.h"
#include "host/input/names.h"

namespace vornhost {

namespace {

// What the engine makes of a line; empty when it takes an observation from it.
std::string fault_of(const ImageLine &line, const PointFault &fault)
{
    std::string wrong = fault(line.name);
    if (!wrong.empty() || line.numbers) return wrong;
    return "two numbers are missing behind the name";
}

void add_file(const Model &model, const image_input &image, const PointFault &fault, Account &account)
{
    const std::optional<std::vector<ImageLine>> lines = read_image_file(image.file);
    if (!lines) return;
    for (const ImageLine &line : *lines) {
        account.read++;
        std::string wrong = fault_of(line, fault);
        if (wrong.empty()) {
            account.used++;
            continue;
        }
        if (line.rest) wrong = "the line is longer than 89 bytes";
        account.left_out.push_back(
            {image.file, line.line, shown_name(model, image.station), printable(line.name), wrong});
    }
}

} // namespace

Account account_of_image_points(const Model &model, const PointFault &fault)
{
    Account account;
    account.kind = "image points";
    for (const image_input &image : model.images.records)
        if (image.status > 0) add_file(model, image, fault, account);
    return account;
}

} // namespace vornhost
