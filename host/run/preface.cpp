#include "host/run/preface.h"

#include "host/results/text_table.h"

namespace vornhost {

namespace {

std::string unit_lines(const Model &model)
{
    const FileUnits units = file_units(model);
    std::string lines;
    if (units.length != model.p.iunit) lines += "Lengths in this report are metres\n";
    if (units.angle != model.p.iangle)
        lines += std::string("Angles in this report are ") + (model.p.iangle == ANGLE_GON ? "gon" : "degrees") + "\n";
    return lines.empty() ? lines : lines + "\n";
}

std::string key_table(const NameKeys &keys)
{
    if (keys.empty()) return {};
    TextTable table({{"in this report", "", Align::left}, {"name", "", Align::left}});
    for (size_t i = 0; i < keys.all().size(); i++)
        if (!keys.all()[i].empty()) table.add({NameKeys::word(i), keys.all()[i]});
    return "Names of more than 8 bytes\n\n" + table.text() + "\n";
}

} // namespace

std::string report_preface(const Model &model) { return unit_lines(model) + key_table(model.keys); }

} // namespace vornhost
