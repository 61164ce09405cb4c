#include "host/earth/reference.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "adjust/ellipsoid.h"
#ifdef VORN_PROJ
#include "host/earth/proj_library.h"
#endif
#include "host/input/faults.h"

namespace vornhost {

#ifdef VORN_PROJ

namespace {

constexpr double degree = 0.017453292519943295769; // radians
constexpr double most_lost = 1e-4; // metres, on the way from the grid and back; far outside its area a projection folds

struct Close {
    void operator()(PJ_CONTEXT *context) const { proj().context_destroy(context); }
    void operator()(PJ *object) const { proj().destroy(object); }
};
using Context = std::unique_ptr<PJ_CONTEXT, Close>;
using Object = std::unique_ptr<PJ, Close>;

Context quiet_context()
{
    Context context(proj().context_create());
    if (!context) throw std::bad_alloc();
    proj().log_level(context.get(), PJ_LOG_NONE);
    proj().context_set_enable_network(context.get(), 0);
    return context;
}

// The horizontal part of a reference system by its name; null for what is none.
Object horizontal_system(PJ_CONTEXT *context, const std::string &name)
{
    const bool text = name.find("+proj") != std::string::npos && name.find("+type") == std::string::npos;
    Object crs(proj().create(context, (text ? name + " +type=crs" : name).c_str()));
    if (crs && !proj().is_crs(crs.get())) crs.reset();
    if (crs && proj().get_type(crs.get()) == PJ_TYPE_BOUND_CRS) crs.reset(proj().get_source_crs(context, crs.get()));
    if (crs && proj().get_type(crs.get()) == PJ_TYPE_COMPOUND_CRS)
        crs.reset(proj().crs_get_sub_crs(context, crs.get(), 0));
    return crs;
}

// From one system to another, with longitude before latitude and east before north; null where there is no way.
Object way(PJ_CONTEXT *context, const PJ *from, const PJ *to)
{
    const Object plain(proj().create_crs_to_crs_from_pj(context, from, to, nullptr, nullptr));
    return Object(plain ? proj().normalize_for_visualization(context, plain.get()) : nullptr);
}

std::optional<PJ_COORD> taken(PJ *pj, PJ_DIRECTION direction, double x, double y, double z, double t)
{
    proj().errno_reset(pj);
    const PJ_COORD c = proj().trans(pj, direction, PJ_COORD{{x, y, z, t}});
    const bool good =
        proj().last_errno(pj) == 0 && std::isfinite(c.xyz.x) && std::isfinite(c.xyz.y) && std::isfinite(c.xyz.z);
    if (!good) return std::nullopt;
    return c;
}

// Axes of a system in two dimensions.
struct SystemAxes {
    bool north_and_east = true;
    double unit = 1; // metres or radians
};

SystemAxes axes_of(PJ_CONTEXT *context, const PJ *crs)
{
    SystemAxes axes;
    const Object system(proj().crs_get_coordinate_system(context, crs));
    std::string seen;
    for (int k = 0; system && k < 2; k++) {
        const char *direction = nullptr;
        if (!proj().cs_get_axis_info(context, system.get(), k, nullptr, nullptr, &direction, &axes.unit, nullptr,
                                     nullptr, nullptr))
            continue;
        seen += direction;
    }
    axes.north_and_east = seen == "northeast" || seen == "eastnorth";
    return axes;
}

vornadjust::Ellipsoid ellipsoid_of(PJ_CONTEXT *context, const PJ *crs)
{
    vornadjust::Ellipsoid e;
    const Object ellipsoid(proj().get_ellipsoid(context, crs));
    double b = 0, inverse = 0;
    int computed = 0;
    if (!ellipsoid || !proj().ellipsoid_get_parameters(context, ellipsoid.get(), &e.a, &b, &computed, &inverse))
        return e;
    const double f = inverse == 0.0 ? 0.0 : 1.0 / inverse;
    e.e2 = f * (2.0 - f);
    return e;
}

// Whether longitudes count from Greenwich, in degrees.
bool is_plain(PJ_CONTEXT *context, const PJ *geographic)
{
    constexpr double close = 1e-12;
    const Object meridian(proj().get_prime_meridian(context, geographic));
    double longitude = 0;
    if (meridian) proj().prime_meridian_get_parameters(context, meridian.get(), &longitude, nullptr, nullptr);
    return longitude == 0.0 && std::fabs(axes_of(context, geographic).unit - degree) < close;
}

// Undulation of a grid file; null when PJ cannot read it. The arguments are not one text: the path may hold blanks.
Object geoid_grid(PJ_CONTEXT *context, const std::string &file)
{
    std::string words[] = {"proj=vgridshift", "grids=" + file, "multiplier=1"};
    std::vector<char *> arguments;
    for (std::string &word : words) arguments.push_back(&word[0]);
    return Object(proj().create_argv(context, (int)arguments.size(), arguments.data()));
}

} // namespace

struct Reference::Parts {
    Context context;
    Object base, crs;        // geographic in three dimensions, projected
    Object projection, map;  // base to crs, base to WGS 84 or null
    Object geoid_file;       // or null
    double unit = 1;         // metres, of the projected system
    double epoch = HUGE_VAL; // year
    bool ellipsoidal = false;
    Geoid geoid;
    std::string name;
    vornadjust::Ellipsoid ellipsoid;
    geod_geodesic lines{};

    std::string read_system(const Crs &settings);
    std::string read_geoid(const Crs &settings);
};

// Why not, or nothing.
std::string Reference::Parts::read_system(const Crs &settings)
{
    const std::string quoted = quote(settings.network);
    crs = horizontal_system(context.get(), settings.network);
    if (!crs) return quoted + " is no reference system that PROJ knows";
    if (proj().get_type(crs.get()) != PJ_TYPE_PROJECTED_CRS)
        return quoted + " is no projected reference system: a network needs a grid in metres";
    const SystemAxes axes = axes_of(context.get(), crs.get());
    if (!axes.north_and_east) return "the axes of " + quoted + " do not point to north and east";
    const Object geodetic(proj().crs_get_geodetic_crs(context.get(), crs.get()));
    if (!geodetic || !is_plain(context.get(), geodetic.get()))
        return quoted + " counts longitudes in another unit than degrees or not from Greenwich";
    base.reset(proj().crs_promote_to_3D(context.get(), nullptr, geodetic.get()));
    projection = way(context.get(), geodetic.get(), crs.get());
    if (!base || !projection) return "PROJ has no way to " + quoted;
    const Object world(proj().create(context.get(), "EPSG:4326"));
    if (world) map = way(context.get(), geodetic.get(), world.get());
    unit = axes.unit;
    name = proj().get_name(crs.get());
    ellipsoid = ellipsoid_of(context.get(), crs.get());
    proj().geodesic_init(&lines, ellipsoid.a, 1.0 - std::sqrt(1.0 - ellipsoid.e2));
    return {};
}

std::string Reference::Parts::read_geoid(const Crs &settings)
{
    geoid = settings.geoid;
    ellipsoidal = settings.ellipsoidal;
    if (settings.epoch) epoch = *settings.epoch;
    if (ellipsoidal || geoid.form != Geoid::Form::grid) return {};
    if (geoid.file.find(',') != std::string::npos) return "the path of the geoid " + quote(geoid.file) + " has a comma";
    geoid_file = geoid_grid(context.get(), geoid.file);
    return geoid_file ? std::string() : "PROJ cannot read the geoid " + quote(geoid.file);
}

bool has_proj() { return load_proj().empty(); }

std::optional<Reference> Reference::open(const Crs &crs, std::string *fault)
{
    *fault = load_proj();
    if (!fault->empty()) return std::nullopt;
    auto parts = std::make_unique<Parts>();
    parts->context = quiet_context();
    *fault = parts->read_system(crs);
    if (fault->empty()) *fault = parts->read_geoid(crs);
    if (!fault->empty()) return std::nullopt;
    return Reference(std::move(parts));
}

std::optional<LatLon> Reference::geographic(GridPlace p) const
{
    const auto c = taken(parts->projection.get(), PJ_INV, p.east / parts->unit, p.north / parts->unit, 0.0, HUGE_VAL);
    if (!c) return std::nullopt;
    const LatLon at{c->xy.y * degree, c->xy.x * degree};
    const std::optional<GridPlace> back = grid(at);
    if (!back || std::hypot(back->north - p.north, back->east - p.east) > most_lost) return std::nullopt;
    return at;
}

std::optional<GridPlace> Reference::grid(LatLon g) const
{
    const auto c = taken(parts->projection.get(), PJ_FWD, g.longitude / degree, g.latitude / degree, 0.0, HUGE_VAL);
    if (!c) return std::nullopt;
    return GridPlace{c->xy.y * parts->unit, c->xy.x * parts->unit};
}

std::optional<double> Reference::undulation(LatLon g) const
{
    const Geoid &s = parts->geoid;
    if (parts->ellipsoidal || s.form == Geoid::Form::none) return 0.0;
    if (s.form == Geoid::Form::constant) return s.undulation;
    if (s.form == Geoid::Form::plane) {
        const double sine = std::sin(s.latitude);
        const double north = vornadjust::meridian_radius(parts->ellipsoid, sine) * (g.latitude - s.latitude);
        const double east = vornadjust::prime_vertical_radius(parts->ellipsoid, sine) * std::cos(s.latitude) *
                            (g.longitude - s.longitude);
        return s.undulation + s.north * north + s.east * east;
    }
    const auto c = taken(parts->geoid_file.get(), PJ_FWD, g.longitude, g.latitude, 0.0, HUGE_VAL);
    if (!c) return std::nullopt;
    return c->xyz.z;
}

Geodesic Reference::geodesic(LatLon from, LatLon to) const
{
    Geodesic line;
    double there = 0;
    proj().geodesic_inverse(&parts->lines, from.latitude / degree, from.longitude / degree, to.latitude / degree,
                            to.longitude / degree, &line.length, &line.azimuth, &there);
    line.azimuth *= degree;
    return line;
}

std::optional<LatLon> Reference::on_map(LatLon g) const
{
    if (!parts->map) return std::nullopt;
    const auto c = taken(parts->map.get(), PJ_FWD, g.longitude / degree, g.latitude / degree, 0.0, parts->epoch);
    if (!c) return std::nullopt;
    return LatLon{c->xy.y * degree, c->xy.x * degree};
}

struct Conversion::Parts {
    const Reference::Parts *network = nullptr;
    Object pj; // null: geographic coordinates of the network's own system
    bool geographic = true, geocentric = false;
    double unit = degree;
    double epoch = HUGE_VAL; // year
};

std::optional<Conversion> Conversion::open(const Reference &network, const std::string &from, std::string *fault,
                                           double epoch)
{
    auto parts = std::make_unique<Parts>();
    parts->network = network.parts.get();
    parts->epoch = epoch > 0 ? epoch : network.parts->epoch;
    if (from.empty()) return Conversion(std::move(parts));
    PJ_CONTEXT *context = network.parts->context.get();
    Object crs = horizontal_system(context, from);
    const PJ_TYPE type = crs ? proj().get_type(crs.get()) : PJ_TYPE_UNKNOWN;
    parts->geocentric = type == PJ_TYPE_GEOCENTRIC_CRS;
    parts->geographic = type == PJ_TYPE_GEOGRAPHIC_2D_CRS || type == PJ_TYPE_GEOGRAPHIC_3D_CRS;
    if (!parts->geocentric && !parts->geographic && type != PJ_TYPE_PROJECTED_CRS) {
        *fault = quote(from) + " is no geographic, geocentric or projected reference system that PROJ knows";
        return std::nullopt;
    }
    const SystemAxes axes = axes_of(context, crs.get());
    parts->unit = parts->geocentric ? 1.0 : axes.unit;
    if (!parts->geocentric && !axes.north_and_east)
        *fault = "the axes of " + quote(from) + " do not point to north and east";
    else if (type == PJ_TYPE_GEOGRAPHIC_2D_CRS || type == PJ_TYPE_PROJECTED_CRS)
        crs.reset(proj().crs_promote_to_3D(context, nullptr, crs.get()));
    if (crs && fault->empty()) parts->pj = way(context, crs.get(), network.parts->base.get());
    if (!parts->pj && fault->empty()) *fault = "PROJ has no way from " + quote(from) + " to the network's system";
    if (!fault->empty()) return std::nullopt;
    return Conversion(std::move(parts));
}

bool Conversion::geographic() const { return parts->geographic; }
bool Conversion::geocentric() const { return parts->geocentric; }

std::optional<Place3> Conversion::operator()(double first, double second, double third) const
{
    if (!parts->pj) return Place3{{second, first}, third};
    const auto c = taken(parts->pj.get(), PJ_FWD, first / parts->unit, second / parts->unit, third, parts->epoch);
    if (!c) return std::nullopt;
    return Place3{{c->xyz.y * degree, c->xyz.x * degree}, c->xyz.z};
}

#else

struct Reference::Parts {
    std::string name;
    vornadjust::Ellipsoid ellipsoid;
};

struct Conversion::Parts {};

bool has_proj() { return false; }

std::optional<Reference> Reference::open(const Crs &, std::string *fault)
{
    *fault = "reference systems need the PROJ library, which this program was built without";
    return std::nullopt;
}

// Never called: there is no object.
std::optional<LatLon> Reference::geographic(GridPlace) const { return std::nullopt; }
std::optional<GridPlace> Reference::grid(LatLon) const { return std::nullopt; }
std::optional<double> Reference::undulation(LatLon) const { return std::nullopt; }
Geodesic Reference::geodesic(LatLon, LatLon) const { return {}; }
std::optional<LatLon> Reference::on_map(LatLon) const { return std::nullopt; }
std::optional<Conversion> Conversion::open(const Reference &, const std::string &, std::string *, double)
{
    return std::nullopt;
}
bool Conversion::geographic() const { return false; }
bool Conversion::geocentric() const { return false; }
std::optional<Place3> Conversion::operator()(double, double, double) const { return std::nullopt; }

#endif

Reference::Reference(std::unique_ptr<Parts> its_parts) : parts(std::move(its_parts)) {}
Reference::Reference(Reference &&) noexcept = default;
Reference &Reference::operator=(Reference &&) noexcept = default;
Reference::~Reference() = default;

const std::string &Reference::name() const { return parts->name; }
const vornadjust::Ellipsoid &Reference::ellipsoid() const { return parts->ellipsoid; }

// By central differences over 64 m to either side: the third derivatives of a projection change the slopes by 1e-10,
// the rounding of coordinates of 5,000 km by 1e-11.
std::optional<GridAxes> Reference::axes(LatLon g) const
{
    constexpr double step = 1e-5; // radians
    const auto a = grid({g.latitude + step, g.longitude}), b = grid({g.latitude - step, g.longitude});
    const auto c = grid({g.latitude, g.longitude + step}), d = grid({g.latitude, g.longitude - step});
    if (!a || !b || !c || !d) return std::nullopt;
    // Slopes of north and east by latitude and longitude, and their inverse.
    const double nb = (a->north - b->north) / (2 * step), eb = (a->east - b->east) / (2 * step);
    const double nl = (c->north - d->north) / (2 * step), el = (c->east - d->east) / (2 * step);
    const double determinant = nb * el - nl * eb;
    GridAxes axes;
    axes.latitude[0] = el / determinant;
    axes.latitude[1] = -nl / determinant;
    axes.longitude[0] = -eb / determinant;
    axes.longitude[1] = nb / determinant;
    axes.convergence = std::atan2(-eb, nb);
    return axes;
}

Conversion::Conversion(std::unique_ptr<Parts> its_parts) : parts(std::move(its_parts)) {}
Conversion::Conversion(Conversion &&) noexcept = default;
Conversion &Conversion::operator=(Conversion &&) noexcept = default;
Conversion::~Conversion() = default;

} // namespace vornhost
