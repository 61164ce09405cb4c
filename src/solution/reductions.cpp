// Reductions.
#include "solution/solution.h"
double solution::distred(int) { return 0.0; }
void solution::geomvec(int, int, double[3], double[3], double[3]) {}
double solution::dir1red(int) { return 0.0; }
double solution::dir2red(int) { return 0.0; }
