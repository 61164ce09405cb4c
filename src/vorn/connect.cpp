// Connected networks.
#include "vorn.h"
int vorn::chk_connect() { return 0; }
void vorn::fill_connect() {}
int vorn::set_connect() { return 0; }
