// Covariances of the file as correlated groups of the observations that take part. What is not correlated with
// anything goes alone: a covariance falls into its independent blocks.

#include <algorithm>
#include <cmath>
#include <numeric>

#include "host/own/builder.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

using Members = std::vector<CovarianceMember>;

// The first of the members that hang together with each, through elements that are not 0 and through observations of
// several components. Members by their places.
std::vector<int> blocks_of(const CovarianceRecord &c, const Members &members)
{
    std::vector<int> parent(members.size());
    std::iota(parent.begin(), parent.end(), 0);
    const auto root = [&](int i) {
        while (parent[(size_t)i] != i) i = parent[(size_t)i] = parent[(size_t)parent[(size_t)i]];
        return i;
    };
    for (size_t i = 0; i < members.size(); i++)
        for (size_t j = i + 1; j < members.size() && members[j].place - members[i].place <= c.width; j++)
            if (c(members[i].place, members[j].place) != 0.0) parent[(size_t)root((int)j)] = root((int)i);
    for (size_t i = 1; i < members.size(); i++)
        if (members[i].observation == members[i - 1].observation) parent[(size_t)root((int)i)] = root((int)i - 1);
    std::vector<int> block(members.size());
    for (size_t i = 0; i < members.size(); i++) block[i] = root((int)i);
    return block;
}

void add_block(Builder &b, const CovarianceRecord &c, int covariance, const Members &members)
{
    std::vector<va::Observation> &all = b.numbers.model.observations;
    const double first = c(members[0].place, members[0].place);
    if (members.size() == 1 && first > 0.0) { // without correlation
        all[(size_t)members[0].observation].sigma[0] = std::sqrt(first);
        return;
    }
    std::vector<double> dense;
    for (const CovarianceMember &i : members)
        for (const CovarianceMember &j : members) dense.push_back(c(i.place, j.place));
    const int group = b.numbers.model.add_group((int)members.size(), dense.data());
    b.numbers.covariances.resize((size_t)group + 1, -1);
    b.numbers.covariances[(size_t)group] = covariance;
    for (size_t i = 0; i < members.size(); i++) {
        va::Observation &o = all[(size_t)members[i].observation];
        o.group = group;
        if (members[i].component == 0) o.place = (int)i;
    }
}

void add_covariance(Builder &b, int covariance, const Members &members)
{
    const CovarianceRecord &c = b.network.covariances.records[(size_t)covariance];
    const std::vector<int> block = blocks_of(c, members);
    std::map<int, Members> parts; // by block, in the order of their first members
    std::map<int, int> first;
    for (size_t i = 0; i < members.size(); i++)
        parts[first.emplace(block[i], (int)i).first->second].push_back(members[i]);
    for (const auto &[at, part] : parts) add_block(b, c, covariance, part);
}

} // namespace

void add_covariances(Builder &b)
{
    std::vector<Members> of(b.network.covariances.size());
    for (const CovarianceMember &m : b.members) of[(size_t)m.covariance].push_back(m);
    for (size_t c = 0; c < of.size(); c++) {
        if (of[c].empty()) continue;
        std::sort(of[c].begin(), of[c].end(),
                  [](const CovarianceMember &i, const CovarianceMember &j) { return i.place < j.place; });
        add_covariance(b, (int)c, of[c]);
    }
}

} // namespace vornhost
