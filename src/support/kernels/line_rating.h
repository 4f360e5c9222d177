// How well lines explain points, several lines side by side in vector code.
#pragma once

namespace zelFit {

inline constexpr int kRatedLines = 8;

// y = slope * x + intercept; the factor turns squared row distances into perpendicular ones. A lane without a line
// holds no numbers.
struct TLineBatch {
  float slope[kRatedLines];
  float intercept[kRatedLines];
  float factor[kRatedLines];
};

struct TRatedPoints {
  const float* x = nullptr;
  const float* y = nullptr;
  int count = 0;
};

struct TLineRating {
  // Sums for every line, in the order of the points, the squared perpendicular distances truncated at
  // squaredTol. False as soon as every sum has reached sumLimit.
  bool (*sumTruncatedQuadratics)(const TRatedPoints& points, const TLineBatch& lines, float squaredTol,
                                 float sumLimit, float* sums);
};

}  // namespace zelFit
