// Similarity transformation in space between two lists of named points: construction, and
// the run from the first rotation to the report.

#include "simili/simili.h"

#include <math.h>
#include <string.h>

#include "numerics/packed.h"

namespace vornengine {

const double LEAST_SIGMA = 1.0e-06; // metres

simili::simili(int n1, simpoint *p1, int n2, simpoint *p2, double *result, int rotate)
    : nref(n1 > 0 ? n1 : 0), nend(n2 > 0 ? n2 : 0), pref(p1), pend(p2), res(result), out(NULL), ireport(0), npair(0),
      pair(NULL), pi(4.0 * atan(1.0)), irot(rotate != 0), iscale(1), nparam(0), scale(1.0)
{
}

simili::simili(int n1, simpoint *p1, int n2, simpoint *p2, double *result, int rotate, double held)
    : simili(n1, p1, n2, p2, result, rotate)
{
    iscale = 0;
    scale = held;
}

simili::~simili() { release(); }

// Place of entry (i, j) in a packed symmetric matrix.
int simili::packidx(int i, int j)
{
    return (int)(j < i ? packed_place((size_t)i, (size_t)j) : packed_place((size_t)j, (size_t)i));
}

// With the rotation held: shows what it would have been, then takes none.
void simili::holdrotation(double angle[3], double R[3][3])
{
    fprintf(out, "\nChecks on the significance of rotations\n");
    fprintf(out, "VORN-lump convention in radians\n");
    for (int k = 0; k < 3; k++) {
        fprintf(out, "%7d%22.6lf\n", k, angle[k]);
        angle[k] = 0.0;
        for (int l = 0; l < 3; l++) R[k][l] = k == l ? 1.0 : 0.0;
    }
    fprintf(out, "\n");
}

static void raise_sigmas(simpoint *p)
{
    for (int k = 0; k < 3; k++)
        if (p->sx[k] < LEAST_SIGMA) p->sx[k] = LEAST_SIGMA;
}

// Numbers the parameters: irot and iscale become their places in p.
void simili::number()
{
    nparam = 3;
    if (irot != 0) {
        irot = 3;
        nparam += 3;
    }
    if (iscale != 0) {
        iscale = irot == 0 ? 3 : 6;
        nparam++;
    }
}

// First parameters, from the means of both lists, the rotation and its angles. Without a
// rotation the translation starts at zero.
void simili::startvalues(const double ca[3], const double cb[3], const double R[3][3], const double angle[3],
                         double p[7])
{
    memset(p, 0, 7 * sizeof *p);
    for (int k = 0; k < 3 && irot != 0; k++) {
        p[3 + k] = angle[k];
        p[k] = cb[k] - scale * (R[k][0] * ca[0] + R[k][1] * ca[1] + R[k][2] * ca[2]);
    }
    if (iscale != 0) p[iscale] = scale;
}

// Prints n values and stores them.
static void give(FILE *out, const double *value, int n, double *to)
{
    for (int i = 0; i < n; i++) {
        to[i] = value[i];
        fprintf(out, "%15.6lf\n", value[i]);
    }
}

// Writes the parameters into the report and into res.
void simili::report(int npass, const double p[7])
{
    fprintf(out, "\nAfter %d iterations\n", npass);
    fprintf(out, "\n%d Parameter Transformation results based on %d pairs\n", nparam, npair);
    fprintf(out, "\nTranslation\n");
    give(out, p, 3, res);
    fprintf(out, iscale == 0 ? "\nScale Factor held fixed\n" : "\nScale Factor\n");
    give(out, iscale == 0 ? &scale : p + iscale, 1, res + 6);
    res[3] = res[4] = res[5] = 0.0;
    if (irot == 0) return;
    fprintf(out, "\nRotation (VORN-lump convention in radians)\n");
    give(out, p + 3, 3, res + 3);
}

int simili::runsimili()
{
    if (!pair) return 1;
    double ca[3], cb[3], R[3][3] = {}, angle[3] = {}, p[7];
    const int code = firstrotation(ca, cb, R);
    if (code != 0) return code;
    rotangles(R, &angle[0], &angle[1], &angle[2]);
    if (irot == 0) holdrotation(angle, R);
    for (int i = 0; i < npair; i++) {
        raise_sigmas(pair[i].first);
        raise_sigmas(pair[i].second);
    }
    number();
    startvalues(ca, cb, R, angle, p);
    const int npass = refine(p, R);
    report(npass, p);
    simresidual(1, p, R);
    return 0;
}

} // namespace vornengine
