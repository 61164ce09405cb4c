// Cameras and images.

#include "host/input/network_tables.h"

namespace vornhost {

namespace {

constexpr int parameters = 10;     // of a camera: c, x0, y0, a, b, k1, k2, k3, p1, p2
constexpr int main_parameters = 3; // c, x0, y0

enum {
    NAME,
    WIDTH,
    HEIGHT,
    PU,
    PV,
    PARAMETER,
    PARAMETER_CODE = PARAMETER + parameters,
    CAMERA_USE = PARAMETER_CODE + parameters
};

const std::vector<Column> camera_columns = {{"name", true}, {"width", true}, {"height", true}, {"pu", true},
                                            {"pv", true},   {"c", true},     {"x0"},           {"y0"},
                                            {"a"},          {"b"},           {"k1"},           {"k2"},
                                            {"k3"},         {"p1"},          {"p2"},           {"code_c"},
                                            {"code_x0"},    {"code_y0"},     {"code_a"},       {"code_b"},
                                            {"code_k1"},    {"code_k2"},     {"code_k3"},      {"code_p1"},
                                            {"code_p2"},    {"use"}};

constexpr int most_pixels = 1000000;

// The engine takes exactly seven absent parameters to mean that c, x0 and y0 are in use.
// Seven others are called fixed instead, which has the same effect on each of them.
void settle_absent(camera_input &camera)
{
    int absent = 0, main_absent = 0;
    for (int i = 0; i < parameters; i++) {
        if (camera.ip[i] != CODE_ABSENT) continue;
        absent++;
        if (i < main_parameters) main_absent++;
    }
    if (absent != parameters - main_parameters || main_absent == 0) return;
    for (int &code : camera.ip)
        if (code == CODE_ABSENT) code = CODE_FIXED;
}

double read_size(Row &row, int column)
{
    if (!row.given(column)) row.missing(column, "write a number above 0");
    return row.positive(column, 0.0);
}

void read_parameters(Row &row, camera_input &camera)
{
    static const Words codes = {{"free", CODE_FREE}, {"fixed", CODE_FIXED}, {"absent", CODE_ABSENT}};
    for (int i = 0; i < parameters; i++) {
        camera.p[i] = i == 0 ? read_size(row, PARAMETER) : row.length(PARAMETER + i, 0.0);
        camera.ip[i] = row.word(PARAMETER_CODE + i, i < main_parameters ? CODE_FIXED : CODE_ABSENT, codes);
    }
    settle_absent(camera);
}

int read_pixels(Row &row, int column)
{
    if (!row.given(column)) row.missing(column, "write a number of pixels");
    return row.whole(column, 0, 1, most_pixels);
}

void enter_camera(Network &net, Row &row)
{
    if (!row.has_cell(NAME)) return;
    const std::string_view name = new_name(row, NAME);
    if (!name.empty() && !net.cameras.add(name, row.at(NAME)))
        row.fault(NAME, "camera " + quote(name) + " is listed twice", "keep one of the two");
}

void read_camera(Network &net, Row &row)
{
    camera_input camera = camera_input();
    hold_name(camera.name, net.model.keys, row.name(NAME));
    camera.nu = read_pixels(row, WIDTH);
    camera.nv = read_pixels(row, HEIGHT);
    camera.pu = read_size(row, PU);
    camera.pv = read_size(row, PV);
    read_parameters(row, camera);
    camera.status = row.yes(CAMERA_USE, true) ? 1 : -1;
    net.model.cameras.add(camera, row.at());
}

enum { FILE_NAME, STATION, CAMERA, IMAGE_USE };

const std::vector<Column> image_columns = {{"file", true}, {"station", true}, {"camera", true}, {"use"}};

void check_station(Network &net, Row &row)
{
    const int number = named_point(net, row, STATION);
    if (number < 0 || (size_t)number < net.station_names) return;
    row.fault(STATION, "image taken at target " + quote(row.name(STATION)), "list it under stations");
}

void check_camera(Network &net, Row &row)
{
    if (row.name(CAMERA).empty())
        row.missing(CAMERA, "name a camera");
    else if (net.cameras.find(row.name(CAMERA)) < 0)
        row.fault(CAMERA, "unknown camera " + row.cell(CAMERA),
                  similar_name(net, net.cameras, row, CAMERA, "list it under cameras"));
}

void read_image(Network &net, Row &row)
{
    image_input image = image_input();
    if (!row.given(FILE_NAME))
        row.missing(FILE_NAME, "name the file of its image coordinates");
    else
        copy_text(image.file, sizeof image.file,
                  data_file(net.faults, net.model.path, row.text(FILE_NAME), row.at(FILE_NAME), sizeof image.file));
    check_station(net, row);
    check_camera(net, row);
    hold_name(image.station, net.model.keys, row.name(STATION));
    hold_name(image.camera, net.model.keys, row.name(CAMERA));
    image.status = row.yes(IMAGE_USE, true) ? 1 : -1;
    net.model.images.add(image, row.at());
}

} // namespace

void enter_cameras(Network &net) { enter_rows(net, TABLE_CAMERAS, camera_columns, enter_camera); }

void read_cameras(Network &net) { read_rows(net, TABLE_CAMERAS, camera_columns, read_camera); }

void read_images(Network &net) { read_rows(net, TABLE_IMAGES, image_columns, read_image); }

} // namespace vornhost
