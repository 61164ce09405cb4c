#include "host/results/geojson_writer.h"

#include <cmath>

#include "host/results/json_text.h"

namespace vornhost {

namespace {

constexpr int corners = 48; // of an ellipse
const char *const axis_names[3] = {"x", "y", "z"};

// Tenths of a nanometre are no information.
double rounded(double x) { return std::round(x * 1e9) / 1e9; }

// A feature a line: line ends and indents inside features are left out. Texts have none: there they are escaped.
struct Lines {
    static constexpr size_t indent = 4; // of a feature
    std::string text, blanks;           // so far; those behind a line end that came last
    bool starting = false;

    void add(std::string_view piece)
    {
        for (const char c : piece) add(c);
    }

    void add(char c)
    {
        if (c == '\n' || (starting && c == ' ')) {
            blanks = c == '\n' ? "" : blanks + ' ';
            starting = true;
            return;
        }
        if (starting && blanks.size() <= indent) text += "\n" + blanks;
        starting = false;
        text += c;
    }
};

class GeoJson {
public:
    GeoJson(const Results &all, Axes the_axes, JsonText &text)
        : results(all), axes(the_axes), plan(make_plan(all, the_axes)), on_map(is_mapped(all)), json(text)
    {
    }

    void write()
    {
        json.open_object();
        head();
        json.key("features").open_array();
        std::vector<bool> placed(results.points.size(), false);
        for (const PlanPoint &p : plan.points) placed[p.point] = true;
        for (const PlanPoint &p : plan.points) point(results.points[p.point], &p);
        for (size_t i = 0; i < placed.size(); i++)
            if (!placed[i]) point(results.points[i], nullptr);
        for (const PlanLine &line : plan.lines) connection(line);
        for (const PlanEllipse &e : plan.ellipses) ellipse(e);
        json.close();
        json.close();
        json.finish();
    }

private:
    void head();
    void begin(const char *type);
    void position(double right, double up, const std::optional<double> &height = std::nullopt);
    void place(const PlanPoint &p);
    void point(const PointResult &p, const PlanPoint *place);
    void properties(const PointResult &p);
    void connection(const PlanLine &line);
    void ellipse(const PlanEllipse &e);

    const Results &results;
    const Axes axes;
    const Plan plan;
    const bool on_map; // longitude and latitude
    JsonText &json;
};

void GeoJson::head()
{
    json.pair("type", "FeatureCollection");
    json.pair("name", results.title.empty() ? results.file : results.title);
    if (results.crs) json.pair("reference_system", results.crs->text());
    if (on_map)
        return json.pair("coordinates", "longitude and latitude in degrees (WGS 84), heights above the ellipsoid");
    json.key("crs").null();
    json.pair("coordinates", axes == Axes::yx ? "y, x and z of the network in metres; not longitude and latitude"
                                              : "x, y and z of the network in metres; not longitude and latitude");
}

// Opens a feature up to its coordinates.
void GeoJson::begin(const char *type)
{
    json.open_object();
    json.pair("type", "Feature");
    json.key("geometry").open_object();
    json.pair("type", type);
    json.key("coordinates");
}

void GeoJson::position(double right, double up, const std::optional<double> &height)
{
    json.open_array();
    json.value(rounded(right));
    json.value(rounded(up));
    if (height) json.value(rounded(*height));
    json.close();
}

void GeoJson::place(const PlanPoint &p)
{
    const PointResult &point = results.points[p.point];
    if (on_map) return position(point.map->longitude, point.map->latitude, point.earth->height);
    position(p.right, p.up, p.height);
}

void GeoJson::properties(const PointResult &p)
{
    json.key("properties").open_object();
    json.pair("layer", "point");
    json.pair("name", p.name);
    json.pair("role", role_of(p));
    json.pair("station", p.station);
    for (int k = 0; k < 3; k++) json.pair(axis_names[k], p.adjusted[k] ? p.adjusted[k] : p.approximate[k]);
    for (int k = 0; k < 3; k++) json.pair(std::string("s") + axis_names[k], p.deviation[k]);
    if (const std::optional<EllipseResult> &e = p.ellipse[0]) {
        json.pair("semi_major_axis", e->a);
        json.pair("semi_minor_axis", e->b);
        json.pair("bearing", e->bearing);
    }
    json.close();
}

void GeoJson::point(const PointResult &p, const PlanPoint *place)
{
    if (place) {
        begin("Point");
        this->place(*place);
        json.close();
    } else {
        json.open_object();
        json.pair("type", "Feature");
        json.key("geometry").null();
    }
    properties(p);
    json.close();
}

void GeoJson::connection(const PlanLine &line)
{
    const PlanPoint &a = plan.points[line.from], &b = plan.points[line.to];
    begin("LineString");
    json.open_array();
    place(a);
    place(b);
    json.close();
    json.close();
    json.key("properties").open_object();
    json.pair("layer", "line");
    json.pair("from", results.points[a.point].name);
    json.pair("to", results.points[b.point].name);
    json.pair("observations", (int)line.observations.size());
    json.pair("normalised", line.worst);
    json.pair("suspicious", line.suspicious);
    json.close();
    json.close();
}

// A ring closes with its first corner, anticlockwise.
void GeoJson::ellipse(const PlanEllipse &e)
{
    begin("Polygon");
    json.open_array();
    json.open_array();
    for (int k = 0; k <= corners; k++) {
        double right = 0, up = 0;
        ellipse_corner(plan, e, k % corners, corners, &right, &up);
        if (on_map) {
            const MapCorner c = map_corner(results, plan, e, axes, right, up);
            position(c.longitude, c.latitude);
        } else {
            position(std::round(right * 1e5) / 1e5, std::round(up * 1e5) / 1e5);
        }
    }
    json.close();
    json.close();
    json.close();
    json.key("properties").open_object();
    json.pair("layer", "ellipse");
    json.pair("name", results.points[plan.points[e.at].point].name);
    json.pair("magnified", plan.magnification);
    json.close();
    json.close();
}

} // namespace

std::string to_geojson(const Results &results, Axes axes)
{
    Lines lines;
    JsonText json([&](std::string_view piece) { lines.add(piece); });
    GeoJson(results, axes, json).write();
    return lines.text + "\n";
}

} // namespace vornhost
