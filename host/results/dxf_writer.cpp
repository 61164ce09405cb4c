#include "host/results/dxf_writer.h"

#include <cstdio>
#include <cstdlib>

#include "host/input/utf8.h"
#include "host/results/report_units.h"

namespace vornhost {

namespace {

constexpr int corners = 48; // of an ellipse

// Colours of the drawing programs: 1 red, 3 green, 5 blue, 7 black or white, 8 grey.
struct Layer {
    std::string name;
    int colour;
};

// Text of release 12 is ASCII; other characters are \U+XXXX, control characters are left out.
std::string dxf_text(const std::string &text)
{
    std::string out;
    for (size_t at = 0; at < text.size();) {
        const size_t length = utf8_length(text, at);
        const char32_t value = length ? utf8_value(text, at, length) : U'?';
        char code[16] = {(char)value, 0};
        if (value > 126) std::snprintf(code, sizeof code, "\\U+%04X", (unsigned)(value > 0xFFFF ? 0x3F : value));
        if (value >= 32 && value != 127) out += code;
        at += length ? length : 1;
    }
    return out;
}

class Dxf {
public:
    Dxf(const Results &all, Axes axes) : results(all), plan(make_plan(all, axes))
    {
        ellipses = "ELLIPSES_TIMES_" + decimal(plan.magnification, plan.magnification < 1.0 ? 6 : 0);
        for (char &c : ellipses)
            if (c == '.') c = '_';
        layers = {{"POINTS_FIXED", 7}, {"POINTS_WEIGHTED", 5},  {"POINTS_FREE", 7}, {"NAMES", 7},
                  {"LINES", 8},        {"LINES_SUSPICIOUS", 1}, {ellipses, 3}};
    }

    std::string write()
    {
        header();
        tables();
        begin_section("ENTITIES");
        for (const PlanLine &line : plan.lines) connection(line);
        for (const PlanEllipse &e : plan.ellipses) ellipse(e);
        for (const PlanPoint &p : plan.points) point(p);
        group(0, "ENDSEC");
        group(0, "EOF");
        return text;
    }

private:
    void group(int code, const std::string &value) { text += std::to_string(code) + "\n" + value + "\n"; }
    void number(int code, double value) { group(code, decimal(value, 6)); }
    void place(int code, double right, double up, double height)
    {
        number(code, right);
        number(code + 10, up);
        number(code + 20, height);
    }
    void begin_section(const char *name)
    {
        group(0, "SECTION");
        group(2, name);
    }
    void entity(const char *type, const std::string &layer)
    {
        group(0, type);
        group(8, layer);
    }
    void header();
    void tables();
    void point(const PlanPoint &p);
    void connection(const PlanLine &line);
    void ellipse(const PlanEllipse &e);

    const Results &results;
    const Plan plan;
    std::string ellipses; // the name of their layer
    std::vector<Layer> layers;
    std::string text;
};

void Dxf::header()
{
    if (results.crs) group(999, results.crs->text()); // a comment
    begin_section("HEADER");
    group(9, "$ACADVER");
    group(1, "AC1009");
    group(9, "$EXTMIN");
    place(10, plan.left, plan.bottom, 0.0);
    group(9, "$EXTMAX");
    place(10, plan.right, plan.top, 0.0);
    group(9, "$PDMODE"); // points as small circles with a dot
    group(70, "32");
    group(9, "$PDSIZE");
    number(40, plan.size() / 150.0);
    group(0, "ENDSEC");
}

void Dxf::tables()
{
    begin_section("TABLES");
    group(0, "TABLE");
    group(2, "LTYPE");
    group(70, "1");
    group(0, "LTYPE");
    group(2, "CONTINUOUS");
    group(70, "0");
    group(3, "Solid line");
    group(72, "65");
    group(73, "0");
    number(40, 0.0);
    group(0, "ENDTAB");
    group(0, "TABLE");
    group(2, "LAYER");
    group(70, std::to_string(layers.size()));
    for (const Layer &layer : layers) {
        group(0, "LAYER");
        group(2, layer.name);
        group(70, "0");
        group(62, std::to_string(layer.colour));
        group(6, "CONTINUOUS");
    }
    group(0, "ENDTAB");
    group(0, "ENDSEC");
}

void Dxf::point(const PlanPoint &p)
{
    const PointResult &result = results.points[p.point];
    const std::string role = role_of(result);
    const bool held = role == "fixed" || role == "partly fixed";
    entity("POINT", held ? "POINTS_FIXED" : role == "weighted" ? "POINTS_WEIGHTED" : "POINTS_FREE");
    place(10, p.right, p.up, p.height.value_or(0.0));
    const double size = plan.size() / 100.0;
    entity("TEXT", "NAMES");
    place(10, p.right + 0.6 * size, p.up + 0.6 * size, p.height.value_or(0.0));
    number(40, size);
    group(1, dxf_text(result.name));
}

void Dxf::connection(const PlanLine &line)
{
    const PlanPoint &a = plan.points[line.from], &b = plan.points[line.to];
    entity("LINE", line.suspicious ? "LINES_SUSPICIOUS" : "LINES");
    place(10, a.right, a.up, a.height.value_or(0.0));
    place(11, b.right, b.up, b.height.value_or(0.0));
}

// Release 12 has no ellipses: a closed polyline.
void Dxf::ellipse(const PlanEllipse &e)
{
    const double height = plan.points[e.at].height.value_or(0.0);
    entity("POLYLINE", ellipses);
    group(66, "1");
    place(10, 0.0, 0.0, height);
    group(70, "1");
    for (int k = 0; k < corners; k++) {
        double right = 0, up = 0;
        ellipse_corner(plan, e, k, corners, &right, &up);
        entity("VERTEX", ellipses);
        place(10, right, up, height);
    }
    entity("SEQEND", ellipses);
}

} // namespace

std::string to_dxf(const Results &results, Axes axes) { return Dxf(results, axes).write(); }

} // namespace vornhost
