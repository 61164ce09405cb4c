// The binary contract with a host, asserted at compile time: plain records everywhere,
// and every byte position and size wherever pointers have 4 bytes.

#include <stddef.h>
#include <stdint.h>

#include <limits>
#include <type_traits>

#include "vorn/project.h"
#include "vorn/result.h"

namespace vornengine {

static_assert(std::is_standard_layout<project>::value, "project must stay plain data");
static_assert(std::is_trivially_copyable<project>::value, "project must stay plain data");
static_assert(std::is_standard_layout<result>::value, "result must stay plain data");
static_assert(sizeof(int) == 4 && sizeof(double) == 8, "the contract counts on 4-byte int and 8-byte double");

// The engine divides by zero and takes roots of negative numbers where a network asks for it.
static_assert(std::numeric_limits<double>::is_iec559, "such results must be infinities and not-a-numbers");

#if UINTPTR_MAX == 0xffffffffu

#define AT(record, field, position)                                                                                    \
    static_assert(offsetof(record, field) == (position), #record "::" #field " must stand at " #position)
#define SIZE(record, bytes) static_assert(sizeof(record) == (bytes), #record " must have " #bytes " bytes")

AT(project, pfeedback, 0);
AT(project, filename, 4);
AT(project, out, 132);
AT(project, irun, 136);
AT(project, idebug, 140);
AT(project, dim, 144);
AT(project, iearth, 152);
AT(project, radius, 160);
AT(project, trans, 168);
AT(project, horigin, 192);
AT(project, latitude, 200);
AT(project, itmax, 208);
AT(project, convergence, 216);
AT(project, stations, 224);
AT(project, nstations, 228);
AT(project, targets, 232);
AT(project, ntargets, 236);
AT(project, distances, 240);
AT(project, ndistances, 244);
AT(project, heightdiffs, 248);
AT(project, nheightdiffs, 252);
AT(project, directions, 256);
AT(project, ndirections, 260);
AT(project, verticals, 264);
AT(project, nverticals, 268);
AT(project, azimuths, 272);
AT(project, nazimuths, 276);
AT(project, baselines, 280);
AT(project, nbaselines, 284);
AT(project, igps, 288);
AT(project, groups, 292);
AT(project, ngroups, 296);
AT(project, iphoto, 300);
AT(project, cameras, 304);
AT(project, ncameras, 308);
AT(project, images, 312);
AT(project, nimages, 316);
AT(project, suv, 320);
AT(project, iunit, 328);
AT(project, iredux, 332);
AT(project, sdist, 336);
AT(project, sdifh, 344);
AT(project, sdir1, 352);
AT(project, sdir2, 360);
AT(project, saz, 368);
AT(project, sgps, 376);
AT(project, lumpmethod, 384);
AT(project, lumpdefs, 388);
AT(project, nlumpdefs, 392);
AT(project, confile, 396);
AT(project, pairs, 524);
AT(project, npairs, 528);
AT(project, runresults, 532);
AT(project, azrot, 536);
AT(project, imixed, 544);
static_assert(offsetof(project, iangle) >= 548, "a host's own fields stand behind the contract");

AT(station_input, typ, 0);
AT(station_input, name, 4);
AT(station_input, status, 16);
AT(station_input, x, 24);
AT(station_input, r, 48);
AT(station_input, sx, 72);
AT(station_input, sr, 96);
AT(station_input, ix, 120);
AT(station_input, ir, 132);
AT(station_input, ilump, 144);
AT(station_input, iconn, 148);
AT(station_input, ilevel, 152);
SIZE(station_input, 160);

AT(target_input, name, 0);
AT(target_input, status, 12);
AT(target_input, x, 16);
AT(target_input, sx, 40);
AT(target_input, ix, 64);
AT(target_input, ilump, 76);
AT(target_input, iconn, 80);
SIZE(target_input, 88);

AT(measure_input, typ, 0);
AT(measure_input, from, 4);
AT(measure_input, h1, 16);
AT(measure_input, to, 24);
AT(measure_input, h2, 40);
AT(measure_input, val, 48);
AT(measure_input, sig, 56);
AT(measure_input, time, 64);
SIZE(measure_input, 72);

AT(gps_input, status, 0);
AT(gps_input, from, 4);
AT(gps_input, to, 13);
AT(gps_input, dx, 24);
AT(gps_input, cov, 48);
SIZE(gps_input, 96);

AT(group_input, typ, 0);
AT(group_input, ic, 16);
AT(group_input, c, 32);
AT(group_input, sc, 56);
AT(group_input, nmember, 80);
AT(group_input, member, 84);
SIZE(group_input, 88);

AT(camera_input, status, 0);
AT(camera_input, name, 4);
AT(camera_input, nu, 16);
AT(camera_input, nv, 20);
AT(camera_input, pu, 24);
AT(camera_input, pv, 32);
AT(camera_input, ip, 40);
AT(camera_input, p, 80);
SIZE(camera_input, 240);

AT(image_input, status, 0);
AT(image_input, file, 4);
AT(image_input, station, 84);
AT(image_input, camera, 93);
SIZE(image_input, 104);

AT(lump_definition, id, 0);
AT(lump_definition, kind, 4);
AT(lump_definition, iref, 8);
AT(lump_definition, n, 12);
AT(lump_definition, epoch, 16);
AT(lump_definition, code, 20);
AT(lump_definition, scale, 24);
AT(lump_definition, tx, 28);
AT(lump_definition, ty, 32);
AT(lump_definition, tz, 36);
AT(lump_definition, rx, 40);
AT(lump_definition, ry, 44);
AT(lump_definition, rz, 48);
SIZE(lump_definition, 52);

AT(pair_input, from, 0);
AT(pair_input, to, 9);
AT(pair_input, sdx, 24);
AT(pair_input, ell12, 48);
AT(pair_input, ell13, 72);
AT(pair_input, ell23, 96);
SIZE(pair_input, 120);

AT(result, irun, 0);
AT(result, dim, 4);
AT(result, nstar, 8);
AT(result, ntarr, 12);
AT(result, ihost, 16);
AT(result, code1, 20);
AT(result, code2, 24);
AT(result, code3, 28);
AT(result, x0, 32);
AT(result, y0, 36);
AT(result, z0, 40);
AT(result, xpt, 44);
AT(result, ypt, 48);
AT(result, zpt, 52);
AT(result, sxpt, 56);
AT(result, sypt, 60);
AT(result, szpt, 64);
AT(result, rx, 68);
AT(result, ry, 72);
AT(result, rz, 76);
AT(result, srx, 80);
AT(result, sry, 84);
AT(result, srz, 88);
AT(result, ndist, 92);
AT(result, ndifh, 96);
AT(result, ndir1, 100);
AT(result, ndir2, 104);
AT(result, iobs, 108);
AT(result, res, 112);
AT(result, sres, 116);
AT(result, iout, 120);
AT(result, inorm, 124);
AT(result, inormb, 128);
AT(result, itau, 132);
AT(result, itaub, 136);
AT(result, dof, 140);
AT(result, sig0, 144);
AT(result, sigpost, 152);
AT(result, itest, 160);
AT(result, sdist, 168);
AT(result, spdist, 176);
AT(result, ichidist, 184);
AT(result, nnormdist, 188);
AT(result, nnormbdist, 192);
AT(result, ntaudist, 196);
AT(result, ntaubdist, 200);
AT(result, sdifh, 208);
AT(result, spdifh, 216);
AT(result, ichidifh, 224);
AT(result, nnormdifh, 228);
AT(result, nnormbdifh, 232);
AT(result, ntaudifh, 236);
AT(result, ntaubdifh, 240);
AT(result, sdir1, 248);
AT(result, spdir1, 256);
AT(result, ichidir1, 264);
AT(result, nnormdir1, 268);
AT(result, nnormbdir1, 272);
AT(result, ntaudir1, 276);
AT(result, ntaubdir1, 280);
AT(result, sdir2, 288);
AT(result, spdir2, 296);
AT(result, ichidir2, 304);
AT(result, nnormdir2, 308);
AT(result, nnormbdir2, 312);
AT(result, ntaudir2, 316);
AT(result, ntaubdir2, 320);
AT(result, saz, 328);
AT(result, spaz, 336);
AT(result, ichiaz, 344);
AT(result, nnormaz, 348);
AT(result, nnormbaz, 352);
AT(result, ntauaz, 356);
AT(result, ntaubaz, 360);
AT(result, ell12a, 364);
AT(result, ell12b, 368);
AT(result, ell12t, 372);
AT(result, ell13a, 376);
AT(result, ell13b, 380);
AT(result, ell13t, 384);
AT(result, ell23a, 388);
AT(result, ell23b, 392);
AT(result, ell23t, 396);
AT(result, nrow, 400);
AT(result, ilump, 404);
AT(result, iepoch, 408);
AT(result, iref, 412);
AT(result, tx, 416);
AT(result, ty, 420);
AT(result, tz, 424);
AT(result, lrx, 428);
AT(result, lry, 432);
AT(result, lrz, 436);
AT(result, tscale, 440);
AT(result, stx, 444);
AT(result, sty, 448);
AT(result, stz, 452);
AT(result, slrx, 456);
AT(result, slry, 460);
AT(result, slrz, 464);
AT(result, stscale, 468);
SIZE(result, 472);

#endif

} // namespace vornengine
