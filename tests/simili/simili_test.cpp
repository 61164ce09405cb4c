#include "simili/scene.h"

namespace {

// Independent solution for equal weights: R is the orthogonal factor of sum b a', found by
// Newton's iteration for the polar decomposition (Higham 1986); s = sum b.Ra / sum a.a.
struct Closed {
    Mat3 r;
    double s;
    Vec3 t;
};

// Cofactors of m: det(m) times the transposed inverse; of rank one, between both normals, for
// a matrix of rank two.
Mat3 cofactors(const Mat3 &m)
{
    Mat3 c;
    for (int i = 0; i < 3; i++)
        for (int j = 0; j < 3; j++) {
            const int i1 = (i + 1) % 3, i2 = (i + 2) % 3, j1 = (j + 1) % 3, j2 = (j + 2) % 3;
            c[i][j] = m[i1][j1] * m[i2][j2] - m[i1][j2] * m[i2][j1];
        }
    return c;
}

Mat3 inverse_transposed(const Mat3 &m)
{
    Mat3 c = cofactors(m);
    const double det = m[0][0] * c[0][0] + m[0][1] * c[0][1] + m[0][2] * c[0][2];
    for (Vec3 &row : c)
        for (double &x : row) x /= det;
    return c;
}

class Similarity : public Scene {
protected:
    // The closed solution over points of one place in both lists.
    Closed closed(bool turn, bool stretch, double held = 1.0)
    {
        const double n = (double)ref.size();
        Vec3 ca{}, cb{};
        for (size_t i = 0; i < ref.size(); i++)
            for (int k = 0; k < 3; k++) ca[k] += ref[i].x[k] / n, cb[k] += end[i].x[k] / n;
        Mat3 h{};
        double aa = 0, ab = 0;
        for (size_t i = 0; i < ref.size(); i++)
            for (int k = 0; k < 3; k++) {
                aa += (ref[i].x[k] - ca[k]) * (ref[i].x[k] - ca[k]);
                for (int l = 0; l < 3; l++) h[k][l] += (end[i].x[k] - cb[k]) * (ref[i].x[l] - ca[l]) / n;
            }
        Closed c{rotation(0, 0, 0), held, {}};
        if (turn) {
            // the cofactors have the same orthogonal factor and fill the rank of three points
            const Mat3 cof = cofactors(h);
            double size = 0;
            for (const Vec3 &row : cof)
                size = std::max({size, std::fabs(row[0]), std::fabs(row[1]), std::fabs(row[2])});
            for (int k = 0; k < 3; k++)
                for (int l = 0; l < 3; l++) c.r[k][l] = h[k][l] + cof[k][l] / size;
            for (int pass = 0; pass < 40; pass++) {
                const Mat3 m = inverse_transposed(c.r);
                for (int k = 0; k < 3; k++)
                    for (int l = 0; l < 3; l++) c.r[k][l] = (c.r[k][l] + m[k][l]) / 2;
            }
        }
        for (int k = 0; k < 3; k++)
            for (int l = 0; l < 3; l++) ab += n * c.r[k][l] * h[k][l];
        if (stretch) c.s = ab / aa;
        const Vec3 u = moved(ca, {0, 0, 0}, c.r, c.s);
        for (int k = 0; k < 3; k++) c.t[k] = cb[k] - u[k];
        return c;
    }

    void transform(int rotate)
    {
        make(rotate);
        ASSERT_EQ(run->startsimili(), 0);
        ASSERT_EQ(run->runsimili(), 0);
    }
    void transform(int rotate, double held)
    {
        make(rotate, held);
        ASSERT_EQ(run->startsimili(), 0);
        ASSERT_EQ(run->runsimili(), 0);
    }

    void expect(const Closed &c, double tolerance)
    {
        const Mat3 r = rotation(res[3], res[4], res[5]);
        for (int i = 0; i < 3; i++)
            for (int j = 0; j < 3; j++) EXPECT_NEAR(r[i][j], c.r[i][j], tolerance / 10) << "R " << i << j;
        for (int k = 0; k < 3; k++) EXPECT_NEAR(res[k], c.t[k], tolerance) << "t " << k;
        EXPECT_NEAR(res[6], c.s, tolerance / 10);
    }

    // What the pass before the last left to do: the passes end when the sum of squares changes
    // by less than 1e-6 of itself.
    const double settled = 1e-6;

    int passes()
    {
        const std::string text = report();
        return std::stoi(text.substr(text.find("\nAfter ") + 7));
    }
};

TEST_F(Similarity, IsTheClosedSolutionForEqualWeights)
{
    std::mt19937 random(11);
    std::uniform_real_distribution<double> angle(-3.1, 3.1), shift(-1000, 1000), scale(0.5, 2);
    for (unsigned i = 0; i < 60; i++) {
        const Mat3 r = rotation(angle(random), angle(random) / 2.2, angle(random));
        points(3 + (int)i % 20, {shift(random), shift(random), shift(random)}, r, scale(random), 0.005, i);
        transform(1);
        expect(closed(true, true), settled);
        EXPECT_LT(passes(), 10);
    }
}

TEST_F(Similarity, HoldsTheScale)
{
    for (unsigned i = 0; i < 20; i++) {
        points(4 + (int)i, {10, 20, 30}, rotation(2.0, -1.2, 0.1 * i), 1.001, 0.005, i);
        transform(1, 1.0);
        expect(closed(true, false), settled);
        EXPECT_EQ(res[6], 1.0);
        transform(1, 1.01);
        expect(closed(true, false, 1.01), settled);
        EXPECT_EQ(res[6], 1.01);
    }
}

TEST_F(Similarity, HoldsTheRotation)
{
    for (unsigned i = 0; i < 20; i++) {
        points(4 + (int)i, {10, 20, 30}, rotation(1e-4, -2e-4, 1e-4), 1.5, 0.005, i);
        transform(0);
        expect(closed(false, true), 1e-9); // linear: rounding of some 30 m
        EXPECT_EQ(res[3], 0.0);
        EXPECT_EQ(res[4], 0.0);
        EXPECT_EQ(res[5], 0.0);
    }
}

TEST_F(Similarity, HoldsRotationAndScale)
{
    for (unsigned i = 0; i < 20; i++) {
        points(3 + (int)i, {10, 20, 30}, rotation(0, 0, 0), 1.0, 0.005, i);
        transform(0, 0.99);
        expect(closed(false, false, 0.99), 1e-9);
        EXPECT_EQ(res[6], 0.99);
    }
}

TEST_F(Similarity, IsFoundNearTheGimbalCase)
{
    for (const double cosine : {0.12, 0.1, 0.05, 0.01, 1e-3})
        for (const double sign : {1.0, -1.0}) {
            points(12, {1, 2, 3}, rotation(0.7, sign * std::acos(cosine), -2.0), 1.2, 0.001);
            transform(1);
            expect(closed(true, true), settled);
        }
}

TEST_F(Similarity, EndsInTheGimbalCaseItself)
{
    for (const double sign : {1.0, -1.0}) {
        points(12, {1, 2, 3}, rotation(0.7, sign * std::acos(0.0), -2.0), 1.0);
        transform(1);
        EXPECT_LE(passes(), 50);
    }
}

TEST_F(Similarity, IsFoundForPointsThatLieInAPlane)
{
    ref = end = {};
    const Mat3 r = rotation(0.2, 0.3, 0.4);
    const Vec3 corners[] = {{0, 0, 0}, {10, 0, 0}, {0, 10, 0}, {10, 10, 0}};
    for (const Vec3 &x : corners) {
        ref.push_back(named(std::string(1, (char)('A' + ref.size())), x));
        end.push_back(named(ref.back().name, moved(x, {5, 6, 7}, r, 2.0)));
    }
    transform(1);
    expect({r, 2.0, {5, 6, 7}}, 1e-9);
}

TEST_F(Similarity, UsesOnlyThePointsOfBothLists)
{
    points(20, {10, 20, 30}, rotation(0.5, 0.6, 0.7), 1.1, 0.005);
    ref.erase(ref.begin(), ref.begin() + 4); // P0 to P3
    std::swap(end[0], end[12]);              // order has no meaning
    end.push_back(named("P3x", {1e6, 1e6, 1e6}));
    ref.push_back(named("only here", {-1e6, 0, 5}));
    transform(1);
    const std::string text = report();
    EXPECT_NE(text.find("\n7 Parameter Transformation results based on 16 pairs\n"), std::string::npos);
    ref.pop_back();
    end.pop_back();
    std::swap(end[0], end[12]);
    end.erase(end.begin(), end.begin() + 4);
    expect(closed(true, true), settled);
}

// Without rotation and scale the translation of each axis is the mean of the differences with
// the weights f^2, 1 / f^2 = 1 / sx^2 of the second + 1 / sx^2 of the first point.
TEST_F(Similarity, WeighsEachCoordinateByTheStandardDeviationsOfBothPoints)
{
    points(6, {1, 2, 3}, rotation(0, 0, 0), 1.0, 0.5);
    std::mt19937 random(4);
    std::uniform_real_distribution<double> sigma(0.001, 0.1);
    for (auto *points : {&ref, &end})
        for (simpoint &p : *points)
            for (double &sx : p.sx) sx = sigma(random);
    transform(0, 1.0);
    for (int k = 0; k < 3; k++) {
        double sum = 0, weight = 0;
        for (size_t i = 0; i < ref.size(); i++) {
            const double w = 1 / (std::pow(end[i].sx[k], -2) + std::pow(ref[i].sx[k], -2));
            sum += w * (end[i].x[k] - ref[i].x[k]);
            weight += w;
        }
        EXPECT_NEAR(res[k], sum / weight, 1e-12);
    }
}

// At the solution the sum of f^2 v^2, with f held, has no slope by any parameter.
TEST_F(Similarity, LeavesTheWeightedSumOfSquaresWithoutSlope)
{
    points(10, {10, 20, 30}, rotation(0.5, -0.6, 2.7), 1.2, 0.01);
    std::mt19937 random(4);
    std::uniform_real_distribution<double> sigma(0.5, 2);
    for (auto *points : {&ref, &end})
        for (simpoint &p : *points)
            for (double &sx : p.sx) sx = sigma(random);
    transform(1);
    const auto sum = [&](const double *q) {
        const Mat3 f = rotation(res[3], res[4], res[5]), r = rotation(q[3], q[4], q[5]);
        double total = 0;
        for (size_t i = 0; i < ref.size(); i++) {
            const Vec3 y = moved({ref[i].x[0], ref[i].x[1], ref[i].x[2]}, {q[0], q[1], q[2]}, r, q[6]);
            for (int k = 0; k < 3; k++) {
                double w = std::pow(end[i].sx[k], -2);
                for (int l = 0; l < 3; l++) w += std::pow(res[6] * f[k][l] / ref[i].sx[l], 2);
                total += (end[i].x[k] - y[k]) * (end[i].x[k] - y[k]) / w;
            }
        }
        return total;
    };
    for (int j = 0; j < 7; j++) {
        const double h = 1e-4;
        double up[7], down[7];
        std::copy(res, res + 7, up), std::copy(res, res + 7, down);
        up[j] += h, down[j] -= h;
        const double slope = (sum(up) - sum(down)) / (2 * h), curve = (sum(up) - 2 * sum(res) + sum(down)) / (h * h);
        EXPECT_LT(std::fabs(slope / curve), 1e-6) << j; // metres and radians from the least sum
    }
}

TEST_F(Similarity, RaisesTheStandardDeviationsOfPairedPointsToOneMicrometre)
{
    points(4, {}, rotation(0, 0, 0), 1.0);
    ref.push_back(named("alone", {}, {1e-9, 1e-9, 1e-9}));
    ref[0].sx[1] = 1e-9;
    end[2].sx[0] = -3.0;
    end[3].sx[2] = 1.0e-06;
    ref[3].sx[2] = 2.0e-06;
    transform(1);
    EXPECT_EQ(ref[0].sx[1], 1.0e-06);
    EXPECT_EQ(end[2].sx[0], 1.0e-06);
    EXPECT_EQ(end[3].sx[2], 1.0e-06);
    EXPECT_EQ(ref[3].sx[2], 2.0e-06);
    EXPECT_EQ(ref[4].sx[0], 1e-9);
    EXPECT_EQ(ref[0].sx[0], 0.001);
}

TEST_F(Similarity, RunsWithAllStandardDeviationsZero)
{
    points(8, {10, 20, 30}, rotation(0.5, 0.6, 0.7), 1.1, 0.005);
    for (auto *points : {&ref, &end})
        for (simpoint &p : *points) p.sx[0] = p.sx[1] = p.sx[2] = 0.0;
    transform(1);
    expect(closed(true, true), settled);
    EXPECT_EQ(ref[0].sx[0], 1.0);
}

TEST_F(Similarity, TakesAnyFlagButZeroAsARotationToEstimate)
{
    points(5, {10, 20, 30}, rotation(0.5, 0.6, 0.7), 1.0);
    for (const int flag : {1, 2, -1, 99}) {
        make(flag);
        EXPECT_EQ(SIM(*run, irot), 1);
        EXPECT_EQ(run->startsimili(), 0);
        EXPECT_EQ(run->runsimili(), 0);
        EXPECT_NEAR(res[3], 0.5, 1e-9);
    }
}

TEST_F(Similarity, BeginsWithNothingFoundAndTheScaleAsGiven)
{
    points(5, {}, rotation(0, 0, 0), 1.0);
    simili &a = make(0);
    EXPECT_EQ(SIM(a, irot), 0);
    EXPECT_EQ(SIM(a, iscale), 1);
    EXPECT_EQ(SIM(a, scale), 1.0);
    EXPECT_EQ(SIM(a, nref), 5);
    EXPECT_EQ(SIM(a, nend), 5);
    EXPECT_EQ(SIM(a, pref), ref.data());
    EXPECT_EQ(SIM(a, pend), end.data());
    EXPECT_EQ(SIM(a, res), res);
    EXPECT_EQ(SIM(a, out), nullptr);
    EXPECT_EQ(SIM(a, npair), 0);
    EXPECT_EQ(SIM(a, pair), nullptr);
    EXPECT_EQ(SIM(a, pi), std::acos(-1.0));
    simili &b = make(7, 2.5);
    EXPECT_EQ(SIM(b, irot), 1);
    EXPECT_EQ(SIM(b, iscale), 0);
    EXPECT_EQ(SIM(b, scale), 2.5);
}

TEST_F(Similarity, NumbersItsParameters)
{
    points(5, {}, rotation(0, 0, 0), 1.0);
    transform(1);
    EXPECT_EQ(SIM(*run, irot), 3);
    EXPECT_EQ(SIM(*run, iscale), 6);
    EXPECT_EQ(SIM(*run, nparam), 7);
    transform(1, 1.0);
    EXPECT_EQ(SIM(*run, irot), 3);
    EXPECT_EQ(SIM(*run, iscale), 0);
    EXPECT_EQ(SIM(*run, nparam), 6);
    transform(0);
    EXPECT_EQ(SIM(*run, irot), 0);
    EXPECT_EQ(SIM(*run, iscale), 3);
    EXPECT_EQ(SIM(*run, nparam), 4);
    transform(0, 1.0);
    EXPECT_EQ(SIM(*run, iscale), 0);
    EXPECT_EQ(SIM(*run, nparam), 3);
}

TEST_F(Similarity, GivesTheSameWhenItIsRunAgain)
{
    points(5, {10, 20, 30}, rotation(0.5, 0.6, 0.7), 1.1, 0.005);
    transform(1);
    double first[7];
    std::copy(res, res + 7, first);
    EXPECT_EQ(run->runsimili(), 0);
    for (int i = 0; i < 7; i++) EXPECT_EQ(res[i], first[i]);
}

// Needs what startsimili makes.
TEST_F(Similarity, IsNotRunWithoutAStart)
{
    points(5, {}, rotation(0, 0, 0), 1.0);
    EXPECT_EQ(make(1).runsimili(), 1);
    EXPECT_EQ(res[6], -7.0);
    EXPECT_FALSE(std::filesystem::exists("simili.out"));
}

TEST_F(Similarity, FailsByItsCodeWhenMemoryIsMissing)
{
    points(5, {}, rotation(0, 0, 0), 1.0);
    const int code[] = {1, 1, 2, 2, 2, 2}; // a, b, S, V, the two of the eigenvectors
    for (int n = 1; n <= 6; n++) {
        make(1);
        ASSERT_EQ(run->startsimili(), 0);
        fail_allocation(n);
        EXPECT_EQ(run->runsimili(), code[n - 1]) << n;
        fail_allocation(0);
        EXPECT_EQ(res[0], -1.0);
        EXPECT_EQ(report(), "simili.out\n\n");
        EXPECT_EQ(SIM(*run, irot), 1);
    }
    ASSERT_EQ(make(1).startsimili(), 0);
    fail_allocation(0);
    EXPECT_EQ(run->runsimili(), 0);
    EXPECT_EQ(allocations(), 6);
}

} // namespace
