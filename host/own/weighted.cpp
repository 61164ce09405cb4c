// Weighted values as observations of the unknowns themselves, and coordinates imported with their covariance.

#include <algorithm>

#include "host/input/connected_file.h"
#include "host/input/names.h"
#include "host/own/builder.h"
#include "host/own/stands.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

template <class Record> void add_coordinates(Builder &b, const List<Record> &list, int before)
{
    for (size_t i = 0; i < list.size(); i++) {
        const Record &r = list.records[i];
        const int point = r.status > 0 && is_own(b.network, before + (int)i) ? b.point(r.name) : -1;
        for (int k = 0; k < 3 && point >= 0; k++)
            if (r.ix[k] == CODE_WEIGHTED && r.iconn != 2)
                observe_unknown(b, 3 * point + k, r.sx[k] * b.metres, {Item::weighted_coordinate, before + (int)i, k});
    }
}

void add_rotations(Builder &b)
{
    for (size_t s = 0; s < b.numbers.setups.size(); s++) {
        const SetupPlace &place = b.numbers.setups[s];
        const SetupRecord setup = describe_stand(b.network, stand_of(b.network, place.station, place.named));
        const int first = b.numbers.model.setups[s].first;
        for (int k = 0; k < 3 && is_own(b.network, place.station); k++)
            if (setup.ir[k] == CODE_WEIGHTED)
                observe_unknown(b, first + k, setup.sr[k], {Item::weighted_rotation, (int)s, k});
    }
}

// Constants that some observation sees, here or in another part.
std::vector<bool> seen_constants(const Builder &b)
{
    std::vector<bool> seen(b.numbers.model.constants.size());
    for (const va::Observation &o : b.numbers.model.observations)
        if (o.constants >= 0) seen[(size_t)o.constants] = true;
    share_flags(b.network, b.ranks, &seen);
    return seen;
}

void add_group_constants(Builder &b)
{
    const std::vector<bool> seen = seen_constants(b);
    for (size_t g = 0; g < b.numbers.constant_groups.size(); g++) {
        const int record = b.numbers.constant_groups[g];
        const group_input &group = b.network.groups.records[(size_t)record];
        for (int k = 0; k < 3 && seen[g] && b.network.share.own == 0; k++)
            if (group.ic[k] == CODE_WEIGHTED)
                observe_unknown(b, b.numbers.model.constants[g].first + k, group.sc[k],
                                {Item::weighted_constant, record, k});
    }
}

// Cofactors of the file as a whole matrix.
std::vector<double> whole(const ConnectedFile &file)
{
    const size_t n = file.names.size() * (size_t)file.dimension;
    std::vector<double> full(n * n);
    size_t at = 0;
    for (size_t i = 0; i < n; i++)
        for (size_t j = 0; j <= i; j++, at++) full[i * n + j] = full[j * n + i] = file.cofactors[at];
    return full;
}

int record_of(const Builder &b, int point)
{
    const PointPlace &place = b.numbers.points[(size_t)point];
    return place.record + (place.station ? 0 : (int)b.network.stations.size());
}

void import_point(Builder &b, const ConnectedFile &file, size_t i, int group)
{
    const int point = b.point(held_name(b.network.keys, file.names[i]).c_str()), first = file.dimension == 1 ? 2 : 0;
    for (int k = 0; k < file.dimension; k++) {
        const int axis = first + k;
        va::Observation o;
        o.kind = va::Kind::unknown;
        o.unknown = 3 * point + axis;
        o.value[0] = file.coordinates[i][(size_t)axis] - b.numbers.origin[axis];
        o.group = group;
        o.place = (int)i * file.dimension + k;
        b.observe(o, {Item::imported_coordinate, record_of(b, point), axis});
    }
}

template <class Record> int count_imports(const List<Record> &list)
{
    return (int)std::count_if(list.records.begin(), list.records.end(),
                              [](const Record &r) { return r.status > 0 && r.iconn == 2; });
}

} // namespace

void observe_unknown(Builder &b, int unknown, double sigma, const ItemPlace &place)
{
    va::Observation o;
    o.kind = va::Kind::unknown;
    o.unknown = unknown;
    o.value[0] = b.numbers.model.value[(size_t)unknown];
    o.sigma[0] = sigma;
    b.observe(o, place);
}

void add_weighted(Builder &b)
{
    add_coordinates(b, b.network.stations, 0);
    add_coordinates(b, b.network.targets, (int)b.network.stations.size());
    add_rotations(b);
    add_group_constants(b);
    add_weighted_on_earth(b);
}

void add_imports(Builder &b)
{
    if (count_imports(b.network.stations) + count_imports(b.network.targets) == 0) return;
    ConnectedFile file;
    const std::string fault = read_connected_file(b.network.p.confile, file);
    if (!fault.empty()) {
        b.numbers.words = {fault};
        return;
    }
    const std::vector<double> covariance = whole(file);
    const int n = (int)file.names.size() * file.dimension;
    const int group = b.numbers.model.add_group(n, covariance.data());
    for (size_t i = 0; i < file.names.size(); i++) import_point(b, file, i, group);
}

} // namespace vornhost
