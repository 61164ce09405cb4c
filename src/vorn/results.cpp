// Results to the host.
#include "vorn.h"
int vorn::backtoproject() { return 0; }
void vorn::fill_obs_stat() {}
int vorn::fill_obs_res() { return 0; }
void vorn::fill_1D(int) {}
void vorn::fill_sta2D(int) {}
void vorn::fill_tar2D(int) {}
void vorn::fill_sta3D(int, int) {}
void vorn::fill_tar3D(int, int) {}
void vorn::flagdecode(int, int *, int *, int *, int *, int *) {}
