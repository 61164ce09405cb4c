// Images and baselines.
#include "solution/solution.h"
void solution::norm_photo() {}
int solution::image_coor(int, int, double[3], double[3], double *, double *, double[3][3], double[3][3], int *, int *) { return -1; }
void solution::photorow1(int, int, int, double, const double[3]) {}
void solution::photorow2(int, int, int, double, const double[3], const double[3], double, double, double, double, double, double) {}
void solution::norm_gps() {}
