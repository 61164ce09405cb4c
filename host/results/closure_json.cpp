#include "host/results/closure_json.h"

#include <nlohmann/json.hpp>

namespace vornhost {

namespace {

using json = nlohmann::ordered_json;

json to_object(const ClosureResult &c)
{
    static const char *const axes[3] = {"x", "y", "z"};
    json all;
    if (!c.at.empty()) all["at"] = c.at;
    all["points"] = c.points;
    all["misclosure"] = c.misclosure;
    for (int k = 0; k < 3; k++)
        if (c.off[k]) all["components"][axes[k]] = *c.off[k];
    all["limit"] = c.limit;
    if (c.length) all["length"] = *c.length;
    all["rows"] = json::array();
    for (const RowPlace &row : c.rows) all["rows"].push_back({{"file", row.file}, {"line", row.line}});
    return all;
}

} // namespace

json closures_json(const Results &results)
{
    json all = json::array();
    for (const ClosuresResult &c : results.closures) {
        json worst = json::array();
        for (const ClosureResult &w : c.worst) worst.push_back(to_object(w));
        all.push_back({{"kind", c.kind},
                       {"unit", c.unit},
                       {"found", c.found},
                       {"beyond_limit", c.beyond},
                       {"not_formed", c.missed},
                       {"worst", std::move(worst)}});
    }
    return all;
}

} // namespace vornhost
