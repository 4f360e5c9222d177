#include "tools/parameter_page/stripe_drawing.h"

#include "tools/cli_error.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <vector>

namespace tool {
namespace {

constexpr double kZoom = 2.5;
const std::string kGround = "#10161d";
const std::string kGlow = "#7d2320";
const std::string kCentreLine = "#ff7a66";
const std::string kReference = "#8a97a5";
const std::string kParameter = "#7fd4ff";

constexpr double kTextPx = 5.6;
constexpr double kLinePx = 0.5;
constexpr double kArrowPx = 2.6;
constexpr double kShortPx = 14.0;        // shorter distances get their arrows from outside
constexpr double kOutsideArrowPx = 7.0;  // length of those
constexpr double kJumpPx = 6.0;          // neighbouring columns farther apart belong to different pieces
constexpr double kStraightPx = 0.05;     // the drawn stripe keeps this close to the true one

const std::string& colourOf(TMark mark) {
  return mark == TMark::parameter ? kParameter : kReference;
}

// The lit columns in stretches without a jump.
std::vector<std::vector<cv::Point2f>> stretchesOf(const scenes::TTruth& truth) {
  std::vector<std::vector<cv::Point2f>> stretches;
  double previous = NAN;
  for (std::size_t x = 0; x < truth.centreY.size(); ++x) {
    const double row = truth.centreY[x];
    if (!std::isnan(row)) {
      if (!(std::abs(row - previous) <= kJumpPx)) stretches.emplace_back();
      stretches.back().emplace_back(static_cast<float>(x), static_cast<float>(row));
    }
    previous = row;
  }
  return stretches;
}

std::vector<cv::Point2d> simplified(const std::vector<cv::Point2f>& points) {
  std::vector<cv::Point2f> few;
  cv::approxPolyDP(points, few, kStraightPx, false);
  return {few.begin(), few.end()};
}

cv::Point2d unit(cv::Point2d vector) {
  const double length = cv::norm(vector);
  return length > 0.0 ? vector * (1.0 / length) : cv::Point2d();
}

}  // namespace

TStripeDrawing::TStripeDrawing(const scenes::TSceneParams& params)
    : rendered(scenes::renderScene(params)), svg(cv::Size2d(params.size), kZoom, kGround) {
  for (const auto& stretch : stretchesOf(rendered.truth)) {
    const std::vector<cv::Point2d> centres = simplified(stretch);
    const double heightPx = rendered.truth.fwhmPx[static_cast<std::size_t>(stretch.front().x)];
    svg.polyline(centres, {kGlow, heightPx, ""});
    svg.polyline(centres, {kCentreLine, 1.0, ""});
  }
}

cv::Point2d TStripeDrawing::feature(const std::string& name) const {
  for (const scenes::TFeature& candidate : rendered.truth.features) {
    if (candidate.name == name) return candidate.point;
  }
  throw TCliError(TExit::failure, "the scene has no feature " + name);
}

double TStripeDrawing::rowAt(double column) const {
  return rendered.truth.centreY.at(static_cast<std::size_t>(column));
}

double TStripeDrawing::angleDeg(double fromColumn, double toColumn) const {
  return std::atan2(rowAt(toColumn) - rowAt(fromColumn), toColumn - fromColumn) * 180.0 / CV_PI;
}

void TStripeDrawing::referenceLine(cv::Point2d a, cv::Point2d b) {
  svg.line(a, b, {kReference, kLinePx, "2 1.5"});
}

void TStripeDrawing::referenceCircle(cv::Point2d centre, double radius) {
  for (const double fromDeg : {0.0, 180.0}) {
    svg.arc(centre, radius, fromDeg, fromDeg + 180.0, {kReference, kLinePx, "2 1.5"});
  }
}

void TStripeDrawing::arrow(cv::Point2d tip, cv::Point2d from, TMark mark) {
  const cv::Point2d along = unit(tip - from);
  const cv::Point2d across(-along.y, along.x);
  const cv::Point2d foot = tip - along * kArrowPx;
  svg.line(from, foot, {colourOf(mark), kLinePx, ""});
  svg.polygon({tip, foot + across * (kArrowPx / 3.0), foot - across * (kArrowPx / 3.0)}, colourOf(mark));
}

void TStripeDrawing::distance(cv::Point2d a, cv::Point2d b, TMark mark) {
  const cv::Point2d along = unit(b - a);
  if (cv::norm(b - a) < kShortPx) {
    svg.line(a, b, {colourOf(mark), kLinePx, ""});
    arrow(a, a - along * kOutsideArrowPx, mark);
    arrow(b, b + along * kOutsideArrowPx, mark);
    return;
  }
  const cv::Point2d middle = (a + b) * 0.5;
  arrow(a, middle, mark);
  arrow(b, middle, mark);
}

void TStripeDrawing::band(double fromColumn, double toColumn, double halfHeightPx, double atColumn) {
  const cv::Point2d first(fromColumn, rowAt(fromColumn));
  const cv::Point2d last(toColumn, rowAt(toColumn));
  const cv::Point2d along = unit(last - first);
  const cv::Point2d up = cv::Point2d(along.y, -along.x) * halfHeightPx;
  svg.polygon({first + up, last + up, last - up, first - up}, kParameter, 0.22);
  svg.line(first + up, last + up, {kParameter, kLinePx / 2.0, ""});
  svg.line(first - up, last - up, {kParameter, kLinePx / 2.0, ""});
  const cv::Point2d centre(atColumn, rowAt(atColumn));
  distance(centre + up, centre, TMark::parameter);
}

void TStripeDrawing::angle(cv::Point2d pivot, double fromDeg, double toDeg, double radiusPx, TMark mark) {
  svg.arc(pivot, radiusPx, fromDeg, toDeg, {colourOf(mark), kLinePx, ""});
  for (const double end : {fromDeg, toDeg}) {
    svg.line(pivot, ray(pivot, end, radiusPx + kArrowPx), {colourOf(mark), kLinePx, "2 1"});
  }
  svg.circle(pivot, 1.0, colourOf(mark));
}

cv::Point2d TStripeDrawing::ray(cv::Point2d pivot, double angleDeg, double lengthPx) {
  const double angle = angleDeg * CV_PI / 180.0;
  return pivot + cv::Point2d(std::cos(angle), std::sin(angle)) * lengthPx;
}

void TStripeDrawing::label(cv::Point2d at, const std::string& words, TMark mark, TAnchor anchor) {
  svg.text(at, words, kTextPx, colourOf(mark), anchor);
}

void TStripeDrawing::greyProfile(cv::Point2d topLeft, cv::Point2d corner, double angleDeg, double dropGrey,
                                 const std::string& name) {
  constexpr int kReachPx = 40;
  constexpr double kPxPerGrey = 0.16;
  const double whitePx = 255.0 * kPxPerGrey;
  const double slope = std::tan(angleDeg * CV_PI / 180.0);
  const cv::Point2d foot = topLeft + cv::Point2d(0.0, whitePx);
  std::vector<cv::Point2d> curve;
  int brightest = 0;
  for (int dx = -kReachPx; dx <= kReachPx; ++dx) {
    const cv::Point pixel(cvRound(corner.x) + dx, cvRound(corner.y + slope * dx));
    const int grey = rendered.image.at<std::uint8_t>(pixel);
    brightest = std::max(brightest, grey);
    curve.push_back(foot + cv::Point2d(dx + kReachPx, -grey * kPxPerGrey));
  }
  svg.line(foot, foot + cv::Point2d(2.0 * kReachPx, 0.0), {kReference, kLinePx, ""});
  svg.line(foot, topLeft, {kReference, kLinePx, ""});
  svg.polyline(curve, {kCentreLine, 0.8, ""});
  const cv::Point2d high = foot + cv::Point2d(kReachPx + 9.0, -brightest * kPxPerGrey);
  const cv::Point2d low = high + cv::Point2d(0.0, dropGrey * kPxPerGrey);
  referenceLine(high - cv::Point2d(kReachPx, 0.0), high + cv::Point2d(kReachPx - 9.0, 0.0));
  referenceLine(low - cv::Point2d(kReachPx, 0.0), low + cv::Point2d(kReachPx - 9.0, 0.0));
  distance(high, low, TMark::parameter);
  label(low + cv::Point2d(3.0, kTextPx + 1.0), name, TMark::parameter);
  label(foot + cv::Point2d(kReachPx, kTextPx + 2.0), "grey level along the piece", TMark::measured,
        TAnchor::middle);
}

}  // namespace tool
