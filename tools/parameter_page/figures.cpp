#include "tools/parameter_page/figures.h"

#include "tools/parameter_page/groove_figures.h"
#include "tools/parameter_page/stripe_drawing.h"
#include "tools/text.h"

#include <cmath>

namespace tool {
namespace {

using TPoint = cv::Point2d;
using scenes::TJoint;

constexpr TMark kParameter = TMark::parameter;
constexpr TMark kMeasured = TMark::measured;
constexpr double kFlankEndPx = 12.0;

constexpr double kFanPx = 40.0;           // radius of an angle range
constexpr double kTrackingBandPx = 60.0;  // half height of the band that tracking searches

// A scene whose left flank loses its stripe once, next to the corner, and the last column before that.
constexpr std::uint64_t kSeedOfBreak = 663;
constexpr double kColumnBeforeBreak = 147.0;

const TWeldParams kDefaults;

scenes::TSceneParams sceneOf(TJoint joint, int rows) {
  scenes::TSceneParams params;
  params.joint = joint;
  params.size = {320, rows};
  params.look.fwhmPx = params.look.rootFwhmPx = 4.0;
  return params;
}

void labelRay(TStripeDrawing& drawing, TPoint pivot, double angleDeg, TPoint offset, const std::string& name,
              TAnchor anchor = TAnchor::start) {
  drawing.label(TStripeDrawing::ray(pivot, angleDeg, kFanPx) + offset, name, kParameter, anchor);
}

TFigure drawButtGap() {
  scenes::TSceneParams scene = sceneOf(TJoint::buttGap, 140);
  scene.geometry.seam = {0.58, 0.52};
  scene.geometry.tiltDeg = 5.0;
  scene.geometry.gapPx = 44.0;
  TStripeDrawing drawing(scene);
  const TPoint left = drawing.feature("gapLeft");
  const TPoint right = drawing.feature("gapRight");
  const double lastColumn = scene.size.width - 1.0;
  drawing.referenceLine({0.0, drawing.rowAt(0)}, {lastColumn, drawing.rowAt(lastColumn)});

  const TPoint pivot(26.0, drawing.rowAt(26));
  drawing.angle(pivot, kDefaults.angleRange4.min, kDefaults.angleRange4.max, kFanPx, kParameter);
  labelRay(drawing, pivot, kDefaults.angleRange4.min, {4.0, -2.0}, "stripeAngleDeg.min");
  labelRay(drawing, pivot, kDefaults.angleRange4.max, {4.0, 6.0}, "stripeAngleDeg.max");

  drawing.band(100.0, 150.0, kDefaults.dPara2, 125.0);
  drawing.label({125.0, drawing.rowAt(125) - 16.0}, "lineTolerancePx", kParameter, TAnchor::middle);
  drawing.band(235.0, 300.0, kDefaults.dPara4, 268.0);
  drawing.label({268.0, drawing.rowAt(268) - 13.0}, "fitScalePx", kParameter, TAnchor::middle);

  drawing.referenceLine(left, left + TPoint(0.0, 34.0));
  drawing.referenceLine(right, right + TPoint(0.0, 34.0));
  const double measuredRow = left.y + 32.0;
  drawing.distance({left.x, measuredRow}, {right.x, measuredRow}, kMeasured);
  drawing.label({(left.x + right.x) / 2.0, measuredRow + 7.5}, "gap", kMeasured, TAnchor::middle);
  const double parameterRow = left.y + 17.0;
  const TPoint widthEnd(left.x + kDefaults.dPara8, parameterRow);
  drawing.distance({left.x, parameterRow}, widthEnd, kParameter);
  drawing.label(widthEnd + TPoint(9.0, 2.0), "minGapPx", kParameter);
  return {"buttGap", "Butt gap: one straight stripe broken by a gap", drawing.file()};
}

TFigure drawLap() {
  scenes::TSceneParams scene = sceneOf(TJoint::lap, 170);
  scene.geometry.seam = {0.48, 0.36};
  scene.geometry.stepPx = 44.0;
  scene.geometry.overlapPx = -4.0;
  TStripeDrawing drawing(scene);
  const TPoint left = drawing.feature("leftCorner");
  const TPoint right = drawing.feature("rightCorner");

  drawing.referenceLine(left, left + TPoint(72.0, 0.0));
  const double stepColumn = right.x + 14.0;
  drawing.distance({stepColumn, left.y}, {stepColumn, left.y + kDefaults.dPara7}, kParameter);
  drawing.label({stepColumn + 3.0, left.y + kDefaults.dPara7 / 2.0 + 2.0}, "minStepPx", kParameter);
  drawing.distance({stepColumn + 40.0, left.y}, {stepColumn + 40.0, right.y}, kMeasured);
  drawing.label({stepColumn + 43.0, (left.y + right.y) / 2.0 + 2.0}, "step", kMeasured);

  const double lengthRow = left.y - 14.0;
  drawing.referenceLine(left, {left.x, lengthRow - 2.0});
  drawing.distance({left.x - kDefaults.dPara6, lengthRow}, {left.x, lengthRow}, kParameter);
  drawing.label({left.x - kDefaults.dPara6 / 2.0, lengthRow - 3.0}, "minPiecePx", kParameter, TAnchor::middle);
  const double lowerRow = right.y + 14.0;
  drawing.referenceLine(right, {right.x, lowerRow + 2.0});
  drawing.distance({right.x, lowerRow}, {right.x + kDefaults.dPara6, lowerRow}, kParameter);
  drawing.label({right.x + kDefaults.dPara6 / 2.0, lowerRow + 7.5}, "minPiecePx", kParameter, TAnchor::middle);

  drawing.band(14.0, 74.0, kDefaults.dPara2, 44.0);
  drawing.label({44.0, left.y - 16.0}, "supportPx", kParameter, TAnchor::middle);
  drawing.band(246.0, 306.0, kDefaults.dPara2, 276.0);
  drawing.label({276.0, right.y - 16.0}, "supportPx", kParameter, TAnchor::middle);
  drawing.greyProfile({30.0, 104.0}, left, 0.0, kDefaults.dPara1, "minEdgeDrop");
  return {"lap", "Lap: two straight pieces displaced in height", drawing.file()};
}

scenes::TSceneParams cornerScene(double seamX) {
  scenes::TSceneParams scene = sceneOf(TJoint::corner, 170);
  scene.geometry.seam = {seamX, 0.84};
  scene.geometry.leftFlankDeg = 26.0;
  scene.geometry.rightFlankDeg = -24.0;
  return scene;
}

TFigure drawCornerAngles() {
  TStripeDrawing drawing(cornerScene(0.5));
  const TPoint root = drawing.feature("root");
  const TPoint left(24.0, drawing.rowAt(24));
  drawing.angle(left, kDefaults.angleRange1Min, kDefaults.angleRange1Max, kFanPx, kParameter);
  labelRay(drawing, left, kDefaults.angleRange1Min, {4.0, 2.0}, "leftFlankDeg.min");
  labelRay(drawing, left, kDefaults.angleRange1Max, {4.0, 7.0}, "leftFlankDeg.max", TAnchor::end);
  const TPoint right(221.0, drawing.rowAt(221));
  drawing.angle(right, kDefaults.angleRange2Min, kDefaults.angleRange2Max, kFanPx, kParameter);
  labelRay(drawing, right, kDefaults.angleRange2Min, {0.0, -2.0}, "rightFlankDeg.min", TAnchor::end);
  labelRay(drawing, right, kDefaults.angleRange2Max, {-16.0, 8.0}, "rightFlankDeg.max");

  const double leftDeg = 180.0 + drawing.angleDeg(14.0, root.x - kFlankEndPx);
  const double rightDeg = 360.0 + drawing.angleDeg(root.x + kFlankEndPx, 310.0);
  const double bisectorDeg = (leftDeg + rightDeg) / 2.0;
  const auto included = [&](double widthDeg, double radiusPx, TMark mark, const std::string& name) {
    drawing.angle(root, bisectorDeg - widthDeg / 2.0, bisectorDeg + widthDeg / 2.0, radiusPx, mark);
    drawing.label(TStripeDrawing::ray(root, bisectorDeg, radiusPx + 3.0), name, mark, TAnchor::middle);
  };
  included(kDefaults.angleRange5Min, 30.0, kParameter, "includedAngleDeg.min");
  included(rightDeg - leftDeg, 44.0, kMeasured, "included angle");
  included(kDefaults.angleRange5Max, 58.0, kParameter, "includedAngleDeg.max");
  return {"corner_angles", "Corner: the angles of its flanks and the angle between them", drawing.file()};
}

// The flanks as a whole and the share of each that must be unbroken.
void drawFlankShares(TStripeDrawing& drawing, TPoint root, double lastColumn) {
  const double flankRow = 22.0;
  const double shareRow = 38.0;
  const double leftEnd = root.x * (1.0 - kDefaults.dPara10);
  const double rightEnd = root.x + (lastColumn - root.x) * kDefaults.dPara10;
  drawing.referenceLine({root.x, flankRow - 2.0}, root);
  drawing.referenceLine({leftEnd, shareRow - 2.0}, {leftEnd, drawing.rowAt(leftEnd)});
  drawing.referenceLine({rightEnd, shareRow - 2.0}, {rightEnd, drawing.rowAt(rightEnd)});
  drawing.distance({0.0, flankRow}, {root.x, flankRow}, kMeasured);
  drawing.distance({root.x, flankRow}, {lastColumn, flankRow}, kMeasured);
  drawing.label({root.x / 2.0, flankRow - 3.0}, "points of the left flank", kMeasured, TAnchor::middle);
  drawing.label({(root.x + lastColumn) / 2.0, flankRow - 3.0}, "points of the right flank", kMeasured,
                TAnchor::middle);
  drawing.distance({leftEnd, shareRow}, {root.x, shareRow}, kParameter);
  drawing.distance({root.x, shareRow}, {rightEnd, shareRow}, kParameter);
  drawing.label({(leftEnd + root.x) / 2.0, shareRow + 7.5}, "solidShare", kParameter, TAnchor::middle);
  drawing.label({rightEnd + 3.0, shareRow + 2.0}, "solidShare", kParameter);
}

TFigure drawCornerDistances() {
  scenes::TSceneParams scene = cornerScene(0.62);
  scene.seed = kSeedOfBreak;
  scene.look.missingShare = 0.028;
  scene.look.missingRunPx = 8.0;
  TStripeDrawing drawing(scene);
  const TPoint root = drawing.feature("root");
  drawFlankShares(drawing, root, scene.size.width - 1.0);

  const TPoint beforeBreak(kColumnBeforeBreak, drawing.rowAt(kColumnBeforeBreak));
  const TPoint breakEnd = beforeBreak + TPoint(kDefaults.nPara5, 0.0);
  drawing.referenceLine(beforeBreak, beforeBreak + TPoint(0.0, 26.0));
  drawing.distance(beforeBreak + TPoint(0.0, 24.0), breakEnd + TPoint(0.0, 24.0), kParameter);
  drawing.label(beforeBreak + TPoint(-9.0, 26.0), "maxBreakColumns", kParameter, TAnchor::end);

  const TPoint halfHole(kDefaults.nPara1 / 2.0, 0.0);
  const TPoint below = root + TPoint(0.0, 14.0);
  drawing.referenceLine(root - halfHole, below - halfHole + TPoint(0.0, 2.0));
  drawing.referenceLine(root + halfHole, below + halfHole + TPoint(0.0, 2.0));
  drawing.distance(below - halfHole, below + halfHole, kParameter);
  drawing.label(below + halfHole + TPoint(9.0, 2.0), "maxMissingColumns", kParameter);

  const TPoint count(16.0, drawing.rowAt(16) + 44.0);
  const TPoint countEnd = count + TPoint(kDefaults.dPara6, 0.0);
  drawing.referenceLine({count.x, drawing.rowAt(count.x)}, count + TPoint(0.0, 2.0));
  drawing.referenceLine({countEnd.x, drawing.rowAt(countEnd.x)}, countEnd + TPoint(0.0, 2.0));
  drawing.distance(count, countEnd, kParameter);
  drawing.label((count + countEnd) * 0.5 + TPoint(0.0, 7.5), "minFlankPoints", kParameter, TAnchor::middle);

  drawing.band(78.0, 124.0, kDefaults.dPara2, 100.0);
  drawing.label({104.0, drawing.rowAt(100) - 14.0}, "flankTolerancePx", kParameter);
  drawing.band(256.0, 308.0, kDefaults.dPara4, 282.0);
  drawing.label({284.0, drawing.rowAt(282) + 17.0}, "fitScalePx", kParameter);
  return {"corner_distances", "Corner: distances, counts and shares of its flanks", drawing.file()};
}

TFigure drawPlate() {
  scenes::TSceneParams scene = sceneOf(TJoint::plate, 170);
  scene.geometry.seam = {0.5, 0.26};
  scene.geometry.plateWidthPx = 190.0;
  scene.geometry.stepPx = 34.0;
  TStripeDrawing drawing(scene);
  const TPoint left = drawing.feature("plateLeft");
  const TPoint right = drawing.feature("plateRight");

  const double widthRow = left.y + 30.0;
  drawing.referenceLine(left, {left.x, widthRow + 2.0});
  drawing.referenceLine(right, {right.x, widthRow + 2.0});
  drawing.distance({left.x, widthRow}, {right.x, widthRow}, kMeasured);
  drawing.label({(left.x + right.x) / 2.0, widthRow + 7.5}, "distance between the ends", kMeasured,
                TAnchor::middle);
  const double leastRow = left.y + 14.0;
  drawing.distance({left.x, leastRow}, {left.x + kDefaults.dPara9, leastRow}, kParameter);
  drawing.label({left.x + kDefaults.dPara9 / 2.0, leastRow + 7.5}, "minWidthPx", kParameter, TAnchor::middle);

  const double lengthRow = left.y - 14.0;
  drawing.referenceLine(left, {left.x, lengthRow - 2.0});
  drawing.distance({left.x, lengthRow}, {left.x + kDefaults.dPara6, lengthRow}, kParameter);
  drawing.label({left.x + kDefaults.dPara6 / 2.0, lengthRow - 3.0}, "minPiecePx", kParameter, TAnchor::middle);

  const TPoint pivot(left.x + 66.0, left.y);
  const double fanPx = 56.0;
  drawing.angle(pivot, kDefaults.angleRange0Min, kDefaults.angleRange0Max, fanPx, kParameter);
  drawing.label(TStripeDrawing::ray(pivot, kDefaults.angleRange0Min, fanPx) + TPoint(0.0, -5.0),
                "plateAngleDeg.min", kParameter, TAnchor::middle);
  drawing.label(TStripeDrawing::ray(pivot, kDefaults.angleRange0Max, fanPx) + TPoint(0.0, 8.0),
                "plateAngleDeg.max", kParameter, TAnchor::middle);

  drawing.band(right.x - 44.0, right.x - 4.0, kDefaults.dPara2, right.x - 20.0);
  drawing.label({right.x - 20.0, right.y - 16.0}, "supportPx", kParameter, TAnchor::middle);
  drawing.greyProfile({120.0, 104.0}, right, 0.0, kDefaults.dPara1, "minEdgeDrop");
  return {"plate", "Plate: the highest straight piece of the stripe and its two ends", drawing.file()};
}

TFigure drawStripePresence() {
  scenes::TSceneParams scene = sceneOf(TJoint::plain, 170);
  scene.geometry.tiltDeg = 4.0;
  TStripeDrawing drawing(scene);
  const double lastColumn = scene.size.width - 1.0;
  const TPoint first(0.0, drawing.rowAt(0.0));
  const TPoint last(lastColumn, drawing.rowAt(lastColumn));
  const TPoint reach(0.0, kTrackingBandPx);
  drawing.referenceLine(first - reach, last - reach);
  drawing.referenceLine(first + reach, last + reach);
  const TPoint middle(160.0, drawing.rowAt(160.0));
  drawing.distance(middle - reach, middle, kMeasured);
  drawing.distance(middle + reach, middle, kMeasured);
  drawing.label(middle - reach * 0.5 + TPoint(4.0, 2.0), plain(kTrackingBandPx) + " px", kMeasured);
  drawing.label(middle + reach * 0.5 + TPoint(4.0, 2.0), plain(kTrackingBandPx) + " px", kMeasured);
  drawing.label({10.0, first.y - 30.0}, "searchesNear: only this band is searched", kParameter);
  return {"stripePresence", "Stripe presence: the band around the previous stripe", drawing.file()};
}

}  // namespace

std::vector<TFigure> figuresOf(TWeldType type) {
  switch (type) {
    case TWeldType::buttGap:
      return {drawButtGap()};
    case TWeldType::lap:
      return {drawLap()};
    case TWeldType::corner:
      return {drawCornerAngles(), drawCornerDistances()};
    case TWeldType::plate:
      return {drawPlate()};
    case TWeldType::vGroove:
      return {drawGrooveSizes(), drawGrooveAngles()};
    case TWeldType::flareV:
      return {drawFlareSizes()};
    case TWeldType::stripePresence:
      return {drawStripePresence()};
    default:
      return {};
  }
}

}  // namespace tool
