// Histograms of standardised residuals.

#ifndef VORN_HISTOGRAMS_H
#define VORN_HISTOGRAMS_H

#include <stddef.h>

namespace vornengine {

// Class i reaches from hlim[i], which it excludes, to hlim[i + 1]; the last one is open.
// Owns its arrays.
struct histograms {
    histograms() = default;
    ~histograms() { freestat(); }
    histograms(const histograms &) = delete;
    histograms &operator=(const histograms &) = delete;

    void freestat();           // releases the arrays
    void filllimits();         // class limits
    void classprobabilities(); // of the normal distribution; the limits are filled
    int classof(double x);     // class of a value, -1 at or below the first limit
    int classcode(double r);   // the same, -9999 at or below -hrange, 9999 above hrange

    int nclass = 10;
    double hrange = 5.0;                // half range in standard deviations
    double *hlim = NULL, *hnorm = NULL; // [nclass] class limits, class probabilities
    int *hall = NULL;                   // [nclass] counts: all kinds
    int *hdist = NULL, *hdifh = NULL;   // [nclass] those of a kind, null without observations
    int *hdir1 = NULL, *hdir2 = NULL, *haz = NULL;
    int *hgps1 = NULL, *hgps2 = NULL, *hgps3 = NULL;
};

} // namespace vornengine

#endif
