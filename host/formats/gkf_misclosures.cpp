// Misclosures in metres: lengths and heights as they are, angles times the length of the sight. Directions are compared
// with the median orientation of their set.

#include "host/formats/gkf_misclosures.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "host/formats/number_text.h"

namespace vornhost {

namespace {

constexpr double pi = 3.14159265358979323846;

struct Sight {
    double dx = 0, dy = 0;
    std::optional<double> dz; // with the heights of instrument and target

    double length() const { return std::hypot(dx, dy); }
    double bearing() const { return std::atan2(dy, dx); }
};

class Misclosures {
public:
    Misclosures(GkfContext &its_context, double its_tolerance) : context(its_context), tolerance(its_tolerance) {}

    void note()
    {
        for (const DraftKind kind : {DraftKind::distance, DraftKind::horizontal_distance, DraftKind::height_difference,
                                     DraftKind::vertical_angle, DraftKind::azimuth, DraftKind::angle})
            for (const DraftRow &row : context.draft.of(kind)) compare(row, misclosure(kind, row));
        note_directions();
    }

private:
    double radians(double angle) const { return angle / context.full_circle() * 2.0 * pi; }

    std::optional<Sight> sight(const std::string &from, const std::string &to, const DraftRow &row) const
    {
        const GkfPoint *p = context.points.find(from), *q = context.points.find(to);
        if (!p || !q || !p->x || !q->x) return std::nullopt;
        Sight s;
        s.dx = *q->x - *p->x;
        s.dy = *q->y - *p->y;
        if (p->z && q->z) s.dz = *q->z + row.h2.value_or(0.0) - *p->z - row.h1.value_or(0.0);
        return s;
    }

    // Observed less computed.
    std::optional<double> misclosure(DraftKind kind, const DraftRow &row) const
    {
        const double value = *row.value[0];
        if (kind == DraftKind::height_difference) {
            const GkfPoint *p = context.points.find(row.from), *q = context.points.find(row.to);
            if (!p || !q || !p->z || !q->z) return std::nullopt;
            return value - (*q->z - *p->z);
        }
        const std::optional<Sight> s = sight(kind == DraftKind::angle ? row.at : row.from, row.to, row);
        const bool space =
            kind == DraftKind::vertical_angle || (kind == DraftKind::distance && context.draft.dimension == 3);
        if (!s || (space && !s->dz)) return std::nullopt;
        if (kind == DraftKind::distance || kind == DraftKind::horizontal_distance)
            return value - (space ? std::hypot(s->length(), *s->dz) : s->length());
        if (kind == DraftKind::vertical_angle)
            return (radians(value) - std::atan2(s->length(), *s->dz)) * std::hypot(s->length(), *s->dz);
        return turn(kind, row, *s);
    }

    std::optional<double> turn(DraftKind kind, const DraftRow &row, const Sight &s) const
    {
        double computed = s.bearing() + radians(context.draft.azimuth_rotation.value_or(0.0));
        double length = s.length();
        if (kind == DraftKind::angle) {
            const std::optional<Sight> back = sight(row.at, row.from, row);
            if (!back) return std::nullopt;
            computed = s.bearing() - back->bearing();
            length = std::max(length, back->length());
        }
        return std::remainder(radians(*row.value[0]) - computed, 2.0 * pi) * length;
    }

    void note_directions()
    {
        std::map<std::string, std::vector<const DraftRow *>> sets;
        for (const DraftRow &row : context.draft.of(DraftKind::direction))
            if (sight(row.from, row.to, row)) sets[row.from + '\n' + row.setup].push_back(&row);
        for (const auto &[name, rows] : sets) note_set(rows);
    }

    void note_set(const std::vector<const DraftRow *> &rows)
    {
        const auto zero = [&](const DraftRow &row) {
            return sight(row.from, row.to, row)->bearing() - radians(*row.value[0]);
        };
        const double first = zero(*rows[0]);
        std::vector<double> zeros(rows.size());
        std::transform(rows.begin(), rows.end(), zeros.begin(),
                       [&](const DraftRow *row) { return std::remainder(zero(*row) - first, 2.0 * pi); });
        std::vector<double> sorted = zeros;
        std::sort(sorted.begin(), sorted.end());
        const double median = (sorted[(sorted.size() - 1) / 2] + sorted[sorted.size() / 2]) / 2.0;
        for (size_t i = 0; i < rows.size(); i++)
            compare(*rows[i], (median - zeros[i]) * sight(rows[i]->from, rows[i]->to, *rows[i])->length());
    }

    void compare(const DraftRow &row, std::optional<double> misclosure)
    {
        if (!misclosure || std::fabs(*misclosure) <= tolerance) return;
        char text[64];
        snprintf(text, sizeof text, "%.3g", std::fabs(*misclosure));
        context.note(row.where, "taken, but gama-local leaves it out: it contradicts the coordinates in the file by " +
                                    std::string(text) + " m, tol-abs is " + number_text(tolerance) +
                                    " m; write no in its column use to leave it out here too");
    }

    GkfContext &context;
    double tolerance;
};

} // namespace

void note_misclosures(GkfContext &context, double tolerance) { Misclosures(context, tolerance).note(); }

} // namespace vornhost
