// Histograms of standardised residuals: limits, probabilities and the class of a value.

#include "solution/histograms.h"

#include <math.h>
#include <stdlib.h>

#include "numerics/distributions.h"

namespace vornengine {

void histograms::freestat()
{
    double **const values[] = {&hlim, &hnorm};
    int **const counts[] = {&hall, &hdist, &hdifh, &hdir1, &hdir2, &haz, &hgps1, &hgps2, &hgps3};
    for (double **a : values) {
        free(*a);
        *a = NULL;
    }
    for (int **a : counts) {
        free(*a);
        *a = NULL;
    }
}

void histograms::filllimits()
{
    hlim[0] = -hrange;
    for (int i = 1; i < nclass; i++) hlim[i] = hlim[i - 1] + 2.0 * hrange / nclass;
}

// Class i lies above hlim[i], up to and including hlim[i + 1]; the last class is open.
// A value that is not a number counts as below the first limit.
int histograms::classof(double x)
{
    int i = 0;
    while (i < nclass && x > hlim[i]) i++;
    return i - 1;
}

// Class of a standardised residual; -9999 at or below -hrange, 9999 above hrange.
int histograms::classcode(double r)
{
    const int c = classof(r);
    if (c < 0) return -9999;
    return c == nclass - 1 && r > hrange ? 9999 : c;
}

// Probability of each class under the normal distribution: difference of two tails, or
// for a class that spans zero twice what its lower limit leaves of one half.
void histograms::classprobabilities()
{
    hnorm[0] = distrib::normtail(hrange);
    for (int i = 1; i < nclass; i++) hnorm[i] = distrib::normtail(fabs(hlim[i]));
    for (int i = 0; i < nclass - 1; i++) {
        if (hlim[i + 1] * hlim[i] < 0.0)
            hnorm[i] = 2.0 * (0.5 - hnorm[i]);
        else
            hnorm[i] = fabs(hnorm[i + 1] - hnorm[i]);
    }
    hnorm[nclass - 1] = hnorm[0];
}

} // namespace vornengine
