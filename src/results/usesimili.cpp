// Motion of lumps after a run.
//
// Every copy of a point was adjusted on its own. For each lump the copies at a reference
// epoch and at each other epoch that shows three of them give a similarity transformation
//   Y = scale R X + T,    X at the reference epoch, Y at the other (metres, radians),
// which goes into the lump's record. Moved back by it, the copies of a point are averaged.
// The points at the reference epoch grow by those that other epochs show and it does not.

#include "vorn/run.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

#include "numerics/memory.h"
#include "numerics/sidefile.h"
#include "vorn/sidefiles.h"
#include "simili/simili.h"
#include "results/lumpcopies.h"
#include "setup/lumpdefs.h"
#include "vorn/message.h"

namespace vornengine {

const double COPY_SIGMA = 0.001; // metres, of every coordinate that is compared

// Points of one epoch.
struct pointset {
    simpoint *p; // [room]
    int n, room;
    nameindex *names; // of the n points
};

// The lump at work.
struct lumpmotion {
    lumpcopies *w;
    int b;    // its place
    int mode; // 1: the points are moved
    int kref; // column of the reference epoch
    int n;    // entries of the record that are filled
    pointset ref;
    const lump_definition *def; // or null
};

// ---- points of one epoch ----

static bool set_take(pointset *s, int room)
{
    s->p = (simpoint *)zeroed(room, sizeof(simpoint));
    s->names = nameindex_make(room);
    s->room = room;
    return s->p && s->names;
}

static void set_free(pointset *s)
{
    free(s->p);
    nameindex_free(s->names);
}

static void set_add(pointset *s, const char *name, const double x[3])
{
    if (s->n >= s->room) return;
    simpoint *p = s->p + s->n;
    const nametext text = name_in(name, NAME_LENGTH + 1);
    memcpy(p->name, text.text, sizeof text.text);
    for (int k = 0; k < 3; k++) {
        p->x[k] = x[k];
        p->sx[k] = COPY_SIGMA;
    }
    nameindex_add(s->names, p->name, s->n++);
}

static void show_point(FILE *out, const simpoint *p)
{
    fprintf(out, "%s %15.6lf%15.6lf%15.6lf\n", p->name, p->x[0], p->x[1], p->x[2]);
}

// Loads the copies of a column, as many as were counted; false when there are more.
static bool set_load(pointset *s, const lumpcopies *w, int c, int count)
{
    for (int r = 0; r < w->nrow; r++) {
        if (copy_at(w, r, c) < 0) continue;
        if (s->n >= count) return false;
        const point *p = w->points + copy_at(w, r, c);
        set_add(s, p->name, p->xpt);
    }
    return true;
}

static void show_set(FILE *out, const pointset *s)
{
    for (int i = 0; i < s->n; i++) show_point(out, s->p + i);
}

// ---- transformations ----

void vornrun::backtrans(int ilump, int iepoch, double r[3][3])
{
    const lump *l = lumps + ilump;
    const double c1 = cos(l->rx[iepoch]), s1 = sin(l->rx[iepoch]), c2 = cos(l->ry[iepoch]), s2 = sin(l->ry[iepoch]),
                 c3 = cos(l->rz[iepoch]), s3 = sin(l->rz[iepoch]);
    const double rotation[3][3] = {{c2 * c3, c2 * s3, -s2},
                                   {s1 * s2 * c3 - c1 * s3, c1 * c3 + s1 * s2 * s3, s1 * c2},
                                   {s1 * s3 + c1 * s2 * c3, c1 * s2 * s3 - s1 * c3, c1 * c2}};
    memcpy(r, rotation, sizeof rotation);
}

// y = scale R x + T of one entry.
static void forward(const lump *l, int e, const double r[3][3], const double x[3], double y[3])
{
    const double t[3] = {l->tx[e], l->ty[e], l->tz[e]};
    for (int k = 0; k < 3; k++) y[k] = l->scale[e] * (r[k][0] * x[0] + r[k][1] * x[1] + r[k][2] * x[2]) + t[k];
}

// x = R-transposed (y - T) / scale; x may be y.
static void backward(const lump *l, int e, const double r[3][3], const double y[3], double x[3])
{
    const double d[3] = {y[0] - l->tx[e], y[1] - l->ty[e], y[2] - l->tz[e]};
    for (int k = 0; k < 3; k++) x[k] = (r[0][k] * d[0] + r[1][k] * d[1] + r[2][k] * d[2]) / l->scale[e];
}

void vornrun::backsol(int ilump, int iepoch, double r[3][3], int ipoint)
{
    backward(lumps + ilump, iepoch, r, points[ipoint].xpt, points[ipoint].xpt);
}

// Scale that the host holds between an epoch and the reference; 0.0: it is free.
static double held_scale(const lump_definition *def, int epoch, int iref)
{
    if (!def) return 0.0;
    if (def->kind == WITHOUT_SCALE) return 1.0;
    const int t = def->iref == iref ? defined_epoch(def, epoch) : -1;
    return t >= 0 && def->code[t] == CODE_FIXED ? def->scale[t] : 0.0;
}

// The seven parameters from the reference to the points of an epoch; false when there are none.
bool vornrun::similarity(lumpmotion *m, int epoch, pointset *end, double res[7])
{
    lump *l = lumps + m->b;
    if (m->def) l->kind = m->def->kind;
    const int rotates = l->kind != WITHOUT_ROTATION;
    const double held = held_scale(m->def, epoch, l->iref);
    pointset *ref = &m->ref;
    simili s = held != 0.0 ? simili(ref->n, ref->p, end->n, end->p, res, rotates, held)
                           : simili(ref->n, ref->p, end->n, end->p, res, rotates);
    int code = s.startsimili();
    if (idebug) fprintf(out, "usesimili: startsimili returns %d\n", code);
    if (code == 0) {
        code = s.runsimili();
        if (idebug) fprintf(out, "usesimili: runsimili returns %d\n", code);
    }
    if (sidefiles) keep_error(&sidefiles->similarities, s.closereport());
    return code == 0;
}

static void enter_motion(lump *l, int e, int epoch, const double res[7])
{
    l->epoch[e] = epoch;
    l->tx[e] = res[0];
    l->ty[e] = res[1];
    l->tz[e] = res[2];
    l->rx[e] = res[3];
    l->ry[e] = res[4];
    l->rz[e] = res[5];
    l->scale[e] = res[6];
}

// What the transformation leaves at the points that both epochs show.
static void show_misfits(FILE *out, const lump *l, int e, const double r[3][3], const pointset *ref,
                         const pointset *end)
{
    fprintf(out, "Between epochs %d and %d\n", l->epoch[e], l->iref);
    for (int i = 0; i < ref->n; i++) {
        const int j = nameindex_find(end->names, ref->p[i].name);
        if (j < 0) continue;
        const double *y = end->p[j].x;
        double z[3];
        forward(l, e, r, ref->p[i].x, z);
        fprintf(out, "%s  %20.6lf%16.6lf%16.6lf\n", ref->p[i].name, y[0] - z[0], y[1] - z[1], y[2] - z[2]);
    }
}

// Brings the points that the reference does not show back to its epoch.
static void grow_reference(FILE *trace, const lump *l, int e, const double r[3][3], pointset *ref, const pointset *end)
{
    for (int j = 0; j < end->n; j++) {
        if (nameindex_find(ref->names, end->p[j].name) >= 0) continue;
        double x[3];
        backward(l, e, r, end->p[j].x, x);
        set_add(ref, end->p[j].name, x);
        if (!trace) continue;
        fprintf(trace, "One additional point at reference epoch\n");
        show_point(trace, ref->p + ref->n - 1);
    }
}

// ---- one epoch, one lump ----

// Takes the motion to the epoch of column c, and moves its copies back.
void vornrun::take_epoch(lumpmotion *m, int c, pointset *end)
{
    const int epoch = m->w->itimetable[c];
    double res[7], r[3][3];
    if (!similarity(m, epoch, end, res)) return;
    const lump *l = lumps + m->b;
    enter_motion(lumps + m->b, m->n, epoch, res);
    backtrans(m->b, m->n, r);
    show_misfits(out, l, m->n, r, &m->ref, end);
    grow_reference(idebug ? out : NULL, l, m->n, r, &m->ref, end);
    for (int i = 0; m->mode == 1 && i < m->w->nrow; i++)
        if (copy_at(m->w, i, c) >= 0) backsol(m->b, m->n, r, copy_at(m->w, i, c));
    m->n++;
}

void vornrun::compare_epoch(lumpmotion *m, int c)
{
    const int npend = copy_counts(m->w)[c];
    copy_counts(m->w)[c] = EPOCH_TAKEN;
    if (idebug) fprintf(out, "epoch %d (%d) versus %d (%d)\n", m->w->itimetable[c], npend, lumps[m->b].iref, m->ref.n);
    pointset end = pointset();
    if (set_take(&end, npend)) {
        if (!set_load(&end, m->w, c, npend)) {
            tell(pfeedback, "usesimili: pb loading pend");
            if (idebug) fprintf(out, "usesimili: pb loading pend\n");
        }
        if (idebug) show_set(out, &end);
        take_epoch(m, c, &end);
    } else {
        tell(pfeedback, "usesimili: pb pend");
        if (idebug) fprintf(out, "usesimili: pb pend\n");
    }
    set_free(&end);
}

// Column of the reference: the host's, if that epoch is usable, else the first one, else the
// last of those with most copies; -1 without columns.
static int reference_column(const lumpcopies *w, const lump_definition *def)
{
    const int *count = copy_counts(w);
    const int defined = def && def->iref > 0 ? column_of(w, def->iref) : -1;
    if (defined >= 0) return defined;
    if (w->nepoch > 0 && count[0] >= 0) return 0;
    int best = -1;
    for (int c = 0; c < w->nepoch; c++)
        if (best < 0 || count[c] >= count[best]) best = c;
    return best;
}

// The copies at the reference epoch; false without memory.
static bool load_reference(lumpmotion *m)
{
    const lumpcopies *w = m->w;
    if (!set_take(&m->ref, w->nrow)) {
        tell(w->fb, "usesimili: pb with pref");
        return false;
    }
    if (!set_load(&m->ref, w, m->kref, copy_counts(w)[m->kref])) tell(w->fb, "usesimili: pb loading pref");
    if (!w->idebug) return true;
    fprintf(w->out, "at reference epoch\n");
    show_set(w->out, &m->ref);
    return true;
}

static void show_lump(FILE *out, const lumpcopies *w, const lump *l, int n)
{
    fprintf(out, "\nLump %d observed at %d epochs is made of:\n", l->id, l->nepoch);
    for (int r = 0; r < w->nrow; r++)
        for (int c = 0; c < w->nepoch; c++)
            if (copy_at(w, r, c) >= 0) {
                fprintf(out, "     %s\n", name_in(member_name(w, r), NAME_LENGTH + 1).text);
                break;
            }
    for (int e = 0; e < n; e++) {
        fprintf(out, "\nEpoch %d versus %d\n", l->epoch[e], l->iref);
        fprintf(out, "translation%19.6lf%16.6lf%16.6lf\n", l->tx[e], l->ty[e], l->tz[e]);
        fprintf(out, "rotation     %17.6lf %15.6lf %15.6lf\n", l->rx[e], l->ry[e], l->rz[e]);
        fprintf(out, "scale        %17.6lf\n", l->scale[e]);
    }
}

// Gives the copies of each member at the usable epochs their mean.
static void join_copies(const lumpcopies *w)
{
    const int *count = copy_counts(w);
    for (int r = 0; r < w->nrow; r++) {
        double sum[3] = {0.0, 0.0, 0.0};
        int n = 0;
        for (int c = 0; c < w->nepoch; c++) {
            if (count[c] == FEW_COPIES || copy_at(w, r, c) < 0) continue;
            for (int k = 0; k < 3; k++) sum[k] += w->points[copy_at(w, r, c)].xpt[k];
            n++;
        }
        for (int c = 0; c < w->nepoch; c++) {
            if (count[c] == FEW_COPIES || copy_at(w, r, c) < 0) continue;
            for (int k = 0; k < 3; k++) w->points[copy_at(w, r, c)].xpt[k] = sum[k] / n;
        }
    }
}

void vornrun::lump_motion(lumpcopies *w, int b, int mode)
{
    if (copies_fill(w, b) != 0) return;
    lump *l = lumps + b;
    lumpmotion m = lumpmotion();
    m.w = w;
    m.b = b;
    m.mode = mode;
    m.def = find_definition(pproject, l->id);
    m.kref = reference_column(w, m.def);
    if (m.kref < 0) return;
    l->iref = w->itimetable[m.kref];
    const bool loaded = load_reference(&m);
    fprintf(out, "\n");
    for (int c = 0; loaded && c < w->nepoch; c++)
        if (c != m.kref && copy_counts(w)[c] >= 0) compare_epoch(&m, c);
    l->nepoch = m.n + 1;
    show_lump(out, w, l, m.n);
    if (mode == 1) join_copies(w);
    set_free(&m.ref);
}

// ---- all lumps ----

// The record of one lump, with an entry for each epoch but one; false without memory.
static bool take_record(lump *l, int nepoch, int id)
{
    const int n = nepoch > 1 ? nepoch - 1 : 0;
    double **const values[] = {&l->tx, &l->ty, &l->tz, &l->rx, &l->ry, &l->rz, &l->scale};
    l->epoch = (int *)zeroed(n, sizeof(int));
    l->iunk = (int *)zeroed(n, sizeof(int));
    bool all = l->epoch && l->iunk;
    for (size_t i = 0; i < sizeof values / sizeof values[0]; i++) {
        *values[i] = (double *)zeroed(n, sizeof(double));
        all = all && *values[i];
    }
    l->nepoch = nepoch;
    l->id = id;
    return all;
}

int vornrun::take_records(const lumpcopies *w)
{
    drop_lumps();
    lumps = (lump *)zeroed(w->nlump, sizeof(lump));
    bool all = lumps;
    nlump = all ? w->nlump : 0;
    for (int b = 0; all && b < nlump; b++) all = take_record(lumps + b, w->nepoch, w->ilumtable[b]);
    if (all) return 0;
    tell(pfeedback, "usesimili: Could not allocate lumps");
    fprintf(out, "usesimili: Could not allocate lumps\n");
    drop_lumps();
    return -3;
}

int vornrun::usesimili(int mode)
{
    lumpcopies w = lumpcopies();
    w.out = out;
    w.fb = pfeedback;
    w.idebug = idebug;
    w.points = points;
    w.npoints = points && npoints > 0 ? npoints : 0; // a run that stopped early has none
    w.nsta = nsta;
    w.dir1 = dir1;
    w.ndir1 = points && dir1 ? ndir1 : 0;
    w.host = hosts();
    w.directions = pdir1;
    w.ndirections = npdir1;

    int result = copies_make(&w);
    if (result == 0) result = take_records(&w);
    for (int b = 0; result == 0 && b < nlump; b++) lump_motion(&w, b, mode);
    copies_free(&w);
    return result;
}

} // namespace vornengine
