// What writers of foreign formats take from a draft: rows with their standard deviations, directions by their zeros,
// covariances without what takes no part.

#ifndef VORNHOST_DRAFT_ROWS_H
#define VORNHOST_DRAFT_ROWS_H

#include <vector>

#include "host/formats/draft.h"

namespace vornhost {

inline bool is_angle(DraftKind kind)
{
    return kind == DraftKind::direction || kind == DraftKind::vertical_angle || kind == DraftKind::azimuth ||
           kind == DraftKind::bearing || kind == DraftKind::angle;
}

// Rows of directions that share an orientation: station, set-up and set.
std::vector<std::vector<const DraftRow *>> direction_sets(const std::vector<const DraftRow *> &directions);

// A covariance over the rows that take part, in the order of its matrix.
struct ActiveCovariance {
    const DraftCovariance *group;
    std::vector<DraftComponent> components;
    size_t width = 0;             // of the band of the upper triangle
    std::vector<double> elements; // components.size() rows of width + 1, zeros behind the last column

    double operator()(size_t i, size_t j) const;
};

ActiveCovariance active_part(const Draft &draft, const DraftCovariance &group);

// "direction from A to B".
std::string words_of(DraftKind kind, const DraftRow &row);

} // namespace vornhost

#endif
