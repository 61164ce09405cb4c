// A small network in space of known coordinates, and what a total station with errors of its own reads in it: each
// format writes these readings in its own words, and their adjustment must give the coordinates back.

#ifndef TESTS_HOST_FIELD_TRUTH_H
#define TESTS_HOST_FIELD_TRUTH_H

#include <gtest/gtest.h>
#include <stdarg.h>
#include <stdio.h>

#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "host/folder.h"
#include "host/formats/import.h"
#include "host/formats/network_writer.h"
#include "host/own/own_run.h"

namespace field {

struct Place {
    double x, y, z;
};

inline const std::map<std::string, Place> &places()
{
    static const std::map<std::string, Place> all = {
        {"A", {100, 200, 10}}, {"B", {160, 230, 12.5}}, {"C", {140, 120, 8}}, {"D", {60, 150, 14}}};
    return all;
}

struct Sight {
    std::string station, target;
    double instrument, height; // above the marks, metres
    int set, face;
    double direction, zenith, slope; // gon, metres
    bool first;                      // of its station
};

constexpr double gon = 3.14159265358979323846 / 200.0;

// Two sets in both faces at each point: A B C, then C B A in the second face. The circle is turned between the sets.
inline std::vector<Sight> sights()
{
    std::vector<Sight> all;
    double turn = 37.0;
    for (const auto &[station, from] : places()) {
        const double instrument = 1.5 + from.z / 100.0, c = 0.008, i = -0.005;
        bool first = true;
        for (int set = 1; set <= 2; set++) {
            std::vector<Sight> one;
            turn += 77.7;
            for (const auto &[target, to] : places()) {
                if (target == station) continue;
                const double height = 1.3 + to.z / 50.0, dx = to.x - from.x, dy = to.y - from.y,
                             dz = to.z + height - from.z - instrument, plane = std::hypot(dx, dy);
                const double bearing = std::atan2(dy, dx) / gon, zenith = std::atan2(plane, dz) / gon;
                one.push_back({station, target, instrument, height, set, 1, bearing - turn, zenith,
                               std::hypot(plane, dz), false});
            }
            std::vector<Sight> round = one;
            for (auto sight = one.rbegin(); sight != one.rend(); ++sight) {
                round.push_back(*sight);
                round.back().face = 2;
            }
            for (Sight &sight : round) {
                const double shift = c / std::sin(sight.zenith * gon), sign = sight.face == 1 ? 1.0 : -1.0;
                sight.direction += sign * shift + (sight.face == 2 ? 200.0 : 0.0);
                sight.direction -= std::floor(sight.direction / 400.0) * 400.0;
                sight.zenith = (sight.face == 1 ? sight.zenith : 400.0 - sight.zenith) + i;
                sight.first = first;
                first = false;
                all.push_back(sight);
            }
        }
    }
    return all;
}

inline std::string format(const char *text, ...) __attribute__((format(printf, 1, 2)));
inline std::string format(const char *text, ...)
{
    char buffer[400];
    va_list values;
    va_start(values, text);
    vsnprintf(buffer, sizeof buffer, text, values);
    va_end(values);
    return buffer;
}

} // namespace field

// Imports a book and adjusts it.
class FieldBooks : public ::testing::Test {
protected:
    Lines import(const std::string &text, const vornhost::ImportOptions &options = {})
    {
        folder.write("book", text);
        vornhost::Faults faults;
        imported = vornhost::import_file(folder.file("book"), options, draft, faults);
        return shortened(faults.lines());
    }

    Lines notes() const { return shortened(vornhost::note_lines(draft)); }
    std::string last_note() const { return notes().back(); }

    const std::vector<vornhost::DraftRow> &rows(vornhost::DraftKind kind) const { return draft.of(kind); }

    // Distances and differences of heights between the points of the truth, after the adjustment as a free network.
    void expect_truth(const std::string &text, double tolerance, const vornhost::ImportOptions &options = {})
    {
        ASSERT_EQ(import(text, options), Lines()) << text;
        vornhost::Model model;
        vornhost::Faults faults;
        Lines said;
        ASSERT_TRUE(vornhost::read_any_network(folder.file("book"), model, said, faults, options))
            << faults.lines().at(0) << vornhost::write_network(draft).text;
        const SolvedNetwork solved = solve(model);
        ASSERT_TRUE(solved.run.outcome.adjusted())
            << (solved.run.outcome.words.empty() ? "" : solved.run.outcome.words[0]);
        std::map<std::string, field::Place> found;
        for (const vornhost::PointResult &point : solved.run.results.points)
            found[point.name] = {point.adjusted[0].value_or(0), point.adjusted[1].value_or(0),
                                 point.adjusted[2].value_or(0)};
        for (const auto &[a, p] : field::places())
            for (const auto &[b, q] : field::places()) {
                const field::Place &u = found[a], &v = found[b];
                EXPECT_NEAR(std::hypot(u.x - v.x, u.y - v.y), std::hypot(p.x - q.x, p.y - q.y), tolerance) << a << b;
                EXPECT_NEAR(u.z - v.z, p.z - q.z, tolerance) << a << b;
            }
        // the turn from A to B to C runs in the sense of the truth
        EXPECT_GT((found["B"].x - found["A"].x) * (found["C"].y - found["A"].y) * -1.0 +
                      (found["B"].y - found["A"].y) * (found["C"].x - found["A"].x),
                  0.0);
    }

    Folder folder;
    vornhost::Draft draft;
    bool imported = false;

private:
    Lines shortened(Lines lines) const
    {
        for (std::string &line : lines) folder.shorten(line);
        return lines;
    }
};

#endif
