// Motion of lumps after a run.
#include "vorn.h"
int vorn::usesimili(int) { return 0; }
void vorn::backtrans(int, int, double[3][3]) {}
void vorn::backsol(int, int, double[3][3], int) {}
