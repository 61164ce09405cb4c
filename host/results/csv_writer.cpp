#include "host/results/csv_writer.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <initializer_list>

#include "host/results/output_file.h"
#include "host/system/decimal.h"

namespace vornhost {

namespace {

// A table that grows cell by cell; rows end as RFC 4180 asks.
class Sheet {
public:
    explicit Sheet(std::initializer_list<const char *> heading)
    {
        for (const char *name : heading) cell(std::string(name));
        end_row();
    }

    Sheet &cell(const std::string &value)
    {
        separate();
        if (value.find_first_of(",\"\r\n") == std::string::npos) {
            text += value;
            return *this;
        }
        text += '"';
        for (char c : value) text.append(c == '"' ? 2 : 1, c);
        text += '"';
        return *this;
    }
    Sheet &cell(double value)
    {
        separate();
        char digits[40];
        if (std::isfinite(value)) text.append(digits, to_chars(digits, digits + sizeof digits, value).ptr);
        return *this;
    }
    Sheet &cell(int value) { return cell(std::to_string(value)); }
    Sheet &cell(bool value) { return cell(std::string(value ? "yes" : "no")); }
    template <class Value> Sheet &cell(const std::optional<Value> &value)
    {
        return value ? cell(*value) : cell(std::string());
    }
    Sheet &cell(const EllipseResult &e) { return cell(e.a).cell(e.b).cell(e.bearing); }
    Sheet &cell(const std::optional<EllipseResult> &e)
    {
        if (e) return cell(*e);
        for (int k = 0; k < 3; k++) cell(std::string());
        return *this;
    }
    template <class Value, int n> Sheet &cells(const Value (&values)[n])
    {
        for (const Value &value : values) cell(value);
        return *this;
    }
    void end_row()
    {
        text += "\r\n";
        first = true;
    }

    std::string text;

private:
    void separate()
    {
        if (!first) text += ',';
        first = false;
    }

    bool first = true;
};

std::string points(const Results &results)
{
    Sheet sheet({"name",
                 "station",
                 "code_x",
                 "code_y",
                 "code_z",
                 "approximate_x",
                 "approximate_y",
                 "approximate_z",
                 "x",
                 "y",
                 "z",
                 "sx",
                 "sy",
                 "sz",
                 "a_xy",
                 "b_xy",
                 "bearing_xy",
                 "a_xz",
                 "b_xz",
                 "bearing_xz",
                 "a_yz",
                 "b_yz",
                 "bearing_yz"});
    for (const PointResult &p : results.points) {
        sheet.cell(p.name).cell(p.station).cells(p.code).cells(p.approximate).cells(p.adjusted);
        sheet.cells(p.deviation).cells(p.ellipse).end_row();
    }
    return sheet.text;
}

std::string places(const Results &results)
{
    Sheet sheet({"name", "latitude", "longitude", "ellipsoidal_height", "X", "Y", "Z", "reference_system"});
    for (const PointResult &p : results.points) {
        if (!p.earth) continue;
        sheet.cell(p.name).cell(p.earth->latitude).cell(p.earth->longitude).cell(p.earth->height);
        for (size_t k = 0; k < 3; k++)
            sheet.cell(p.earth->geocentric ? std::optional<double>((*p.earth->geocentric)[k]) : std::nullopt);
        sheet.cell(results.crs->text()).end_row();
    }
    return sheet.text;
}

std::string reductions(const Results &results)
{
    static const char *const names[] = {"instrument", "ellipsoid", "projection", "arc_to_chord", "convergence"};
    Sheet sheet({"kind", "at", "from", "to", "file", "line", "unit", "raw", "instrument", "ellipsoid", "projection",
                 "arc_to_chord", "convergence", "value"});
    for (const ResidualResult &r : results.residuals) {
        if (r.corrections.empty()) continue;
        sheet.cell(r.kind).cell(results.words_of(r).at).cell(r.from).cell(r.to).cell(r.file).cell(r.line).cell(r.unit);
        sheet.cell(r.raw);
        for (const char *name : names) sheet.cell(r.correction(name));
        sheet.cell(r.value).end_row();
    }
    return sheet.text;
}

std::string orientations(const Results &results)
{
    Sheet sheet({"station", "rx1", "rx2", "rx3", "srx1", "srx2", "srx3", "setup", "set"});
    for (const OrientationResult &o : results.orientations)
        sheet.cell(o.name).cells(o.rotation).cells(o.deviation).cell(o.setup).cell(o.set).end_row();
    return sheet.text;
}

std::string residuals(const Results &results)
{
    Sheet sheet({"kind",
                 "from",
                 "to",
                 "file",
                 "line",
                 "value",
                 "sigma",
                 "residual",
                 "standard_deviation",
                 "outside_histogram",
                 "normal_test",
                 "normal_test_divided",
                 "tau_test",
                 "tau_test_divided",
                 "component",
                 "unit",
                 "adjusted",
                 "redundancy",
                 "normalised",
                 "at",
                 "setup",
                 "set",
                 "id",
                 "remark",
                 "raw",
                 "checked",
                 "p_value",
                 "rejected",
                 "detectable",
                 "bias_to_noise",
                 "shift"});
    for (const ResidualResult &r : results.residuals) {
        const auto observed = [&](double x) { return r.observed ? std::optional<double>(x) : std::nullopt; };
        sheet.cell(r.kind).cell(r.from).cell(r.to).cell(r.file).cell(r.line).cell(observed(r.value)).cell(r.sigma);
        sheet.cell(observed(r.residual)).cell(r.deviation).cell(r.outside).cell(r.normal).cell(r.normal_divided);
        sheet.cell(r.tau).cell(r.tau_divided).cell(r.component).cell(r.unit).cell(r.adjusted).cell(r.redundancy);
        const RowWords &w = results.words_of(r);
        sheet.cell(r.normalised).cell(w.at).cell(w.setup).cell(w.set).cell(w.id).cell(w.remark).cell(r.raw);
        const auto of_test = [&](double ObservationTestResult::*member) {
            return r.test ? std::optional<double>((*r.test).*member) : std::nullopt;
        };
        const bool tested = r.test && r.test->probability;
        sheet.cell(r.checked).cell(tested ? r.test->probability : std::nullopt);
        sheet.cell(tested ? std::optional<bool>(r.test->rejected) : std::nullopt);
        sheet.cell(of_test(&ObservationTestResult::detectable)).cell(of_test(&ObservationTestResult::bias_to_noise));
        sheet.cell(of_test(&ObservationTestResult::shift)).end_row();
    }
    return sheet.text;
}

// One row a kind with its counts, then one for each observation left out.
std::string accounts(const Results &results)
{
    Sheet sheet({"kind", "read", "used", "left_out", "file", "line", "from", "to", "reason", "at"});
    const std::string none;
    for (const Account &a : results.accounts) {
        sheet.cell(a.kind).cell(a.read).cell(a.used).cell(a.read - a.used);
        for (int k = 0; k < 6; k++) sheet.cell(none);
        sheet.end_row();
        for (const LeftOut &l : a.left_out) {
            sheet.cell(a.kind).cell(none).cell(none).cell(none);
            sheet.cell(l.file).cell(l.line).cell(l.from).cell(l.to).cell(l.reason).cell(l.at).end_row();
        }
    }
    return sheet.text;
}

std::string groups(const Results &results)
{
    Sheet sheet({"group", "additive_constant", "scale", "refraction", "sadditive_constant", "sscale", "srefraction"});
    for (const GroupResult &g : results.groups) sheet.cell(g.name).cells(g.value).cells(g.deviation).end_row();
    return sheet.text;
}

std::string cameras(const Results &results)
{
    Sheet sheet({"camera", "c",   "x0",  "y0", "a",  "b",   "k1",  "k2",  "k3",  "p1", "p2",
                 "sc",     "sx0", "sy0", "sa", "sb", "sk1", "sk2", "sk3", "sp1", "sp2"});
    for (const CameraResult &c : results.cameras) sheet.cell(c.name).cells(c.value).cells(c.deviation).end_row();
    return sheet.text;
}

std::string lumps(const Results &results)
{
    Sheet sheet({"lump", "epoch", "reference_epoch", "tx", "ty", "tz", "rx", "ry", "rz", "scale", "stx", "sty", "stz",
                 "srx", "sry", "srz", "sscale"});
    for (const LumpResult &l : results.lumps) {
        sheet.cell(l.lump).cell(l.epoch).cell(l.reference).cells(l.translation).cells(l.rotation).cell(l.scale);
        sheet.cells(l.translation_deviation).cells(l.rotation_deviation).cell(l.scale_deviation).end_row();
    }
    return sheet.text;
}

std::string pairs(const Results &results)
{
    Sheet sheet({"from", "to", "sdx", "sdy", "sdz", "a_xy", "b_xy", "bearing_xy", "a_xz", "b_xz", "bearing_xz", "a_yz",
                 "b_yz", "bearing_yz"});
    for (const PairResult &p : results.pairs)
        sheet.cell(p.from).cell(p.to).cells(p.deviation).cells(p.ellipse).end_row();
    return sheet.text;
}

} // namespace

std::vector<CsvTable> to_csv(const Results &results)
{
    std::vector<CsvTable> tables = {{"points.csv", points(results)},
                                    {"orientations.csv", orientations(results)},
                                    {"residuals.csv", residuals(results)},
                                    {"accounts.csv", accounts(results)}};
    if (std::any_of(results.points.begin(), results.points.end(), [](const auto &q) { return q.earth.has_value(); }))
        tables.push_back({"places.csv", places(results)});
    if (std::any_of(results.residuals.begin(), results.residuals.end(),
                    [](const auto &r) { return !r.corrections.empty(); }))
        tables.push_back({"reductions.csv", reductions(results)});
    if (!results.groups.empty()) tables.push_back({"groups.csv", groups(results)});
    if (!results.cameras.empty()) tables.push_back({"cameras.csv", cameras(results)});
    if (!results.lumps.empty()) tables.push_back({"lumps.csv", lumps(results)});
    if (!results.pairs.empty()) tables.push_back({"pairs.csv", pairs(results)});
    return tables;
}

void make_folder(const std::string &folder)
{
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) throw OutputError(error.value(), folder);
}

void write_csv(const std::string &folder, const Results &results)
{
    make_folder(folder);
    for (const CsvTable &table : to_csv(results))
        write_file((std::filesystem::path(folder) / table.name).string(), table.text);
}

} // namespace vornhost
