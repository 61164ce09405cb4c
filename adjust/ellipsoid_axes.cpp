// Axes of the standard ellipsoid: the eigenvectors of a covariance of three coordinates.

#include <algorithm>
#include <cmath>

#include "adjust/small_svd.h"
#include "adjust/statistics.h"

namespace vornadjust {

ErrorEllipsoid error_ellipsoid(const Covariance &c)
{
    static const int place[3][3] = {{0, 1, 2}, {1, 3, 4}, {2, 4, 5}};
    Dense q(3, 3);
    for (int i = 0; i < 3; i++)
        for (int j = 0; j < 3; j++) q(i, j) = c[place[i][j]];
    const SmallSvd s = small_svd(q);
    ErrorEllipsoid e;
    for (int k = 0; k < 3; k++) {
        e.axis[k] = std::sqrt(s.s[k]);
        for (int i = 0; i < 3; i++) e.direction[k][i] = s.v(i, k);
    }
    return e;
}

} // namespace vornadjust
