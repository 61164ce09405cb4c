#include "host/preparation/start/pair.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vornhost::start {

namespace {

constexpr int turns = 400;        // tried over the circle
constexpr int most_minima = 4;    // looked at closely, the deepest first
constexpr double width = 1e-3;    // radians
constexpr double most_cost = 1.5; // of a base that says something
constexpr double steep = 0.1;     // least horizontal part of a base of length 1
constexpr double ahead = 0.75;    // of the points, at least
const double pi = 4.0 * std::atan(1.0);

struct Xyz {
    double x, y, z;
};

double dot(const Xyz &a, const Xyz &b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

Xyz cross(const Xyz &a, const Xyz &b) { return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x}; }

Xyz unit(double bearing, double slope)
{
    const double n = 1.0 / std::sqrt(1.0 + slope * slope);
    return {n * std::cos(bearing), n * std::sin(bearing), n * slope};
}

// Symmetric, by its upper triangle.
struct Symmetric {
    double xx = 0, xy = 0, xz = 0, yy = 0, yz = 0, zz = 0;

    void add(const Xyz &n, double w)
    {
        xx += w * n.x * n.x, xy += w * n.x * n.y, xz += w * n.x * n.z;
        yy += w * n.y * n.y, yz += w * n.y * n.z, zz += w * n.z * n.z;
    }
};

// By the trigonometric solution of the characteristic equation (Smith 1961, Communications of the ACM 4, 168).
double least_eigenvalue(const Symmetric &m)
{
    const double q = (m.xx + m.yy + m.zz) / 3.0, a = m.xx - q, b = m.yy - q, c = m.zz - q;
    const double p = std::sqrt((a * a + b * b + c * c + 2.0 * (m.xy * m.xy + m.xz * m.xz + m.yz * m.yz)) / 6.0);
    if (!(p > 0.0)) return q;
    const double det = a * (b * c - m.yz * m.yz) - m.xy * (m.xy * c - m.yz * m.xz) + m.xz * (m.xy * m.yz - b * m.xz);
    const double r = std::clamp(det / (2.0 * p * p * p), -1.0, 1.0);
    return q + 2.0 * p * std::cos(std::acos(r) / 3.0 + 2.0 * pi / 3.0);
}

// Normal to the rows of m less the eigenvalue: the longest product of two of them.
Xyz eigenvector(const Symmetric &m, double value)
{
    const Xyz rows[3] = {{m.xx - value, m.xy, m.xz}, {m.xy, m.yy - value, m.yz}, {m.xz, m.yz, m.zz - value}};
    Xyz best{0, 0, 0};
    for (const auto &[i, j] : {std::pair{0, 1}, {0, 2}, {1, 2}}) {
        const Xyz n = cross(rows[i], rows[j]);
        if (dot(n, n) > dot(best, best)) best = n;
    }
    const double length = std::sqrt(dot(best, best));
    return length > 0.0 ? Xyz{best.x / length, best.y / length, best.z / length} : best;
}

// The base that most sights agree with at a turn.
struct Base {
    Xyz direction{1, 0, 0}; // length 1
    double cost = 0;        // mean of log(1 + (r / width)^2), r how far two sights pass one another
};

class Pairing {
public:
    explicit Pairing(const std::vector<CommonSight> &its_sights) : sights(its_sights) {}
    std::optional<Pair> find() const;

private:
    Base base_at(double turn) const;
    double cost(double turn) const { return base_at(turn).cost; }
    double refined(double turn, double step) const;
    double share_ahead(double turn, const Xyz &base) const;
    std::optional<Pair> pair_at(double turn) const;

    const std::vector<CommonSight> &sights;
};

// By reweighting: a sight that is off loses its weight, less and less of it is taken to be right.
Base Pairing::base_at(double turn) const
{
    std::vector<Xyz> normals;
    normals.reserve(sights.size());
    for (const CommonSight &s : sights)
        normals.push_back(cross(unit(s.first, s.first_slope), unit(s.second + turn, s.second_slope)));
    Base base;
    std::vector<double> weight(normals.size(), 1.0);
    for (const double wide : {30.0, 10.0, 3.0, 1.0}) {
        Symmetric m;
        for (size_t i = 0; i < normals.size(); i++) m.add(normals[i], weight[i]);
        base.direction = eigenvector(m, least_eigenvalue(m));
        base.cost = 0.0;
        for (size_t i = 0; i < normals.size(); i++) {
            const double r = dot(normals[i], base.direction) / width;
            weight[i] = 1.0 / (1.0 + r * r / (wide * wide));
            base.cost += std::log1p(r * r) / (double)normals.size();
        }
    }
    return base;
}

// Golden section.
double Pairing::refined(double turn, double step) const
{
    const double part = 0.5 * (std::sqrt(5.0) - 1.0);
    double a = turn - step, b = turn + step, c = b - part * (b - a), d = a + part * (b - a), fc = cost(c), fd = cost(d);
    for (int i = 0; i < 40; i++) {
        if (fc < fd) {
            b = d, d = c, fd = fc;
            c = b - part * (b - a), fc = cost(c);
        } else {
            a = c, c = d, fc = fd;
            d = a + part * (b - a), fd = cost(d);
        }
    }
    return 0.5 * (a + b);
}

// Of the points, those that lie ahead on both sights: s u - t v = base.
double Pairing::share_ahead(double turn, const Xyz &base) const
{
    double n = 0.0;
    for (const CommonSight &c : sights) {
        const Xyz u = unit(c.first, c.first_slope), v = unit(c.second + turn, c.second_slope);
        const double uv = dot(u, v), bu = dot(base, u), bv = dot(base, v);
        n += bu - uv * bv > 0.0 && uv * bu - bv > 0.0 ? 1.0 : 0.0;
    }
    return n / (double)sights.size();
}

std::optional<Pair> Pairing::pair_at(double turn) const
{
    const Base found = base_at(turn);
    Xyz base = found.direction;
    const Xyz back{-base.x, -base.y, -base.z};
    if (share_ahead(turn, back) > share_ahead(turn, base)) base = back;
    const double flat = std::hypot(base.x, base.y);
    if (flat < steep || share_ahead(turn, base) < ahead) return std::nullopt;
    return Pair{turn, base.x / flat, base.y / flat, found.cost};
}

std::optional<Pair> Pairing::find() const
{
    const double step = 2.0 * pi / turns;
    std::vector<double> off;
    for (int i = 0; i < turns; i++) off.push_back(cost(i * step));
    std::vector<int> minima;
    for (int i = 0; i < turns; i++)
        if (off[(size_t)i] <= off[(size_t)((i + 1) % turns)] && off[(size_t)i] < off[(size_t)((i + turns - 1) % turns)])
            minima.push_back(i);
    std::sort(minima.begin(), minima.end(), [&](int a, int b) { return off[(size_t)a] < off[(size_t)b]; });
    if (minima.size() > most_minima) minima.resize(most_minima);
    std::optional<Pair> best;
    for (const int i : minima) {
        const auto pair = pair_at(refined(i * step, step));
        if (pair && pair->cost < most_cost && (!best || pair->cost < best->cost)) best = pair;
    }
    return best;
}

} // namespace

std::optional<Pair> find_pair(const std::vector<CommonSight> &sights)
{
    return sights.size() < 4 ? std::nullopt : Pairing(sights).find();
}

} // namespace vornhost::start
