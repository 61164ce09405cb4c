#include "host/formats/network_json.h"

#include "host/results/json_text.h"

namespace vornhost {

namespace {

const char *const tables[draft_kinds] = {"distances",
                                         "horizontal_distances",
                                         "height_differences",
                                         "directions",
                                         "vertical_angles",
                                         "azimuths",
                                         "bearings",
                                         "angles",
                                         "baselines",
                                         "coordinates",
                                         "coordinate_differences",
                                         "scale_bars"};

bool by_axis(DraftKind kind)
{
    return kind == DraftKind::baseline || kind == DraftKind::coordinates || kind == DraftKind::coordinate_difference;
}

const char *code_word(int code)
{
    switch (code) {
    case CODE_FIXED: return "fixed";
    case CODE_WEIGHTED: return "weighted";
    case CODE_NO_DATUM: return "no_datum";
    case CODE_ABSENT: return "absent";
    default: return "free";
    }
}

void write_point(JsonText &json, const DraftPoint &point)
{
    static const char *const names[] = {"x", "y", "z"}, *const sigmas[] = {"sx", "sy", "sz"},
                             *const codes[] = {"code_x", "code_y", "code_z"};
    json.open_object();
    json.pair("name", point.name);
    json.pair("station", point.station);
    for (size_t axis = 0; axis < 3; axis++) json.pair(names[axis], point.value[axis]);
    for (size_t axis = 0; axis < 3; axis++) json.pair(sigmas[axis], point.sigma[axis]);
    for (size_t axis = 0; axis < 3; axis++) json.pair(codes[axis], code_word(point.code[axis]));
    if (point.off) json.pair("status", "off");
    json.close();
}

void write_word(JsonText &json, const char *key, const std::string &word)
{
    if (!word.empty()) json.pair(key, word);
}

void write_row(JsonText &json, DraftKind kind, const DraftRow &row)
{
    static const char *const coordinates[] = {"x", "y", "z"}, *const differences[] = {"dx", "dy", "dz"},
                             *const sigmas[] = {"sx", "sy", "sz"}, *const products[] = {"cxx", "cyy", "czz",
                                                                                        "cxy", "cxz", "cyz"};
    const bool one = kind == DraftKind::coordinates;
    json.open_object();
    write_word(json, "at", row.at);
    json.pair(one ? "name" : "from", row.from);
    write_word(json, "to", row.to);
    if (by_axis(kind)) {
        for (size_t axis = 0; axis < 3; axis++) json.pair(one ? coordinates[axis] : differences[axis], row.value[axis]);
        for (size_t axis = 0; axis < 3; axis++) json.pair(sigmas[axis], row.sigma[axis]);
        for (size_t i = 0; i < 6; i++) json.pair(products[i], row.product[i]);
    } else {
        json.pair("value", row.value[0]);
        json.pair("sigma", row.sigma[0]);
    }
    json.pair("h1", row.h1);
    json.pair("h2", row.h2);
    write_word(json, "setup", row.setup);
    write_word(json, "set", row.set);
    write_word(json, "id", row.id);
    write_word(json, "covariance", row.covariance);
    if (!row.use) json.pair("use", false);
    json.close();
}

void write_covariance(JsonText &json, const DraftCovariance &group)
{
    json.open_object();
    json.pair("name", group.name);
    json.pair("form", "band");
    json.pair("width", (int)group.width);
    json.key("matrix").open_array();
    for (const double element : group.elements) json.value(element);
    json.close();
    json.close();
}

} // namespace

std::string write_network_json(const Draft &draft)
{
    std::string text;
    JsonText json([&text](std::string_view piece) { text += piece; });
    json.open_object();
    write_word(json, "title", draft.title);
    json.pair("dimension", draft.dimension);
    json.key("units").open_object();
    json.pair("length", "m");
    json.pair("angle", "gon");
    json.pair("vertical", "zenith");
    json.close();
    json.key("points").open_array();
    for (const DraftPoint &point : draft.points) write_point(json, point);
    json.close();
    for (size_t k = 0; k < draft_kinds; k++) {
        if (draft.rows[k].empty()) continue;
        json.key(tables[k]).open_array();
        for (const DraftRow &row : draft.rows[k]) write_row(json, (DraftKind)k, row);
        json.close();
    }
    if (!draft.covariances.empty()) {
        json.key("covariances").open_array();
        for (const DraftCovariance &group : draft.covariances) write_covariance(json, group);
        json.close();
    }
    json.close();
    json.finish();
    return text;
}

} // namespace vornhost
