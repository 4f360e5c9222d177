#include "stripe/whole_stripe.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr float kTouchingPx = 12.0F;  // columns from one centre to the next of a piece,
constexpr float kMostStepPx = 8.0F;   // and rows
constexpr float kLargestHolePx = 27.0F;
constexpr float kMostOffPx = 6.0F;       // of the line that comes to a hole
constexpr std::size_t kLineBefore = 20;  // centres that tell that line
constexpr double kLeastOfImage = 0.1;
constexpr double kLeastOfStripe = 0.45;

constexpr TCheck kPieces{{6, TWeldOutcome::noStripe, "stripe", "scraps that form no stripe"},
                         "mean length of the stripe's pieces",
                         TRule::atLeast,
                         "px"};

// Slope of the piece from its first centre to the last, of those next to the last one.
float slopeAtEnd(TPointView piece) {
  const cv::Point2f& last = piece.back();
  const cv::Point2f& from = piece[piece.size() - 1 - std::min(piece.size() - 1, kLineBefore)];
  return last.x > from.x ? (last.y - from.y) / (last.x - from.x) : 0.0F;
}

bool goesOn(TPointView piece, cv::Point2f next) {
  const cv::Point2f step = next - piece.back();
  if (step.x <= kTouchingPx && std::abs(step.y) < kMostStepPx) return true;
  return step.x <= kLargestHolePx && std::abs(step.y - slopeAtEnd(piece) * step.x) < kMostOffPx;
}

}  // namespace

double meanPieceColumns(TPointView points) {
  double squares = 0.0;
  std::size_t begin = 0;
  for (std::size_t i = 1; i <= points.size(); ++i) {
    if (i < points.size() && goesOn(points.part(begin, i - begin), points[i])) continue;
    const auto length = static_cast<double>(i - begin);
    squares += length * length;
    begin = i;
  }
  return points.empty() ? 0.0 : squares / static_cast<double>(points.size());
}

bool isWholeStripe(const TFrame& frame, TPointView points) {
  const double least =
      std::min(kLeastOfImage * frame.image.cols, kLeastOfStripe * static_cast<double>(points.size()));
  return frame.trace.passes(kPieces, meanPieceColumns(points), least);
}

}  // namespace weld
