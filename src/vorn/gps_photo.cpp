// Baselines and images.
#include "vorn.h"
void vorn::count_photo() {}
int vorn::fill_gps() { return 0; }
int vorn::fill_photo() { return 0; }
void vorn::invers(double *, int) {}
