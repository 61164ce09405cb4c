// Epochs and the splitting of points.
#include "vorn.h"
void vorn::chk_numbers(int *, int *, int *) {}
void vorn::fill_isplit(int **, int, int, int, int *) {}
void vorn::clean_templump(int *, int *, int **, int, int) {}
