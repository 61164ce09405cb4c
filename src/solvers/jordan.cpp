// Gauss-Jordan solver.
#include "solvers/jordan.h"
jordan::jordan(const solverinput &in) : solution(in) {}
void jordan::finish() {}
void jordan::banner() {}
void jordan::debugnormal() {}
int jordan::prepare() { return -1; }
void jordan::zeronormal() {}
int jordan::resolution() { return 0; }
void jordan::addrow(int, int, double) {}
void jordan::buildgps(int, const int[6], const double[3]) {}
int jordan::inverse() { return 0; }
