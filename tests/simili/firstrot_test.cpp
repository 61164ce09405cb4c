#include "simili/scene.h"

namespace {

class Angles : public Scene {
protected:
    void SetUp() override { make(1); }
    int angles(const Mat3 &r)
    {
        double m[3][3];
        for (int i = 0; i < 3; i++)
            for (int j = 0; j < 3; j++) m[i][j] = r[i][j];
        a = b = c = -99.0;
        return SIM(*run, rotangles)(m, &a, &b, &c);
    }
    // The angles give the matrix back; 1e-15 a few roundings, more where an angle is ill determined.
    void expect_back(const Mat3 &r, double tolerance)
    {
        ASSERT_EQ(angles(r), 0);
        const Mat3 back = rotation(a, b, c);
        for (int i = 0; i < 3; i++)
            for (int j = 0; j < 3; j++) EXPECT_NEAR(back[i][j], r[i][j], tolerance) << i << j;
    }
    double a, b, c;
    const double pi = std::acos(-1.0);
};

TEST_F(Angles, OfARotationAreThoseThatMadeIt)
{
    for (double wa = -3.0; wa < 3.1; wa += 0.5)
        for (double wb = -1.5; wb < 1.6; wb += 0.25)
            for (double wc = -3.0; wc < 3.1; wc += 0.5) {
                ASSERT_EQ(angles(rotation(wa, wb, wc)), 0);
                EXPECT_NEAR(a, wa, 2e-14) << wa << " " << wb << " " << wc; // 1 / cos(1.5) roundings
                EXPECT_NEAR(b, wb, 1e-14);
                EXPECT_NEAR(c, wc, 2e-14);
            }
}

TEST_F(Angles, OfTheIdentityAreZero)
{
    ASSERT_EQ(angles(rotation(0, 0, 0)), 0);
    EXPECT_EQ(a, 0.0);
    EXPECT_EQ(b, 0.0);
    EXPECT_EQ(c, 0.0);
}

// |cos b| around the border 0.1, where a comes from other elements, and |cos c| around 0.2.
TEST_F(Angles, AgreeOnBothSidesOfTheirBorders)
{
    for (const double cosine : {0.1 - 1e-12, 0.1 + 1e-12, 0.01, 1e-4})
        for (const double cosc : {0.2 - 1e-12, 0.2 + 1e-12, 0.01, 0.9})
            for (const double sign : {1.0, -1.0}) {
                const double wb = sign * std::acos(cosine), wc = sign * std::acos(cosc);
                ASSERT_EQ(angles(rotation(-2.2, wb, wc)), 0);
                EXPECT_NEAR(a, -2.2, 1e-11); // 1e-16 / cos b
                EXPECT_NEAR(b, wb, 1e-12);
                EXPECT_NEAR(c, wc, 1e-11);
            }
}

TEST_F(Angles, GiveTheMatrixBackInTheGimbalCase)
{
    // cos b is about 6e-17: only a - c or a + c is determined
    for (const double wb : {pi / 2, -pi / 2})
        for (double wa = -3.0; wa < 3.1; wa += 0.7) expect_back(rotation(wa, wb, 0.4), 1e-15);
    expect_back({{{0, 0, -1}, {0, 1, 0}, {1, 0, 0}}}, 1e-15);
    expect_back({{{0, 0, 1}, {0, 1, 0}, {-1, 0, 0}}}, 1e-15);
    expect_back({{{0, 0, 1}, {1, 0, 0}, {0, 1, 0}}}, 1e-15);
}

TEST_F(Angles, OfRotationsWithACosineOfCThatIsZero)
{
    expect_back({{{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}}}, 1e-15);
    EXPECT_NEAR(c, pi / 2, 1e-15);
    expect_back({{{0, -1, 0}, {0, 0, -1}, {1, 0, 0}}}, 1e-15);
}

TEST_F(Angles, OfWhatIsNoNumberAreNotFound)
{
    Mat3 r = rotation(0.1, 0.2, 0.3);
    r[0][0] = NAN;
    EXPECT_EQ(angles(r), 1);
    EXPECT_EQ(a, -99.0);
    EXPECT_EQ(b, -99.0);
    EXPECT_EQ(c, -99.0);
}

TEST_F(Angles, OfAnyNumbersAreNumbers)
{
    for (const Mat3 &r : {Mat3{}, Mat3{{{1e300, 1e300, 1e300}, {1, 1, 1}, {1, 1, 1}}}, Mat3{{{0, 0, -5}, {}, {}}}}) {
        EXPECT_EQ(angles(r), 0);
        EXPECT_TRUE(std::isfinite(a) && std::isfinite(b) && std::isfinite(c));
    }
}

class FirstRotation : public Scene {
protected:
    // The rotation as the report shows it when it is held.
    Vec3 shown()
    {
        make(0, 1.0);
        EXPECT_EQ(run->startsimili(), 0);
        EXPECT_EQ(run->runsimili(), 0);
        const std::string text = report(), head = "VORN-lump convention in radians\n";
        std::istringstream lines(text.substr(text.find(head) + head.size()));
        Vec3 angle{};
        int number;
        for (double &a : angle) lines >> number >> a;
        return angle;
    }
    void expect_shown(const Vec3 &wanted)
    {
        const Vec3 angle = shown();
        for (int k = 0; k < 3; k++) EXPECT_NEAR(angle[k], wanted[k], 0.6e-6); // printed digits
    }
};

TEST_F(FirstRotation, IsExactForPointsThatMovedRigidly)
{
    for (const Vec3 &angle : {Vec3{0.1, 0.2, 0.3}, Vec3{-3, 1, 3}, Vec3{1, -1.5, 2}, Vec3{0, 0, 3.1}}) {
        points(5, {100, -200, 300}, rotation(angle[0], angle[1], angle[2]), 1.0);
        expect_shown(angle);
    }
}

TEST_F(FirstRotation, DoesNotDependOnTheScale)
{
    for (const double scale : {0.01, 0.5, 2.0, 1000.0}) {
        points(4, {1, 2, 3}, rotation(0.4, -0.5, 0.6), scale);
        expect_shown({0.4, -0.5, 0.6});
    }
}

TEST_F(FirstRotation, IsFoundForPointsInAPlane)
{
    points(3, {1, 2, 3}, rotation(0.4, -0.5, 0.6), 1.0); // three points always lie in one
    expect_shown({0.4, -0.5, 0.6});
}

} // namespace
