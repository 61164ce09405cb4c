// Lump and constraint rows.
#include "solution/solution.h"
void solution::lumpdelta(int, int, double[3], double[3][3], double[3][3], int *, int *) {}
void solution::lumppoint(int, int, double[3], double[3][3]) {}
void solution::lumpderiv(int, int, const double[3], const double[3][3], double[3][7]) {}
void solution::lumprow(int, double, const double[3], const double[3][7]) {}
void solution::norm_lump() {}
void solution::norm_fixh() {}
void solution::norm_weighted() {}
