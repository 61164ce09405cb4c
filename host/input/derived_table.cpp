// Quantities that are computed from adjusted coordinates: distances, bearings, height differences and angles between
// named points.

#include "host/input/network_tables.h"

namespace vornhost {

namespace {

enum { KIND, FROM, TO, AT };

const std::vector<Column> derived_columns = {{"kind", true}, {"from", true}, {"to", true}, {"at"}};

const Words derived_kinds = {{"distance", (int)DerivedKind::distance},
                             {"horizontal_distance", (int)DerivedKind::horizontal_distance},
                             {"bearing", (int)DerivedKind::bearing},
                             {"height_difference", (int)DerivedKind::height_difference},
                             {"angle", (int)DerivedKind::angle}};

// Heights have height differences only, the plane has none.
bool in_dimension(int dimension, DerivedKind kind)
{
    const bool height = kind == DerivedKind::height_difference;
    return dimension == 1 ? height : dimension == 2 ? !height : true;
}

// An angle begins where it is taken.
void read_ends(Network &net, Row &row, bool angle, DerivedRow &derived)
{
    const int from = named_point(net, row, FROM), to = named_point(net, row, TO);
    const int at = angle ? named_point(net, row, AT) : -1;
    if (from >= 0 && (from == to || from == at || to == at))
        row.fault(TO, "points of a derived quantity are the same", "name different points");
    if (!angle && row.given(AT)) row.fault(AT, "only an angle has a point at", "leave the cell empty: -");
    derived.from = angle ? at : from;
    derived.to = angle ? from : to;
    derived.third = angle ? to : -1;
}

void read_quantity(Network &net, Row &row)
{
    DerivedRow derived;
    if (!row.given(KIND)) row.missing(KIND, "write distance, bearing, height_difference or angle");
    derived.kind = (DerivedKind)row.word(KIND, 0, derived_kinds);
    if (!in_dimension(net.model.p.dim, derived.kind))
        row.fault(KIND, row.cell(KIND) + " has no meaning in dimension " + std::to_string(net.model.p.dim),
                  net.model.p.dim == 1 ? "write height_difference" : "leave the row out");
    const bool angle = derived.kind == DerivedKind::angle;
    if (angle && !row.given(AT))
        row.missing(AT, "write the point at which the angle is");
    else
        read_ends(net, row, angle, derived);
    net.model.derived.add(derived, row.at());
}

} // namespace

void read_derived(Network &net)
{
    read_rows(net, TABLE_DERIVED, derived_columns, read_quantity);
    if (net.model.derived.size() > 0 && net.model.solver != Solver::Sparse)
        net.faults.add(net.model.derived.where[0], "the solvers of the engine have no table derived",
                       "leave it out, or choose the solver sparse");
}

} // namespace vornhost
