// Observation geometry.
#include "solution/solution.h"
void solution::norm_dist() {}
void solution::norm_difh() {}
void solution::norm_dir1() {}
void solution::norm_dir2() {}
void solution::norm_az() {}
void solution::setrot(int, int, double *, double *, double *, double *, double *, double *) {}
double solution::distance(int, double[3], double[3][3], double[3][3], int *, int *) { return 0.0; }
double solution::dir1comp(int, double[3], double[3], double *, double[3][3], double[3][3], int *, int *) { return 0; }
double solution::dir2comp(int, double[3], double[3], double *, double *, double[3][3], double[3][3], int *, int *) { return 0; }
double solution::azcomp(int) { return 0.0; }
void solution::distrow1(int, double, double, const double[3], const double[3][3], const double[3][3], int, int) {}
void solution::distrow2(int, double *, double, const double[3], const double[3][3], const double[3][3], int, int) {}
void solution::difhrow(int, double, double) {}
void solution::dir1row1(int, double, const double[3], double, double[3], const double[3][3], const double[3][3], int, int) {}
void solution::dir1row2(int, double, const double[3], const double[3], double, const double[3], double, double, double, double, const double[3][3], const double[3][3], int, int) {}
void solution::dir2row1(int, double, const double[3], const double[3], double, double, double[3], const double[3][3], const double[3][3], int, int) {}
void solution::dir2row2(int, double, const double[3], double, double, double, double, const double[3], const double[3][3], const double[3][3], int, int) {}
