// Numbering of the unknowns.
#include "vorn.h"
void vorn::trigapprox() {}
void vorn::set_prepare() {}
