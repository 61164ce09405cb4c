#include "simili/scene.h"

namespace {

// Parameters of a model: places of the rotation and the scale in p, 0 when held.
struct Model {
    int irot, iscale, nparam;
};
const Model all{3, 6, 7}, noscale{3, 0, 6}, norotation{0, 3, 4}, translation{0, 0, 3};

class Refine : public Scene {
protected:
    void SetUp() override
    {
        points(5, {100, -50, 20}, rotation(0.4, -0.6, 2.5), 1.3, 0.5);
        std::mt19937 random(9);
        std::uniform_real_distribution<double> sigma(0.5, 2);
        for (auto *points : {&ref, &end})
            for (simpoint &point : *points)
                for (double &sx : point.sx) sx = sigma(random);
    }

    // A run with the given model at p, for all pairs.
    void set(const Model &m, double held = 1.1)
    {
        make(m.irot, held);
        ASSERT_EQ(run->startsimili(), 0);
        SIM(*run, irot) = m.irot;
        SIM(*run, iscale) = m.iscale;
        SIM(*run, nparam) = m.nparam;
        model = m;
        scale = held;
        p = {90, -40, 10, 0.3, -0.5, 2.4, 1.2};
        if (m.irot == 0) p = {90, -40, 10, 1.2, 0, 0, 0};
    }

    // v(k) of a pair at q, from the definition of the transformation.
    Vec3 misclosure(size_t i, const std::array<double, 7> &q) const
    {
        const Mat3 r = model.irot ? rotation(q[3], q[4], q[5]) : rotation(0, 0, 0);
        const double s = model.iscale ? q[model.iscale] : scale;
        const Vec3 y = moved({ref[i].x[0], ref[i].x[1], ref[i].x[2]}, {q[0], q[1], q[2]}, r, s);
        return {end[i].x[0] - y[0], end[i].x[1] - y[1], end[i].x[2] - y[2]};
    }

    // f of each coordinate at p.
    Vec3 factor(size_t i) const
    {
        const Mat3 r = model.irot ? rotation(p[3], p[4], p[5]) : rotation(0, 0, 0);
        const double s = model.iscale ? p[model.iscale] : scale;
        Vec3 f;
        for (int k = 0; k < 3; k++) {
            double q = std::pow(end[i].sx[k], -2);
            for (int l = 0; l < 3; l++) q += std::pow(s * r[k][l] / ref[i].sx[l], 2);
            f[k] = 1 / std::sqrt(q);
        }
        return f;
    }

    // N and t from difference quotients of the misclosures, and those of the run.
    void compare(double tolerance = 2e-6) // step 1e-5: the quotient errs by some 1e-9 of 50 m, squared over 15 rows
    {
        std::vector<double> N(28), t(7), found(28), tfound(7);
        for (size_t i = 0; i < ref.size(); i++) {
            const Vec3 f = factor(i), v = misclosure(i, p);
            double g[7][3];
            for (int j = 0; j < model.nparam; j++) {
                const double h = 1e-5;
                auto up = p, down = p;
                up[j] += h, down[j] -= h;
                const Vec3 a = misclosure(i, up), b = misclosure(i, down);
                for (int k = 0; k < 3; k++) g[j][k] = f[k] * (a[k] - b[k]) / (2 * h);
            }
            for (int a = 0; a < model.nparam; a++)
                for (int k = 0; k < 3; k++) {
                    t[a] -= f[k] * v[k] * g[a][k];
                    for (int b = 0; b <= a; b++) N[a * (a + 1) / 2 + b] += g[a][k] * g[b][k];
                }
        }
        double R[3][3];
        ASSERT_EQ(SIM(*run, buildsim)(p.data(), R, found.data(), tfound.data()), 0);
        for (int i = 0; i < 28; i++) EXPECT_NEAR(found[i], N[i], tolerance) << "N " << i;
        for (int i = 0; i < 7; i++) EXPECT_NEAR(tfound[i], t[i], tolerance) << "t " << i;
    }

    Model model;
    double scale;
    std::array<double, 7> p;
};

TEST_F(Refine, BuildsTheNormalEquationsOfTheDerivatives)
{
    for (const Model &m : {all, noscale, norotation, translation}) {
        set(m);
        compare();
    }
}

// A second point that is nearly exact in two coordinates leaves only the rows of the third.
TEST_F(Refine, BuildsEachRowByItself)
{
    for (int k = 0; k < 3; k++)
        for (size_t i = 0; i < ref.size(); i++) {
            set(all);
            for (size_t j = 0; j < end.size(); j++)
                for (int l = 0; l < 3; l++) end[j].sx[l] = l == k && j == i ? 1.0 : 1e-30;
            compare(1e-7);
        }
}

TEST_F(Refine, BuildsTheRotationOfTheParameters)
{
    double R[3][3], N[28] = {}, t[7] = {};
    set(all);
    ASSERT_EQ(SIM(*run, buildsim)(p.data(), R, N, t), 0);
    const Mat3 wanted = rotation(p[3], p[4], p[5]);
    for (int i = 0; i < 3; i++)
        for (int j = 0; j < 3; j++) EXPECT_NEAR(R[i][j], wanted[i][j], 1e-15);
    set(norotation);
    ASSERT_EQ(SIM(*run, buildsim)(p.data(), R, N, t), 0);
    for (int i = 0; i < 3; i++)
        for (int j = 0; j < 3; j++) EXPECT_EQ(R[i][j], i == j ? 1.0 : 0.0);
}

TEST_F(Refine, BreaksOffWhereACoordinateHasNoWeight)
{
    for (int k = 0; k < 3; k++) {
        set(translation);
        end[2].sx[k] = 1e11;
        for (double &sx : ref[2].sx) sx = 1e11;
        double R[3][3], N[28] = {}, t[7] = {};
        EXPECT_EQ(SIM(*run, buildsim)(p.data(), R, N, t), -(k + 1));
        EXPECT_GT(N[0], 0.0); // two pairs are in
        end[2].sx[k] = 1e9;
        EXPECT_EQ(SIM(*run, buildsim)(p.data(), R, N, t), 0);
    }
}

// With rotation none, scale 1 and equal standard deviations 1 / f^2 is 2 / sx^2.
TEST_F(Refine, TakesAWeightAtTheLeastQAndRefusesTheNextBelow)
{
    for (const double sx : {1.4142e10, 1.4143e10}) {
        set(translation, 1.0);
        for (auto *points : {&ref, &end}) std::fill_n((*points)[0].sx, 3, sx);
        double R[3][3], N[28] = {}, t[7] = {};
        EXPECT_EQ(SIM(*run, buildsim)(p.data(), R, N, t), sx < 1.41421356e10 ? 0 : -1);
    }
}

TEST_F(Refine, SumsTheSquaresOfTheResidualsWithoutWeights)
{
    set(all);
    const Mat3 r = rotation(p[3], p[4], p[5]);
    double R[3][3], sum = 0;
    for (int i = 0; i < 3; i++)
        for (int j = 0; j < 3; j++) R[i][j] = r[i][j];
    for (size_t i = 0; i < ref.size(); i++)
        for (const double v : misclosure(i, p)) sum += v * v;
    EXPECT_NEAR(SIM(*run, simresidual)(0, p.data(), R), sum, 1e-12 * sum);
    EXPECT_EQ(report(), "simili.out\n\n");
}

TEST_F(Refine, ShowsTheResidualsUnderTheNameOfTheSecondPoint)
{
    ref = {named("A", {1, 2, 3}), named("B", {4, 5, 6}), named("SIXTEEN LETTERS-", {0, 0, 0})};
    end = {named("SIXTEEN LETTERS-", {0, -1e5, 1}), named("A", {1.5, 2, 3.25}), named("B", {4, 5.0000004, 5})};
    set(noscale, 1.0);
    p = {};
    const double R[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    EXPECT_NEAR(SIM(*run, simresidual)(1, p.data(), R), 1e10 + 2.3125, 1e-5);
    EXPECT_EQ(report(), "simili.out\n\n\nTransformed points versus original\n\n"
                        "A        0.500000    0.000000    0.250000\n"
                        "B        0.000000    0.000000   -1.000000\n"
                        "SIXTEEN LETTERS-        0.000000-100000.000000    1.000000\n");
}

TEST_F(Refine, TakesTheRotationOfTheResidualsFromItsCaller)
{
    set(all);
    p = {0, 0, 0, 1, 1, 1, 2};
    const double none[3][3] = {};
    double sum = 0;
    for (const simpoint &y : end)
        for (const double x : y.x) sum += x * x;
    EXPECT_NEAR(SIM(*run, simresidual)(0, p.data(), none), sum, 1e-12 * sum);
}

TEST_F(Refine, PacksByRowsOfTheLowerTriangle)
{
    make(1);
    int place = 0;
    for (int i = 0; i < 7; i++)
        for (int j = 0; j <= i; j++, place++) {
            EXPECT_EQ(SIM(*run, packidx)(i, j), place);
            EXPECT_EQ(SIM(*run, packidx)(j, i), place);
        }
}

} // namespace
