#include "host/planning/candidates.h"

#include "host/input/angle.h"
#include "host/input/names.h"
#include "host/input/row.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

enum { KIND, FROM, TO, AT, SIGMA };

const std::vector<Column> columns = {{"kind", true}, {"from", true}, {"to", true}, {"at"}, {"sigma", true}};

struct KindWord {
    const char *word;
    va::Kind kind;
    bool angle, plan, heights; // unit; whether the plane and levelling networks have it
};

const KindWord kinds[] = {{"distance", va::Kind::slope_distance, false, true, false},
                          {"horizontal_distance", va::Kind::horizontal_distance, false, true, false},
                          {"height_difference", va::Kind::height_difference, false, false, true},
                          {"direction", va::Kind::direction, true, true, false},
                          {"angle", va::Kind::angle, true, true, false},
                          {"vertical_angle", va::Kind::vertical_angle, true, false, false},
                          {"azimuth", va::Kind::azimuth, true, true, false},
                          {"bearing", va::Kind::bearing, true, true, false},
                          {"baseline", va::Kind::baseline, false, true, true}};

const KindWord *kind_of(std::string_view word)
{
    for (const KindWord &k : kinds)
        if (word == k.word) return &k;
    return nullptr;
}

Layout layout_of(const std::string &text)
{
    const std::string heading = text.substr(0, text.find('\n'));
    return heading.find(',') != std::string::npos ? Layout::Commas : Layout::Blanks;
}

// The first stand of an instrument on a point; one is made where there is none.
int stand_on(int point, CandidatePlaces &places, va::Model &model)
{
    const auto at = places.stands.find(point);
    if (at != places.stands.end()) return at->second;
    const double none[3] = {0, 0, 0};
    const va::Code codes[3] = {va::Code::absent, va::Code::absent, va::Code::free};
    return places.stands[point] = model.add_setup(point, true, none, codes);
}

} // namespace

CandidatePlaces candidate_places(const Model &network, const Numbers &numbers)
{
    CandidatePlaces places;
    for (size_t p = 0; p < numbers.points.size(); p++)
        places.points.emplace(full_name(network, point_name(network, numbers.points[p])), (int)p);
    for (size_t s = 0; s < numbers.model.setups.size(); s++)
        places.stands.emplace(numbers.model.setups[s].point, (int)s);
    return places;
}

std::vector<Candidate> read_candidates(const std::string &path, const Model &network, const CandidatePlaces &places,
                                       Faults &faults)
{
    TextFile file;
    if (!file.read(path, Source(), faults)) return {};
    Table table("candidates", Passage(file, 0, file.text().size()), layout_of(file.text()), Source{file.file(), 1, 1});
    table.parse(columns, faults);
    const FileUnits units = file_units(network);
    std::vector<Candidate> all;
    all.reserve(table.rows());
    for (size_t i = 0; i < table.rows(); i++) {
        if (!table.whole(i)) continue;
        Row row(table, i, faults);
        Candidate c;
        c.kind = std::string(row.text(KIND));
        c.from = std::string(row.name(FROM)), c.to = std::string(row.name(TO)), c.at = std::string(row.name(AT));
        c.line = row.at().line;
        const KindWord *kind = kind_of(c.kind);
        if (!kind) {
            row.fault(KIND, row.cell(KIND) + " is no kind of a candidate",
                      "write distance, horizontal_distance, height_difference, direction, angle, vertical_angle, "
                      "azimuth, bearing or baseline");
            continue;
        }
        if ((kind->kind == va::Kind::angle) == c.at.empty())
            row.fault(AT,
                      c.at.empty() ? "an angle needs the point at which it is taken" : "only angles have a column at",
                      c.at.empty() ? "write it in column at" : "write - there");
        for (const int column : {FROM, TO, AT}) {
            const std::string name(row.name(column));
            if ((column != AT || !name.empty()) && places.points.count(name) == 0)
                row.fault(column, row.cell(column) + " is not a point in use", "name a point of " + network.path);
        }
        if (!row.given(SIGMA)) row.missing(SIGMA, "write its standard deviation");
        const double sigma = row.positive(SIGMA, 1.0);
        c.sigma = kind->angle ? to_radians(units.angle, sigma) : sigma * units.metres;
        all.push_back(c);
    }
    return all;
}

bool observation_of(const Candidate &c, int dim, CandidatePlaces &places, Numbers &numbers, va::Observation *o)
{
    const KindWord &kind = *kind_of(c.kind);
    if ((dim == 2 && !kind.plan) || (dim == 1 && !kind.heights)) return false;
    o->kind = dim == 2 && kind.kind == va::Kind::slope_distance ? va::Kind::plane_distance : kind.kind;
    o->from = places.points.at(c.at.empty() ? c.from : c.at);
    o->to = places.points.at(c.at.empty() ? c.to : c.from);
    if (!c.at.empty()) o->third = places.points.at(c.to);
    if (o->from == o->to || o->from == o->third) return false;
    if (o->kind == va::Kind::direction || o->kind == va::Kind::vertical_angle)
        o->setup = stand_on(o->from, places, numbers.model);
    for (double &s : o->sigma) s = c.sigma;
    return true;
}

} // namespace vornhost
