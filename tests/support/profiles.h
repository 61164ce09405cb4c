// Matrices in profile storage made up by tests, and plain loops to compare with.

#ifndef TESTS_PROFILES_H
#define TESTS_PROFILES_H

#include <math.h>
#include <stddef.h>

#include <random>
#include <vector>

// A symmetric matrix: its profile, and all its elements row by row.
struct Profile {
    int n = 0;
    std::vector<size_t> add;
    std::vector<double> a;

    // Rows from the given first columns to the diagonal; element (i, j) by value(i, j).
    template <class Value> Profile(const std::vector<int> &first, Value value) : n((int)first.size()), add(1, 0)
    {
        for (int i = 0; i < n; i++) {
            for (int j = first[i]; j <= i; j++) a.push_back(value(i, j));
            add.push_back(a.size());
        }
    }

    int first(int i) const { return i + 1 - (int)(add[i + 1] - add[i]); }
    double at(int i, int j) const { return j < first(i) ? 0.0 : a[add[i] + j - first(i)]; }

    std::vector<double> full() const
    {
        std::vector<double> m((size_t)n * n);
        for (int i = 0; i < n; i++)
            for (int j = 0; j <= i; j++) m[(size_t)i * n + j] = m[(size_t)j * n + i] = at(i, j);
        return m;
    }
};

// Random elements below 1 in magnitude with a diagonal that outweighs its row, of changing
// sign where indefinite is set.
inline Profile random_profile(const std::vector<int> &first, unsigned seed, bool indefinite = false)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> one(-1.0, 1.0);
    const double diagonal = 1.5 * sqrt((double)first.size()) + 1.0;
    return Profile(first, [&](int i, int j) {
        const double v = one(random);
        return i != j ? v : (indefinite && i % 3 == 1 ? -diagonal : diagonal) + v;
    });
}

// First columns of a full triangle, of a band, of rows of any length, and of a band that is
// followed by full rows, as parameters follow coordinates.
inline std::vector<int> full_rows(int n) { return std::vector<int>(n, 0); }

inline std::vector<int> banded(int n, int width)
{
    std::vector<int> first(n);
    for (int i = 0; i < n; i++) first[i] = i > width ? i - width : 0;
    return first;
}

inline std::vector<int> ragged(int n, unsigned seed)
{
    std::mt19937 random(seed);
    std::vector<int> first(n);
    for (int i = 0; i < n; i++) first[i] = (int)(random() % (unsigned)(i + 1));
    return first;
}

inline std::vector<int> bordered(int n, int width, int border)
{
    std::vector<int> first = banded(n, width);
    for (int i = n - border < 0 ? 0 : n - border; i < n; i++) first[i] = i % 7 == 3 ? i / 2 : 0;
    return first;
}

#endif
