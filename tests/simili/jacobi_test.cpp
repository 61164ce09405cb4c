#include "simili/scene.h"

namespace {

using Matrix = std::vector<std::vector<double>>;

std::vector<double *> rows(Matrix &a)
{
    std::vector<double *> r;
    for (std::vector<double> &row : a) r.push_back(row.data());
    return r;
}

class Jacobi : public Scene {
protected:
    void SetUp() override
    {
        points(3, {}, rotation(0, 0, 0), 1.0);
        ASSERT_EQ(make(1).startsimili(), 0);
    }

    void solve(const Matrix &matrix)
    {
        const size_t n = matrix.size();
        Matrix a = matrix;
        d.assign(n, -99.0);
        v.assign(n, std::vector<double>(n, -99.0));
        SIM(*run, jacobi)(rows(a).data(), (int)n, d.data(), rows(v).data(), &nrot);
    }

    static Matrix random_symmetric(size_t n, std::mt19937 &random)
    {
        std::uniform_real_distribution<double> value(-1, 1);
        Matrix a(n, std::vector<double>(n));
        for (size_t i = 0; i < n; i++)
            for (size_t j = 0; j <= i; j++) a[i][j] = a[j][i] = value(random);
        return a;
    }

    // A v = v d and v'v = 1, to the rounding of a few dozen rotations.
    void expect_eigen(const Matrix &a, double unit = 1.0)
    {
        const size_t n = a.size();
        for (size_t c = 0; c < n; c++)
            for (size_t i = 0; i < n; i++) {
                double av = 0, vv = 0;
                for (size_t k = 0; k < n; k++) av += a[i][k] * v[k][c], vv += v[k][i] * v[k][c];
                EXPECT_NEAR(av, v[i][c] * d[c], 1e-13 * unit * (double)n);
                EXPECT_NEAR(vv, i == c ? 1.0 : 0.0, 1e-13 * (double)n);
            }
    }

    std::vector<double> d;
    Matrix v;
    int nrot = -99;
};

TEST_F(Jacobi, GivesEigenvaluesAndEigenvectorsOfRandomMatrices)
{
    std::mt19937 random(3);
    for (size_t n = 1; n <= 12; n++) {
        const Matrix a = random_symmetric(n, random);
        solve(a);
        expect_eigen(a);
        EXPECT_GE(nrot, n == 1 ? 0 : 1);
    }
    EXPECT_EQ(report(), "simili.out\n\n");
}

TEST_F(Jacobi, SolvesAMatrixOfTwoByHand)
{
    solve({{2, 1}, {1, 2}}); // (x, x) with 3, (x, -x) with 1
    EXPECT_EQ(nrot, 1);
    EXPECT_NEAR(d[0], 1.0, 1e-15);
    EXPECT_NEAR(d[1], 3.0, 1e-15);
    EXPECT_NEAR(v[0][1], std::sqrt(0.5), 1e-15);
    EXPECT_NEAR(v[1][1], std::sqrt(0.5), 1e-15);
    EXPECT_NEAR(v[0][0] * v[1][0], -0.5, 1e-15);
}

TEST_F(Jacobi, LeavesADiagonalMatrixAlone)
{
    solve({{3, 0, 0}, {0, -1, 0}, {0, 0, 7}});
    EXPECT_EQ(nrot, 0);
    EXPECT_EQ(d, (std::vector<double>{3, -1, 7}));
    EXPECT_EQ(v, (Matrix{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}));
}

TEST_F(Jacobi, ReadsNothingBelowTheDiagonal)
{
    solve({{2, 1, 0.5}, {1e30, 2, -1}, {NAN, NAN, 4}});
    expect_eigen({{2, 1, 0.5}, {1, 2, -1}, {0.5, -1, 4}});
}

TEST_F(Jacobi, SolvesMatricesWithEqualEigenvalues)
{
    const Matrix ones(4, std::vector<double>(4, 1.0)); // 4, 0, 0, 0
    solve(ones);
    expect_eigen(ones);
    std::sort(d.begin(), d.end());
    EXPECT_NEAR(d[2], 0.0, 1e-14);
    EXPECT_NEAR(d[3], 4.0, 1e-14);
}

TEST_F(Jacobi, SolvesMatricesOfAnySize)
{
    std::mt19937 random(5);
    for (const double unit : {1e-150, 1e-9, 1e9, 1e150}) {
        Matrix a = random_symmetric(4, random);
        for (auto &row : a)
            for (double &x : row) x *= unit;
        solve(a);
        expect_eigen(a, unit);
    }
}

TEST_F(Jacobi, KeepsSmallEigenvaluesBesideLargeOnes)
{
    // diag(1e10, 1, 1e-3) turned by a small angle in each plane; tolerance of the large one's rounding
    const Mat3 r = rotation(1e-3, 2e-3, -1e-3);
    const double l[3] = {1e10, 1, 1e-3};
    Matrix a(3, std::vector<double>(3));
    for (int i = 0; i < 3; i++)
        for (int j = 0; j < 3; j++)
            for (int k = 0; k < 3; k++) a[i][j] += r[i][k] * l[k] * r[j][k];
    solve(a);
    expect_eigen(a, 1e10);
    std::sort(d.begin(), d.end());
    EXPECT_NEAR(d[2], 1e10, 1e-4);
    EXPECT_NEAR(d[1], 1.0, 1e-4);
}

TEST_F(Jacobi, GivesUpAfterFiftySweepsOverWhatIsNoNumber)
{
    solve({{1, NAN}, {NAN, 2}});
    EXPECT_EQ(report(), "simili.out\n\nToo many iterations in routine JACOBI");
    EXPECT_EQ(nrot, 0); // no comparison with it holds
}

TEST_F(Jacobi, StandsInfiniteElements)
{
    solve({{1, INFINITY, 0}, {0, 2, 1}, {0, 0, 3}});
    SUCCEED();
}

TEST_F(Jacobi, TellsOfMissingMemory)
{
    for (int n = 1; n <= 2; n++) {
        fail_allocation(n);
        solve({{2, 1}, {1, 2}});
        EXPECT_EQ(nrot, -1);
        EXPECT_EQ(d[0], -99.0);
        EXPECT_EQ(v[0][0], -99.0);
    }
    fail_allocation(3);
    solve({{2, 1}, {1, 2}});
    EXPECT_EQ(nrot, 1);
}

class Eigsrt : public Jacobi {
protected:
    void sort(std::vector<double> values)
    {
        d = std::move(values);
        const size_t n = d.size();
        v.assign(2, std::vector<double>(n));
        v.resize(std::max<size_t>(n, 2), std::vector<double>(n));
        for (size_t i = 0; i < n; i++)
            for (size_t j = 0; j < n; j++) v[i][j] = 100.0 * (double)i + (double)j;
        SIM(*run, eigsrt)(d.data(), rows(v).data(), (int)n);
    }
    // Where each column of v stood before.
    std::vector<double> columns() { return v[0]; }
};

TEST_F(Eigsrt, OrdersEigenvaluesAndColumnsFromLargeToSmall)
{
    sort({2, -5, 9, 0.5});
    EXPECT_EQ(d, (std::vector<double>{9, 2, 0.5, -5}));
    EXPECT_EQ(columns(), (std::vector<double>{2, 0, 3, 1}));
    EXPECT_EQ(v[3], (std::vector<double>{302, 300, 303, 301}));
}

TEST_F(Eigsrt, ChoosesTheLaterOfEqualEigenvalues)
{
    sort({4, 4, 4});
    EXPECT_EQ(columns(), (std::vector<double>{2, 0, 1})); // 0 1 2, then 2 1 0, then 2 0 1
}

TEST_F(Eigsrt, StandsOneAndNone)
{
    sort({4});
    EXPECT_EQ(columns(), (std::vector<double>{0}));
    sort({});
    EXPECT_TRUE(d.empty());
}

} // namespace
