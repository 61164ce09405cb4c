#include "host/formats/export.h"

#include <stdio.h>

#include "host/formats/dynaml_writer.h"
#include "host/formats/gkf_writer.h"
#include "host/formats/lines_writer.h"
#include "host/formats/model_draft.h"
#include "host/formats/network_writer.h"
#include "host/formats/result_writers.h"
#include "host/system/utc.h"

namespace vornhost {

const std::vector<TargetWord> &export_targets()
{
    static const std::vector<TargetWord> targets = {{Target::gkf, "gkf", ".gkf", "network of GNU Gama"},
                                                    {Target::lines, "lines", ".dat", "coded lines of STAR*NET"},
                                                    {Target::dynaml, "dynaml", ".xml", "DynaML of DynAdjust"},
                                                    {Target::json, "json", ".network.json", "the network file as JSON"},
                                                    {Target::sinex, "sinex", ".snx", "results with covariance"},
                                                    {Target::landxml, "landxml", ".landxml.xml", "adjusted CgPoints"},
                                                    {Target::points, "points", ".points.csv", "adjusted points"}};
    return targets;
}

bool holds_results(Target target)
{
    return target == Target::sinex || target == Target::landxml || target == Target::points;
}

std::string export_network(const Model &network, Target target, std::vector<std::string> &notes, Faults &faults)
{
    Draft draft;
    std::string text;
    if (!draft_of(network, draft, faults, target == Target::dynaml)) return text;
    switch (target) {
    case Target::gkf: text = write_gkf(draft, faults); break;
    case Target::lines: text = write_lines(draft, faults); break;
    default: text = write_dynaml(draft, faults); break;
    }
    notes = note_lines(draft);
    return faults.empty() ? text : std::string();
}

std::string export_results(const Results &results, Target target, time_t now, std::vector<std::string> &notes,
                           Faults &faults)
{
    tm calendar = tm();
    char snx[32] = "00:000:00000", date[32] = "1970-01-01";
    if (utc(now, &calendar)) {
        const int seconds = calendar.tm_hour * 3600 + calendar.tm_min * 60 + calendar.tm_sec;
        snprintf(snx, sizeof snx, "%02d:%03d:%05d", calendar.tm_year % 100, calendar.tm_yday + 1, seconds);
        snprintf(date, sizeof date, "%04d-%02d-%02d", calendar.tm_year + 1900, calendar.tm_mon + 1, calendar.tm_mday);
    }
    if (target == Target::sinex) return write_sinex(results, snx, notes, faults);
    if (target == Target::points) return write_point_list(results);
    if (results.dimension == 1) {
        faults.add(Source(), "LandXML holds points with x and y", "export as points");
        return std::string();
    }
    return write_landxml(results, date, notes);
}

} // namespace vornhost
