// Building of a model: blocks of unknowns, observations and groups, appended one by one.

#include "adjust/model.h"

#include <stdexcept>

namespace vornadjust {

int components(Kind kind, Space space)
{
    if (kind == Kind::baseline) return space == Space::heights ? 1 : space == Space::plane ? 2 : 3;
    if (kind == Kind::position) return 3;
    return kind == Kind::image ? 2 : 1;
}

int Model::add_unknowns(int n, const double *values, const Code *codes, const Meaning *meanings)
{
    const int first = n_unknowns();
    value.insert(value.end(), values, values + n);
    start.insert(start.end(), values, values + n);
    code.insert(code.end(), codes, codes + n);
    meaning.insert(meaning.end(), meanings, meanings + n);
    return first;
}

int Model::add_point(const double xyz[3], const Code codes[3])
{
    if (n_unknowns() != 3 * n_points) throw std::logic_error("points stand before all other unknowns");
    const Meaning coordinates[3] = {Meaning::coordinate, Meaning::coordinate, Meaning::coordinate};
    add_unknowns(3, xyz, codes, coordinates);
    return n_points++;
}

int Model::add_setup(int point, bool levelled, const double angles[3], const Code codes[3])
{
    const Meaning meanings[3] = {Meaning::angle, Meaning::angle, Meaning::angle};
    setups.push_back({point, add_unknowns(3, angles, codes, meanings), levelled});
    return (int)setups.size() - 1;
}

int Model::add_constants(const double values[3], const Code codes[3])
{
    const Meaning meanings[3] = {Meaning::additive, Meaning::scale, Meaning::refraction};
    constants.push_back({add_unknowns(3, values, codes, meanings)});
    return (int)constants.size() - 1;
}

int Model::add_camera(const double values[10], const Code codes[10], double pu, double pv, double cu, double cv)
{
    const std::vector<Meaning> meanings(10, Meaning::camera);
    cameras.push_back({add_unknowns(10, values, codes, meanings.data()), pu, pv, cu, cv});
    return (int)cameras.size() - 1;
}

int Model::add_motion(const double values[7], const Code codes[7])
{
    const std::vector<Meaning> meanings(7, Meaning::motion);
    motions.push_back({add_unknowns(7, values, codes, meanings.data())});
    return (int)motions.size() - 1;
}

int Model::add_deflection(int point, const double values[2], const Code codes[2])
{
    const Meaning meanings[2] = {Meaning::angle, Meaning::angle};
    if (deflection_at.empty()) deflection_at.assign((std::size_t)n_points, -1);
    deflection_at[(std::size_t)point] = (int)deflections.size();
    deflections.push_back({point, add_unknowns(2, values, codes, meanings)});
    return (int)deflections.size() - 1;
}

int Model::add_group(int size, const double *entries)
{
    groups.push_back({size, covariance.size()});
    covariance.insert(covariance.end(), entries, entries + (std::size_t)size * size);
    return (int)groups.size() - 1;
}

int Model::observe(const Observation &observation)
{
    observations.push_back(observation);
    return (int)observations.size() - 1;
}

} // namespace vornadjust
