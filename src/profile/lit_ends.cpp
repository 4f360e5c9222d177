#include "profile/lit_ends.h"

#include "support/line_math.h"

#include <algorithm>

namespace weld {

namespace {

constexpr int kFarthestPx = 250;   // that an end is moved
constexpr int kReferenceFrom = 3;  // px before the end, where the flank's own brightness is read
constexpr int kReferenceTo = 18;
constexpr int kReachRows = 2;  // the brightest row so near counts: a line is not laid to the pixel
constexpr double kLitShare = 0.5;

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
    double before = greyAt(0);
    if (before < least || least <= 0.0) return 0.0;
    for (int px = 1; px <= kFarthestPx; ++px) {
      const double here = greyAt(px);
      if (here < least) return px - (least - here) / std::max(before - here, 1.0);
      before = here;
    }
    return 0.0;  // something else that is bright lies behind
  }

private:
  const cv::Mat& image;
  cv::Point2d origin;
  cv::Point2d step;
};

void extend(const TFrame& frame, int sense, const TLine& line, double side, cv::Point2d& end) {
  const cv::Point2d direction(side * line.dx, side * line.dy);
  const TRay ray(frame.image, {end.x, sense * end.y}, {direction.x, sense * direction.y});
  end += ray.litPx() * direction;
}

bool endsInTheDark(TJunctionKind kind) {
  return kind == TJunctionKind::root || kind == TJunctionKind::jump;
}

}  // namespace

void extendToLight(const TFrame& frame, TProfileLayout& layout) {
  for (std::size_t j = 0; j + 1 < layout.count(); ++j) {
    if (!endsInTheDark(layout.profile->junctions[j].kind)) continue;
    TFittedElement& left = layout.elements[j];
    TFittedElement& right = layout.elements[j + 1];
    if (layout.range(j).role == TElementRole::flank)
      extend(frame, layout.sense, left.lines.right, 1.0, left.right);
    if (layout.range(j + 1).role == TElementRole::flank)
      extend(frame, layout.sense, right.lines.left, -1.0, right.left);
  }
}

}  // namespace weld
