// Every point and measure of a groove's truth against its definition, read from the drawn centre line alone.
#include <gtest/gtest.h>

#include "measure.h"

namespace {

using scenes::TJoint;
using scenes::TLevel;
using scenes::TTruth;
using TPoint = cv::Point2d;

constexpr double kTolPx = 1e-5;
constexpr TLevel kLevels[] = {TLevel::clean, TLevel::harsh, TLevel::real};

double slopeOf(double deg) {
  return std::tan(deg * CV_PI / 180.0);
}

struct TGrooveScene {
  scenes::TSceneParams params;
  scenes::TGroove groove;
  TTruth truth;

  TPoint at(const char* name) const { return measure::feature(truth, name); }
  TPoint drawn(double x) const { return {std::round(x), truth.centreY[static_cast<int>(std::round(x))]}; }
  int deeper() const { return groove.isRootUpper ? -1 : 1; }
};

// Straight flanks and no lost stretches: the drawn line is then known column by column.
TGrooveScene makeScene(TJoint joint, TLevel level, std::uint64_t seed) {
  TGrooveScene s;
  s.params = randomScene(joint, level, seed);
  s.params.look = {};
  s.params.troubles = {};
  s.params.look.steepestSlope = 3.3;
  s.params.geometry.groove->leftBowPx = s.params.geometry.groove->rightBowPx = 0.0;
  s.groove = *s.params.geometry.groove;
  s.truth = renderScene(s.params).truth;
  return s;
}

template <class TCheck>
void forRandomScenes(std::initializer_list<TJoint> joints, TCheck check) {
  for (const TJoint joint : joints) {
    for (const TLevel level : kLevels) {
      for (std::uint64_t seed = 100; seed < 120; ++seed) {
        SCOPED_TRACE(testing::Message() << "joint " << static_cast<int>(joint) << " level "
                                        << static_cast<int>(level) << " seed " << seed);
        check(makeScene(joint, level, seed));
        if (testing::Test::HasFailure()) return;
      }
    }
  }
}

double distanceFromLine(TPoint p, TPoint a, TPoint b) {
  return std::abs((b - a).cross(p - a)) / cv::norm(b - a);
}

// The plate beside a shoulder: a drawn point 50 px from it, one 25 px from it. side: -1 left, +1 right.
std::pair<TPoint, TPoint> plateBeside(const TGrooveScene& s, TPoint shoulder, int side) {
  return {s.drawn(shoulder.x + side * 50), s.drawn(shoulder.x + side * 25)};
}

bool isWall(const TGrooveScene& s, int side) {
  return s.params.joint == TJoint::singleBevel && (side < 0) != s.groove.isMirrored;
}

TEST(GrooveTruth, FlanksRunFromTheShouldersOnThePlatesToTheRoots) {
  forRandomScenes({TJoint::vGroove, TJoint::singleBevel}, [](const TGrooveScene& s) {
    const scenes::TMeasures& m = s.truth.measures;
    const TPoint roots[] = {s.at("leftRoot"), s.at("rightRoot")};
    EXPECT_LT(cv::norm(s.truth.seam - (roots[0] + roots[1]) * 0.5), kTolPx) << "closed: both coincide";
    EXPECT_NEAR(m.gapPx, cv::norm(roots[1] - roots[0]), kTolPx);
    for (const int side : {-1, 1}) {
      const TPoint root = roots[side > 0];
      const TPoint shoulder = s.at(side < 0 ? "leftShoulder" : "rightShoulder");
      const auto [far, near] = plateBeside(s, shoulder, side);
      EXPECT_LT(distanceFromLine(shoulder, far, near), kTolPx);
      const double flankDeg = side < 0 ? m.leftAngleDeg : m.rightAngleDeg;
      EXPECT_EQ(std::isnan(flankDeg), isWall(s, side));
      if (isWall(s, side)) {  // upright on the plate, as deep as the flank's end
        EXPECT_NEAR((near - far).dot(root - shoulder), 0.0, 1e-3);
        EXPECT_NEAR((near - far).dot(roots[side < 0] - root) / cv::norm(near - far), m.gapPx, kTolPx);
        continue;
      }
      EXPECT_NEAR(root.y - shoulder.y, slopeOf(flankDeg) * (root.x - shoulder.x), kTolPx);
      EXPECT_LT(distanceFromLine(s.drawn((root.x + shoulder.x) / 2.0), shoulder, root), kTolPx);
      const TPoint last = s.drawn(side < 0 ? std::floor(root.x) : std::floor(root.x) + 1.0);
      EXPECT_LT(distanceFromLine(last, shoulder, root), kTolPx);
    }
  });
}

struct TCircle {
  TPoint centre;
  double radiusPx;
};

TCircle circleThrough(TPoint a, TPoint b, TPoint c) {
  const TPoint u = b - a;
  const TPoint v = c - a;
  const double d = 2.0 * u.cross(v);
  const TPoint offset((v.y * u.dot(u) - u.y * v.dot(v)) / d, (u.x * v.dot(v) - v.x * u.dot(u)) / d);
  return {a + offset, cv::norm(offset)};
}

TEST(GrooveTruth, URootIsTheDeepestPointAndTheMiddleOfTheGap) {
  forRandomScenes({TJoint::uGroove}, [](const TGrooveScene& s) {
    const TPoint root = s.truth.seam;
    const double base = slopeOf(s.truth.measures.baseAngleDeg);
    const bool isOpen = s.truth.measures.gapPx > 0.0;
    EXPECT_TRUE(!isOpen || cv::norm(root - (s.at("leftRoot") + s.at("rightRoot")) * 0.5) < kTolPx);
    for (double x = s.at("leftShoulder").x; !isOpen && x < s.at("rightShoulder").x - 1.0; ++x) {
      const TPoint p = s.drawn(x);
      EXPECT_FALSE(s.deeper() * (p.y - root.y - base * (p.x - root.x)) > kTolPx) << x;
    }
  });
}

// The round side next to a shoulder, through three of its drawn points. side: -1 left, +1 right.
TCircle roundSide(const TGrooveScene& s, int side) {
  const double radiusPx = side < 0 ? s.truth.measures.leftRadiusPx : s.truth.measures.rightRadiusPx;
  const double x = s.at(side < 0 ? "leftShoulder" : "rightShoulder").x;
  const double step = -side * radiusPx * (s.groove.isTube ? 0.12 : 0.2);
  const TCircle round = circleThrough(s.drawn(x + step), s.drawn(x + 2.0 * step), s.drawn(x + 3.0 * step));
  EXPECT_NEAR(round.radiusPx, radiusPx, 1e-4);
  return round;
}

TEST(GrooveTruth, FlareRootsLieBetweenTheRoundSidesAndShouldersTouchThem) {
  forRandomScenes({TJoint::flareV}, [](const TGrooveScene& s) {
    const TCircle round[] = {roundSide(s, -1), roundSide(s, 1)};
    const TPoint way = round[1].centre - round[0].centre;
    const double gapPx = cv::norm(way) - round[0].radiusPx - round[1].radiusPx;
    EXPECT_NEAR(s.truth.measures.gapPx, gapPx, 1e-3);
    EXPECT_LT(cv::norm(s.truth.seam - round[0].centre - way * ((round[0].radiusPx + gapPx / 2.0) / cv::norm(way))),
              1e-3);
    const TPoint shoulders[] = {s.at("leftShoulder"), s.at("rightShoulder")};
    for (const int i : {0, 1}) {
      const auto [far, near] = plateBeside(s, shoulders[i], i == 0 ? -1 : 1);
      const TPoint along = s.groove.isTube ? shoulders[1] - shoulders[0] : near - far;
      EXPECT_NEAR(cv::norm(shoulders[i] - round[i].centre), round[i].radiusPx, 1e-3);
      EXPECT_NEAR(along.dot(shoulders[i] - round[i].centre) / cv::norm(along), 0.0, 1e-3);
      EXPECT_LT(s.deeper() * (shoulders[i].y - round[i].centre.y), 0.0);
    }
  });
  forRandomScenes({TJoint::flareBevel}, [](const TGrooveScene& s) {
    const int side = s.groove.isMirrored ? 1 : -1;
    const TCircle round = roundSide(s, side);
    const double shadowX = round.centre.x - side * round.radiusPx;
    const TPoint a = s.drawn(shadowX - side * 10);
    const TPoint along = s.drawn(shadowX - side * 60) - a;
    const TPoint foot = a + along * (along.dot(round.centre - a) / along.dot(along));
    const TPoint towards = (foot - round.centre) / cv::norm(foot - round.centre);
    EXPECT_NEAR(along.y / along.x, slopeOf(s.truth.measures.baseAngleDeg), 1e-6);
    EXPECT_NEAR(s.truth.measures.gapPx, cv::norm(foot - round.centre) - round.radiusPx, 1e-3);
    EXPECT_LT(cv::norm(s.truth.seam - (foot + round.centre + towards * round.radiusPx) * 0.5), 1e-3);
    const TPoint top = round.centre - towards * round.radiusPx;
    EXPECT_LT(cv::norm(s.at(side < 0 ? "leftShoulder" : "rightShoulder") - top), 1e-3);
    EXPECT_TRUE(std::isnan(s.truth.measures.widthPx) && std::isnan(s.truth.measures.depthPx));
    const auto other = side < 0 ? TWeldPosType::right : TWeldPosType::left;
    EXPECT_EQ(seamPoint(TJoint::flareBevel, s.truth, other), s.truth.seam);
    EXPECT_EQ(seamPoint(TJoint::flareBevel, s.truth, TWeldPosType::upper), s.truth.seam);
  });
}

TEST(GrooveTruth, MeasuresFollowFromPointsAndPlates) {
  forRandomScenes(
      {TJoint::vGroove, TJoint::singleBevel, TJoint::uGroove, TJoint::flareV}, [](const TGrooveScene& s) {
        const scenes::TMeasures& m = s.truth.measures;
        const TPoint left = s.at("leftShoulder");
        const TPoint right = s.at("rightShoulder");
        EXPECT_NEAR(m.widthPx, cv::norm(right - left), kTolPx);
        EXPECT_NEAR(m.depthPx, distanceFromLine(s.truth.seam, left, right), kTolPx);
        EXPECT_EQ(seamPoint(s.params.joint, s.truth, TWeldPosType::upper), (left + right) * 0.5);
        EXPECT_EQ(seamPoint(s.params.joint, s.truth, TWeldPosType::left), left);
        EXPECT_EQ(seamPoint(s.params.joint, s.truth, TWeldPosType::lower), s.truth.seam);
        if (s.groove.isTube) return;
        const auto [farLeft, nearLeft] = plateBeside(s, left, -1);
        const auto [farRight, nearRight] = plateBeside(s, right, 1);
        const double slopes[] = {(nearLeft.y - farLeft.y) / 25.0, (farRight.y - nearRight.y) / 25.0};
        const double degrees[] = {std::atan(slopes[0]) * 180.0 / CV_PI, std::atan(slopes[1]) * 180.0 / CV_PI};
        EXPECT_NEAR(m.baseAngleDeg, (degrees[0] + degrees[1]) / 2.0, 1e-5);
        const double rows[] = {left.y + slopes[0] * (s.truth.seam.x - left.x),
                               right.y + slopes[1] * (s.truth.seam.x - right.x)};
        EXPECT_NEAR(m.mismatchPx, rows[1] - rows[0], 1e-4);
        const double flanks[] = {isWall(s, -1) ? degrees[0] + s.deeper() * 90.0 : m.leftAngleDeg,
                                 isWall(s, 1) ? degrees[1] - s.deeper() * 90.0 : m.rightAngleDeg};
        if (s.params.joint == TJoint::flareV) return;
        EXPECT_NEAR(m.includedAngleDeg, 180.0 - std::abs(flanks[0] - flanks[1]), 1e-4);
      });
}

}  // namespace
