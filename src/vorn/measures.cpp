// Measure table.
#include "vorn.h"
int vorn::fill_measure(int, int **, int, int, int) { return 0; }
