// Image coordinates out of their files.

#include "host/input/image_file.h"
#include "host/input/names.h"
#include "host/own/builder.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

constexpr size_t least_points = 4; // of an image

int camera_of(const Builder &b, const char *name)
{
    for (size_t i = 0; i < b.numbers.camera_records.size(); i++)
        if (std::string(b.network.cameras.records[(size_t)b.numbers.camera_records[i]].name) == name) return (int)i;
    return -1;
}

std::vector<ImageLine> usable_lines(const Builder &b, const image_input &image)
{
    std::vector<ImageLine> usable;
    for (const ImageLine &line : read_image_file(image.file).value_or(std::vector<ImageLine>()))
        if (line.numbers && b.point(held_name(b.network.keys, line.name).c_str()) >= 0) usable.push_back(line);
    return usable;
}

// An image through a camera; false when it cannot take part.
bool add_image(Builder &b, const image_input &image, int record)
{
    va::Observation o;
    o.kind = va::Kind::image;
    o.from = b.point(image.station);
    o.camera = camera_of(b, image.camera);
    if (o.from < 0 || o.camera < 0 || !b.numbers.points[(size_t)o.from].station) return false;
    o.setup = b.setups[(size_t)b.stand(o.from, -1)];
    const std::vector<ImageLine> lines = usable_lines(b, image);
    if (lines.size() < least_points || o.setup < 0) return false;
    o.factor = b.network.p.suv;
    for (const ImageLine &line : lines) {
        o.to = b.point(held_name(b.network.keys, line.name).c_str());
        o.value[0] = line.u;
        o.value[1] = line.v;
        o.sigma[0] = line.su.value_or(b.network.p.suv);
        o.sigma[1] = line.sv.value_or(b.network.p.suv);
        b.observe(o, {Item::image_point, record, line.line});
    }
    return true;
}

} // namespace

void add_images(Builder &b)
{
    for (size_t i = 0; i < b.network.images.size(); i++) {
        image_input &image = b.network.images.records[i];
        if (image.status > 0 && !add_image(b, image, (int)i)) image.status = -image.status;
    }
}

} // namespace vornhost
