#include "profile/lit_ends.h"

#include "support/line_math.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr int kFarthestPx = 250;   // that an end is moved
constexpr int kReferenceFrom = 3;  // px before the end, where the flank's own brightness is read
constexpr int kReferenceTo = 18;
constexpr int kReachRows = 2;  // the brightest row so near counts: a line is not laid to the pixel
constexpr double kLitShare = 0.5;
constexpr int kMostHalfPx = 60;      // rows from the line to the edge of its light
constexpr double kAsidePx = 3.0;     // of the light of another surface
constexpr int kAsideRun = 5;         // px in a row
constexpr int kDarkPx = 4;           // in a row that end the light: speckle has dark grains
constexpr double kLeastOffPx = 2.5;  // from a flank, of a centre that is not its own
constexpr double kOffSigmas = 4.0;
constexpr double kBesidePx = 30.0;      // farther away the light of the flank is its own
constexpr int kOtherRun = 8;            // such centres in a row are another surface
constexpr double kHolePx = 2.5;         // columns between two runs of centres
constexpr double kTailCentres = 12.0;   // of a run that tell its direction
constexpr double kTurnCentres = 8.0;    // fewer tell none
constexpr double kOtherShare = 2.5;     // of the flank's brightness, that another surface has
constexpr int kOtherPx = 10;            // in a row: grains are bright, too
constexpr double kForeignSlope = 0.35;  // against the flank
constexpr double kTailPx = 60.0;        // columns before an end in which a run of something else may begin

// Weights of the usual conversion to grey.
int greyOf(const unsigned char* pixel, int channels) {
  return channels < 3 ? pixel[0] : (1868 * pixel[0] + 9617 * pixel[1] + 4899 * pixel[2] + 8192) >> 14;
}

// The image along a line from an end on.
class TRay {
public:
  TRay(const cv::Mat& readImage, cv::Point2d end, cv::Point2d direction)
      : image(readImage), origin(end), step(direction) {}

  // 0 outside the image.
  double greyAt(int px) const {
    const int x = roundToInt(origin.x + px * step.x);
    const int y = roundToInt(origin.y + px * step.y);
    if (x < 0 || x >= image.cols) return 0.0;
    int brightest = 0;
    for (int row = std::max(y - kReachRows, 0); row <= std::min(y + kReachRows, image.rows - 1); ++row)
      brightest = std::max(brightest, greyOf(image.ptr(row, x), image.channels()));
    return brightest;
  }

  // How far the light goes on, px.
  double litPx() const {
    double sum = 0.0;
    for (int px = kReferenceFrom; px < kReferenceTo; ++px) sum += greyAt(-px);
    const double least = kLitShare * sum / (kReferenceTo - kReferenceFrom);
    if (greyAt(0) < least || least <= 0.0) return 0.0;
    const double most = kOtherShare / kLitShare * least;
    int lit = 0;
    int bright = 0;
    int aside = 0;
    for (int px = 1; px <= kFarthestPx; ++px) {
      const double grey = greyAt(px);
      if (grey >= least) lit = px;
      aside = grey >= least && std::abs(asidePx(px, least)) > kAsidePx ? aside + 1 : 0;
      if (aside == kAsideRun) return px - kAsideRun;
      bright = grey > most ? bright + 1 : 0;
      if (bright == kOtherPx) return px - kOtherPx;
      if (px - lit >= kDarkPx) return borderAfter(lit, least);
    }
    return 0.0;  // something else that is bright lies behind
  }

private:
  // By how much the middle of the light in the column lies beside the line.
  double asidePx(int px, double least) const {
    const int x = roundToInt(origin.x + px * step.x);
    const int y = roundToInt(origin.y + px * step.y);
    const double middle = 0.5 * (edgeFrom(x, y, 1, least) + edgeFrom(x, y, -1, least));
    return (middle - (origin.y + px * step.y)) * step.x;
  }

  // The last lit row of a column on the way up or down.
  int edgeFrom(int x, int y, int way, double least) const {
    int edge = y;
    for (int row = y + way; row >= 0 && row < image.rows && std::abs(row - y) <= kMostHalfPx; row += way) {
      if (greyOf(image.ptr(row, x), image.channels()) >= least) edge = row;
      if (std::abs(row - edge) > kReachRows + 1) break;
    }
    return edge;
  }

  double borderAfter(int lit, double least) const {
    const double before = greyAt(lit);
    return lit + (before - least) / std::max(before - greyAt(lit + 1), 1.0);
  }

  const cv::Mat& image;
  cv::Point2d origin;
  cv::Point2d step;
};

// An end of a flank, and the centres about it.
class TFlankEnd {
public:
  TFlankEnd(const TOrientedCentres& c, const TFittedElement& flank, bool isRightEnd)
      : centres(c),
        line(isRightEnd ? flank.lines.right : flank.lines.left),
        side(isRightEnd ? 1 : -1),
        last(isRightEnd ? flank.span.last - 1 : flank.span.first),
        offPx(std::max(kLeastOffPx, kOffSigmas * std::sqrt(flank.noise2))) {}

  cv::Point2d direction() const { return {side * line.dx, side * line.dy}; }

  // Takes a run off the end that only crosses the line behind a hole: it is a backing, or another surface.
  // Columns.
  double dropForeign() {
    const double endX = centres.at(last).x;
    int kept = last;
    for (int i = last; has(i - side) && std::abs(centres.at(i).x - endX) <= kTailPx; i -= side) {
      if (isBreak(i) && isForeign(i)) kept = i - side;
    }
    last = kept;
    return std::abs(centres.at(kept).x - endX);
  }

  // Along the line, up to the centres of something else: the light there is theirs.
  double freePx(cv::Point2d end) const {
    int off = 0;
    int first = last;
    for (int i = last + side; has(i); i += side) {
      if ((centres.at(i).x - end.x) * side <= 0.0) continue;
      if (!isBeside(i) || isBreak(i)) off = 0;
      if (!isBeside(i)) continue;
      if (off == 0) first = i;
      if (++off < kOtherRun) continue;
      return std::max(0.0, (centres.at(first).x - end.x) * side - 0.5) / std::max(line.dx, 0.02);
    }
    return kFarthestPx;
  }

private:
  bool has(int i) const { return i >= 0 && i < centres.count() && std::abs(i - last) < kFarthestPx; }
  double offsetOf(int i) const { return line.offsetOf(centres.at(i).x, centres.at(i).y); }
  bool isOff(int i) const { return std::abs(offsetOf(i)) > offPx; }
  bool isBeside(int i) const { return isOff(i) && std::abs(offsetOf(i)) < kBesidePx; }
  bool isBreak(int i) const {
    return std::abs(centres.at(i).x - centres.at(i - side).x) > kHolePx ||
           std::abs(offsetOf(i) - offsetOf(i - side)) > offPx;
  }

  // Whether the run that begins with this centre begins off the line, or leaves it.
  bool isForeign(int first) const {
    double count = 0.0;
    double farthest = 0.0;
    double sumT = 0.0, sumTT = 0.0, sumOff = 0.0, sumTOff = 0.0;
    for (int i = first; has(i) && count < kTailCentres; i += side) {
      if (i != first && std::abs(offsetOf(i) - offsetOf(i - side)) > offPx) break;
      const double t = line.alongOf(centres.at(i).x, centres.at(i).y);
      const double off = offsetOf(i);
      count += 1.0;
      farthest = std::max(farthest, std::abs(off));
      sumT += t;
      sumTT += t * t;
      sumOff += off;
      sumTOff += t * off;
    }
    const double spread = sumTT - sumT * sumT / count;
    const bool turns = count >= kTurnCentres && farthest > offPx &&
                       std::abs(sumTOff - sumT * sumOff / count) > kForeignSlope * std::max(spread, 1.0);
    return turns || (count >= kTurnCentres && std::abs(sumOff) > offPx * count);
  }

  const TOrientedCentres& centres;
  const TLine& line;
  int side;
  int last;
  double offPx;
};

void settle(const TFrame& frame, int sense, TFlankEnd flank, cv::Point2d& end) {
  const cv::Point2d direction = flank.direction();
  const double foreignPx = flank.dropForeign();
  if (foreignPx > 0.0) end -= direction * (foreignPx / std::max(std::abs(direction.x), 0.02));
  const TRay ray(frame.image, {end.x, sense * end.y}, {direction.x, sense * direction.y});
  end += std::min(ray.litPx(), flank.freePx(end)) * direction;
}

bool endsInTheDark(TJunctionKind kind) {
  return kind == TJunctionKind::root || kind == TJunctionKind::jump;
}

}  // namespace

void extendToLight(const TFrame& frame, const TOrientedCentres& centres, TProfileLayout& layout) {
  for (std::size_t j = 0; j + 1 < layout.count(); ++j) {
    if (!endsInTheDark(layout.profile->junctions[j].kind)) continue;
    if (layout.range(j).role == TElementRole::flank) {
      TFittedElement& left = layout.elements[j];
      settle(frame, layout.sense, {centres, left, true}, left.right);
    }
    if (layout.range(j + 1).role == TElementRole::flank) {
      TFittedElement& right = layout.elements[j + 1];
      settle(frame, layout.sense, {centres, right, false}, right.left);
    }
  }
}

}  // namespace weld
