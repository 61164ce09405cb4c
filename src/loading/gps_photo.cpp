// Baselines and images.
//
// A baseline brings a covariance of its three components (metres squared) and is kept with
// the inverse of it. An image names a text file of image coordinates, which is read twice,
// once to count and once to fill obsuv1 and obsuv2. A line of such a file has at most 89
// characters; of a longer one the rest counts as the next line:
//   NNNNNNNN u v [su [sv]]     name in the first 8 characters, standard deviations optional
// Image coordinates and their standard deviations stay in the unit of the file.

#include <stdio.h>
#include <string.h>

#include "numerics/packed.h"
#include "vorn/run.h"
#include "loading/names.h"
#include "loading/numbers.h"
#include "vorn/records.h"

namespace vornengine {

const double BAD_WEIGHT = 1.0e-15; // 1 / metre squared; a diagonal weight below it is no weight

void vornrun::invers(double *a, int n) { packinvert(a, n); }

// Stores the selected baselines with their weights. Returns 0; -1 from or -2 to is not a point;
// -3 the covariance has no inverse.
int vornrun::fill_gps()
{
    int k = 0;
    for (int i = 0; i < pproject->nbaselines && k < ngps; i++) {
        const gps_input *b = pproject->baselines + i;
        if (b->status <= 0) continue;
        const nametext from = name_in(b->from, sizeof b->from), to = name_in(b->to, sizeof b->to);
        const int ip1 = vornsearch(from.text);
        if (ip1 < 0) return -1;
        const int ip2 = vornsearch(to.text);
        if (ip2 < 0) return -2;

        gpsbase *g = gps + k++;
        g->p1 = points + ip1;
        g->p2 = points + ip2;
        g->p1->ntie++;
        g->p2->ntie++;
        for (int c = 0; c < 3; c++) g->dx[c] = b->dx[c];

        static const int upper[6] = {0, 1, 3, 2, 4, 5}; // xx xy yy xz yz zz out of xx xy xz yy yz zz
        double w[6];
        for (int c = 0; c < 6; c++) w[c] = b->cov[upper[c]];
        invers(w, 3);
        if (w[0] < BAD_WEIGHT || w[2] < BAD_WEIGHT || w[5] < BAD_WEIGHT) {
            fprintf(out, "fill_gps: pb with covariance matrix on baseline %s %s\n", from.text, to.text);
            return -3;
        }
        for (int c = 0; c < 6; c++) g->w[c] = w[c];
    }
    return 0;
}

// ---- image files ----

struct imageline {
    char text[90];
    char name[9];
};

// Opens the file of an image; null when it cannot be read.
static FILE *open_image(const image_input *im)
{
    char path[sizeof im->file + 1];
    snprintf(path, sizeof path, "%.*s", (int)sizeof im->file, im->file);
    return fopen(path, "rb");
}

// Next line of an image file; false at its end.
static bool next_line(FILE *f, imageline *line)
{
    if (!fgets(line->text, sizeof line->text, f)) return false;
    snprintf(line->name, sizeof line->name, "%.8s", line->text);
    return true;
}

// Numbers behind the name, at most four; the others in x stay as they are.
static int numbers(const imageline *line, double x[4])
{
    if (strlen(line->text) < 8) return 0;
    const int n = sscanf(line->text + 8, "%lf%lf%lf%lf", x, x + 1, x + 2, x + 3);
    return n > 0 ? n : 0;
}

// Lines of an image file that begin with the name of a selected point; -1 when the file
// cannot be read.
int vornrun::count_lines(const image_input *im)
{
    FILE *f = open_image(im);
    if (!f) return -1;
    int n = 0;
    imageline line;
    while (next_line(f, &line)) {
        const int ihost = searchnam(line.name);
        if (ihost >= 0 && hosts().status(ihost) > 0) n++;
    }
    fclose(f);
    return n;
}

// Counts cameras and image coordinate pairs. An image without a selected station, without a
// readable file or with fewer than 4 known points is dropped in the host's data.
void vornrun::count_photo()
{
    for (int i = 0; i < pproject->ncameras; i++)
        if (pproject->cameras[i].status > 0) ncamera++;

    for (int i = 0; i < pproject->nimages; i++) {
        image_input *im = pproject->images + i;
        if (im->status <= 0) continue;
        const int ista = searchnam(name_in(im->station, sizeof im->station).text);
        const bool usable_station = ista >= 0 && ista < npsta && psta[ista].status > 0;
        const int n = usable_station ? count_lines(im) : -1;
        if (n > 3)
            nobsuv = count_of((long long)nobsuv + n);
        else
            im->status = -im->status;
    }
}

// ---- cameras and image coordinates ----

// Codes of the inner parameters; returns how many are absent.
static int fill_parameters(const camera_input *from, camera *cam, FILE *out)
{
    int nabsent = 0;
    for (int p = 0; p < 10; p++) {
        cam->par[p] = from->p[p];
        if (from->ip[p] == CODE_ABSENT) nabsent++;
        if (from->ip[p] == CODE_WEIGHTED) fprintf(out, "no weighted implemented yet\n");
        const bool fixed = from->ip[p] == CODE_ABSENT || from->ip[p] == CODE_FIXED || from->ip[p] == CODE_WEIGHTED;
        cam->ipar[p] = fixed ? N_NONE : 0;
    }
    return nabsent;
}

// Returns 0, or -2 when there are more cameras than were counted.
int vornrun::fill_cameras()
{
    int k = 0;
    for (int i = 0; i < pproject->ncameras; i++) {
        const camera_input *from = pproject->cameras + i;
        if (from->status <= 0) continue;
        if (k >= ncamera) {
            fprintf(out, "fill_photo: Pb in counting cameras");
            return -2;
        }
        camera *cam = cameras + k++;
        strcpy(cam->name, name_in(from->name, sizeof from->name).text);
        cam->pu = from->pu;
        cam->pv = from->pv;
        cam->cu = from->nu / 2.0;
        cam->cv = from->nv / 2.0;
        cam->npar = fill_parameters(from, cam, out) == 7 ? 3 : 10;
    }
    return 0;
}

static int search_camera(const camera *cameras, int ncamera, const char *name)
{
    for (int i = 0; i < ncamera; i++)
        if (same_name(cameras[i].name, name)) return i;
    return -1;
}

static void fill_coordinate(measure *m, int icam, point *station, point *p, double val, double sigma)
{
    m->typ = icam;
    m->p1 = station;
    m->p2 = p;
    m->val[0] = val;
    m->val[1] = sigma;
    station->ntie++;
    p->ntie++;
}

// Adds the pairs of one image file behind the first *k. Returns 0, also for a file that
// cannot be opened, or -2 when there are more pairs than were counted.
int vornrun::fill_image(const image_input *im, int icam, point *station, int *k)
{
    FILE *f = open_image(im);
    if (!f) return 0;
    int result = 0;
    imageline line;
    while (result == 0 && next_line(f, &line)) {
        double x[4] = {0.0, 0.0, suv, suv}; // u, v, their standard deviations
        const int ip = numbers(&line, x) >= 2 ? vornsearch(line.name) : -1;
        if (ip < 0) continue;
        if (*k < nobsuv) {
            fill_coordinate(obsuv1 + *k, icam, station, points + ip, x[0], x[2]);
            fill_coordinate(obsuv2 + *k, icam, station, points + ip, x[1], x[3]);
            ++*k;
        } else {
            fprintf(out, "fill_photo: Pb in counting");
            result = -2;
        }
    }
    fclose(f);
    return result;
}

// Fills cameras, obsuv1 and obsuv2. Returns 0; -1 an image's camera or station is bad; -2 a
// count is exceeded. A file that holds less than was counted leaves records of zeros behind.
int vornrun::fill_photo()
{
    if (fill_cameras() != 0) return -2;
    int k = 0;
    for (int i = 0; i < pproject->nimages; i++) {
        const image_input *im = pproject->images + i;
        if (im->status <= 0) continue;
        const nametext camera_name = name_in(im->camera, sizeof im->camera);
        const nametext station_name = name_in(im->station, sizeof im->station);
        const int icam = search_camera(cameras, ncamera, camera_name.text);
        if (icam < 0) {
            fprintf(out, "fill_photo:Pb at image %d\nwith camera %s\n", i, camera_name.text);
            return -1;
        }
        const int ista = vornsearch(station_name.text);
        if (ista < 0 || ista >= nsta) {
            fprintf(out, "fill_photo:Pb at image %d\nwith station %s\n", i, station_name.text);
            return -1;
        }
        if (fill_image(im, icam, points + ista, &k) != 0) return -2;
    }
    return 0;
}

} // namespace vornengine
