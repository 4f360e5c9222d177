#include "tools/parameter_page/groove_figures.h"

#include "tools/parameter_page/stripe_drawing.h"

#include <cmath>

namespace tool {
namespace {

using TPoint = cv::Point2d;

constexpr TMark kParameter = TMark::parameter;
constexpr TMark kMeasured = TMark::measured;
constexpr double kFanPx = 40.0;  // radius of an angle range
constexpr double kTextPx = 7.5;  // a line of text below a dimension

const TWeldParams kDefaults;

scenes::TSceneParams grooveScene(scenes::TJoint joint, cv::Point2d seam, double depthPx) {
  scenes::TSceneParams params;
  params.joint = joint;
  params.size = {320, 180};
  params.look.fwhmPx = params.look.rootFwhmPx = 4.0;
  params.geometry.seam = seam;
  params.geometry.gapPx = 0.0;
  params.geometry.depthPx = depthPx;
  params.geometry.groove.emplace();
  return params;
}

// The line through the shoulders, along and out of the groove.
struct TMouth {
  TPoint left;
  TPoint right;
  TPoint along;
  TPoint out;

  explicit TMouth(const TStripeDrawing& drawing)
      : left(drawing.feature("leftShoulder")), right(drawing.feature("rightShoulder")) {
    along = (right - left) * (1.0 / cv::norm(right - left));
    out = {along.y, -along.x};
  }
  TPoint below(TPoint p) const { return left + along * (p - left).dot(along); }
};

void drawWidth(TStripeDrawing& drawing, const TMouth& mouth) {
  const auto measure = [&](TPoint a, TPoint b, double height, TMark mark, const std::string& name) {
    drawing.distance(a + mouth.out * height, b + mouth.out * height, mark);
    drawing.label((a + b) * 0.5 + mouth.out * (height + 4.0), name, mark, TAnchor::middle);
  };
  drawing.referenceLine(mouth.left, mouth.right);
  drawing.referenceLine(mouth.left, mouth.left + mouth.out * 32.0);
  drawing.referenceLine(mouth.right, mouth.right + mouth.out * 32.0);
  measure(mouth.left, mouth.right, 30.0, kMeasured, "width");
  measure(mouth.left, mouth.left + mouth.along * kDefaults.dPara9, 14.0, kParameter, "minWidthPx");
}

// Beside the root on its left: how deep it lies, and how deep it must.
void drawDepth(TStripeDrawing& drawing, const TMouth& mouth, double leastAtPx) {
  const TPoint root = drawing.feature("root");
  const TPoint foot = mouth.below(root);
  drawing.distance(foot, root, kMeasured);
  drawing.label(foot + (root - foot) * 0.7 + TPoint(3.0, 2.0), "depth", kMeasured);
  const TPoint least = foot - mouth.along * leastAtPx;
  drawing.distance(least, least - mouth.out * kDefaults.dPara7, kParameter);
  drawing.label(least - mouth.out * (kDefaults.dPara7 * 0.5) + TPoint(3.0, 2.0), "minDepthPx", kParameter);
}

// The gap as it is, and below it what counts as closed.
void drawRootGap(TStripeDrawing& drawing) {
  const TPoint left = drawing.feature("leftRoot");
  const TPoint right = drawing.feature("rightRoot");
  const TPoint along = (right - left) * (1.0 / cv::norm(right - left));
  const TPoint below = TPoint(-along.y, along.x) * 13.0;
  drawing.referenceLine(left, left + below * 1.2);
  drawing.distance(left, right, kMeasured);
  drawing.label(right + TPoint(8.0, 1.0), "root gap", kMeasured);
  drawing.distance(left + below, left + below + along * kDefaults.dPara8, kParameter);
  drawing.label(left + below + along * (kDefaults.dPara8 + 10.0) + TPoint(0.0, 4.0), "maxClosedGapPx", kParameter);
}

// Along a flank, on its outer side.
void drawLeastElement(TStripeDrawing& drawing, TPoint from, TPoint to) {
  const TPoint along = (to - from) * (1.0 / cv::norm(to - from));
  const TPoint aside = TPoint(-along.y, along.x) * 9.0;
  const TPoint end = from + along * kDefaults.dPara6;
  drawing.referenceLine(from, from + aside * 1.2);
  drawing.referenceLine(end, end + aside * 1.2);
  drawing.distance(from + aside, end + aside, kParameter);
  drawing.label((from + end) * 0.5 + aside + TPoint(-4.0, 4.0), "minElementPx", kParameter, TAnchor::end);
}

}  // namespace

TFigure drawGrooveSizes() {
  scenes::TSceneParams scene = grooveScene(scenes::TJoint::vGroove, {0.5, 0.8}, 80.0);
  scene.geometry.gapPx = 26.0;
  scene.geometry.leftFlankDeg = 45.0;
  scene.geometry.rightFlankDeg = -45.0;
  scene.geometry.groove->mismatchPx = 16.0;
  TStripeDrawing drawing(scene);
  const TMouth mouth(drawing);
  drawWidth(drawing, mouth);
  drawDepth(drawing, mouth, 42.0);
  drawRootGap(drawing);
  drawLeastElement(drawing, mouth.left, drawing.feature("leftRoot"));

  const double column = mouth.right.x - 30.0;
  drawing.referenceLine(mouth.left, {column + 3.0, mouth.left.y});
  drawing.referenceLine({column - 3.0, mouth.right.y}, mouth.right);
  drawing.distance({column, mouth.left.y}, {column, mouth.right.y}, kMeasured);
  drawing.label({column - 4.0, mouth.right.y + 8.0}, "mismatch", kMeasured, TAnchor::end);

  const TPoint rightRoot = drawing.feature("rightRoot");
  const double bandColumn = std::round((rightRoot.x + mouth.right.x) * 0.5);
  drawing.band(bandColumn - 14.0, bandColumn + 14.0, kDefaults.dPara2, bandColumn);
  drawing.label({bandColumn + 12.0, drawing.rowAt(bandColumn) + 8.0}, "lineTolerancePx", kParameter);
  return {"groove_sizes", "Grooves: width, depth, root gap and mismatch, and the limits of the first three",
          drawing.file()};
}

TFigure drawGrooveAngles() {
  scenes::TSceneParams scene = grooveScene(scenes::TJoint::vGroove, {0.47, 0.82}, 84.0);
  scene.geometry.leftFlankDeg = 36.0;
  scene.geometry.rightFlankDeg = -34.0;
  TStripeDrawing drawing(scene);
  const TMouth mouth(drawing);
  const TPoint root = drawing.feature("root");

  drawing.angle(mouth.left, kDefaults.angleRange1Min, kDefaults.angleRange1Max, kFanPx, kParameter);
  const auto rayEnd = [](TPoint pivot, double deg) { return TStripeDrawing::ray(pivot, deg, kFanPx); };
  drawing.label(rayEnd(mouth.left, kDefaults.angleRange1Min) + TPoint(4.0, 2.0), "leftFlankDeg.min", kParameter);
  drawing.label(rayEnd(mouth.left, kDefaults.angleRange1Max) + TPoint(-4.0, 8.0), "leftFlankDeg.max", kParameter,
                TAnchor::end);
  const TPoint pivot = root + (mouth.right - root) * 0.5;
  drawing.angle(pivot, kDefaults.angleRange2Min, kDefaults.angleRange2Max, kFanPx, kParameter);
  drawing.label(rayEnd(pivot, kDefaults.angleRange2Min) + TPoint(-6.0, -2.0), "rightFlankDeg.min", kParameter,
                TAnchor::end);
  drawing.label(rayEnd(pivot, kDefaults.angleRange2Max) + TPoint(4.0, 2.0), "rightFlankDeg.max", kParameter);

  const double leftDeg = 180.0 + drawing.angleDeg(mouth.left.x + 10.0, root.x - 10.0);
  const double rightDeg = 360.0 + drawing.angleDeg(root.x + 10.0, mouth.right.x - 10.0);
  const double bisectorDeg = (leftDeg + rightDeg) / 2.0;
  const auto included = [&](double widthDeg, double radiusPx, TMark mark, const std::string& name) {
    drawing.angle(root, bisectorDeg - widthDeg / 2.0, bisectorDeg + widthDeg / 2.0, radiusPx, mark);
    drawing.label(TStripeDrawing::ray(root, bisectorDeg, radiusPx + 3.0), name, mark, TAnchor::middle);
  };
  included(kDefaults.angleRange5Min, 24.0, kParameter, "includedAngleDeg.min");
  included(rightDeg - leftDeg, 38.0, kMeasured, "included angle");
  included(kDefaults.angleRange5Max, 52.0, kParameter, "includedAngleDeg.max");
  return {"groove_angles", "Grooves: the angles of the flanks and the angle between them", drawing.file()};
}

TFigure drawFlareSizes() {
  scenes::TSceneParams scene = grooveScene(scenes::TJoint::flareV, {0.5, 0.68}, 70.0);
  scene.geometry.gapPx = 18.0;
  scene.geometry.groove->leftRadiusPx = 76.0;
  scene.geometry.groove->rightRadiusPx = 58.0;
  TStripeDrawing drawing(scene);
  const TMouth mouth(drawing);
  const scenes::TMeasures& measures = drawing.scene().truth.measures;
  const auto drawRound = [&](TPoint shoulder, double radiusPx, double atDeg, const std::string& name) {
    const TPoint centre = shoulder - mouth.out * radiusPx;
    const TPoint end = TStripeDrawing::ray(centre, atDeg, radiusPx);
    drawing.referenceCircle(centre, radiusPx);
    drawing.distance(centre, end, kMeasured);
    drawing.label((centre + end) * 0.5 + TPoint(0.0, kTextPx), name, kMeasured, TAnchor::middle);
  };
  drawRound(mouth.left, measures.leftRadiusPx, -150.0, "left radius");
  drawRound(mouth.right, measures.rightRadiusPx, -30.0, "right radius");
  drawWidth(drawing, mouth);
  drawDepth(drawing, mouth, 44.0);
  drawRootGap(drawing);
  return {"groove_flare", "Flare joints: the radii of the round edges, and the gap between their circles",
          drawing.file()};
}

}  // namespace tool
