#include "host/results/svg_writer.h"

#include <algorithm>
#include <cmath>

#include "host/input/utf8.h"
#include "host/results/report_units.h"
#include "host/results/test_limits.h"

namespace vornhost {

namespace {

// Millimetres on paper.
constexpr double width = 180, highest = 240, border = 16, footer = 22;
constexpr double letter = 1.9; // about the width of one in a name
const double degrees = 45.0 / std::atan(1.0);

// Lines by the size of the worst normalised residual: below 1, to 2, to the limit of the largest of all, beyond.
struct Stroke {
    const char *colour;
    double width;
};
const Stroke strokes[] = {{"#86a3bd", 0.2}, {"#0072b2", 0.3}, {"#e69f00", 0.5}, {"#b3003c", 0.9}};
const Stroke no_value = {"#999999", 0.2};

// The largest of 1, 2 or 5 times a power of ten below a length.
double round_length(double length)
{
    const double power = std::pow(10.0, std::floor(std::log10(length))), digit = length / power;
    return (digit >= 5.0 ? 5.0 : digit >= 2.0 ? 2.0 : 1.0) * power;
}

std::string shortest(double x)
{
    std::string text = decimal(x, 6);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text;
}

std::string length_words(double metres)
{
    if (metres >= 1000.0) return shortest(metres / 1000.0) + " km";
    if (metres >= 1.0) return shortest(metres) + " m";
    return metres >= 1e-3 ? shortest(metres * 1e3) + " mm" : shortest(metres * 1e6) + " um";
}

class Svg {
public:
    Svg(const Results &all, Axes axes) : results(all), plan(make_plan(all, axes))
    {
        const double wide = std::max(plan.right - plan.left, 1e-9), high = std::max(plan.top - plan.bottom, 1e-9);
        scale = std::min({(width - 2 * border) / wide, (highest - 2 * border - footer) / high, 1e6});
        height = std::max(60.0, 2 * border + footer + scale * (plan.top - plan.bottom));
        limit = all.tests && all.tests->limit
                    ? *all.tests->limit
                    : normal_limit(significance / (double)std::max<size_t>(1, all.residuals.size()));
    }

    std::string write()
    {
        text = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + shortest(width) + "mm\" height=\"" +
               shortest(height) + "mm\" viewBox=\"0 0 " + shortest(width) + " " + shortest(height) +
               "\" font-family=\"sans-serif\" font-size=\"3\">\n<title>" + xml_text(results.title) + "</title>\n";
        if (results.crs) text += "<desc>" + xml_text(results.crs->text()) + "</desc>\n";
        text += "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n";
        for (int k = -1; k < 4; k++)
            for (const PlanLine &line : plan.lines)
                if (class_of(line) == k) connection(line, k < 0 ? no_value : strokes[k]);
        for (const PlanEllipse &e : plan.ellipses) ellipse(e);
        for (const PlanPoint &p : plan.points) point(p);
        bars();
        return text + "</svg>\n";
    }

private:
    double x(double right) const { return 0.5 * width + scale * (right - 0.5 * (plan.left + plan.right)); }
    double y(double up) const { return 0.5 * (height - footer) - scale * (up - 0.5 * (plan.bottom + plan.top)); }
    std::string number(double millimetres) const { return shortest(std::round(millimetres * 1e3) / 1e3); }
    int class_of(const PlanLine &line) const;
    void connection(const PlanLine &line, const Stroke &stroke);
    void ellipse(const PlanEllipse &e);
    void point(const PlanPoint &p);
    void bars();
    void bar(double top, double metres, double millimetres, const std::string &words, const char *colour);

    const Results &results;
    const Plan plan;
    double scale = 1, height = highest; // millimetres for a metre; of the paper
    double limit = 0;
    std::string text;
};

int Svg::class_of(const PlanLine &line) const
{
    if (!line.worst) return -1;
    return *line.worst > limit ? 3 : *line.worst > 2.0 ? 2 : *line.worst > 1.0 ? 1 : 0;
}

void Svg::connection(const PlanLine &line, const Stroke &stroke)
{
    const PlanPoint &a = plan.points[line.from], &b = plan.points[line.to];
    text += "<line x1=\"" + number(x(a.right)) + "\" y1=\"" + number(y(a.up)) + "\" x2=\"" + number(x(b.right)) +
            "\" y2=\"" + number(y(b.up)) + "\" stroke=\"" + stroke.colour + "\" stroke-width=\"" +
            shortest(stroke.width) + "\"/>\n";
}

void Svg::ellipse(const PlanEllipse &e)
{
    const PlanPoint &p = plan.points[e.at];
    const double k = scale * plan.magnification;
    text += "<ellipse rx=\"" + number(k * e.a) + "\" ry=\"" + number(k * e.b) + "\" transform=\"translate(" +
            number(x(p.right)) + " " + number(y(p.up)) + ") rotate(" + number(-degrees * e.angle) +
            ")\" fill=\"none\" stroke=\"#00795c\" stroke-width=\"0.25\"/>\n";
}

// Triangles are held, squares weighted, circles free; hollow where not all of a point is, or outside the datum.
void Svg::point(const PlanPoint &p)
{
    const PointResult &result = results.points[p.point];
    const std::string role = role_of(result), px = number(x(p.right)), py = number(y(p.up));
    const std::string fill = role == "fixed" || role == "free" ? "#1b2631" : "#fff";
    const std::string paint = "fill=\"" + fill + "\" stroke=\"#1b2631\" stroke-width=\"0.25\"/>\n";
    const std::string at = "transform=\"translate(" + px + " " + py + ")\" ";
    if (result.station)
        text += "<circle cx=\"" + px + "\" cy=\"" + py +
                "\" r=\"1.6\" fill=\"none\" stroke=\"#1b2631\" stroke-width=\"0.2\"/>\n";
    if (role == "fixed" || role == "partly fixed")
        text += "<path d=\"M0 -1.3L1.2 0.8H-1.2Z\" " + at + paint;
    else if (role == "weighted")
        text += "<path d=\"M-0.9 -0.9H0.9V0.9H-0.9Z\" " + at + paint;
    else
        text += "<circle r=\"0.85\" " + at + paint;
    const bool fits = x(p.right) + 1.8 + letter * (double)utf8_width(result.name) < width;
    text += "<text x=\"" + number(x(p.right) + (fits ? 1.8 : -1.8)) + "\" y=\"" + number(y(p.up) - 1.4) +
            (fits ? "\">" : "\" text-anchor=\"end\">") + xml_text(result.name) + "</text>\n";
}

void Svg::bar(double top, double metres, double millimetres, const std::string &words, const char *colour)
{
    text += "<path d=\"M" + number(border) + " " + number(top - 1) + "v1h" + number(millimetres) +
            "v-1\" fill=\"none\" stroke=\"" + colour + "\" stroke-width=\"0.4\"/>\n<text x=\"" +
            number(border + millimetres + 2) + "\" y=\"" + number(top) + "\" fill=\"" + colour + "\">" +
            length_words(metres) + words + "</text>\n";
}

void Svg::bars()
{
    const double ground = round_length(40.0 / scale);
    bar(height - 12, ground, ground * scale, "", "#1b2631");
    if (plan.ellipses.empty()) return;
    const double k = scale * plan.magnification, size = round_length(40.0 / k);
    bar(height - 6, size, size * k, " in ellipses", "#00795c");
}

} // namespace

std::string to_svg(const Results &results, Axes axes) { return Svg(results, axes).write(); }

} // namespace vornhost
