// One network written in two ways must have one result.

#ifndef TESTS_HOST_OWN_TWO_WAYS_H
#define TESTS_HOST_OWN_TWO_WAYS_H

#include <cmath>
#include <string>

#include "host/own/own_run.h"

// Replaces the first of the words by the other ones.
inline std::string with(std::string text, const std::string &words, const std::string &others)
{
    const size_t at = text.find(words);
    if (at == std::string::npos) {
        ADD_FAILURE() << "no " << words;
        return text;
    }
    return text.replace(at, words.size(), others);
}

inline void expect_same_point(const vornhost::PointResult &a, const vornhost::PointResult &b, double tolerance)
{
    for (int k = 0; k < 3; k++) {
        ASSERT_EQ(a.adjusted[k].has_value(), b.adjusted[k].has_value()) << a.name;
        ASSERT_EQ(a.deviation[k].has_value(), b.deviation[k].has_value()) << a.name;
        if (a.adjusted[k]) {
            EXPECT_NEAR(*a.adjusted[k], *b.adjusted[k], tolerance) << a.name << " " << k;
        }
        if (a.deviation[k]) {
            EXPECT_NEAR(*a.deviation[k], *b.deviation[k], tolerance) << a.name << " " << k;
        }
    }
}

// Coordinates and their standard deviations to the tolerance (metres), sigma and degrees of freedom.
inline void expect_same(const SolvedNetwork &one, const SolvedNetwork &other, double tolerance = 1e-9)
{
    ASSERT_TRUE(one.adjusted()) << one.words();
    ASSERT_TRUE(other.adjusted()) << other.words();
    EXPECT_EQ(one.results().degrees_of_freedom, other.results().degrees_of_freedom);
    ASSERT_TRUE(one.results().sigma_aposteriori.has_value());
    ASSERT_TRUE(other.results().sigma_aposteriori.has_value());
    EXPECT_NEAR(*one.results().sigma_aposteriori, *other.results().sigma_aposteriori, 1e-6);
    for (const vornhost::PointResult &p : one.results().points) expect_same_point(p, other.point(p.name), tolerance);
}

// The residuals of one kind.
inline std::vector<vornhost::ResidualResult> residuals_of(const SolvedNetwork &solved, const std::string &kind)
{
    std::vector<vornhost::ResidualResult> all;
    for (const vornhost::ResidualResult &r : solved.results().residuals)
        if (r.kind == kind) all.push_back(r);
    return all;
}

#endif
