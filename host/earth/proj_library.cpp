#ifdef VORN_PROJ

#include "host/earth/proj_library.h"

#include <dlfcn.h>

namespace vornhost {

namespace {

struct Loaded {
    ProjLibrary functions{};
    std::string fault;
};

Loaded load()
{
    Loaded l;
    void *const library = dlopen(PROJ_LIBRARY, RTLD_NOW | RTLD_LOCAL); // it stays to the end of the program
    bool whole = library;
    const auto find = [&](const char *name, auto &function) {
        if (library) function = reinterpret_cast<std::decay_t<decltype(function)>>(dlsym(library, name));
        whole = whole && function;
    };
    ProjLibrary &f = l.functions;
    find("proj_context_create", f.context_create);
    find("proj_context_destroy", f.context_destroy);
    find("proj_context_set_enable_network", f.context_set_enable_network);
    find("proj_log_level", f.log_level);
    find("proj_create", f.create);
    find("proj_create_argv", f.create_argv);
    find("proj_create_crs_to_crs_from_pj", f.create_crs_to_crs_from_pj);
    find("proj_normalize_for_visualization", f.normalize_for_visualization);
    find("proj_destroy", f.destroy);
    find("proj_is_crs", f.is_crs);
    find("proj_get_type", f.get_type);
    find("proj_get_name", f.get_name);
    find("proj_get_source_crs", f.get_source_crs);
    find("proj_get_ellipsoid", f.get_ellipsoid);
    find("proj_get_prime_meridian", f.get_prime_meridian);
    find("proj_crs_get_sub_crs", f.crs_get_sub_crs);
    find("proj_crs_get_geodetic_crs", f.crs_get_geodetic_crs);
    find("proj_crs_get_coordinate_system", f.crs_get_coordinate_system);
    find("proj_crs_promote_to_3D", f.crs_promote_to_3D);
    find("proj_cs_get_axis_info", f.cs_get_axis_info);
    find("proj_ellipsoid_get_parameters", f.ellipsoid_get_parameters);
    find("proj_prime_meridian_get_parameters", f.prime_meridian_get_parameters);
    find("proj_trans", f.trans);
    find("proj_errno", f.last_errno);
    find("proj_errno_reset", f.errno_reset);
    find("geod_init", f.geodesic_init);
    find("geod_inverse", f.geodesic_inverse);
    if (!whole) l.fault = "reference systems need the PROJ library " PROJ_LIBRARY ", which cannot be loaded";
    return l;
}

const Loaded &loaded()
{
    static const Loaded l = load();
    return l;
}

} // namespace

std::string load_proj() { return loaded().fault; }

const ProjLibrary &proj() { return loaded().functions; }

} // namespace vornhost

#endif
