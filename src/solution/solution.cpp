// Frame of the adjustment.
#include "solution/solution.h"
solution::solution(const solverinput &) {}
int solution::iterate() { return -1; }
int solution::inversion() { return -1; }
void solution::normal() {}
int solution::statalloc() { return 0; }
void solution::freestat() {}
void solution::traceobs(int) {}
void solution::setcentre() {}
