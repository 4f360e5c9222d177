// Joints that users describe: followed like the library's own, and refused where they are wrong.
#include "scenes/scene.h"
#include "support/painted_frame.h"
#include "zelWeldDetect.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TJointTemplate jGroove() {
  TJointTemplate j;
  j.name = "J groove";
  j.elements = {TJointElement::plate(), TJointElement::flank(40, 85), TJointElement::arc(15, 150).smoothly(),
                TJointElement::stepUp(30), TJointElement::plate()};
  j.points = {{TFeature::leftShoulder, TJointPlace::start, 1},
              {TFeature::leftRoot, TJointPlace::start, 3},
              {TFeature::root, TJointPlace::middle, 3},
              {TFeature::rightRoot, TJointPlace::end, 3},
              {TFeature::rightShoulder, TJointPlace::start, 4}};
  return j;
}

// The V that the library has, but for its forms with a flat root.
TJointTemplate vGroove() {
  TJointTemplate v;
  v.elements = {TJointElement::plate(), TJointElement::flank(5, 90), TJointElement::gap(),
                TJointElement::flank(-90, -5), TJointElement::plate()};
  v.elements[1].turnDeg = v.elements[4].turnDeg = {19, 92};
  v.elements[3].turnDeg = {-170, -28};
  v.points = {{TFeature::leftShoulder, TJointPlace::start, 1},
              {TFeature::leftRoot, TJointPlace::start, 2},
              {TFeature::root, TJointPlace::middle, 2},
              {TFeature::rightRoot, TJointPlace::end, 2},
              {TFeature::rightShoulder, TJointPlace::start, 4}};
  return v;
}

// A J: its flank falls from the left plate at 63 degrees into an arc that ends level at an upright wall.
struct TDrawnJ {
  double shiftPx = 0.0;
  bool isUpsideDown = false;
  bool isMirrored = false;

  static constexpr double kRadiusPx = 60.0;
  static constexpr double kShoulderX = 270.0;
  static constexpr double kFlankPx = 50.0;  // columns
  static constexpr double kSlope = 2.0;

  // With the shoulder at (0, 0).
  static cv::Point2d flankEnd() { return {kFlankPx, kSlope * kFlankPx}; }
  static cv::Point2d arcCentre() {
    const double length = std::sqrt(1.0 + kSlope * kSlope);
    return flankEnd() + cv::Point2d(kRadiusPx * kSlope / length, -kRadiusPx / length);
  }
  static double depthAt(double x) {
    const cv::Point2d c = arcCentre();
    if (x < 0.0 || x > c.x) return 0.0;
    return x < kFlankPx ? kSlope * x : c.y + std::sqrt(kRadiusPx * kRadiusPx - (x - c.x) * (x - c.x));
  }

  cv::Point2d place(double x, double depth) const {
    const double column = kShoulderX + shiftPx + x;
    return {isMirrored ? 639.0 - column : column, isUpsideDown ? 320.0 - depth : 160.0 + depth};
  }
  cv::Point2d root() const { return place(arcCentre().x, arcCentre().y + kRadiusPx); }
  cv::Point2d shoulder() const { return place(0.0, 0.0); }
  cv::Point2d wallTop() const { return place(arcCentre().x, 0.0); }

  cv::Mat image() const {
    cv::Mat image = painted::dark();
    for (int column = 10; column < 630; ++column) {
      const double x = (isMirrored ? 639 - column : column) - kShoulderX - shiftPx;
      painted::paintColumn(image, column, place(x, depthAt(x)).y);
    }
    return image;
  }
};

cv::Point2d pointOf(const TJointMeasurement& m, TFeature feature) {
  for (const TFeaturePoint& p : m.points) {
    if (p.feature == feature) return p.pos;
  }
  return {kNaN, kNaN};
}

TTrackerOptions traced() {
  TTrackerOptions options;
  options.keepTrace = true;
  return options;
}

TEST(OwnJoint, IsFollowedInEitherSenseAndMirrored) {
  for (const bool isUpsideDown : {false, true}) {
    for (const bool isMirrored : {false, true}) {
      TJointTemplate j = jGroove();
      j.mayBeMirrored = isMirrored;
      TWeldTracker tracker(j, traced());
      for (int n = 0; n < 5; ++n) {
        const TDrawnJ drawn{2.3 * n, isUpsideDown, isMirrored};
        const TTrackedSeam seam = tracker.track(drawn.image());
        ASSERT_EQ(seam.state, TSeamState::found) << tracker.lastTrace().sentence;
        EXPECT_LT(cv::norm(cv::Point2d(seam.weldPos) - drawn.root()), 1.0);
        const TJointMeasurement& m = seam.measurement;
        const auto [near, far] = isMirrored ? std::pair(TFeature::rightShoulder, TFeature::leftShoulder)
                                            : std::pair(TFeature::leftShoulder, TFeature::rightShoulder);
        EXPECT_LT(cv::norm(pointOf(m, near) - drawn.shoulder()), 1.0);
        EXPECT_LT(cv::norm(pointOf(m, far) - drawn.wallTop()), 1.0);
        EXPECT_NEAR(m.leftRadiusPx, TDrawnJ::kRadiusPx, 3.0);
        EXPECT_NEAR(m.depthPx, TDrawnJ::depthAt(TDrawnJ::arcCentre().x), 1.0);
        EXPECT_NEAR(isMirrored ? m.rightAngleDeg : m.leftAngleDeg, (isUpsideDown != isMirrored ? -1 : 1) * 63.4,
                    0.5);
        EXPECT_TRUE(std::isnan(m.includedAngleDeg));
        EXPECT_GT(m.confidence, 0.5F);
        EXPECT_EQ(m.weldType, TWeldType::none);
      }
      EXPECT_EQ(tracker.lastTrace().stages.size(), 3U);
    }
  }
  TWeldTracker other(jGroove());
  EXPECT_EQ(other.track(TDrawnJ{0.0, false, true}.image()).state, TSeamState::lost);
}

// Straight pieces from corner to corner; one whose row is not a number shows no stripe.
cv::Mat painting(const std::vector<cv::Point2d>& corners) {
  cv::Mat image = painted::dark();
  for (std::size_t i = 1; i < corners.size(); ++i) {
    const cv::Point2d from = corners[i - 1];
    const cv::Point2d to = corners[i];
    if (std::isnan(from.y) || std::isnan(to.y)) continue;
    painted::paintPiece(image, static_cast<int>(from.x), static_cast<int>(to.x), from.y,
                        (to.y - from.y) / (to.x - from.x));
  }
  return image;
}

// A V of flanks of 45 degrees about column 320, its root or its left shoulder rounded.
cv::Mat roundedV(double radiusPx, bool isRootRounded) {
  cv::Mat image = painted::dark();
  const double half = radiusPx / std::sqrt(2.0);  // columns from the corner to the tangent points
  for (int column = 10; column < 630; ++column) {
    const double x = std::abs(column - 320.0);
    double depth = std::max(0.0, 120.0 - x);
    if (isRootRounded && x < half)
      depth = 120.0 - std::sqrt(2.0) * radiusPx + std::sqrt(radiusPx * radiusPx - x * x);
    const double u =
        x - 120.0 - radiusPx * (std::sqrt(2.0) - 1.0);  // from the circle's centre, where it meets the plate
    if (!isRootRounded && column < 320 && u < 0.0 && u > -half)
      depth = radiusPx - std::sqrt(radiusPx * radiusPx - u * u);
    painted::paintColumn(image, column, 180.0 + depth);
  }
  return image;
}

TEST(OwnJoint, ElementsAndPointsMeanWhatTheySay) {
  using E = TJointElement;
  E rounded = E::flank(-80, -20);
  rounded.meeting = TElementMeeting::rounded;
  E bulge = E::arc(15, 150).smoothly();
  bulge.isHollow = false;
  E hole = E::gap();
  hole.stepPx = {-6, 6};
  const std::vector<E> flatV = {E::plate(), E::flank(20, 80), E::flat().optionally(), E::flank(-80, -20),
                                E::plate()};
  const std::vector<TJointPoint> flatRoot = {{TFeature::root, TJointPlace::middle, 2},
                                             {TFeature::root, TJointPlace::start, 3}};
  const cv::Mat v = painting({{10, 180}, {220, 180}, {320, 280}, {420, 180}, {630, 180}});
  const struct {
    const char* name;
    std::vector<E> elements;
    std::vector<TJointPoint> points;
    cv::Mat image;
    cv::Point2d tracked;
  } rows[] = {
      {"flat there",
       flatV,
       flatRoot,
       painting({{10, 180}, {200, 180}, {280, 260}, {380, 266}, {460, 180}, {630, 180}}),
       {330, 263}},
      {"flat missing", flatV, flatRoot, v, {320, 280}},
      {"rounded root",
       {E::plate(), E::flank(20, 80), rounded, E::plate()},
       {{TFeature::root, TJointPlace::deepest, 2}},
       roundedV(40, true),
       {320, 300 - 40 * (std::sqrt(2.0) - 1.0)}},
      {"rounded shoulder",
       {E::plate(), bulge, E::flank(20, 80).smoothly(), E::flank(-80, -20), E::plate()},
       {{TFeature::root, TJointPlace::start, 3}},
       roundedV(100, false),
       {320, 300}},
      {"step",
       {E::plate(), E::stepDown(30), E::plate()},
       {{TFeature::root, TJointPlace::end, 0}},
       painting({{10, 180}, {320, 180}, {320, kNaN}, {320, 240}, {630, 240}}),
       {319.5, 180}},
      {"foot of a step",
       {E::plate(), E::stepDown(30), E::plate()},
       {{TFeature::root, TJointPlace::start, 1}},
       painting({{10, 180}, {320, 180}, {330, kNaN}, {330, 240}, {630, 240}}),
       {319.5, 240}},
      {"hidden shoulder",
       {E::plate(), hole, E::flank(20, 80), E::flank(-80, -20), E::plate()},
       {{TFeature::root, TJointPlace::middle, 1}},
       painting({{10, 180}, {212, 180}, {222, kNaN}, {222, 184}, {320, 282}, {422, 180}, {630, 180}}),
       {216.5, 181.8}},
      {"hump",
       {E::plate(), E::flank(-80, -20), E::flat(), E::flank(20, 80), E::plate()},
       {{TFeature::root, TJointPlace::end, 2}},
       painting({{10, 280}, {200, 280}, {280, 200}, {380, 200}, {460, 280}, {630, 280}}),
       {380, 200}},
  };
  for (const auto& row : rows) {
    TJointTemplate joint;
    joint.elements = row.elements;
    joint.points = row.points;
    EXPECT_EQ(findTemplateProblem(joint), "") << row.name;
    TWeldTracker tracker(joint, traced());
    const TTrackedSeam seam = tracker.track(row.image);
    EXPECT_LT(cv::norm(cv::Point2d(seam.weldPos) - row.tracked), 1.0)
        << row.name << ": " << seam.weldPos << ", " << tracker.lastTrace().sentence;
  }
}

TEST(OwnJoint, IsRefusedWithTheRangeThatItLeaves) {
  const auto rangeOf = [](std::size_t element, TJointRange TJointElement::*range, TJointRange value) {
    return [=](TJointTemplate& j) { j.elements[element].*range = value; };
  };
  const cv::Mat plate = painting({{10, 200}, {630, 200}});
  const cv::Mat v = painting({{10, 160}, {220, 160}, {320, 280}, {420, 160}, {630, 160}});
  const cv::Mat drawn = TDrawnJ().image();
  const struct {
    cv::Mat image;
    std::function<void(TJointTemplate&)> change;
    const char* sentence;
  } rows[] = {
      {plate, [](TJointTemplate&) {}, "no such joint in the stripe"},
      {v, [](TJointTemplate&) {}, "no such joint in the stripe"},
      {drawn, rangeOf(1, &TJointElement::angleDeg, {40, 60}),
       "angle of elements[1] 63.4 degrees is above the maximum 60 degrees, set by elements[1].angleDeg.max"},
      {drawn, rangeOf(1, &TJointElement::lengthPx, {130, 200}), "length of elements[1]"},
      {drawn, rangeOf(2, &TJointElement::radiusPx, {15, 50}), "radius of elements[2]"},
      {drawn, rangeOf(1, &TJointElement::turnDeg, {66, 90}), "turn before elements[1]"},
      {drawn, rangeOf(3, &TJointElement::widthPx, {10, 90}), "width of elements[3]"},
      {drawn, rangeOf(3, &TJointElement::stepPx, {-100, -30}), "step at elements[3]"},
      {drawn, [](TJointTemplate& j) { j.lineTolerancePx = 0.01; }, "roughness of the roughest"},
  };
  for (const auto& row : rows) {
    TJointTemplate j = jGroove();
    row.change(j);
    TWeldTracker tracker(j, traced());
    EXPECT_EQ(tracker.track(row.image).state, TSeamState::lost);
    EXPECT_EQ(tracker.lastTrace().sentence.rfind(row.sentence, 0), 0U) << tracker.lastTrace().sentence;
  }
}

TEST(OwnJoint, WrongTemplatesSayWhatIsWrong) {
  using E = TJointElement;
  using J = TJointTemplate;
  const struct {
    std::function<void(J&)> change;
    const char* problem;
  } rows[] = {
      {[](J&) {}, ""},
      {[](J& j) { j.elements.clear(); }, "the joint has no elements"},
      {[](J& j) { j.elements = {E::plate()}; }, "points[0].element: there is no such element"},
      {[](J& j) { j.elements.assign(8, E::flank(1, 2)); }, "the joint has more than 7 elements"},
      {[](J& j) { j.elements.insert(j.elements.begin() + 3, E::gap()); }, "a gap lies between two elements"},
      {[](J& j) { j.elements[4].isOptional = true; }, "a gap lies between two elements"},
      {[](J& j) {
         for (E& e : j.elements) e.isOptional = true;
       },
       "more than 2 elements are optional"},
      {[](J& j) {
         j.elements[1].angleDeg = {50, 40};
       },
       "elements[1].angleDeg is empty: 50 to 40"},
      {[](J& j) { j.elements[1].angleDeg.max = kNaN; }, "elements[1].angleDeg is not a number"},
      {[](J& j) {
         j.elements[1].angleDeg = {95, 120};
       },
       "elements[1].angleDeg can never hold: 95 to 120"},
      {[](J& j) {
         j.elements[1].radiusPx = {9, 10};
       },
       "elements[1].radiusPx has no meaning for a flank"},
      {[](J& j) {
         j.elements[2].radiusPx = {-9, 0};
       },
       "elements[2].radiusPx can never hold: -9 to 0"},
      {[](J& j) { j.elements[2].shape = static_cast<TElementShape>(9); }, "elements[2].shape is unknown"},
      {[](J& j) { j.elements[2].meeting = static_cast<TElementMeeting>(-1); }, "elements[2].meeting is unknown"},
      {[](J& j) { j.elements[1].meeting = TElementMeeting::smooth; }, "elements[1] is smooth without an arc"},
      {[](J& j) { j.elements[2].meeting = TElementMeeting::rounded; }, "elements[2] is rounded beside an arc"},
      {[](J& j) { j.elements[3].stepPx = {}; }, "elements[3].stepPx: a gap beside an arc has to have one"},
      {[](J& j) { j.elements[1] = E::plate(); }, "elements[1]: plates stand at the ends"},
      {[](J& j) { j.points[0].element = -1; }, "points[0].element: there is no such element"},
      {[](J& j) { j.points[0].feature = static_cast<TFeature>(12); }, "points[0].feature is unknown"},
      {[](J& j) { j.points[0].place = static_cast<TJointPlace>(4); }, "points[0].place is unknown"},
      {[](J& j) { j.points[0].place = TJointPlace::deepest; },
       "points[0].place: only arcs and rounded corners have a deepest point"},
      {[](J& j) { j.tracked = TFeature::corner; }, "tracked: no point is called corner"},
      {[](J& j) { j.lineTolerancePx = kNaN; }, "lineTolerancePx is not above 0"},
  };
  for (const auto& row : rows) {
    J j = jGroove();
    row.change(j);
    EXPECT_EQ(findTemplateProblem(j), row.problem);
    TWeldTracker tracker(j, traced());
    const TTrackedSeam seam = tracker.track(TDrawnJ().image());
    if (std::string(row.problem).empty()) continue;
    EXPECT_EQ(seam.state, TSeamState::lost);
    EXPECT_EQ(tracker.lastTrace().sentence, row.problem);
    EXPECT_EQ(tracker.lastTrace().outcome, TWeldOutcome::settingInvalid);
    tracker.setParams(scenes::weldParamsFor(scenes::TJoint::vGroove));  // another joint may follow
    tracker.track(TDrawnJ().image());
    EXPECT_NE(tracker.lastTrace().outcome, TWeldOutcome::settingInvalid);
  }
}

TEST(OwnJoint, AGrooveWrittenByHandGivesTheSameBits) {
  int found = 0;
  for (int n = 0; n < 12; ++n) {
    scenes::TSceneParams params;
    params.joint = scenes::TJoint::vGroove;
    params.size = {640, 480};
    params.seed = 7700U + static_cast<unsigned>(n);
    params.geometry.seam = {0.5, 0.6};
    params.geometry.depthPx = 100.0;
    params.geometry.gapPx = n % 2 == 0 ? 0.0 : 25.0;
    params.geometry.leftFlankDeg = 40.0 + n;
    params.geometry.rightFlankDeg = -55.0 + n;
    params.geometry.groove.emplace();
    params.geometry.groove->isRootUpper = n % 3 == 0;
    params.look.noiseSigma = n;
    TWeldTracker own(vGroove(), traced());
    TWeldTracker known(scenes::weldParamsFor(scenes::TJoint::vGroove), traced());
    for (int frame = 0; frame < 3; ++frame) {
      params.frame = static_cast<unsigned>(frame);
      const cv::Mat image = scenes::renderScene(params).image;
      const TTrackedSeam a = own.track(image);
      const TTrackedSeam b = known.track(image);
      EXPECT_EQ(a.state, b.state) << own.lastTrace().sentence << " / " << known.lastTrace().sentence;
      EXPECT_EQ(a.weldPos, b.weldPos);
      ASSERT_EQ(a.measurement.points.size(), b.measurement.points.size());
      for (std::size_t p = 0; p < a.measurement.points.size(); ++p) {
        EXPECT_EQ(a.measurement.points[p].feature, b.measurement.points[p].feature);
        EXPECT_EQ(a.measurement.points[p].pos, b.measurement.points[p].pos);
        EXPECT_EQ(a.measurement.points[p].sigmaPx, b.measurement.points[p].sigmaPx);
      }
      const TJointMeasurement& m = a.measurement;
      const TJointMeasurement& k = b.measurement;
      EXPECT_EQ(m.confidence, k.confidence);
      for (const auto value : {&TJointMeasurement::widthPx, &TJointMeasurement::depthPx, &TJointMeasurement::gapPx,
                               &TJointMeasurement::mismatchPx, &TJointMeasurement::areaPx2,
                               &TJointMeasurement::leftAngleDeg, &TJointMeasurement::rightAngleDeg,
                               &TJointMeasurement::includedAngleDeg, &TJointMeasurement::baseAngleDeg}) {
        EXPECT_TRUE(m.*value == k.*value || (std::isnan(m.*value) && std::isnan(k.*value)));
      }
      found += a.state == TSeamState::found ? 1 : 0;
    }
  }
  EXPECT_GE(found, 30);
}

}  // namespace
