// First coordinates and orientations of a network from its directions, vertical angles and
// distances. Lengths in metres, angles in radians.
//
//   approx a(pproject, points, dist, dir1, dir2, nsta, ntar, ndist, ndir1, ndir2, ia1);
//   int result = a.compute(9);
//
// A direction reading r of station i lies along the plane angle r + oap[i], counted from the
// x1 axis towards the x2 axis; oap[i] is -xex[2]. With as many vertical angles as directions
// the two lists are parallel: the same index, the same sight.
//
// The tables of a spread, made by spread() and handed to its steps:
//   xap, yap  [npoints]        plane coordinates being built
//   oap       [nsta]           orientations being built
//   table     [nsta][npoints]  table[i][j], i not j: index in dir1, plus 1, of the last shot
//                              from station i to point j, 0 without one;
//                              table[i][i]: stations that i sighted and was sighted by
//   itheo     [nsta]           status of each station, THEO_...
//   iobj      [ntar]           status of each target, OBJ_...
// seen and seenby hold the same shots as lists: a loop over what a station saw, or over who
// saw a point, runs over them and not over a row or a column of the table.

#ifndef VORN_APPROX_H
#define VORN_APPROX_H

#include <stdio.h>

#include "approx/pairlist.h"
#include "vorn/records.h"

namespace vornengine {

// Status of a station.
enum {
    THEO_UNKNOWN = 0,
    THEO_PLACED = -1,   // position known, orientation not
    THEO_ORIENTED = -2, // orientation known, position not
    THEO_DONE = -3,     // both known
    THEO_RESECT = 3     // marked for resection
};

// Status of a target.
enum { OBJ_UNKNOWN = 0, OBJ_PLACED = -1 };

// A distance between two targets.
struct scalebar {
    int idist;      // index in dist
    int end1, end2; // points
    int mark;       // its own number while the station at hand observed it, otherwise -1
};

// Whether station i shot both ends of a bar.
int shot_bar(const scalebar *bar, int i, int **table);

struct savedcodes;
struct spreading;
struct guesswork;
struct weakshots;

// Two stations for a guess.
struct guesspair {
    int it1, it2; // -1: none
    int ncommon;  // common shots
    int ibar;     // index in dist of a scale bar for the frame, -1 none
};

class approx {
public:
    approx(project *pproject, point *points, measure *dist, measure *dir1, measure *dir2, int nsta, int ntar, int ndist,
           int ndir1, int ndir2, int *ia1);
    ~approx();
    approx(const approx &) = delete;
    approx &operator=(const approx &) = delete;

    // Computes what has no value (iapprox 9) or all that is not fixed (iapprox 1): xpt[0..2]
    // of every point, xex[2] of every station. Returns 0, or -1 without memory, -2 without a
    // datum to start from, -12 when not everything could be reached; after a failure the
    // codes of the points are not restored.
    int compute(int iapprox);

private:
    friend struct approx_access; // white-box tests

    // driver
    void heights_as_they_are(); // one dimension
    int compute_plane(int iapprox, savedcodes *saved);
    void forget_values();
    void working_codes();
    void show_codes();
    void show_working_codes();
    int datum_and_spread();
    int datum_approx();       // completes the datum and numbers the unknowns; 0, -2, -3
    int fix_plane(int *ifix); // 0 or -2
    int fix_position();
    int complete_position();
    int first_known_station() const;
    int fix_turn(int *ifix);
    void fix_second_x1();
    void hang_on_one_station();
    void fix_height(int ifix);
    int count_unknowns(); // 0 or -3
    void number_unknowns();
    int istotal(int i); // 1 when point i is a station that measures distances

    // spread
    int spread(); // 0 or -1, -2, -3, -5, -6, -7, -9: see spread.cpp
    int start_spread(int **table, int *nused, int *nresec, int *npair, double *xap, double *yap, double *oap,
                     int *itheo, int *iobj); // what is known at the start; always 0
    int take_spreading(spreading *s);        // 0 or -7
    int spread_with(spreading *s);
    int start(spreading *s);
    void show_counts(const spreading *s);
    void show_spread(const spreading *s);
    void write_points(spreading *s);
    void take_position(int i, double *xap, double *yap) const;
    int take_station(int i, double *xap, double *yap, double *oap, int *itheo) const;
    void polar_points(int i, const double *oap);
    int start_stations(int *nused, double *xap, double *yap, double *oap, int *itheo);
    int count_pairs(int i, int **table) const;
    int known_targets(int i, const int *iobj) const;
    void show_table(int **table);
    void carry_height(int i, int j, double v, double *known, double *h) const;
    double height_shift(const double *h) const;
    void height_spread(double *known, double *h);

    // resection and intersection
    int resec(int iscale, int i, int **table, int *itheo, int *iobj, double *xap, double *yap,
              double *oap); // places station i; 0, or -1 with fewer than 3 shots; sets no status of i
    void resec3(int i, const int *ishot, double *xx, double *yy, double *alp, double *xap, double *yap, double *oap);
    void intersect(int i1, int i2, int p, int **table, double *xap, double *yap, double *oap); // sets no status
    void guard_angle(double *alp, int k);
    int known_shots(int i, const int *itheo, const int *iobj, int *ishot) const;
    int can_level() const;
    double level_length(int idist, int ishot) const;
    int bad_distances(int i, const int *ishot, const double *xx, const double *yy, const double *xap,
                      const double *yap);
    void use_extra_shots(int i, int n, int nbad, int *ishot, double *xap, double *yap, double *oap);
    void polar_targets(int i, int *iobj, double *xap, double *yap, const double *oap) const;
    int finished_partner(int i, int p, const int *itheo) const;
    void intersect_targets(int i, int **table, const int *itheo, int *iobj, double *xap, double *yap, double *oap);
    int resect_marked(int i, int **table, int *itheo, int *iobj, double *xap, double *yap, double *oap);
    int lone_resection(int **table, int *nresec, double *xap, double *yap, double *oap, int *itheo, int *iobj);
    int start_resec(int **table, int *nresec, double *xap, double *yap, double *oap, int *itheo, int *iobj); // 0 or -1

    // collimation pairs
    int colli_spread(int npair, int *iscale, int **table, int *itheo, int *iobj, double *xap, double *yap,
                     double *oap);                               // 0 or -1
    int buildtabpair(int (*tabpair)[7], int npair, int **table); // 0 or -1
    void colli_base(int i1, int i2, int **table, int *itheo, int *iobj, double *xap, double *yap, double *oap);
    int spread_from_pair(int (*tabpair)[7], int npair, int *iscale, int **table, int *itheo, int *iobj, double *xap,
                         double *yap, double *oap);
    void show_best(const int *row, int why) const;
    int choose_pair(int (*tabpair)[7], int npair, int *why) const;
    int local_frame(const int *row, int *iscale, int **table, int *itheo, int *iobj, double *xap, double *yap,
                    double *oap);
    int scale_by_bar(int i, int idist, const double *xap, const double *yap, double *scale) const;
    int scale_by_control(int i1, int i2, int **table, const double *xap, const double *yap, double *scale) const;
    int heights_over(int i, int p1, int p2, double l1, double l2, double *z1, double *z2) const;
    int pairs_of(int i, int (*tabpair)[7], int nrow, scalebar *bars, int nbar, int **table);
    void count_targets(int *row, int **table) const;
    void count_stations_too(int (*tabpair)[7], int npair, int **table);
    int common_points(int i, int j, int **table) const;
    void show_pairs(int (*tabpair)[7], int npair) const;
    int take_bars(scalebar **bars, int *nbar); // 0 or -1; the caller releases *bars
    int bar_ends(int idist, int *end1, int *end2) const;
    void show_bars(const scalebar *bars, int nbar) const;

    // two-point transformation and patching
    int spread_step(int *nleft, int iscale, int **table, int *itheo, int *iobj, double *xap, double *yap,
                    double *oap);                                    // 0 to go on, -1 or -4 to stop
    int transformations(double *xap, double *yap, double *oap);      // 0 or -5
    int t2pt(int p1, int p2, double *xap, double *yap, double *oap); // 0 or -1
    void t1pt(int p, double *xap, double *yap, double *oap);
    void similarity(const double *parameter, double *xap, double *yap, double *oap) const;
    int next_known(int start) const;
    int known_sights(int i, const int *itheo, const int *iobj) const;
    int mark_resectable(int *itheo, const int *iobj) const;
    void diagnose(int **table, int *itheo, int *iobj);
    void intersect_stations(int i, int **table, int *itheo, double *xap, double *yap, double *oap);

    // guess spread
    int guess_spread(int *iscale, int **table, int *itheo, int *iobj, double *xap, double *yap,
                     double *oap); // 0, -1, -3, -4, -5, -9
    int start_pair(const int *itheo, guesspair *g) const;
    int guess_pair(int **table, const int *itheo, guesspair *g);
    void pair_by_bars(const scalebar *bars, int nbar, int **table, guesspair *g) const;
    void pair_by_first_bar(const scalebar *bar, int **table, guesspair *g) const;
    void pair_by_shots(int **table, guesspair *g) const;
    void show_pair(const guesspair *g) const;
    int has_elevations() const;
    int guess_with(const guesspair *g, guesswork *w, int *iscale, int **table, int *itheo, int *iobj, double *xap,
                   double *yap, double *oap);
    void scale_guess(const guesspair *g, const guesswork *w, int *iscale, double *xap, double *yap) const;
    void turn_guess(const guesspair *g, const int *isys, double *xap, double *yap, double *oap) const;
    void show_guess(const int *itheo, const int *iobj, const double *xap, const double *yap, const double *oap) const;
    int list_common(int it1, int it2, int ncommon, int **table, int *isys); // 0 or -4
    int guess_o1o2(int it1, int it2, int ncommon, int **table, int *isys, double *app, double *rhs, double *o1,
                   double *o2); // 0, -4, -5; the caller releases isys, app and rhs
    double guess_check(int n, double o1, double o2, int *isys, int **table, double *app); // 9999.0: rays do not meet
    int guess_approx(int n, int **table, int *isys, double *app, int it1, double o1, int it2, double o2); // 0 or -1
    int guess_resid(double x, double y, double z, double xt, double zt, double o, double hz, double v, double *sum);
    int guess_solve(int n, double o1, double o2, int *isys, int **table, double *app, double *rhs, double *xap,
                    double *yap, double *oap, int *itheo, int *iobj); // 0 or negative
    void show_isys(const int *isys, int n) const;
    void put_weak_aside(weakshots *s, double o1, double o2, int *isys, int **table);
    int strong_shots(weakshots *s, double o1, double o2, int *isys, int **table);
    void guess_equations(double **mat, double *rhs, int n, const int *isys, int **table, const double *app);
    int iterate_guess(double **mat, int *indx, int nit, int n, const int *isys, int **table, double *app, double *rhs);
    int adjust_guess(int nit, int n, const int *isys, int **table, double *app, double *rhs);
    void give_strong(int n, const int *isys, const double *app, double *xap, double *yap, double *oap, int *itheo,
                     int *iobj) const;
    int shot_by_third(int p, int it1, int it2) const;
    void give_weak(int p, int it1, int it2, int **table, double *xap, double *yap, const double *oap, int *itheo,
                   int *iobj);
    int solve_strong(weakshots *s, double o1, double o2, int *isys, int **table, double *app, double *rhs, double *xap,
                     double *yap, double *oap, int *itheo, int *iobj);
    void guess_normal(double **mat, double *rhs, int m, int k, double x, double y, double z, int it, double xt,
                      double zt, double o, double hz, double v, double *sum);

    // patch spread
    int patch_spread(int i, int **table, int *itheo, int *iobj); // 0, -1, -4, -5, -9
    int patch_shot(int p, int code, int known, int *list, int *nlist) const;
    int patch_shots(int i, const int *itheo, const int *iobj, int *list) const;
    int guess_partner(int i, int **table, const int *itheo, const int *list, int nlist) const;
    int try_guess(int s, int i, int **table);
    int common_shots(int s1, int s2, int **table) const; // points other than both with a shot from both

    // lists of shots and distances
    int take_lists();                   // shots, seen, seenby, lengths; 0 or -1
    void drop_lists();                  // may be called twice
    void fill_table(int **table) const; // table[i][j], i not j, from seen
    int number(const point *p) const;   // index of a point, -1 when it is not in points
    void find_ends(const measure *list, int n, int *from, int *to) const;
    int list_measures(pairlist *l, const measure *list, int n) const; // 0 or -1

    project *pproject; // the host object, not owned
    FILE *out;         // report stream
    double pi;
    int idebug; // non-zero: trace lines
    int dim;
    point *points; // [npoints] stations first; vorn's, written in place
    int nsta, ntar, npoints;
    measure *dist, *dir1, *dir2; // vorn's
    int ndist, ndir1, ndir2;
    int *ia1;         // [8] counts of fixed items, vorn's: 0 to 2 coordinates, 5 third orientations
    int nunk1, nunk2; // coordinates, orientations to compute
    int nunk;         // both

    pairlist shots;   // dir1 by station and point
    pairlist seen;    // the same, the last shot of each pair alone
    pairlist seenby;  // seen by point and station
    pairlist lengths; // dist by station and point
};

// The angle brought once nearer to the range from -pi to pi: above pi less 2 pi, below -pi
// more 2 pi.
double wrap(double angle);

// Meeting (metres) of two rays along the plane angles a and b from (0, 0) and (1, 0); rays
// that are near parallel or antiparallel give (0, 0).
void meet(double a, double b, double *x, double *y);

} // namespace vornengine

#endif
