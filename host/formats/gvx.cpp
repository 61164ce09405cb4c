#include "host/formats/gvx.h"

#include <cctype>
#include <cmath>
#include <map>

#include "host/formats/draft_builder.h"
#include "host/formats/geocentric.h"
#include "host/formats/xml_text.h"
#include "host/input/number.h"

namespace vornhost {

namespace {

constexpr double radian = 3.14159265358979323846 / 180.0;
constexpr double same_place = 0.01; // metres within which two points of one name are one

const XmlElement *attribute_parent(const XmlElement &element, std::string_view name)
{
    if (const XmlElement *found = child_of(element, name)) return found;
    const XmlElement *quality = child_of(element, "QUALITY_CONTROL");
    return quality ? child_of(*quality, name) : nullptr;
}

std::string attribute(const XmlElement &element, std::string_view name)
{
    const XmlAttribute *found = element.find(name);
    return found ? found->value : std::string();
}

// Reads one file; the members are what its steps share.
class GvxReader {
public:
    GvxReader(const XmlElement &its_root, Draft &draft, Faults &all) : root(its_root), builder(draft, all), faults(all)
    {
    }

    bool read()
    {
        builder.draft.units.length = "m";
        for (const XmlElement &child : root.children)
            if (local_name(child) == "REFERENCE_SYSTEM") read_system(child);
        for (const XmlElement &child : root.children)
            if (local_name(child) == "POINT") read_point(child);
        for (const XmlElement &child : root.children)
            if (local_name(child) == "GNSS_VECTOR") read_vector(child);
        for (const XmlElement &child : root.children)
            if (local_name(child) == "SESSION") read_session(child);
        if (used_systems.size() > 1)
            builder.note(root.at, "points are in " + std::to_string(used_systems.size()) +
                                      " reference systems: their coordinates are first values only");
        builder.note(root.at, "no point is held: hold one with code fixed, or the network is free");
        builder.finish(root.at);
        return faults.empty();
    }

private:
    // Metres; other units are refused with the points that are in them.
    void read_system(const XmlElement &element)
    {
        const XmlElement *unit = child_of(element, "LINEAR_UNIT");
        std::string name = unit ? text_of(*unit, "NAME") : std::string();
        for (char &c : name) c = (char)std::tolower((unsigned char)c);
        const bool metres =
            name.empty() || name == "m" || name.compare(0, 5, "meter") == 0 || name.compare(0, 5, "metre") == 0;
        if (!metres) other_units[text_of(element, "ID")] = name;
    }

    void read_point(const XmlElement &element)
    {
        const std::string id = text_of(element, "ID");
        if (id.empty()) return faults.add(element.at, "a point has no ID", "write one");
        std::string name = text_of(element, "NAME");
        if (name.empty()) name = id;
        if (!names.emplace(id, name).second)
            return faults.add(element.at, "the ID " + quote(id) + " of a point comes twice", "write different ones");
        const XmlElement *coordinates = child_of(element, "COORDINATES");
        if (!coordinates) return;
        const std::string system = text_of(*coordinates, "REFERENCE_SYSTEM_ID");
        if (other_units.count(system) > 0)
            faults.add(coordinates->at, "coordinates are in " + other_units[system], "metres are taken");
        std::array<double, 3> xyz = {};
        if (!read_coordinates(*coordinates, xyz)) return;
        used_systems[system] = true;
        DraftPoint &point = builder.point(name, element.at);
        const bool placed = point.value[0].has_value();
        for (size_t axis = 0; axis < 3; axis++) {
            if (placed && std::fabs(*point.value[axis] - xyz[axis]) > same_place)
                return faults.add(element.at, "point " + quote(name) + " comes again in another place",
                                  "write different names for different points");
            if (!placed) point.value[axis] = xyz[axis];
        }
    }

    bool read_coordinates(const XmlElement &coordinates, std::array<double, 3> &xyz)
    {
        const XmlElement *cartesian = child_of(coordinates, "GEOCENTRIC_COORDINATES");
        if (cartesian && !text_of(*cartesian, "X").empty()) {
            static const char *const axes[] = {"X", "Y", "Z"};
            for (size_t i = 0; i < 3; i++) xyz[i] = number_in(*cartesian, axes[i], faults);
            return true;
        }
        const XmlElement *g = child_of(coordinates, "GEODETIC_COORDINATES");
        if (!g) return false;
        xyz = geocentric({number_in(*g, "LATITUDE", faults) * radian, number_in(*g, "LONGITUDE", faults) * radian,
                          number_in(*g, "ELLIPSOIDAL_HEIGHT", faults)});
        for (double &x : xyz) x = std::round(x * 1e4) / 1e4;
        return true;
    }

    std::string point_name(const XmlElement &element, const char *child)
    {
        const std::string id = text_of(element, child);
        const auto found = names.find(id);
        if (found != names.end()) return found->second;
        faults.add(element.at, "no point has the ID " + quote(id) + " of " + child, "write a POINT with it");
        return std::string();
    }

    void read_vector(const XmlElement &element)
    {
        Vector vector;
        vector.row.where = element.at;
        vector.row.id = text_of(element, "ID");
        const size_t before = faults.count();
        vector.row.from = point_name(element, "INITIAL_POINT_ID");
        vector.row.to = point_name(element, "TERMINAL_POINT_ID");
        const XmlElement *deltas = attribute_parent(element, "ECEF_DELTAS"),
                         *matrix = attribute_parent(element, "CORRELATION_MATRIX");
        if (!deltas || !matrix)
            return faults.add(element.at,
                              std::string("the vector has no ") + (deltas ? "CORRELATION_MATRIX" : "ECEF_DELTAS"),
                              "add it");
        static const char *const values[] = {"DX", "DY", "DZ"}, *const sigmas[] = {"SDX", "SDY", "SDZ"},
                                 *const correlations[] = {"PXY", "PXZ", "PYZ"};
        static const size_t pairs[3][2] = {{0, 1}, {0, 2}, {1, 2}};
        for (size_t i = 0; i < 3; i++) {
            vector.row.value[i] = number_in(*deltas, values[i], faults);
            vector.sigma[i] = number_in(*matrix, sigmas[i], faults);
            if (!(vector.sigma[i] > 0.0))
                faults.add(matrix->at, std::string(sigmas[i]) + " is not above 0", "write the standard deviation");
        }
        for (size_t i = 0; i < 3; i++) {
            vector.row.product[i] = vector.sigma[i] * vector.sigma[i];
            vector.row.product[3 + i] = number_in(*matrix, correlations[i], 0.0, faults) * vector.sigma[pairs[i][0]] *
                                        vector.sigma[pairs[i][1]];
        }
        if (faults.count() > before) return;
        if (!vector.row.id.empty() && !vectors.emplace(vector.row.id, vectors_in_order.size()).second)
            return faults.add(element.at, "the ID " + quote(vector.row.id) + " of a vector comes twice",
                              "write different ones");
        vectors_in_order.push_back(vector.sigma);
        builder.add(DraftKind::baseline, std::move(vector.row), 3);
    }

    // Vectors of a session are tied by blocks of correlations.
    void read_session(const XmlElement &session)
    {
        const XmlElement *matrix = child_of(session, "CROSS_CORRELATION_MATRIX");
        if (!matrix) return;
        std::map<std::pair<size_t, size_t>, std::array<double, 9>> blocks;
        std::map<size_t, size_t> places; // of vectors in the covariance
        for (const XmlElement &block : matrix->children) {
            if (local_name(block) != "CCM_BLOCK") continue;
            const auto row = vectors.find(attribute(block, "VECTOR_ID_ROW")),
                       column = vectors.find(attribute(block, "VECTOR_ID_COL"));
            if (row == vectors.end() || column == vectors.end()) {
                faults.add(block.at, "a block of correlations names a vector that is not there",
                           "write the vector, or take the block out");
                continue;
            }
            if (row->second == column->second) continue;
            if (!read_block(block, blocks[{row->second, column->second}])) continue;
            places.emplace(row->second, 0);
            places.emplace(column->second, 0);
        }
        if (!places.empty() && faults.empty()) add_group(session, blocks, places);
    }

    bool read_block(const XmlElement &block, std::array<double, 9> &values)
    {
        const XmlElement *list = child_of(block, "CORRELATIONS");
        const std::string text = list ? text_of(*list) : std::string();
        size_t count = 0;
        for (size_t at = 0; at <= text.size() && count <= 9;) {
            const size_t end = std::min(text.find(',', at), text.size());
            std::string item = text.substr(at, end - at);
            item.erase(0, std::min(item.find_first_not_of(" \t\r\n"), item.size()));
            item.erase(item.find_last_not_of(" \t\r\n") + 1);
            double value = 0.0;
            if (read_number(item, value) != Reading::Number || count == 9) break;
            values[count++] = value;
            at = end + 1;
            if (end == text.size() && count == 9) return true;
        }
        faults.add(block.at, "a block does not hold nine correlations", "write them with commas between");
        return false;
    }

    void add_group(const XmlElement &session, const std::map<std::pair<size_t, size_t>, std::array<double, 9>> &blocks,
                   std::map<size_t, size_t> &places)
    {
        static const size_t product_of[3][3] = {{0, 3, 4}, {3, 1, 5}, {4, 5, 2}};
        std::vector<DraftRow> &rows = builder.draft.of(DraftKind::baseline);
        DraftCovariance group;
        group.name = "C" + std::to_string(builder.draft.covariances.size() + 1);
        group.where = session.at;
        const size_t n = 3 * places.size();
        std::vector<double> full(n * n);
        size_t place = 0;
        for (auto &[vector, first] : places) {
            first = place++;
            DraftRow &row = rows[vector];
            if (!row.covariance.empty())
                return faults.add(session.at, "vector " + quote(row.id) + " belongs to two sessions",
                                  "write it in one");
            row.covariance = group.name;
            for (int i = 0; i < 3; i++) {
                group.components.push_back({DraftKind::baseline, vector, i});
                for (size_t j = 0; j < 3; j++)
                    full[(3 * first + (size_t)i) * n + 3 * first + j] = *row.product[product_of[(size_t)i][j]];
            }
            row.product = {};
        }
        for (const auto &[pair, values] : blocks)
            for (size_t i = 0; i < 3; i++)
                for (size_t j = 0; j < 3; j++) {
                    const size_t r = 3 * places[pair.first] + i, c = 3 * places[pair.second] + j;
                    full[r * n + c] = full[c * n + r] =
                        values[3 * i + j] * vectors_in_order[pair.first][i] * vectors_in_order[pair.second][j];
                }
        group.width = n - 1;
        for (size_t i = 0; i < n; i++)
            group.elements.insert(group.elements.end(), full.begin() + (std::ptrdiff_t)(i * n + i),
                                  full.begin() + (std::ptrdiff_t)((i + 1) * n));
        builder.draft.covariances.push_back(std::move(group));
    }

    struct Vector {
        DraftRow row;
        std::array<double, 3> sigma = {};
    };

    const XmlElement &root;
    DraftBuilder builder;
    Faults &faults;
    std::map<std::string, std::string> other_units;      // by the ID of a system
    std::map<std::string, bool> used_systems;            // those of the points
    std::map<std::string, std::string> names;            // of points by ID
    std::map<std::string, size_t> vectors;               // by ID
    std::vector<std::array<double, 3>> vectors_in_order; // their standard deviations, one a baseline
};

} // namespace

bool read_gvx(const XmlElement &root, Draft &draft, Faults &faults) { return GvxReader(root, draft, faults).read(); }

} // namespace vornhost
