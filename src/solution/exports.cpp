// Exported files.
#include "solution/solution.h"
void solution::writeQcon() {}
void solution::input_for_tessalpin(FILE *f) { fclose(f); }
