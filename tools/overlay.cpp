#include "tools/overlay.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>

namespace tool {
namespace {

const cv::Scalar STRIPE_COLOUR(90, 230, 60);
const cv::Scalar BAND_COLOUR(220, 140, 30);
const cv::Scalar SEAM_COLOUR(80, 60, 255);
const cv::Scalar TRUTH_COLOUR(0, 215, 255);
const cv::Scalar FOUND_COLOUR(110, 240, 110);
const cv::Scalar LOST_COLOUR(90, 90, 255);
const cv::Scalar TEXT_COLOUR(255, 255, 255);
const cv::Scalar BLACK(0, 0, 0);

constexpr double BAND_OPACITY = 0.25;
constexpr double LABEL_OPACITY = 0.65;
constexpr float MAX_LINK_PX = 3.0F;  // stripe centres farther apart are not joined by a line
constexpr int SUBPIXEL_BITS = 4;     // drawing accuracy: 1/16 px
constexpr float SEARCH_BAND_PX = 60.0F;
constexpr float PLATE_SEARCH_BAND_PX = 40.0F;
constexpr std::size_t MIN_GUIDE_POINTS = 10;  // with fewer the detectors search the whole image

// Line widths and text grow with the image, so that a large frame stays readable when shown small.
double drawingScale(const cv::Mat& image) {
  return std::max(0.5, image.cols / 1000.0);
}
int lineWidth(const cv::Mat& image, double px) {
  return std::max(1, static_cast<int>(std::lround(px * drawingScale(image))));
}

cv::Point fine(cv::Point2d point) {
  constexpr double LIMIT = 1e5;  // keeps absurd points inside the integer range
  constexpr double STEPS = 1 << SUBPIXEL_BITS;
  return {static_cast<int>(std::lround(std::clamp(point.x, -LIMIT, LIMIT) * STEPS)),
          static_cast<int>(std::lround(std::clamp(point.y, -LIMIT, LIMIT) * STEPS))};
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
  cv::fillPoly(tinted, std::vector<std::vector<cv::Point>>{outline}, BAND_COLOUR);
  cv::addWeighted(tinted, BAND_OPACITY, image, 1.0 - BAND_OPACITY, 0.0, image);
  cv::polylines(image, std::vector<std::vector<cv::Point>>{upper, lower}, false, BAND_COLOUR,
                lineWidth(image, 1.0), cv::LINE_AA);
}

void drawStripe(cv::Mat& image, const std::vector<cv::Point2f>& points) {
  const int width = lineWidth(image, 1.5);
  for (std::size_t i = 0; i < points.size(); ++i) {
    const bool isLinked = i > 0 && std::abs(points[i].x - points[i - 1].x) <= MAX_LINK_PX &&
                          std::abs(points[i].y - points[i - 1].y) <= 2.0F * MAX_LINK_PX;
    const cv::Point2f from = isLinked ? points[i - 1] : points[i];
    cv::line(image, fine(from), fine(points[i]), STRIPE_COLOUR, width, cv::LINE_AA, SUBPIXEL_BITS);
  }
}

void drawCross(cv::Mat& image, cv::Point2d centre) {
  const double arm = 26.0 * drawingScale(image);
  const double hole = 9.0 * drawingScale(image);
  for (const auto& [colour, px] : {std::pair(BLACK, 5.0), std::pair(SEAM_COLOUR, 2.5)}) {
    for (const cv::Point2d& way : {cv::Point2d(1, 0), cv::Point2d(-1, 0), cv::Point2d(0, 1), cv::Point2d(0, -1)}) {
      cv::line(image, fine(centre + way * hole), fine(centre + way * arm), colour, lineWidth(image, px),
               cv::LINE_AA, SUBPIXEL_BITS);
    }
  }
}

void drawRing(cv::Mat& image, cv::Point2d centre) {
  const int radius = static_cast<int>(std::lround(12.0 * drawingScale(image) * (1 << SUBPIXEL_BITS)));
  cv::circle(image, fine(centre), radius, TRUTH_COLOUR, lineWidth(image, 1.5), cv::LINE_AA, SUBPIXEL_BITS);
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
  overlay.searchBandPx = params.weldType == TWeldType::plate ? PLATE_SEARCH_BAND_PX : SEARCH_BAND_PX;
  if (mayTrack && previous.isFound && previous.stripePts.size() >= MIN_GUIDE_POINTS) {
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
  image(box) *= 1.0 - LABEL_OPACITY;
  cv::Point base(margin, lineHeight - margin / 4);
  for (const std::string& line : lines) {
    const bool isFirst = &line == &lines.front();
    const cv::Scalar colour = !isFirst ? TEXT_COLOUR : (isFound ? FOUND_COLOUR : LOST_COLOUR);
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
