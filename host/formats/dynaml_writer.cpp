#include "host/formats/dynaml_writer.h"

#include <cmath>

#include "host/formats/draft_rows.h"
#include "host/formats/number_text.h"

namespace vornhost {

namespace {

constexpr double smallest_radius = 6.3e6, largest_radius = 6.4e6; // of points on the earth, metres

std::string escaped(const std::string &text)
{
    std::string out;
    for (const char c : text) out += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : std::string(1, c);
    return out;
}

std::string element(const std::string &name, const std::string &text)
{
    return '<' + name + '>' + escaped(text) + "</" + name + ">\n";
}
std::string element(const std::string &name, double value) { return element(name, number_text(value)); }

// Writes one draft; the members are what its steps share.
class DynamlWriter {
public:
    DynamlWriter(Draft &its_draft, Faults &all) : draft(its_draft), faults(all) {}

    std::string write()
    {
        out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<DnaXmlFormat type=\"Combined File\" referenceframe=\"\" epoch=\"\">\n";
        refuse_kinds();
        for (const DraftPoint &point : draft.points)
            if (!point.off) write_station(point);
        for (const DraftRow &row : draft.of(DraftKind::distance))
            if (taken(DraftKind::distance, row)) write_chord(row);
        for (const DraftRow &row : draft.of(DraftKind::baseline))
            if (taken(DraftKind::baseline, row) && row.covariance.empty()) write_baseline(row);
        for (const DraftRow &row : draft.of(DraftKind::coordinates))
            if (taken(DraftKind::coordinates, row) && row.covariance.empty()) write_point(row);
        for (const DraftCovariance &group : draft.covariances) write_group(active_part(draft, group));
        return faults.empty() ? out + "</DnaXmlFormat>\n" : std::string();
    }

private:
    void refuse(Source at, const std::string &what, const std::string &remedy) { faults.add(at, what, remedy); }

    void refuse_kinds()
    {
        if (draft.dimension != 3)
            refuse(Source(), "networks that are not geocentric cannot be written there", "export as gkf or lines");
        for (size_t k = 0; k < draft_kinds; k++) {
            const DraftKind kind = (DraftKind)k;
            const bool known =
                kind == DraftKind::distance || kind == DraftKind::baseline || kind == DraftKind::coordinates;
            for (const DraftRow &row : draft.rows[k]) {
                if (known && !row.h1 && !row.h2) continue;
                refuse(row.where, words_of(kind, row) + " needs a reference system there", "export as gkf or lines");
                break;
            }
        }
    }

    bool taken(DraftKind kind, const DraftRow &row)
    {
        if (!row.use) draft.notes.push_back({row.where, words_of(kind, row) + " is left out: it takes no part"});
        return row.use;
    }

    void write_station(const DraftPoint &point)
    {
        const bool fixed = point.code[0] == CODE_FIXED && point.code[1] == CODE_FIXED && point.code[2] == CODE_FIXED;
        if (!fixed && (is_held(point.code[0]) || is_held(point.code[1]) || is_held(point.code[2])))
            refuse(point.where, "point " + quote(point.name) + " is weighted, or held in a part of its coordinates",
                   "hold all of them, none, or observe them in the table coordinates");
        if (!point.value[0] || !point.value[1] || !point.value[2]) return;
        const double radius = std::hypot(*point.value[0], *point.value[1], *point.value[2]);
        if (radius < smallest_radius || radius > largest_radius)
            return refuse(point.where, "the coordinates of point " + quote(point.name) + " are not geocentric",
                          "export as gkf or lines");
        out += "<DnaStation>\n" + element("Name", point.name) + element("Constraints", fixed ? "CCC" : "FFF") +
               element("Type", "XYZ") + "<StationCoord>\n" + element("Name", point.name) +
               element("XAxis", *point.value[0]) + element("YAxis", *point.value[1]) +
               element("Height", *point.value[2]) + "</StationCoord>\n<Description></Description>\n</DnaStation>\n";
    }

    std::string head(const char *type, const DraftRow &row) const
    {
        std::string text = "<DnaMeasurement>\n" + element("Type", type) + "<Ignore/>\n";
        return row.id.empty() ? text : text + element("MeasurementID", row.id);
    }

    static std::string ends(const DraftRow &row)
    {
        return element("First", row.from) + (row.to.empty() ? std::string() : element("Second", row.to));
    }

    static std::string scalars()
    {
        return "<Vscale>1</Vscale>\n<Pscale>1</Pscale>\n<Lscale>1</Lscale>\n<Hscale>1</Hscale>\n";
    }

    void write_chord(const DraftRow &row)
    {
        if (!row.covariance.empty()) return;
        out += head("C", row) + ends(row) + element("Value", *row.value[0]) +
               element("StdDev", row.sigma[0].value_or(0.0)) + "</DnaMeasurement>\n";
    }

    // Values and variances; c in the order xx, xy, xz, yy, yz, zz.
    static std::string member(const char *name, const DraftRow &row, const std::array<double, 6> &c,
                              const std::string &later)
    {
        static const char *const values[] = {"X", "Y", "Z"}, *const variances[] = {"SigmaXX", "SigmaXY", "SigmaXZ",
                                                                                   "SigmaYY", "SigmaYZ", "SigmaZZ"};
        std::string text = '<' + std::string(name) + ">\n";
        for (size_t i = 0; i < 3; i++) text += element(values[i], row.value[i].value_or(0.0));
        for (size_t i = 0; i < 6; i++) text += element(variances[i], c[i]);
        return text + later + "</" + name + ">\n";
    }

    void write_baseline(const DraftRow &row)
    {
        const auto &p = row.product;
        const auto c = [&](size_t i) { return p[i].value_or(0.0); };
        out += head("G", row) + ends(row) + scalars() +
               member("GPSBaseline", row, {c(0), c(3), c(4), c(1), c(5), c(2)}, std::string()) + "</DnaMeasurement>\n";
    }

    void write_point(const DraftRow &row)
    {
        std::array<double, 3> v = {};
        for (size_t i = 0; i < 3; i++) {
            if (!row.value[i])
                refuse(row.where, words_of(DraftKind::coordinates, row) + " has not all coordinates",
                       "observe all or take it out");
            v[i] = row.sigma[i].value_or(0.0) * row.sigma[i].value_or(0.0);
        }
        out += head("Y", row) + scalars() + element("Coords", "XYZ") + element("Total", "1") + ends(row) +
               member("Clusterpoint", row, {v[0], 0, 0, v[1], 0, v[2]}, std::string()) + "</DnaMeasurement>\n";
    }

    // Vectors, or points, of one covariance are one cluster.
    void write_group(const ActiveCovariance &group)
    {
        const size_t n = group.components.size() / 3;
        const auto kind_of = [&](size_t i) { return group.components[i].kind; };
        for (size_t i = 0; i < group.components.size(); i++) {
            const bool whole = group.components.size() == 3 * n && group.components[i].axis == (int)(i % 3);
            if (kind_of(i) == kind_of(0) && whole && kind_of(i) != DraftKind::distance) continue;
            return refuse(group.group->where,
                          "covariance " + quote(group.group->name) + " ties more than whole vectors, or whole points",
                          "divide it");
        }
        if (n == 0) return;
        const bool points = kind_of(0) == DraftKind::coordinates;
        out += head(points ? "Y" : "X", DraftRow()) + scalars() + (points ? element("Coords", "XYZ") : std::string()) +
               element("Total", std::to_string(n));
        for (size_t i = 0; i < n; i++) {
            const DraftRow &row = draft.of(kind_of(0))[group.components[3 * i].row];
            const auto c = [&](size_t a, size_t b) { return group(3 * i + a, 3 * i + b); };
            out +=
                ends(row) + member(points ? "Clusterpoint" : "GPSBaseline", row,
                                   {c(0, 0), c(0, 1), c(0, 2), c(1, 1), c(1, 2), c(2, 2)}, blocks(group, i, n, points));
        }
        out += "</DnaMeasurement>\n";
    }

    static std::string blocks(const ActiveCovariance &group, size_t i, size_t n, bool points)
    {
        const std::string name = points ? "PointCovariance" : "GPSCovariance";
        std::string text;
        for (size_t j = i + 1; j < n; j++) {
            text += '<' + name + ">\n";
            for (size_t a = 0; a < 3; a++)
                for (size_t b = 0; b < 3; b++)
                    text += element("m" + std::to_string(a + 1) + std::to_string(b + 1), group(3 * i + a, 3 * j + b));
            text += "</" + name + ">\n";
        }
        return text;
    }

    Draft &draft;
    Faults &faults;
    std::string out;
};

} // namespace

std::string write_dynaml(Draft &draft, Faults &faults) { return DynamlWriter(draft, faults).write(); }

} // namespace vornhost
