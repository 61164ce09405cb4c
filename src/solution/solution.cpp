// Frame of the adjustment: the iteration loop, the order of the observation families in
// one assembly, the inversion with its statistics, and what the least-squares solvers share
// (list of the observations, centre of the datum, misclosure of an imported coordinate).
// Reads and updates the records of the network in place; owns the histogram arrays.

#include "solution/solution.h"

#include <math.h>
#include <stdlib.h>

#include "numerics/memory.h"
#include "vorn/message.h"

namespace vornengine {

solution::solution(const solverinput &in)
    : solverinput(in), centre(), rot(), rhs(NULL), delta(NULL), inv(NULL), confidence(95.0), bycolumn(NULL), nskip(0)
{
}

// One step: zeronormal, normal, resolution, applydelta; the step is applied before it is
// tested. Returns 0 or the code of iterate; *iter is the number of the last step, from 0.
int solution::iterations(int *iter)
{
    double limit = 1.0 / convergence;
    if (limit < 1000000.0) limit = 1000000.0;
    for (int i = 0;; i++) {
        *iter = i;
        zeronormal();
        normal();
        if (resolution()) {
            fprintf(out, "\nProgram stops in resolution\n");
            return -3;
        }
        applydelta(i);
        if (irun < 0) return 0; // least absolute values: one pass
        double largest;
        if (testdelta(i, limit, &largest)) return -4;
        tell(pfeedback, "      Iteration %2d %22.7lf", i, largest);
        if (!(largest > convergence && i < itmax)) return 0;
    }
}

// Largest coordinate step; nuisance and datum unknowns take no part. Returns -1 at the
// first step over the limit. A not-a-number is neither large nor over the limit.
int solution::testdelta(int iter, double limit, double *largest)
{
    *largest = 0.0;
    for (int k = 0; k < nunk1; k++) {
        const double d = fabs(delta[k]);
        if (d > *largest) *largest = d;
        if (d > limit) {
            tell(pfeedback, "Problem at iteration %2d with delta[%d] %lf", iter, k, delta[k]);
            return -1;
        }
    }
    return 0;
}

// Residuals of a run without inversion; a failure is only told.
void solution::plainreport()
{
    if (justout()) tell(pfeedback, "Pb with justout()");
}

int solution::iterate()
{
    banner();
    if (prepare()) {
        fprintf(out, "\nProgram stops in prepare\n");
        finish();
        return -2;
    }
    tell(pfeedback, "Start resolution...");
    if (irun == -2) return 0; // error propagation: no iteration

    int i;
    const int failure = iterations(&i);
    if (failure) {
        finish();
        return failure;
    }
    // The counter alone decides: a step that met the threshold at number itmax is refused too.
    if (i == itmax) {
        fprintf(out, "\nNo convergence after %d iterations\n", i);
        plainreport();
        finish();
        return -4;
    }
    if (irun >= 0) tell(pfeedback, "The solution has converged");
    corrections();
    finalresults(i);
    if (irun == 0) {
        plainreport();
        finish();
    }
    return 0;
}

void solution::normal()
{
    nskip = 0;
    if (ndist > 0) norm_dist();
    if (ndifh > 0) norm_difh();
    if (ndir1 > 0) norm_dir1();
    if (ndir2 > 0) norm_dir2();
    if (naz > 0) norm_az();
    if (ngps > 0) norm_gps();
    if (nfixh > 0) norm_fixh();
    if (nweighted > 0 && icon < 2) norm_weighted(); // an imported net brings its own weights
    if (nlump > 0) norm_lump();
    if (nobsuv > 0) norm_photo();
    if (idebug == 9) {
        fprintf(out, "start debugnormal...\n");
        debugnormal();
        fprintf(out, "end debugnormal!\n");
    }
}

// Root of the mean a-priori variance, each component of an observation counted once; not a
// number without observations.
static double mean_sigma(const solverinput *in)
{
    const double n[] = {(double)in->ndist, (double)in->ndifh,      (double)in->ndir1,       (double)in->ndir2,
                        (double)in->naz,   3.0 * (double)in->ngps, 2.0 * (double)in->nobsuv};
    const double s[] = {in->sdist, in->sdifh, in->sdir1, in->sdir2, in->saz, in->sgps, in->suv};
    double sum = 0.0, count = 0.0;
    for (int k = 0; k < 7; k++) {
        sum += n[k] * s[k] * s[k];
        count += n[k];
    }
    return sqrt(sum / count);
}

// Number of histogram classes: the redundancy where it is below the usual number, at least 3.
static int classes(int usual, double dofc)
{
    const double c = dofc + 0.1;
    if (c < (double)usual) usual = c < 3.0 ? 3 : (int)c;
    return usual < 3 ? 3 : usual;
}

// Residuals, variance factor and tests. *sigpost is the a-posteriori standard deviation,
// -1.0 without redundancy: then nothing is tested. Returns 0, or -1 without memory.
int solution::statistics(double *sigpost)
{
    double dofc = 0.0, vdist = 0.0, vdifh = 0.0, vdir1 = 0.0, vdir2 = 0.0, vaz = 0.0, vgps = 0.0, vphoto = 0.0;
    sigma0 = mean_sigma(this);
    const double sum = rescov(&dofc, &vdist, &vdifh, &vdir1, &vdir2, &vaz, &vgps, &vphoto);
    *sigpost = variances(sum, dofc, vdist, vdifh, vdir1, vdir2, vaz, vgps, vphoto);
    if (*sigpost == -1.0) {
        tell(pfeedback, "      No degree of freedom -> no use of statistics");
        return 0;
    }
    tell(pfeedback, "      Sigma a posteriori %16.7lf", *sigpost);
    nclass = classes(nclass, dofc);
    if (statalloc() < 0) {
        tell(pfeedback, "statalloc () - memory allocation failed");
        return -1;
    }
    resanalysis(*sigpost, dofc);
    return 0;
}

int solution::inversion()
{
    tell(pfeedback, "Start inversion...");
    if (inverse()) {
        fprintf(out, "\nProgram stops in inverse\n");
        finish();
        return -5;
    }
    double f = 1.0; // error propagation: plain cofactors
    if (irun != -2 && statistics(&f)) {
        finish();
        return -1;
    }
    const bool tested = f != -1.0;
    stddev(tested ? f : 1.0);
    if (tested && (icon == 1 || icon == 3)) writeQcon();
    finish();
    return 0;
}

// Takes the histogram arrays. Returns 0, or after finish() -6 (common arrays, distances,
// height differences, directions, vertical angles), -7 (azimuths), -8 (baselines).
int solution::statalloc()
{
    struct counter {
        int **array;
        int n;
        int code;
    };
    const counter counters[] = {{&hall, 1, -6},      {&hdist, ndist, -6}, {&hdifh, ndifh, -6},
                                {&hdir1, ndir1, -6}, {&hdir2, ndir2, -6}, {&haz, naz, -7},
                                {&hgps1, ngps, -8},  {&hgps2, ngps, -8},  {&hgps3, ngps, -8}};
    freestat();
    hlim = (double *)zeroed(nclass, sizeof *hlim);
    hnorm = (double *)zeroed(nclass, sizeof *hnorm);
    int code = hlim && hnorm ? 0 : -6;
    for (size_t k = 0; code == 0 && k < sizeof counters / sizeof counters[0]; k++) {
        if (counters[k].n <= 0) continue;
        *counters[k].array = (int *)zeroed(nclass, sizeof(int));
        if (!*counters[k].array) code = counters[k].code;
    }
    if (code) finish();
    return code;
}

// Mean of each coordinate over the points that use it for the datum, 0 where none does.
// Nothing to do without datum rows and in dimension 1.
void solution::setcentre()
{
    if (ndatum == 0 || dim == 1) return;
    for (int k = 0; k < dim; k++) {
        double sum = 0.0;
        int n = 0;
        for (const point *p = points; p < points + npoints; p++) {
            if (p->defdatum[k] != DATUM_USED) continue;
            sum += p->xpt[k];
            n++;
        }
        centre[k] = n > 0 ? sum / n : 0.0;
    }
}

// Looks up the coordinates by their unknowns: bycolumn[col + 1] is 3 i + k + 1 for the first
// coordinate k of a point i whose unknown is col, 0 when none has it. Entry 0 is the first
// coordinate that is no unknown.
int solution::indeximport()
{
    if (icon != 2 && icon != 3) return 0;
    bycolumn = (int *)zeroed((long long)nunk1 + 1, sizeof *bycolumn);
    if (!bycolumn) return -1;
    for (int i = 0; i < npoints; i++)
        for (int k = 0; k < 3; k++) {
            const int col = points[i].n0[k];
            if (col >= -1 && col < nunk1 && bycolumn[col + 1] == 0) bycolumn[col + 1] = 3 * i + k + 1;
        }
    return 0;
}

void solution::dropimport()
{
    free(bycolumn);
    bycolumn = NULL;
}

// Initial less current value of the coordinate with the unknown col; previous when no
// coordinate has it.
double solution::importdiff(int col, double previous)
{
    const int at = bycolumn && col >= -1 && col < nunk1 ? bycolumn[col + 1] : 0;
    if (at == 0) return previous;
    const point *p = points + (at - 1) / 3;
    const int k = (at - 1) % 3;
    return p->x0[k] - p->xpt[k];
}

} // namespace vornengine
