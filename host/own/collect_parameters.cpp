// Constants of groups and cameras, motions of lumps, deflections, transformations.

#include <cmath>

#include "adjust/kinds/motions.h"
#include "host/input/names.h"
#include "host/own/collection.h"

namespace vornhost {

namespace va = vornadjust;

void Collection::groups()
{
    if (!outcome.adjusted() || planned) return;
    for (size_t g = 0; g < values.constants.size(); g++) {
        GroupResult group;
        group.name = network.group_names[(size_t)numbers.constant_groups[g]];
        parameters(values.constants[g].first, group.value, group.deviation);
        if (group.value[0] || group.value[1] || group.value[2]) results.groups.push_back(group);
    }
}

void Collection::cameras()
{
    if (!outcome.adjusted() || planned) return;
    for (size_t c = 0; c < values.cameras.size(); c++) {
        CameraResult camera;
        camera.name = shown_name(network, network.cameras.records[(size_t)numbers.camera_records[c]].name);
        parameters(values.cameras[c].first, camera.value, camera.deviation);
        if (std::any_of(std::begin(camera.value), std::end(camera.value), [](const auto &v) { return v.has_value(); }))
            results.cameras.push_back(camera);
    }
}

void Collection::lumps()
{
    if (!outcome.adjusted() || planned) return;
    for (size_t m = 0; m < values.motions.size(); m++) {
        const int first = values.motions[m].first;
        const MotionPlace &place = numbers.motions[m];
        if (place.lump == 0) continue; // centring, transformations
        LumpResult lump;
        lump.lump = place.lump;
        lump.epoch = place.epoch;
        lump.reference = place.reference;
        for (int k = 0; k < 3; k++) {
            lump.translation[k] = values.value[(size_t)first + (size_t)k];
            lump.rotation[k] = values.value[(size_t)first + 3 + (size_t)k];
            lump.translation_deviation[k] = deviation(first + k);
            lump.rotation_deviation[k] = deviation(first + 3 + k);
        }
        lump.scale = values.value[(size_t)first + 6];
        lump.scale_deviation = deviation(first + 6);
        results.lumps.push_back(lump);
    }
}

void Collection::deflections()
{
    if (!outcome.adjusted() || planned) return;
    for (const va::Deflection &d : values.deflections) {
        DeflectionResult r;
        r.point = shown_name(network, point_name(network, numbers.points[(size_t)d.point]));
        for (int k = 0; k < 2; k++) {
            r.value[k] = values.value[(size_t)d.first + (size_t)k];
            r.deviation[k] = deviation(d.first + k);
        }
        results.deflections.push_back(r);
    }
}

// A shift t of positions x - c with scale s and rotation R is one of t + c - s R c of positions x.
void Collection::transformations()
{
    if (!outcome.adjusted() || planned) return;
    for (size_t m = 0; m < values.motions.size(); m++) {
        const int record = numbers.motions[m].transformation, first = values.motions[m].first;
        if (record < 0) continue;
        TransformationResult r;
        r.name = network.transformations.records[(size_t)record].name;
        const double *u = &values.value[(size_t)first];
        std::copy(u, u + 7, r.value);
        for (int k = 0; k < 7; k++) r.deviation[k] = deviation(first + k);
        const va::Vec3<double> c = values.frame.centre, o = values.motions[m].origin,
                               from{c.x - o.x, c.y - o.y, c.z - o.z};
        if (dot(from, from) > 0.0) {
            const auto turned = va::moved(from, va::Moved<double>{{0, 0, 0}, {u[3], u[4], u[5]}, u[6]});
            r.here = {u[0], u[1], u[2]};
            const double shift[3] = {from.x - turned.x, from.y - turned.y, from.z - turned.z};
            for (int k = 0; k < 3; k++) r.value[k] += shift[k];
        }
        results.transformations.push_back(r);
    }
}

} // namespace vornhost
