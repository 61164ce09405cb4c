// The state of one run and its steps: what stands behind class vorn.
//
// Settings and network are its bases. Each step is a member; the rooms hold them by task:
// loading, setup, the solver entries here, results.

#ifndef VORN_RUN_H
#define VORN_RUN_H

#include <stdio.h>

#include "vorn/settings.h"
#include "vorn/vorn.h"

namespace vornengine {

struct nameindex;
struct lumptables;
struct lumpcount;
struct lumpwork;
struct lumpcopies;
struct lumpmotion;
struct pointset;
struct splitrows;
struct membership;
struct pointwalk;
class approx;
class simplex;
class compact;
class jordan;

class vornrun : public solverinput {
public:
    explicit vornrun(project *p);
    ~vornrun();
    vornrun(const vornrun &) = delete;
    vornrun &operator=(const vornrun &other);

    // As the operations of class vorn.
    int vornstart();
    int vornL2();
    int vornjordan();
    int vornL1();

private:
    friend struct vorn_access;  // white-box tests
    friend struct unknown_walk; // vorn/unknowns.cpp
    friend struct side_files;   // vorn/sidefiles.h

    // loading
    int fill_vorn();
    void chk_numbers(int *ilumtable, int *nsplitsta, int *nsplittar);
    int chk_connect();
    int selectm(int kind, int *itimetable);
    void count_photo();
    int verif();
    void deselall(int kind);
    int checkm(int kind);
    int searchnam(const char *name);
    int vornallocate();
    void fill_isplit(int **isplit, int nsplitsta, int nsplittar, int nepoch, int *itimetable);
    void fill_pt(int *ilumtable, int **isplit, int nsplitsta, int nsplittar, int nepoch);
    void duplicate(int kind, int ipoint, int ncopy);
    int fill_measure(int kind, int **isplit, int nsplitsta, int nsplittar, int nepoch);
    int vornsearch(const char *name);
    int fill_gps();
    int fill_photo();
    void fill_connect();
    void clean_templump(int *ilumtable, int *itimetable, int **isplit, int nepoch, int nrow);
    void invers(double *a, int n);

    // steps of the loading
    int load_network(lumptables *t);
    void give_up_lumps(const char *why);
    void count_observations(lumptables *t);
    void split_points(lumptables *t);
    void count_constants();
    int load_observations(const lumptables *t);
    int verif1D();
    int verif2D();
    int verif3D();
    void check_list(int kind);
    int allocate_lists();
    bool usable(int kind, const measure_input *m);
    bool count_lump(lumpcount *c, const char *field, int *ilump);
    void fill_stations(pointwalk *w, const membership *groups);
    void fill_targets(pointwalk *w);
    void fill_coordinates(point *p, const double x[3], const double sx[3], const int ix[3], int status);
    void fill_orientations(point *p, const station_input *s);
    void fill_groups(point *p, int ihost, const membership *groups);
    void fill_constants(point *p, int igroup);
    void place_point(pointwalk *w, int kind, int ihost, int ilump, int iconn);
    int fill_list(int kind, const splitrows *sta, const splitrows *tar);
    int find_ends(const measure_input *m, int ihost, const splitrows *sta, const splitrows *tar, int *ip1, int *ip2);
    int fill_value(const measure_input *m, double val[2]);
    void drop_pointindex();
    void drop_hostindex();

    // images
    int count_lines(const image_input *im);
    int fill_cameras();
    int fill_image(const image_input *im, int icam, point *station, int *k);

    // set-up
    void trigapprox();
    void summary();
    int lumpcheck();
    int build_lumps(const lumpwork *w);
    int datumcheck();
    int datum1D();
    int datum2D();
    int datum3D();
    int enough_for_datum();
    int free2D();
    int conditions3D();
    int free3D();
    int fixed3D();
    void fix_rotations3D();
    int constraints3D();
    void datum_shortage3D();
    int mixed_datum();
    int enough_observations();
    int vornapprox();
    void set_prepare();
    void count_unknowns();
    void number_constants(int next);
    int set_connect();
    void summary2();
    void outputapprox();
    void showpoints();
    void showmeasures();

    // end of a run
    bool take_temp_res(const char *entry);
    void clean();
    void drop_lumps();
    int backtoproject();
    int writecon(); // the connected-net file of the export; 0 or -9
    void fill_obs_stat();
    int fill_obs_res();
    int fill_residuals(int kind, int n, int last);
    int take_residuals();
    int take_lumps();
    void fill_lumprow(int row, const lump *l, int e);
    int fill_lumps();
    int take_ellipses(int npt);
    int take_coordinates(int npt);
    bool has_ellipse(int i);
    int size_problem();
    int fill_plane();
    int next_name(int k, int end);
    int fill_space();
    int fill_points();
    void fill_group(group_input *g);
    void fill_1D(int i);
    void fill_sta2D(int i);
    void fill_tar2D(int i);
    void fill_sta3D(int iout, int ipoint);
    void fill_tar3D(int iout, int ipoint);
    int usesimili(int mode);
    int take_records(const lumpcopies *w);
    void lump_motion(lumpcopies *w, int b, int mode);
    void compare_epoch(lumpmotion *m, int c);
    void take_epoch(lumpmotion *m, int c, pointset *end);
    bool similarity(lumpmotion *m, int epoch, pointset *end, double res[7]);
    void backtrans(int ilump, int iepoch, double r[3][3]);
    void backsol(int ilump, int iepoch, double r[3][3], int ipoint);
    void flagdecode(int flag, int *a, int *b, int *c, int *d, int *e);

    approx *papprox;   // alive only inside vornapprox
    simplex *psimplex; // alive only inside vornL1
    compact *pcompact; // alive only inside vornL2
    jordan *pjordan;   // alive only inside vornjordan
    int iapprox;       // 0 nothing to compute, 1 asked by the user, 9 values missing
    int nstat100;      // selected targets with a status above 100
    int ia1[9];        // counts of fixed items

    nameindex *pointindex; // names of points, made by the first vornsearch
    nameindex *hostindex;  // names of host stations and targets, made by the first searchnam
    bool begun, ready;     // vornstart was called; it returned 0
};

// The way from the object of the host to its state.
struct inside {
    static vornrun &of(const vorn &v) { return *v.state; }
};

} // namespace vornengine

#endif
