// Sparse positive definite matrices of many shapes, and their dense counterparts.

#ifndef TESTS_PATTERNS_H
#define TESTS_PATTERNS_H

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "adjust/sparse.h"

typedef std::vector<std::pair<int, int>> Pairs;

struct Shape {
    std::string name;
    int n;
    Pairs pairs; // of unknowns that share an observation
};

inline Shape loose(int n) { return {"loose unknowns", n, {}}; }

inline Shape band(int n, int width)
{
    Shape s{"band", n, {}};
    for (int i = 0; i < n; i++)
        for (int j = std::max(0, i - width); j < i; j++) s.pairs.push_back({i, j});
    return s;
}

inline Shape full(int n)
{
    Shape s = band(n, n);
    s.name = "full";
    return s;
}

inline Shape arrow(int n, int tips, bool first)
{
    Shape s{"arrow", n, {}};
    for (int i = 0; i < n; i++)
        for (int t = 0; t < tips; t++) s.pairs.push_back({first ? t : n - 1 - t, i});
    return s;
}

// A shuffled grid of points with some unknowns each and eight neighbours.
inline Shape grid(int rows, int columns, int unknowns, unsigned seed)
{
    Shape s{"grid", rows * columns * unknowns, {}};
    std::vector<int> name((std::size_t)(rows * columns));
    for (std::size_t i = 0; i < name.size(); i++) name[i] = (int)i;
    std::shuffle(name.begin(), name.end(), std::mt19937(seed));
    const auto join = [&](int p, int q) {
        for (int i = 0; i < unknowns; i++)
            for (int j = 0; j < unknowns; j++) s.pairs.push_back({name[p] * unknowns + i, name[q] * unknowns + j});
    };
    for (int r = 0; r < rows; r++)
        for (int c = 0; c < columns; c++) {
            const int p = r * columns + c;
            join(p, p);
            if (c + 1 < columns) join(p, p + 1);
            if (r + 1 == rows) continue;
            join(p, p + columns);
            if (c + 1 < columns) join(p, p + columns + 1);
            if (c > 0) join(p, p + columns - 1);
        }
    return s;
}

inline Shape scattered(int n, int pairs, unsigned seed)
{
    Shape s{"scattered", n, {}};
    std::mt19937 random(seed);
    for (int k = 0; k < pairs; k++) s.pairs.push_back({(int)(random() % (unsigned)n), (int)(random() % (unsigned)n)});
    return s;
}

inline Shape tree(int n, unsigned seed)
{
    Shape s{"tree", n, {}};
    std::mt19937 random(seed);
    for (int i = 1; i < n; i++) s.pairs.push_back({i, (int)(random() % (unsigned)i)});
    return s;
}

inline std::vector<Shape> shapes()
{
    return {loose(0),
            loose(1),
            full(2),
            loose(7),
            band(50, 1),
            band(120, 7),
            band(90, 40),
            full(30),
            full(130),
            arrow(80, 1, true),
            arrow(80, 1, false),
            arrow(150, 5, true),
            grid(4, 5, 2, 1),
            grid(9, 8, 3, 2),
            grid(13, 14, 1, 3),
            grid(2, 60, 2, 4),
            scattered(100, 60, 5),
            scattered(200, 500, 6),
            tree(150, 7)};
}

// Coefficients of normal equations: each pair is an observation with random coefficients, and every
// unknown is observed weakly.
inline vornadjust::SymmetricMatrix matrix_of(const Shape &shape, unsigned seed, double weak = 0.05)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> some(-1.0, 1.0);
    std::map<std::pair<int, int>, double> element; // by column, then row
    for (int i = 0; i < shape.n; i++) element[{i, i}] = weak;
    for (const std::pair<int, int> &p : shape.pairs) {
        if (p.first == p.second) continue;
        const double a = some(random), b = some(random);
        element[{p.first, p.first}] += a * a;
        element[{p.second, p.second}] += b * b;
        element[{std::min(p.first, p.second), std::max(p.first, p.second)}] += a * b;
    }
    vornadjust::SymmetricMatrix m;
    m.n = shape.n;
    for (const auto &e : element) {
        if (e.first.second == e.first.first && e.first.first > 0) m.start.push_back((std::int64_t)m.row.size());
        m.row.push_back(e.first.second);
        m.value.push_back(e.second);
    }
    if (m.n > 0) m.start.push_back((std::int64_t)m.row.size());
    return m;
}

inline std::vector<long double> dense_of(const vornadjust::SymmetricMatrix &m)
{
    std::vector<long double> a((std::size_t)m.n * m.n, 0.0L);
    for (int j = 0; j < m.n; j++)
        for (std::int64_t p = m.start[j]; p < m.start[j + 1]; p++)
            a[(std::size_t)j * m.n + m.row[p]] = a[(std::size_t)m.row[p] * m.n + j] = m.value[p];
    return a;
}

inline std::vector<double> random_vector(int n, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> some(-1.0, 1.0);
    std::vector<double> v((std::size_t)n);
    for (double &x : v) x = some(random);
    return v;
}

#endif
