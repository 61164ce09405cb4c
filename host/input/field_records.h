// Records of what only the program's own adjustment takes: set-ups, kinds of observations beside those of the engine,
// covariances, and what any row says beside its values. Metres and radians; points by their number, stations first,
// then targets.

#ifndef VORNHOST_FIELD_RECORDS_H
#define VORNHOST_FIELD_RECORDS_H

#include <stddef.h>

#include <limits>
#include <string>
#include <vector>

#include "vorn/project.h"

namespace vornhost {

// What the rows of a table say beside their values. A list ends with the last row that says something; it is empty
// where none does.
struct RowNotes {
    std::vector<int> setup;      // in Model::setups
    std::vector<int> set;        // in Model::set_words
    std::vector<int> covariance; // in Model::covariances
    std::vector<int> place;      // of the first component in its covariance
    std::vector<std::string> id, remark;
    std::vector<double> raw;        // readings that were reduced, metres or radians
    std::vector<double> h1, h2;     // of the antennas of baselines above the marks, metres
    std::vector<double> refraction; // coefficients of single vertical angles, unknown_note where the row gives none

    // What row i of the others says, as row `to`.
    void copy(const RowNotes &others, size_t i, size_t to);
};

constexpr double unknown_note = std::numeric_limits<double>::quiet_NaN(); // a reading that was not reduced

// The element of a list of notes, or `otherwise` (-1) where the row says nothing.
inline int note_at(const std::vector<int> &list, size_t row) { return row < list.size() ? list[row] : -1; }
inline double note_at(const std::vector<double> &list, size_t row, double otherwise)
{
    return row < list.size() ? list[row] : otherwise;
}
inline std::string note_at(const std::vector<std::string> &list, size_t row)
{
    return row < list.size() ? list[row] : std::string();
}

template <class Value> void set_note(std::vector<Value> &list, size_t row, const Value &value, const Value &none)
{
    if (list.size() <= row) list.resize(row + 1, none);
    list[row] = value;
}

// A stand of an instrument. The one that rows without a set-up belong to is in the list only where the table setups
// describes it; its word is empty.
struct SetupRecord {
    int station = -1; // number of the point
    std::string word;
    double h = 0; // of the instrument above the mark
    bool levelled = true;
    double r[3] = {0, 0, 0};  // rotations of the instrument
    double sr[3] = {0, 0, 0}; // standard deviations of weighted ones
    int ir[3] = {CODE_FIXED, CODE_FIXED, CODE_FREE};
    bool orientation_given = false;
    bool zero_given = false;    // the file says which rows share a zero of the circle
    bool zero_each_set = false; // one orientation for each set
    int group = -1;             // of instruments
};

// An angle (at, from, to are from, to, third here), horizontal distance, bearing or scale bar.
struct SightRow {
    int from = -1, to = -1, third = -1;
    double value = 0, sigma = 0; // sigma 0: from a covariance
    bool constants = false;      // horizontal distances: takes those of its instrument group
    bool use = true;
};

enum class DerivedKind { distance, horizontal_distance, bearing, height_difference, angle };

// A quantity that is computed from adjusted coordinates; an angle (at, from, to) as that of a SightRow.
struct DerivedRow {
    DerivedKind kind = DerivedKind::distance;
    int from = -1, to = -1, third = -1;
};

// Observed coordinates of a point, or a difference of coordinates.
struct VectorRow {
    int from = -1, to = -1; // coordinates: `to` is -1
    bool given[3] = {false, false, false};
    double value[3] = {0, 0, 0}, sigma[3] = {0, 0, 0};
    bool use = true;

    int components() const { return given[0] + given[1] + given[2]; }
};

// The covariance of the observations that name it, by rows of its upper triangle as far as `width` columns behind the
// diagonal: row i holds the elements (i, i) to (i, min(i + width, size - 1)).
struct CovarianceRecord {
    std::string name;
    int size = 0, width = 0;
    std::vector<double> elements; // size rows of width + 1, zeros behind the last column

    double operator()(int i, int j) const
    {
        const int row = i < j ? i : j, off = i < j ? j - i : i - j;
        return off > width ? 0.0 : elements[(size_t)row * (size_t)(width + 1) + (size_t)off];
    }
};

} // namespace vornhost

#endif
