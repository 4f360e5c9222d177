#include "stripe/ridge_refine.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr double kKernelPerFwhm = 1.27;  // half support of the matched kernel, so that its sigma is the stripe's
constexpr double kMinKernelPx = 2.5;
constexpr int kNewtonSteps = 3;
constexpr double kWidePx = 24.0;  // wider stripes take the middle of their edges

// Grey levels of one column; rows outside the image repeat its border.
class TColumn {
public:
  TColumn(const cv::Mat& grey, int x) : base(grey.ptr<uchar>(0) + x), step(grey.step[0]), rows(grey.rows) {}
  int operator[](int y) const { return base[step * static_cast<std::size_t>(std::clamp(y, 0, rows - 1))]; }
  double mean(int first, int last) const {
    int sum = 0;
    for (int y = first; y <= last; ++y) sum += (*this)[y];
    return static_cast<double>(sum) / (last - first + 1);
  }

private:
  const uchar* base;
  std::size_t step;
  int rows;
};

struct TProfile {
  double peak = 0.0;
  double backAbove = 0.0;
  double backBelow = 0.0;
  int peakRow = 0;
  int smoothRows = 0;  // half height of the mean that steadies wide profiles
};

TProfile measureLevels(const TColumn& column, int middle, double widthPx) {
  TProfile profile;
  const int reach = std::max(2, static_cast<int>(widthPx / 2));
  profile.smoothRows = static_cast<int>(widthPx / 8);
  for (int y = middle - reach; y <= middle + reach; ++y) {
    const double level = column.mean(y - profile.smoothRows, y + profile.smoothRows);
    const bool isCloser = std::abs(y - middle) < std::abs(profile.peakRow - middle);
    if (level > profile.peak || (level == profile.peak && isCloser) || y == middle - reach) {
      profile.peak = level;
      profile.peakRow = y;
    }
  }
  const int near = std::max(3, static_cast<int>(widthPx));
  const int far = near + std::max(1, static_cast<int>(widthPx / 2));
  profile.backAbove = column.mean(middle - far, middle - near);
  profile.backBelow = column.mean(middle + near, middle + far);
  return profile;
}

// Row where the profile falls to half its height, walking from the peak in direction `step`.
double findHalfHeight(const TColumn& column, const TProfile& profile, double back, int step, int limit) {
  const double half = (profile.peak + back) / 2;
  double inner = profile.peak;
  for (int i = 1; i <= limit; ++i) {
    const int y = profile.peakRow + i * step;
    const double level = column.mean(y - profile.smoothRows, y + profile.smoothRows);
    if (level < half) return y - step * (half - level) / std::max(inner - level, 1e-9);
    inner = level;
  }
  return profile.peakRow + limit * step;
}

// Maximum of the correlation with the kernel (1 - u^2)^3, which comes close to a Gaussian of the stripe's
// own sigma: the best linear estimate of position in white noise.
double correlatePosition(const TColumn& column, double start, double back, double halfSupport) {
  double centre = start;
  for (int i = 0; i < kNewtonSteps; ++i) {
    double slope = 0.0;
    double curvature = 0.0;
    const int last = static_cast<int>(std::floor(centre + halfSupport));
    for (int y = static_cast<int>(std::ceil(centre - halfSupport)); y <= last; ++y) {
      const double u = (y - centre) / halfSupport;
      const double rest = 1.0 - u * u;
      const double height = column[y] - back;
      slope += height * u * rest * rest;
      curvature += height * rest * (1.0 - 5.0 * u * u);
    }
    if (!(curvature > 0.0)) return start;
    centre += std::clamp(halfSupport * slope / curvature, -halfSupport / 4, halfSupport / 4);
  }
  return std::abs(centre - start) < halfSupport / 2 ? centre : start;
}

}  // namespace

std::optional<TRidgePoint> refineRidgePoint(const cv::Mat& grey, const TRidgeGuess& guess, double leastContrast) {
  const TColumn column(grey, guess.x);
  const int middle = static_cast<int>(std::floor(guess.y + 0.5));
  const TProfile profile = measureLevels(column, middle, guess.widthPx);
  const double contrast = profile.peak - std::max(profile.backAbove, profile.backBelow);
  if (!(contrast >= leastContrast)) return std::nullopt;

  const int limit = static_cast<int>(2 * guess.widthPx) + 3;
  const double top = findHalfHeight(column, profile, profile.backAbove, -1, limit);
  const double bottom = findHalfHeight(column, profile, profile.backBelow, 1, limit);
  const double fwhm = bottom - top;
  double centre = (top + bottom) / 2;
  if (fwhm <= kWidePx) {
    const double back = (profile.backAbove + profile.backBelow) / 2;
    centre = correlatePosition(column, centre, back, std::max(kMinKernelPx, kKernelPerFwhm * fwhm));
  }
  if (!(centre >= 0.0 && centre <= grey.rows - 1)) return std::nullopt;
  TRidgePoint point;
  point.point = cv::Point2f(static_cast<float>(guess.x), static_cast<float>(centre));
  point.widthPx = static_cast<float>(fwhm);
  point.contrast = static_cast<float>(contrast);
  return point;
}

}  // namespace weld
