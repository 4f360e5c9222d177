#include "tools/overlay.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cmath>

namespace tool {
namespace {

// Blue, green, red.
const cv::Scalar kRegionColour(220, 140, 30);
const cv::Scalar kRejectedColour(40, 130, 255);
const cv::Scalar kLineColour(200, 200, 200);
const cv::Scalar kPieceColour(255, 60, 230);
const cv::Scalar kMarkColour(255, 255, 120);
const cv::Scalar kTestedColour(60, 230, 255);
const cv::Scalar kSeamColour(80, 60, 255);
const cv::Scalar kHeldColour(40, 180, 240);
const cv::Scalar kTruthColour(0, 215, 255);
const cv::Scalar kFoundTextColour(110, 240, 110);
const cv::Scalar kLostTextColour(90, 90, 255);
const cv::Scalar kTextColour(255, 255, 255);
const cv::Scalar kBlack(0, 0, 0);
// Neighbouring stretches of the stripe differ.
const std::array<cv::Scalar, 3> kStretchColours = {cv::Scalar(50, 205, 0), cv::Scalar(255, 150, 0),
                                                   cv::Scalar(170, 170, 0)};

constexpr double kRegionOpacity = 0.15;
constexpr double kLabelOpacity = 0.65;
constexpr float kMaxLinkPx = 3.0F;  // stripe centres farther apart begin a new stretch; twice as much in height
constexpr int kLeastNamedPx = 400;  // width of an image that has room for names
constexpr int kSubpixelBits = 4;    // drawing accuracy: 1/16 px

// Line widths and text grow with the image, so that a large frame stays readable when shown small.
double drawingScale(const cv::Mat& image) {
  return std::max(0.5, image.cols / 1000.0);
}
int lineWidth(const cv::Mat& image, double px) {
  return std::max(1, static_cast<int>(std::lround(px * drawingScale(image))));
}

bool isFinite(cv::Point2f point) {
  return std::isfinite(point.x) && std::isfinite(point.y);
}

cv::Point fine(cv::Point2f point) {
  constexpr float kLimit = 1e5F;  // keeps absurd points inside the integer range
  constexpr float kSteps = 1 << kSubpixelBits;
  return {static_cast<int>(std::lround(std::clamp(point.x, -kLimit, kLimit) * kSteps)),
          static_cast<int>(std::lround(std::clamp(point.y, -kLimit, kLimit) * kSteps))};
}

int fineLength(double px) {
  return static_cast<int>(std::lround(px * (1 << kSubpixelBits)));
}

void drawLine(cv::Mat& image, const TSegment& segment, const cv::Scalar& colour, double px) {
  if (isFinite(segment.first) && isFinite(segment.second)) {
    cv::line(image, fine(segment.first), fine(segment.second), colour, lineWidth(image, px), cv::LINE_AA,
             kSubpixelBits);
  }
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

void drawRegions(cv::Mat& image, const std::vector<cv::Rect2f>& regions) {
  for (const cv::Rect2f& region : regions) {
    const cv::Rect box = cv::Rect(region) & cv::Rect({0, 0}, image.size());
    if (box.size() != image.size()) {
      cv::Mat inside = image(box);
      cv::addWeighted(inside, 1.0 - kRegionOpacity, cv::Mat(box.size(), inside.type(), kRegionColour),
                      kRegionOpacity, 0.0, inside);
    }
    cv::rectangle(image, box, kRegionColour, lineWidth(image, 1.0));
  }
}

void drawRejected(cv::Mat& image, const std::vector<cv::Point2f>& points) {
  for (const cv::Point2f& point : points) {
    cv::circle(image, fine(point), fineLength(1.5 * drawingScale(image)), kRejectedColour, cv::FILLED, cv::LINE_AA,
               kSubpixelBits);
  }
}

// Every stretch in a colour other than the one before.
void drawStripe(cv::Mat& image, const std::vector<cv::Point2f>& points) {
  std::size_t stretch = 0;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const bool isLinked = i > 0 && std::abs(points[i].x - points[i - 1].x) <= kMaxLinkPx &&
                          std::abs(points[i].y - points[i - 1].y) <= 2.0F * kMaxLinkPx;
    stretch += i > 0 && !isLinked ? 1 : 0;
    drawLine(image, {isLinked ? points[i - 1] : points[i], points[i]},
             kStretchColours[stretch % kStretchColours.size()], 1.5);
  }
}

// A piece with a bar across both ends. The stripe is drawn over it and leaves its edges to be seen.
void drawPiece(cv::Mat& image, const TPolyline& piece) {
  const float bar = static_cast<float>(9.0 * drawingScale(image));
  for (std::size_t i = 1; i < piece.size(); ++i) {
    drawLine(image, {piece[i - 1], piece[i]}, kPieceColour, 4.0);
  }
  for (const cv::Point2f& end : {piece.front(), piece.back()}) {
    drawLine(image, {end - cv::Point2f(0, bar), end + cv::Point2f(0, bar)}, kPieceColour, 1.5);
  }
}

void drawRing(cv::Mat& image, cv::Point2f centre, double radiusPx, const cv::Scalar& colour) {
  if (isFinite(centre)) {
    cv::circle(image, fine(centre), fineLength(radiusPx * drawingScale(image)), colour, lineWidth(image, 1.5),
               cv::LINE_AA, kSubpixelBits);
  }
}

void drawCross(cv::Mat& image, cv::Point2f centre, const cv::Scalar& colour) {
  const float arm = static_cast<float>(26.0 * drawingScale(image));
  const float hole = static_cast<float>(9.0 * drawingScale(image));
  for (const auto& [ink, px] : {std::pair(kBlack, 5.0), std::pair(colour, 2.5)}) {
    for (const cv::Point2f& way : {cv::Point2f(1, 0), cv::Point2f(-1, 0), cv::Point2f(0, 1), cv::Point2f(0, -1)}) {
      drawLine(image, {centre + way * hole, centre + way * arm}, ink, px);
    }
  }
}

// Names stand outside the joint: above its upper points and below the lower ones, those of a side on that side.
void drawName(cv::Mat& image, const TMark& mark, bool isUpper) {
  const double textScale = 0.45 * drawingScale(image);
  const int thickness = lineWidth(image, 1.0);
  const cv::Size size = cv::getTextSize(mark.name, cv::FONT_HERSHEY_SIMPLEX, textScale, thickness, nullptr);
  const bool isLeft = mark.name.rfind("left", 0) == 0;
  const bool isRight = mark.name.rfind("right", 0) == 0;
  const double space = (isLeft || isRight ? 15.0 : 30.0) * drawingScale(image);  // the cross of the seam is there
  const int x = cvRound(mark.pos.x) - (isLeft ? size.width : isRight ? 0 : size.width / 2);
  const int y = cvRound(static_cast<double>(mark.pos.y) + (isUpper ? -space : space + size.height));
  const cv::Point base(std::clamp(x, 0, std::max(0, image.cols - size.width)),
                       std::clamp(y, size.height, std::max(size.height, image.rows - 2)));
  for (const auto& [ink, more] : {std::pair(kBlack, 2), std::pair(kMarkColour, 0)}) {
    cv::putText(image, mark.name, base, cv::FONT_HERSHEY_SIMPLEX, textScale, ink, thickness + more, cv::LINE_AA);
  }
}

// Of points at one place the first is named.
void drawMarks(cv::Mat& image, const std::vector<TMark>& marks) {
  double sumY = 0.0;
  for (const TMark& mark : marks) {
    sumY += static_cast<double>(mark.pos.y);
  }
  const double middleY = sumY / static_cast<double>(std::max<std::size_t>(1, marks.size()));
  for (auto mark = marks.begin(); mark != marks.end(); ++mark) {
    if (!isFinite(mark->pos)) {
      continue;
    }
    drawRing(image, mark->pos, 5.0, kMarkColour);
    const bool isNamed = std::any_of(marks.begin(), mark, [&](const TMark& other) {
      return cv::norm(other.pos - mark->pos) < 6.0 * drawingScale(image);
    });
    if (!isNamed && image.cols >= kLeastNamedPx) {
      drawName(image, *mark, static_cast<double>(mark->pos.y) < middleY);
    }
  }
}

std::string hexOf(const cv::Scalar& colour) {
  return cv::format("#%02x%02x%02x", static_cast<int>(colour[2]), static_cast<int>(colour[1]),
                    static_cast<int>(colour[0]));
}

}  // namespace

cv::Mat drawOverlay(const cv::Mat& image, const TOverlay& overlay) {
  cv::Mat drawn = toColour(image);
  drawRegions(drawn, overlay.regions);
  drawRejected(drawn, overlay.rejected);
  for (const TSegment& line : overlay.lines) {
    drawLine(drawn, line, kLineColour, 0.7);
  }
  for (const TPolyline& piece : overlay.pieces) {
    drawPiece(drawn, piece);
  }
  drawStripe(drawn, overlay.centres);
  drawMarks(drawn, overlay.marks);
  for (const cv::Point2f& point : overlay.testedPts) {
    drawRing(drawn, point, 8.0, kTestedColour);
  }
  if (overlay.trueSeam) {
    drawRing(drawn, *overlay.trueSeam, 12.0, kTruthColour);
  }
  if (overlay.seam) {
    drawCross(drawn, *overlay.seam, overlay.state == TSeamState::held ? kHeldColour : kSeamColour);
  }
  return drawn;
}

void drawLabel(cv::Mat& image, const std::vector<std::string>& lines, TSeamState state) {
  const int margin = static_cast<int>(std::lround(12.0 * drawingScale(image)));
  const int thickness = lineWidth(image, 1.3);
  const auto widthOf = [&](double scale) {
    int width = 1;
    for (const std::string& line : lines) {
      width = std::max(width, cv::getTextSize(line, cv::FONT_HERSHEY_SIMPLEX, scale, thickness, nullptr).width);
    }
    return width;
  };
  const double wanted = 0.7 * drawingScale(image);
  const double textScale = wanted * std::min(1.0, (image.cols - 2.0 * margin) / widthOf(wanted));
  const int lineHeight = static_cast<int>(std::lround(40.0 * textScale));
  const int height = lineHeight * static_cast<int>(lines.size());
  const cv::Rect box =
      cv::Rect(0, 0, widthOf(textScale) + 2 * margin, height + margin) & cv::Rect(cv::Point(0, 0), image.size());
  image(box) *= 1.0 - kLabelOpacity;
  const cv::Scalar& titleColour =
      state == TSeamState::found ? kFoundTextColour : (state == TSeamState::held ? kHeldColour : kLostTextColour);
  cv::Point base(margin, lineHeight - margin / 4);
  for (const std::string& line : lines) {
    const cv::Scalar& colour = &line == &lines.front() ? titleColour : kTextColour;
    cv::putText(image, line, base, cv::FONT_HERSHEY_SIMPLEX, textScale, colour, thickness, cv::LINE_AA);
    base.y += lineHeight;
  }
}

std::vector<std::pair<std::string, std::string>> overlayKey() {
  return {{"searched", hexOf(kRegionColour)},
          {"rejected", hexOf(kRejectedColour)},
          {"stripe", hexOf(kStretchColours[0])},
          {"next stretch", hexOf(kStretchColours[1])},
          {"piece", hexOf(kPieceColour)},
          {"line tried", hexOf(kLineColour)},
          {"point of the joint", hexOf(kMarkColour)},
          {"point tested", hexOf(kTestedColour)},
          {"seam", hexOf(kSeamColour)},
          {"held seam", hexOf(kHeldColour)}};
}

}  // namespace tool
