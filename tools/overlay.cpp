#include "tools/overlay.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>

namespace tool {
namespace {

const cv::Scalar kStripeColour(90, 230, 60);
const cv::Scalar kBandColour(220, 140, 30);
const cv::Scalar kSeamColour(80, 60, 255);
const cv::Scalar kTruthColour(0, 215, 255);
const cv::Scalar kFoundColour(110, 240, 110);
const cv::Scalar kLostColour(90, 90, 255);
const cv::Scalar kTextColour(255, 255, 255);
const cv::Scalar kBlack(0, 0, 0);

constexpr double kBandOpacity = 0.25;
constexpr double kLabelOpacity = 0.65;
constexpr float kMaxLinkPx = 3.0F;  // stripe centres farther apart are not joined by a line
constexpr int kSubpixelBits = 4;    // drawing accuracy: 1/16 px
constexpr float kSearchBandPx = 60.0F;
constexpr float kPlateSearchBandPx = 40.0F;
constexpr std::size_t kMinGuidePoints = 10;  // with fewer the detectors search the whole image

// Line widths and text grow with the image, so that a large frame stays readable when shown small.
double drawingScale(const cv::Mat& image) {
  return std::max(0.5, image.cols / 1000.0);
}
int lineWidth(const cv::Mat& image, double px) {
  return std::max(1, static_cast<int>(std::lround(px * drawingScale(image))));
}

cv::Point fine(cv::Point2d point) {
  constexpr double kLimit = 1e5;  // keeps absurd points inside the integer range
  constexpr double kSteps = 1 << kSubpixelBits;
  return {static_cast<int>(std::lround(std::clamp(point.x, -kLimit, kLimit) * kSteps)),
          static_cast<int>(std::lround(std::clamp(point.y, -kLimit, kLimit) * kSteps))};
}

cv::Mat toColour(const cv::Mat& image) {
  cv::Mat colour;
  if (image.channels() == 1) {
    cv::cvtColor(image, colour, cv::COLOR_GRAY2BGR);
  } else {
    colour = image.clone();
  }
  return colour;
}

void drawBand(cv::Mat& image, const std::vector<cv::Point2f>& guide, float halfHeight) {
  if (guide.empty()) {
    return;
  }
  std::vector<cv::Point> upper;
  std::vector<cv::Point> lower;
  for (const cv::Point2f& point : guide) {
    upper.emplace_back(cv::Point2f(point.x, point.y - halfHeight));
    lower.emplace_back(cv::Point2f(point.x, point.y + halfHeight));
  }
  std::vector<cv::Point> outline = upper;
  outline.insert(outline.end(), lower.rbegin(), lower.rend());
  cv::Mat tinted = image.clone();
  cv::fillPoly(tinted, std::vector<std::vector<cv::Point>>{outline}, kBandColour);
  cv::addWeighted(tinted, kBandOpacity, image, 1.0 - kBandOpacity, 0.0, image);
  cv::polylines(image, std::vector<std::vector<cv::Point>>{upper, lower}, false, kBandColour,
                lineWidth(image, 1.0), cv::LINE_AA);
}

void drawStripe(cv::Mat& image, const std::vector<cv::Point2f>& points) {
  const int width = lineWidth(image, 1.5);
  for (std::size_t i = 0; i < points.size(); ++i) {
    const bool isLinked = i > 0 && std::abs(points[i].x - points[i - 1].x) <= kMaxLinkPx &&
                          std::abs(points[i].y - points[i - 1].y) <= 2.0F * kMaxLinkPx;
    const cv::Point2f from = isLinked ? points[i - 1] : points[i];
    cv::line(image, fine(from), fine(points[i]), kStripeColour, width, cv::LINE_AA, kSubpixelBits);
  }
}

void drawCross(cv::Mat& image, cv::Point2d centre) {
  const double arm = 26.0 * drawingScale(image);
  const double hole = 9.0 * drawingScale(image);
  for (const auto& [colour, px] : {std::pair(kBlack, 5.0), std::pair(kSeamColour, 2.5)}) {
    for (const cv::Point2d& way : {cv::Point2d(1, 0), cv::Point2d(-1, 0), cv::Point2d(0, 1), cv::Point2d(0, -1)}) {
      cv::line(image, fine(centre + way * hole), fine(centre + way * arm), colour, lineWidth(image, px),
               cv::LINE_AA, kSubpixelBits);
    }
  }
}

void drawRing(cv::Mat& image, cv::Point2d centre) {
  const int radius = static_cast<int>(std::lround(12.0 * drawingScale(image) * (1 << kSubpixelBits)));
  cv::circle(image, fine(centre), radius, kTruthColour, lineWidth(image, 1.5), cv::LINE_AA, kSubpixelBits);
}

}  // namespace

std::optional<cv::Point2d> seamOf(const TWeldParams& params, const TWeldLineRes& result) {
  const bool hasSeamPoint = result.isFound && params.weldType != TWeldType::stripePresence;
  return hasSeamPoint ? std::make_optional(cv::Point2d(result.weldPos)) : std::nullopt;
}

TOverlay overlayOf(const TWeldParams& params, const TWeldLineRes& previous, const TWeldLineRes& result) {
  const bool mayTrack = params.weldType != TWeldType::stripePresence || params.flagPara2;
  TOverlay overlay;
  overlay.result = result;
  overlay.seam = seamOf(params, result);
  overlay.searchBandPx = params.weldType == TWeldType::plate ? kPlateSearchBandPx : kSearchBandPx;
  if (mayTrack && previous.isFound && previous.stripePts.size() >= kMinGuidePoints) {
    overlay.guidePts = previous.stripePts;
  }
  return overlay;
}

cv::Mat drawOverlay(const cv::Mat& image, const TOverlay& overlay) {
  cv::Mat drawn = toColour(image);
  drawBand(drawn, overlay.guidePts, overlay.searchBandPx);
  drawStripe(drawn, overlay.result.stripePts);
  if (overlay.trueSeam) {
    drawRing(drawn, *overlay.trueSeam);
  }
  if (overlay.seam) {
    drawCross(drawn, *overlay.seam);
  }
  return drawn;
}

void drawLabel(cv::Mat& image, const std::vector<std::string>& lines, bool isFound) {
  const double scale = drawingScale(image);
  const double textScale = 0.7 * scale;
  const int lineHeight = static_cast<int>(std::lround(28.0 * scale));
  const int margin = static_cast<int>(std::lround(12.0 * scale));
  const int thickness = lineWidth(image, 1.3);
  int width = 0;
  for (const std::string& line : lines) {
    width = std::max(width, cv::getTextSize(line, cv::FONT_HERSHEY_SIMPLEX, textScale, thickness, nullptr).width);
  }
  const int height = lineHeight * static_cast<int>(lines.size());
  const cv::Rect box =
      cv::Rect(0, 0, width + 2 * margin, height + margin) & cv::Rect(cv::Point(0, 0), image.size());
  image(box) *= 1.0 - kLabelOpacity;
  cv::Point base(margin, lineHeight - margin / 4);
  for (const std::string& line : lines) {
    const bool isFirst = &line == &lines.front();
    const cv::Scalar colour = !isFirst ? kTextColour : (isFound ? kFoundColour : kLostColour);
    cv::putText(image, line, base, cv::FONT_HERSHEY_SIMPLEX, textScale, colour, thickness, cv::LINE_AA);
    base.y += lineHeight;
  }
}

TOverlay scaled(TOverlay overlay, float factor) {
  // Pixel centres are at whole numbers, so the image's corner is at (-0.5, -0.5).
  const cv::Point2f half(0.5F, 0.5F);
  const auto scalePoint = [&](cv::Point2f point) { return (point + half) * factor - half; };
  for (auto* const points : {&overlay.result.stripePts, &overlay.guidePts}) {
    std::transform(points->begin(), points->end(), points->begin(), scalePoint);
  }
  for (auto* const point : {&overlay.seam, &overlay.trueSeam}) {
    if (*point) {
      *point = cv::Point2d(scalePoint(cv::Point2f(**point)));
    }
  }
  overlay.searchBandPx *= factor;
  return overlay;
}

}  // namespace tool
