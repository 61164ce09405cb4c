// The functions of PROJ that reference systems use. The library is loaded when the first system is opened: it brings
// some forty others, which take longer to load than a small network to adjust.

#ifndef VORNHOST_PROJ_LIBRARY_H
#define VORNHOST_PROJ_LIBRARY_H

#include <geodesic.h>
#include <proj.h>
#include <proj_experimental.h> // proj_crs_promote_to_3D

#include <string>

namespace vornhost {

struct ProjLibrary {
    decltype(&::proj_context_create) context_create;
    decltype(&::proj_context_destroy) context_destroy;
    decltype(&::proj_context_set_enable_network) context_set_enable_network;
    decltype(&::proj_log_level) log_level;
    decltype(&::proj_create) create;
    decltype(&::proj_create_argv) create_argv;
    decltype(&::proj_create_crs_to_crs_from_pj) create_crs_to_crs_from_pj;
    decltype(&::proj_normalize_for_visualization) normalize_for_visualization;
    decltype(&::proj_destroy) destroy;
    decltype(&::proj_is_crs) is_crs;
    decltype(&::proj_get_type) get_type;
    decltype(&::proj_get_name) get_name;
    decltype(&::proj_get_source_crs) get_source_crs;
    decltype(&::proj_get_ellipsoid) get_ellipsoid;
    decltype(&::proj_get_prime_meridian) get_prime_meridian;
    decltype(&::proj_crs_get_sub_crs) crs_get_sub_crs;
    decltype(&::proj_crs_get_geodetic_crs) crs_get_geodetic_crs;
    decltype(&::proj_crs_get_coordinate_system) crs_get_coordinate_system;
    decltype(&::proj_crs_promote_to_3D) crs_promote_to_3D;
    decltype(&::proj_cs_get_axis_info) cs_get_axis_info;
    decltype(&::proj_ellipsoid_get_parameters) ellipsoid_get_parameters;
    decltype(&::proj_prime_meridian_get_parameters) prime_meridian_get_parameters;
    decltype(&::proj_trans) trans;
    decltype(&::proj_errno) last_errno;
    decltype(&::proj_errno_reset) errno_reset;
    decltype(&::geod_init) geodesic_init;
    decltype(&::geod_inverse) geodesic_inverse;
};

// Loads the library where that has not been done. Why not, or nothing.
std::string load_proj();

// Only behind a load_proj() that returned nothing.
const ProjLibrary &proj();

} // namespace vornhost

#endif
