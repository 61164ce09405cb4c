#include "host/input/model.h"

namespace vornhost {

namespace {

template <class Record> void attach_list(List<Record> &list, Record **array, int *count)
{
    *array = list.records.empty() ? nullptr : list.records.data();
    *count = (int)list.records.size();
}

void attach_group(group_input &group, std::vector<int> &members)
{
    group.member = members.empty() ? nullptr : members.data();
    group.nmember = (int)members.size();
}

void attach_lump(lump_definition &lump, Model::LumpTable &table)
{
    lump.n = (int)table.epoch.size();
    lump.epoch = table.epoch.data();
    lump.code = table.code.data();
    lump.scale = table.scale.data();
    lump.tx = table.tx.data();
    lump.ty = table.ty.data();
    lump.tz = table.tz.data();
    lump.rx = table.rx.data();
    lump.ry = table.ry.data();
    lump.rz = table.rz.data();
}

} // namespace

void RowNotes::copy(const RowNotes &others, size_t i, size_t to)
{
    const auto take = [&](auto &mine, const auto &list, const auto &none) {
        if (i < list.size() && list[i] != none) set_note(mine, to, list[i], none);
    };
    take(setup, others.setup, -1);
    take(set, others.set, -1);
    take(covariance, others.covariance, -1);
    take(place, others.place, -1);
    take(id, others.id, std::string());
    take(remark, others.remark, std::string());
    take(raw, others.raw, unknown_note);
    take(refraction, others.refraction, unknown_note);
    take(h1, others.h1, 0.0);
    take(h2, others.h2, 0.0);
}

Model Model::twin() const
{
    Model other(*this);
    other.attach();
    return other;
}

void Model::attach()
{
    for (size_t i = 0; i < groups.size(); i++) attach_group(groups.records[i], group_members[i]);
    for (size_t i = 0; i < lumpdefs.size(); i++) attach_lump(lumpdefs.records[i], lump_tables[i]);
    attach_list(stations, &p.stations, &p.nstations);
    attach_list(targets, &p.targets, &p.ntargets);
    attach_list(distances, &p.distances, &p.ndistances);
    attach_list(heightdiffs, &p.heightdiffs, &p.nheightdiffs);
    attach_list(directions, &p.directions, &p.ndirections);
    attach_list(verticals, &p.verticals, &p.nverticals);
    attach_list(azimuths, &p.azimuths, &p.nazimuths);
    attach_list(baselines, &p.baselines, &p.nbaselines);
    attach_list(groups, &p.groups, &p.ngroups);
    attach_list(cameras, &p.cameras, &p.ncameras);
    attach_list(images, &p.images, &p.nimages);
    attach_list(lumpdefs, &p.lumpdefs, &p.nlumpdefs);
    attach_list(pairs, &p.pairs, &p.npairs);
}

FileUnits file_units(const Model &model)
{
    const int length = model.length_unit.value_or(model.p.iunit);
    return {length, metres_in(length), model.angle_unit.value_or(model.p.iangle), model.p.izenith != 0};
}

double metres_per_unit(const project &p) { return p.iunit == 1 ? 0.001 : p.iunit == 2 ? 0.0254 : 1.0; }

const char *record_name(const Model &model, int point)
{
    const size_t i = (size_t)point, stations = model.stations.size();
    return i < stations ? model.stations.records[i].name : model.targets.records[i - stations].name;
}

std::string place(const Model &model, Source where)
{
    if (where.line <= 0 || (size_t)where.file >= model.files.size()) return model.path;
    return model.files[(size_t)where.file] + ":" + std::to_string(where.line);
}

} // namespace vornhost
