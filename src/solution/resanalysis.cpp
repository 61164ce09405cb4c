// Tests of the residuals for gross errors, and their histograms.
//
// Each residual is divided by its cofactor root: x = r / s. The normal test looks at |x|,
// the tau test at |x| / sigpost, each at the level alpha / 2 and at the level divided by
// the redundancy dofc of the network. A histogram sets the classes of x against the
// normal distribution. Residuals in metres and radians, those of angles turned into the
// host's unit while s stays in radians. Reads res of the observations; writes their mark
// words, the counts and verdicts of temp_res, and the tables on out.
//
// Mark word: five decimal digits, each 0 or 1; from the left out of the histogram, normal
// limit, divided normal limit, tau limit, divided tau limit.

#include "solution/solution.h"

#include <limits.h>
#include <math.h>

#include "numerics/distributions.h"

namespace vornengine {

// Limits of |x|: normal and divided normal; of |x| / sigpost: tau and divided tau.
struct testlimits {
    double sigpost;
    double cn, cnb, ct, ctb;
};

static const double SMALLEST_DEVIATION = 1e-09; // an observation below it has no redundancy

static int whole(double x) { return x > 0.0 && x < (double)INT_MAX ? (int)x : 0; }

int solution::classify(double r, double s, double sigpost, double cn, char *mn, double cnb, char *mnb, double ct,
                       char *mt, double ctb, char *mtb, char *mout)
{
    const bool redundant = s > SMALLEST_DEVIATION;
    const double x = redundant ? fabs(r / s) : 0.0, y = sigpost > 1e-09 ? x / sigpost : 0.0;
    const int c = redundant ? classof(r / s) : (nclass - 1) / 2;
    *mn = x > cn ? 'N' : ' ';
    *mnb = x > cnb ? '*' : ' ';
    *mt = y > ct ? 'T' : ' ';
    *mtb = y > ctb ? '*' : ' ';
    *mout = c < 0 || (c == nclass - 1 && x > hrange) ? '*' : ' ';
    return c < 0 ? 0 : c;
}

// Classifies one residual and counts it. count and block may be null; marks in the order
// of the mark word.
void solution::testresidual(double r, double s, const testlimits *lim, int *count, kindresult *block, int *iflag,
                            char marks[5])
{
    const int c = classify(r, s, lim->sigpost, lim->cn, marks + 1, lim->cnb, marks + 2, lim->ct, marks + 3, lim->ctb,
                           marks + 4, marks);
    hall[c]++;
    if (count) count[c]++;
    *iflag = 0;
    for (int k = 0; k < 5; k++) *iflag = 10 * *iflag + (marks[k] != ' ');
    if (!block) return;
    block->nnorm += marks[1] != ' ';
    block->nnormb += marks[2] != ' ';
    block->ntau += marks[3] != ' ';
    block->ntaub += marks[4] != ' ';
}

static void print_row(FILE *out, const point *p, const point *q, double value, double r, double s, const char *m)
{
    fprintf(out, "%s %s %15.6lf %15.6lf %10.6lf    %c   %c %c   %c %c\n", p->name, q->name, value, r, s, m[0], m[1],
            m[2], m[3], m[4]);
}

void solution::kindresiduals(int kind, const char *title, const char *heading, measure *list, int n,
                             const testlimits *lim, int *count, kindresult *block)
{
    if (n <= 0) return;
    char marks[5];
    fprintf(out, "%s", title);
    for (int i = 0; i < n; i++) {
        measure *m = list + i;
        const double r = toraw(kind, 2, m->res[0]), s = m->res[1];
        testresidual(r, s, lim, count, block, &m->iflag, marks);
        print_row(out, m->p1, m->p2, toraw(kind, 1, m->val[0]), toraw(kind, 0, r), toraw(kind, 0, s), marks);
    }
    if (n > nclass) histogram(heading, count, n, &block->ichi);
}

// Baselines have no block in temp_res, and their histogram is a heading alone.
void solution::gpsresiduals(const testlimits *lim)
{
    if (ngps <= 0) return;
    char marks[5];
    fprintf(out, "\n\ngps baselines residuals\n");
    for (int i = 0; i < ngps; i++) {
        gpsbase *g = gps + i;
        for (int k = 0; k < 3; k++) {
            testresidual(g->res[k], g->nres[k], lim, hgps1, NULL, g->iflag + k, marks);
            print_row(out, g->p1, g->p2, g->dx[k], g->res[k], g->nres[k], marks);
        }
    }
    if (ngps > nclass) fprintf(out, "\nhistogram of gps baselines residuals\n");
}

// Image coordinates count in the histogram of everything only; theirs is a heading alone.
void solution::photoresiduals(const testlimits *lim, kindresult *block)
{
    if (nobsuv <= 0) return;
    char mu[5], mv[5];
    fprintf(out, "\nphoto coordinates residuals in pixels\n");
    for (int i = 0; i < nobsuv && obsuv1[i].p1; i++) { // those behind were never read
        measure *u = obsuv1 + i, *v = obsuv2 + i;
        testresidual(u->res[0], u->res[1], lim, NULL, block, &u->iflag, mu);
        testresidual(v->res[0], v->res[1], lim, NULL, block, &v->iflag, mv);
        fprintf(out, "%s %s %7.3lf %6.3lf  %c   %c %c   %c %c", u->p1->name, u->p2->name, u->res[0], u->res[1], mu[0],
                mu[1], mu[2], mu[3], mu[4]);
        fprintf(out, "  %7.3lf %6.3lf  %c   %c %c   %c %c\n", v->res[0], v->res[1], mv[0], mv[1], mv[2], mv[3], mv[4]);
    }
    if (nobsuv > nclass) fprintf(out, "\nhistogram of photo coordinates residuals\n");
}

// Counts of n residuals against the normal distribution. The sum is formed from relative
// frequencies and its tail has to reach the confidence level itself.
void solution::histogram(const char *title, const int *count, int n, int *verdict)
{
    double sum = 0.0;
    fprintf(out, "%s", title);
    for (int i = 0; i < nclass; i++) {
        const double f = count[i] / (double)n;
        if (hnorm[i] > 1e-05) sum += (f - hnorm[i]) * (f - hnorm[i]) / hnorm[i];
        fprintf(out, " %3d", count[i]);
    }
    fprintf(out, "\nhistogram of normal distribution\n");
    for (int i = 0; i < nclass; i++) fprintf(out, " %3d", whole(n * hnorm[i] + 0.5));
    const bool fails = distrib::chi2tail(nclass - 2, sum) * 100.0 < confidence;
    fprintf(out, "\n%s the Chi2 goodness of fit test\n", fails ? "Fail" : "Pass");
    *verdict = fails ? -1 : 1;
}

void solution::resanalysis(double sigpost, double dofc)
{
    tempresult none = tempresult(), *result = temp_res ? temp_res : &none;
    const double alpha = 1.0 - confidence / 100.0;
    const int nu = whole(dofc + 0.1);
    const testlimits lim = {sigpost, distrib::normquant(alpha / 2.0), distrib::normquant(alpha / 2.0 / dofc),
                            distrib::tauquant(nu, alpha / 2.0), distrib::tauquant(nu, alpha / 2.0 / dofc)};
    filllimits();
    classprobabilities();
    kindresiduals(KIND_DISTANCE, "\n\ndistance residuals\n", "\nhistogram of distance residuals\n", dist, ndist, &lim,
                  hdist, &result->dist);
    kindresiduals(KIND_HEIGHT_DIFFERENCE, "\n\nheight differences residuals\n",
                  "\nhistogram of height differences residuals\n", difh, ndifh, &lim, hdifh, &result->difh);
    kindresiduals(KIND_DIRECTION, "\nhorizontal direction residuals\n",
                  "\nhistogram of horizontal direction residuals\n", dir1, ndir1, &lim, hdir1, &result->dir1);
    kindresiduals(KIND_VERTICAL, "\nvertical direction residuals\n", "\nhistogram of vertical direction residuals\n",
                  dir2, ndir2, &lim, hdir2, &result->dir2);
    kindresiduals(KIND_AZIMUTH, "\n\nazimuth residuals\n", "\nhistogram of azimuth residuals\n", az, naz, &lim, haz,
                  &result->az);
    gpsresiduals(&lim);
    photoresiduals(&lim, &result->photo);
    if (dim == 1) return;
    int verdict;
    histogram("\nhistogram of all observations residuals\n", hall, ndist + ndifh + ndir1 + ndir2 + naz + 3 * ngps,
              &verdict);
}

} // namespace vornengine
