// Summaries and traces.
#include "vorn.h"
void vorn::summary() {}
void vorn::summary2() {}
void vorn::outputapprox() {}
void vorn::showpoints() {}
void vorn::showmeasures() {}
