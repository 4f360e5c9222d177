// Stripes of straight pieces, drawn at random.
#pragma once

#include "scenes/random.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <vector>

namespace drawn {

struct TKind {
  int longestPx = 300;   // of a piece
  double stepPx = 80.0;  // up to which neighbours lie apart
  double noisePx = 0.0;
  int columns = 640;
  bool isTwice = false;  // the left part once more on the right, where its last piece is longer
};

// Rows, slopes and columns lie on a grid unless there is noise, so that the limits of rules are met exactly.
inline std::vector<cv::Point2f> stripe(scenes::TRandom& random, const TKind& kind = {}) {
  std::vector<cv::Point2f> points;
  const int columns = kind.isTwice ? kind.columns / 2 - 20 : kind.columns;
  double y = 24.0 * random.integer(1, 18);
  for (int x = 5 * random.integer(0, 20); x < columns;) {
    const double k = random.integer(-6, 6) / 8.0;
    const int end = std::min(x + random.integer(10, kind.longestPx), columns);
    for (; x < end; ++x, y += k) {
      const double noise = kind.noisePx == 0.0 ? 0.0 : random.uniform(-kind.noisePx, kind.noisePx);
      const int spike = random.chance(0.01) ? 3 * random.integer(-1, 1) : 0;
      points.emplace_back(static_cast<float>(x), static_cast<float>(y + noise + spike));
    }
    if (random.chance(0.4)) x += random.integer(1, 50);
    if (random.chance(0.4)) y += kind.stepPx / 8.0 * random.integer(-8, 8);
  }
  if (!kind.isTwice) return points;
  for (std::size_t i = 0, count = points.size(); i < count; ++i)
    points.push_back(points[i] + cv::Point2f(static_cast<float>(columns), 0.0F));
  const cv::Point2f step = points.back() - points[points.size() - 2];
  for (int more = random.integer(0, 30); more > 0; --more) points.push_back(points.back() + step);
  return points;
}

}  // namespace drawn
