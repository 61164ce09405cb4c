// Forward differentiation: a number with its derivatives by N variables, carried through the formula of an observation.
//
//   Jet<2> x = Jet<2>::variable(3.0, 0), y = Jet<2>::variable(4.0, 1);
//   Jet<2> r = sqrt(x * x + y * y);     // r.v is 5, r.d is {0.6, 0.8}
//
// Every operation is the chain rule for that operation; the functions have the derivatives of their mathematical
// namesakes and, like these, give no numbers outside their range (sqrt at 0, atan2 at the origin).

#ifndef VORNADJUST_JET_H
#define VORNADJUST_JET_H

#include <cmath>

namespace vornadjust {

template <int N> struct Jet {
    double v = 0.0;
    double d[N] = {};

    Jet() = default;
    Jet(double value) : v(value) {} // a constant

    static Jet variable(double value, int index)
    {
        Jet x(value);
        x.d[index] = 1.0;
        return x;
    }
};

// A number alone, for formulas whose derivatives are not wanted.
template <> struct Jet<0> {
    double v = 0.0;

    Jet() = default;
    Jet(double value) : v(value) {}

    static Jet variable(double value, int) { return value; }
};

inline Jet<0> chain(double v, double, const Jet<0> &) { return v; }
inline Jet<0> chain(double v, double, const Jet<0> &, double, const Jet<0> &) { return v; }

// value v, derivatives a x'
template <int N> Jet<N> chain(double v, double a, const Jet<N> &x)
{
    Jet<N> r(v);
    for (int i = 0; i < N; i++) r.d[i] = a * x.d[i];
    return r;
}

// value v, derivatives a x' + b y'
template <int N> Jet<N> chain(double v, double a, const Jet<N> &x, double b, const Jet<N> &y)
{
    Jet<N> r(v);
    for (int i = 0; i < N; i++) r.d[i] = a * x.d[i] + b * y.d[i];
    return r;
}

template <int N> Jet<N> operator+(const Jet<N> &x, const Jet<N> &y) { return chain(x.v + y.v, 1.0, x, 1.0, y); }
template <int N> Jet<N> operator-(const Jet<N> &x, const Jet<N> &y) { return chain(x.v - y.v, 1.0, x, -1.0, y); }
template <int N> Jet<N> operator*(const Jet<N> &x, const Jet<N> &y) { return chain(x.v * y.v, y.v, x, x.v, y); }
template <int N> Jet<N> operator/(const Jet<N> &x, const Jet<N> &y)
{
    const double q = x.v / y.v;
    return chain(q, 1.0 / y.v, x, -q / y.v, y);
}

template <int N> Jet<N> operator-(const Jet<N> &x) { return chain(-x.v, -1.0, x); }
template <int N> Jet<N> operator+(const Jet<N> &x, double c) { return chain(x.v + c, 1.0, x); }
template <int N> Jet<N> operator+(double c, const Jet<N> &x) { return x + c; }
template <int N> Jet<N> operator-(const Jet<N> &x, double c) { return x + -c; }
template <int N> Jet<N> operator-(double c, const Jet<N> &x) { return chain(c - x.v, -1.0, x); }
template <int N> Jet<N> operator*(double c, const Jet<N> &x) { return chain(c * x.v, c, x); }
template <int N> Jet<N> operator*(const Jet<N> &x, double c) { return c * x; }
template <int N> Jet<N> operator/(const Jet<N> &x, double c) { return chain(x.v / c, 1.0 / c, x); }
template <int N> Jet<N> operator/(double c, const Jet<N> &x) { return chain(c / x.v, -c / (x.v * x.v), x); }

template <int N> Jet<N> sqrt(const Jet<N> &x)
{
    const double r = std::sqrt(x.v);
    return chain(r, 0.5 / r, x);
}

template <int N> Jet<N> sin(const Jet<N> &x) { return chain(std::sin(x.v), std::cos(x.v), x); }
template <int N> Jet<N> cos(const Jet<N> &x) { return chain(std::cos(x.v), -std::sin(x.v), x); }

template <int N> Jet<N> atan2(const Jet<N> &y, const Jet<N> &x)
{
    const double s = x.v * x.v + y.v * y.v;
    return chain(std::atan2(y.v, x.v), x.v / s, y, -y.v / s, x);
}

// The value without its derivatives.
inline double value_of(double x) { return x; }
template <int N> double value_of(const Jet<N> &x) { return x.v; }

} // namespace vornadjust

#endif
