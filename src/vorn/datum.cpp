// Datum check.
#include "vorn.h"
int vorn::datumcheck() { return 0; }
