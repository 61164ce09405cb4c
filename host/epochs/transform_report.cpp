#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "host/epochs/transform.h"
#include "host/results/json_text.h"
#include "host/results/report_units.h"
#include "host/results/text_table.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

const char *const axes[3] = {"x", "y", "z"};

const double degree = std::atan(1.0) / 45.0, gon = std::atan(1.0) / 50.0;

const char *words_of(va::FitModel model)
{
    switch (model) {
    case va::FitModel::plane_rigid: return "3 parameters of the plane: two shifts and a turn";
    case va::FitModel::plane_similarity: return "4 parameters of the plane: two shifts, a turn and the scale";
    case va::FitModel::plane_affine: return "6 parameters of the plane: affine";
    case va::FitModel::space_rigid: return "6 parameters of space: three shifts and three turns";
    default: return "7 parameters of space: three shifts, three turns and the scale";
    }
}

// As many decimals as a standard deviation of two digits wants; 4 without one.
int decimals_for(double deviation)
{
    return deviation > 0.0 ? (int)std::fmax(0.0, std::fmin(12.0, 1.0 - std::floor(std::log10(deviation)))) : 4;
}

class Report {
public:
    Report(const Transformation &all, const std::string &day) : t(all), date(day), dim(va::dimension_of(all.model)) {}

    std::string text() const { return head() + parameters() + tests() + points() + notes(); }

private:
    std::string head() const;
    std::string parameters() const;
    std::string tests() const;
    std::string points() const;
    std::string notes() const;

    const Transformation &t;
    const std::string date;
    const int dim;
};

std::string Report::head() const
{
    return underlined("Transformation of " + t.from + " to " + t.to, '=') + "date        " + date + "\nparameters  " +
           words_of(t.model) + "\npoints      " + std::to_string(t.points.size()) + " in both lists, " +
           std::to_string(t.transformed.size()) + " transformed\nweights     " +
           (t.weighted ? "by the standard deviations of the lists" : "equal, the lists have no standard deviations") +
           "\nunits       those of the lists\n";
}

std::string Report::parameters() const
{
    TextTable table({{"parameter", "", Align::left}, {"value", ""}, {"standard deviation", ""}, {"", "", Align::left}});
    const auto add = [&](const std::string &name, double x, double s, const std::string &unit) {
        const int n = decimals_for(s);
        table.add({name, decimal(x, n), s > 0.0 ? decimal(s, n) : "", unit});
    };
    for (int k = 0; k < dim; k++) add(std::string("shift ") + axes[k], t.shift[k], t.shift_deviation[k], "");
    if (t.model == va::FitModel::plane_affine) {
        const size_t n = 6;
        for (int i = 0; i < 2; i++)
            for (int k = 0; k < 2; k++) {
                const size_t at = 2 + 2 * (size_t)i + (size_t)k;
                add(std::string("m") + axes[i] + axes[k], t.fit.matrix[3 * i + k],
                    std::sqrt(t.factor.value * t.fit.cofactors[at * n + at]), "");
            }
    } else {
        for (int k = dim == 3 ? 0 : 2; k < 3; k++) {
            const std::string name = std::string("turn about ") + axes[k];
            add(name, t.angle[k] / degree, t.angle_deviation[k] / degree, "degree");
            add(name, t.angle[k] / gon, t.angle_deviation[k] / gon, "gon");
        }
        add("scale", t.fit.scale, t.scale_deviation, "");
        if (t.scale_deviation > 0.0) add("scale - 1", 1e6 * (t.fit.scale - 1.0), 1e6 * t.scale_deviation, "ppm");
    }
    return "\n" + underlined("Parameters", '-') + table.text() + "\nnew = shift + " +
           (t.model == va::FitModel::plane_affine ? "m old"
            : dim == 2                            ? "scale R old, R turning from x to y"
                                                  : "scale Rz Ry Rx old, turns as a screw drives along their axes") +
           "\n";
}

std::string Report::tests() const
{
    std::string text = "\n" + underlined("Tests", '-');
    text += "degrees of freedom " + std::to_string(t.fit.redundancy);
    if (t.fit.redundancy == 0) return text + "; nothing checks the points\n";
    text += ", sigma a posteriori " + decimal(std::sqrt(t.fit.squares / t.fit.redundancy), t.weighted ? 4 : 6) + "\n";
    if (t.agreement.made())
        text += "Do the lists agree within their standard deviations? " + decimal(t.agreement.value, 2) + ", limit " +
                decimal(t.agreement.limit, 2) + ", p " + probability_text(t.agreement.p) +
                (t.agreement.passed() ? ". Nothing speaks against it.\n" : ". No.\n");
    const FittedPoint *worst = nullptr;
    for (const FittedPoint &p : t.points)
        if (p.test.made() && (!worst || p.test.p < worst->test.p)) worst = &p;
    if (!worst) return text;
    text += "Does every point fit the others? At a level of " + decimal(100.0 * t.level, 1) + " % for all together, " +
            decimal(100.0 * t.point_level, 3) + " % for each: ";
    return text + (worst->test.passed() ? "nothing speaks against it.\n" : "no, first of all " + worst->name + ".\n");
}

std::string Report::points() const
{
    std::vector<TextColumn> columns = {{"point", "", Align::left}};
    for (const char *lead : {"v", "s"})
        for (int k = 0; k < dim; k++) columns.push_back({std::string(lead) + axes[k], ""});
    for (const char *heading : {"test", "limit", "p"}) columns.push_back({heading, ""});
    columns.push_back({"", "", Align::left});
    TextTable table(columns);
    double least = 0.0;
    for (const FittedPoint &p : t.points)
        for (const double s : p.deviation)
            if (s > 0.0 && (least == 0.0 || s < least)) least = s;
    const int n = decimals_for(least);
    for (const FittedPoint &p : t.points) {
        std::vector<std::string> cells = {p.name};
        for (int k = 0; k < dim; k++) cells.push_back(decimal(p.residual[k], n));
        for (int k = 0; k < dim; k++) cells.push_back(t.fit.redundancy > 0 ? decimal(p.deviation[k], n) : "");
        const bool made = p.test.made();
        cells.push_back(made ? decimal(p.test.value, 2) : "");
        cells.push_back(made ? decimal(p.test.limit, 2) : "");
        cells.push_back(made ? probability_text(p.test.p) : "");
        cells.push_back(!made || p.test.passed() ? "" : "*");
        table.add(cells);
    }
    return "\n" + underlined("Residuals: " + t.to + " less the transformed " + t.from, '-') + table.text();
}

std::string Report::notes() const
{
    if (t.notes.empty()) return {};
    std::string text = "\n" + underlined("Notes", '-');
    for (const std::string &note : t.notes) text += note + "\n";
    return text;
}

void put(JsonText &json, const char *key, const double (&values)[3], int dim)
{
    json.key(key).open_array();
    for (int k = 0; k < dim; k++) json.value(values[k]);
    json.close();
}

void put(JsonText &json, const char *key, const FisherTest &test)
{
    if (!test.made()) return;
    json.key(key).open_object();
    json.pair("value", test.value);
    json.pair("limit", test.limit);
    json.pair("p", test.p);
    json.pair("passed", test.passed());
    json.close();
}

void put_fit(JsonText &json, const Transformation &t)
{
    const int dim = va::dimension_of(t.model);
    json.pair("parameters", va::parameters_of(t.model));
    json.pair("weighted", t.weighted);
    json.pair("degrees_of_freedom", t.fit.redundancy);
    json.pair("squares", t.fit.squares);
    json.pair("variance_factor", t.factor.value);
    json.pair("variance_factor_a_priori", t.apriori);
    put(json, "shift", t.shift, dim);
    put(json, "shift_standard_deviation", t.shift_deviation, dim);
    json.key("matrix").open_array();
    for (int i = 0; i < dim; i++)
        for (int k = 0; k < dim; k++) json.value(t.fit.matrix[3 * i + k]);
    json.close();
    if (t.model != va::FitModel::plane_affine) {
        put(json, "turns", t.angle, 3);
        put(json, "turn_standard_deviation", t.angle_deviation, 3);
        json.pair("scale", t.fit.scale);
        json.pair("scale_standard_deviation", t.scale_deviation);
    }
    put(json, "agreement", t.agreement);
    json.pair("point_level", t.point_level);
    json.key("points").open_array();
    for (const FittedPoint &p : t.points) {
        json.open_object();
        json.pair("name", p.name);
        put(json, "residual", p.residual, dim);
        put(json, "standard_deviation", p.deviation, dim);
        put(json, "test", p.test);
        json.close();
    }
    json.close();
    json.key("transformed").open_array();
    for (const TransformedPoint &p : t.transformed) {
        json.open_object();
        json.pair("name", p.name);
        json.pair("common", p.common);
        put(json, "coordinates", p.x, dim);
        put(json, "standard_deviation", p.deviation, dim);
        json.close();
    }
    json.close();
}

std::string cell(double x)
{
    char text[40];
    snprintf(text, sizeof text, "%.17g", x);
    for (int digits = 6; digits < 17; digits++) {
        char shorter[40];
        snprintf(shorter, sizeof shorter, "%.*g", digits, x);
        if (strtod(shorter, nullptr) == x) return shorter;
    }
    return text;
}

std::string quoted(const std::string &name)
{
    if (name.find_first_of(",\"\n\r") == std::string::npos && name != "-" && name[0] != '#') return name;
    std::string out = "\"";
    for (const char c : name) out += c == '"' ? "\"\"" : std::string(1, c);
    return out + "\"";
}

} // namespace

std::string transform_report(const Transformation &t, const std::string &date) { return Report(t, date).text(); }

std::string transform_json(const Transformation &t, const std::string &version)
{
    std::string text;
    JsonText json([&](std::string_view piece) { text += piece; });
    json.open_object();
    json.pair("transform", 1);
    json.pair("program", "vorn");
    json.pair("version", version);
    json.pair("fitted", t.made());
    json.pair("from", t.from);
    json.pair("to", t.to);
    json.pair("level", t.level);
    for (const auto &[key, lines] : {std::pair{"words", &t.words}, std::pair{"notes", &t.notes}}) {
        json.key(key).open_array();
        for (const std::string &line : *lines) json.value(line);
        json.close();
    }
    if (t.made()) put_fit(json, t);
    json.close();
    json.finish();
    return text;
}

std::string transformed_list(const Transformation &t)
{
    const int dim = va::dimension_of(t.model);
    std::string text = dim == 3 ? "name,x,y,z,sx,sy,sz\n" : "name,x,y,sx,sy\n";
    for (const TransformedPoint &p : t.transformed) {
        text += quoted(p.name);
        for (int k = 0; k < dim; k++) text += "," + cell(p.x[k]);
        for (int k = 0; k < dim; k++) text += "," + (p.deviation[k] > 0.0 ? cell(p.deviation[k]) : std::string());
        text += "\n";
    }
    return text;
}

} // namespace vornhost
