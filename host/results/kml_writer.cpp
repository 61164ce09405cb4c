#include "host/results/kml_writer.h"

#include <cstdio>

#include "host/results/plan.h"

namespace vornhost {

namespace {

constexpr int corners = 48; // of an ellipse

// Ten digits of a degree are 10 micrometres.
std::string position(double longitude, double latitude)
{
    char text[80];
    std::snprintf(text, sizeof text, "%.10f,%.10f", longitude, latitude);
    return text;
}

std::string metres(double x)
{
    char text[40];
    std::snprintf(text, sizeof text, "%.4f", x);
    return text;
}

class Kml {
public:
    explicit Kml(const Results &all) : results(all), plan(make_plan(all, Axes::yx)) {}

    std::string text()
    {
        head();
        open_folder("points");
        for (const PlanPoint &p : plan.points) point(results.points[p.point]);
        open_folder("lines", true);
        for (const PlanLine &l : plan.lines) line(l);
        open_folder("ellipses, magnified " + metres(plan.magnification), true);
        for (const PlanEllipse &e : plan.ellipses) ellipse(e);
        out += "</Folder>\n</Document>\n</kml>\n";
        return std::move(out);
    }

private:
    void head();
    void open_folder(const std::string &name, bool next = false)
    {
        out += std::string(next ? "</Folder>\n" : "") + "<Folder><name>" + xml_text(name) + "</name>\n";
    }
    void point(const PointResult &p);
    void line(const PlanLine &l);
    void ellipse(const PlanEllipse &e);
    std::string place(size_t plan_point) const
    {
        const MapPlace &m = *results.points[plan.points[plan_point].point].map;
        return position(m.longitude, m.latitude);
    }

    const Results &results;
    const Plan plan;
    std::string out;
};

void Kml::head()
{
    out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<kml "
          "xmlns=\"http://www.opengis.net/kml/2.2\">\n<Document>\n<name>" +
          xml_text(results.title.empty() ? results.file : results.title) + "</name>\n";
    if (results.crs) out += "<description>" + xml_text(results.crs->text()) + "</description>\n";
    const char *const styles[][2] = {{"line", "ff996633"}, {"suspicious", "ff0000ff"}, {"ellipse", "ff00aa00"}};
    for (const auto &s : styles)
        out += std::string("<Style id=\"") + s[0] + "\"><LineStyle><color>" + s[1] +
               "</color><width>1.5</width></LineStyle></Style>\n";
}

void Kml::point(const PointResult &p)
{
    static const char *const axes[3] = {"x", "y", "z"};
    std::string words = role_of(p);
    for (int k = 0; k < 3; k++) {
        const std::optional<double> &x = p.adjusted[k] ? p.adjusted[k] : p.approximate[k];
        if (x) words += std::string(", ") + axes[k] + " " + metres(*x) + " m";
        if (p.deviation[k]) words += " (s " + metres(*p.deviation[k]) + " m)";
    }
    out += "<Placemark><name>" + xml_text(p.name) + "</name><description>" + xml_text(words) +
           "</description><Point><coordinates>" + position(p.map->longitude, p.map->latitude) +
           "</coordinates></Point></Placemark>\n";
}

void Kml::line(const PlanLine &l)
{
    const std::string name =
        results.points[plan.points[l.from].point].name + " - " + results.points[plan.points[l.to].point].name;
    out += "<Placemark><name>" + xml_text(name) + "</name><styleUrl>#" + (l.suspicious ? "suspicious" : "line") +
           "</styleUrl><LineString><coordinates>" + place(l.from) + " " + place(l.to) +
           "</coordinates></LineString></Placemark>\n";
}

void Kml::ellipse(const PlanEllipse &e)
{
    out += "<Placemark><name>" + xml_text(results.points[plan.points[e.at].point].name) +
           "</name><styleUrl>#ellipse</styleUrl><LineString><coordinates>";
    for (int k = 0; k <= corners; k++) {
        double right = 0, up = 0;
        ellipse_corner(plan, e, k % corners, corners, &right, &up);
        const MapCorner c = map_corner(results, plan, e, Axes::yx, right, up);
        out += (k ? " " : "") + position(c.longitude, c.latitude);
    }
    out += "</coordinates></LineString></Placemark>\n";
}

} // namespace

std::string to_kml(const Results &results) { return Kml(results).text(); }

} // namespace vornhost
