#include "host/results/check_json.h"

#include <nlohmann/json.hpp>

#include "host/results/closure_json.h"

namespace vornhost {

namespace {

using json = nlohmann::ordered_json;

constexpr int schema = 1;

const char *word(CheckVerdict verdict)
{
    switch (verdict) {
    case CheckVerdict::BadInput: return "bad input";
    case CheckVerdict::Refused: return "cannot be adjusted";
    case CheckVerdict::Unknown: return "only the adjustment shows";
    default: return "can be adjusted";
    }
}

// Line and column count from 1, and are absent where a fault concerns a file as a whole.
json to_object(const Fault &f)
{
    json fault = {{"file", f.file}};
    if (f.at.line > 0) fault["line"] = f.at.line;
    if (f.at.column > 0) fault["column"] = f.at.column;
    fault["what"] = f.what;
    if (!f.remedy.empty()) fault["remedy"] = f.remedy;
    return fault;
}

json accounts(const Results &results)
{
    json all = json::array();
    for (const Account &a : results.accounts) {
        json left_out = json::array();
        for (const LeftOut &l : a.left_out)
            left_out.push_back({{"file", l.file},
                                {"line", l.line},
                                {"at", l.at},
                                {"from", l.from},
                                {"to", l.to},
                                {"reason", l.reason}});
        all.push_back({{"kind", a.kind}, {"read", a.read}, {"used", a.used}, {"left_out", left_out}});
    }
    return all;
}

} // namespace

std::string check_json(CheckVerdict verdict, const Faults &faults, const Results &results)
{
    json all = {{"check", schema},
                {"program", results.program},
                {"version", results.version},
                {"file", results.file},
                {"verdict", word(verdict)},
                {"faults", json::array()},
                {"fault_count", faults.count()}};
    for (const Fault &fault : faults.kept()) all["faults"].push_back(to_object(fault));
    if (verdict != CheckVerdict::BadInput) {
        all["title"] = results.title;
        all["solver"] = results.solver;
        all["mode"] = results.mode;
        all["dimension"] = results.dimension;
        all["stage"] = results.stage;
        all["code"] = results.code;
        all["words"] = results.words;
        all["notes"] = results.notes;
        if (!results.datum.empty()) all["datum"] = results.datum;
        if (results.degrees_of_freedom) all["degrees_of_freedom"] = *results.degrees_of_freedom;
        all["observations"] = accounts(results);
        all["closures"] = closures_json(results);
    }
    return all.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

} // namespace vornhost
