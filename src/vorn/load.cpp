// Loading pipeline: the order in which the records of the host become the network.
#include "vorn.h"
#include "vorn/records.h"
int vorn::fill_vorn() { return -1; }
int vorn::verif() { return 0; }
int vorn::vornallocate() { return 0; }
void vorn::clean() {}
