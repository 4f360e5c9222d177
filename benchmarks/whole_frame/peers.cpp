#include "peers.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>

namespace bench {

namespace {

constexpr int kMinGrey = 30;       // of the brightest pixel in a column with a stripe
constexpr int kHalfWindowPx = 15;  // in which the grey-weighted centre is taken
constexpr int kMinStep = 4 * 30;   // of the Sobel response: 4 grey levels weigh 1 per row
constexpr int kMaxThicknessPx = 100;
constexpr double kSigmaPx = 3.5;
constexpr float kMinCurvature = 1.0F;  // grey levels per square pixel, of the smoothed frame

// Rows of the largest values, column by column, reading the frame row by row.
std::vector<int> rowsOfMaxima(const cv::Mat& grey) {
  std::vector<int> rows(static_cast<std::size_t>(grey.cols), 0);
  std::vector<uchar> largest(static_cast<std::size_t>(grey.cols), 0);
  for (int y = 0; y < grey.rows; ++y) {
    const uchar* row = grey.ptr(y);
    for (std::size_t x = 0; x < rows.size(); ++x) {
      if (row[x] <= largest[x]) continue;
      largest[x] = row[x];
      rows[x] = y;
    }
  }
  return rows;
}

float centroidAround(const cv::Mat& grey, int x, int peakRow) {
  const int half = grey.at<uchar>(peakRow, x) / 2;
  const int first = std::max(peakRow - kHalfWindowPx, 0);
  const int last = std::min(peakRow + kHalfWindowPx, grey.rows - 1);
  double sum = 0.0;
  double moment = 0.0;
  for (int y = first; y <= last; ++y) {
    const int value = grey.at<uchar>(y, x);
    if (value < half) continue;
    sum += value;
    moment += static_cast<double>(value) * y;
  }
  return static_cast<float>(moment / sum);
}

// Rows of the steepest rise, and of the steepest fall at most one stripe below it.
struct TStepRows {
  int rise = 0;
  int fall = 0;
};

TStepRows steepestSteps(const cv::Mat& slope, int x) {
  TStepRows rows;
  for (int y = 0; y < slope.rows; ++y) {
    if (slope.at<short>(y, x) > slope.at<short>(rows.rise, x)) rows.rise = y;
  }
  rows.fall = rows.rise;
  for (int y = rows.rise; y < std::min(rows.rise + kMaxThicknessPx, slope.rows); ++y) {
    if (slope.at<short>(y, x) < slope.at<short>(rows.fall, x)) rows.fall = y;
  }
  return rows;
}

// Gaussian and its first two derivatives, sampled.
struct TGaussian {
  cv::Mat value, first, second;

  TGaussian() {
    const int reach = static_cast<int>(std::ceil(4.0 * kSigmaPx));
    value = cv::getGaussianKernel(2 * reach + 1, kSigmaPx, CV_32F);
    first = value.clone();
    second = value.clone();
    for (int i = -reach; i <= reach; ++i) {
      const double x = i / kSigmaPx;
      const auto g = static_cast<double>(value.at<float>(i + reach));
      first.at<float>(i + reach) = static_cast<float>(x / kSigmaPx * g);
      second.at<float>(i + reach) = static_cast<float>((x * x - 1.0) / (kSigmaPx * kSigmaPx) * g);
    }
  }
};

cv::Mat filter(const cv::Mat& grey, const cv::Mat& kernelX, const cv::Mat& kernelY) {
  cv::Mat out;
  cv::sepFilter2D(grey, out, CV_32F, kernelX, kernelY);
  return out;
}

struct TDerivatives {
  cv::Mat x, y, xx, xy, yy;
};

TDerivatives differentiate(const cv::Mat& grey) {
  const TGaussian g;
  return {filter(grey, g.first, g.value), filter(grey, g.value, g.first), filter(grey, g.second, g.value),
          filter(grey, g.first, g.first), filter(grey, g.value, g.second)};
}

struct TRidge {
  float curvature = 0.0F;  // downwards, across the ridge
  float offsetY = 0.0F;    // of the ridge line from the pixel centre, px
};

// No curvature where the ridge line passes outside the pixel.
TRidge ridgeAt(const TDerivatives& d, int y, int x) {
  const float xx = d.xx.at<float>(y, x);
  const float xy = d.xy.at<float>(y, x);
  const float yy = d.yy.at<float>(y, x);
  const float eigen = 0.5F * (xx + yy) - std::sqrt(0.25F * (xx - yy) * (xx - yy) + xy * xy);
  if (eigen > -kMinCurvature) return {};
  const cv::Point2f along =
      std::abs(yy) > std::abs(xx) ? cv::Point2f(xy, eigen - xx) : cv::Point2f(eigen - yy, xy);
  const cv::Point2f normal = along / std::sqrt(along.dot(along));
  const float slope = d.x.at<float>(y, x) * normal.x + d.y.at<float>(y, x) * normal.y;
  const cv::Point2f offset = normal * (-slope / eigen);
  if (std::abs(offset.x) > 0.5F || std::abs(offset.y) > 0.5F) return {};
  return {-eigen, offset.y};
}

}  // namespace

TCentres findByMaximum(const cv::Mat& grey) {
  TCentres centres;
  const std::vector<int> peaks = rowsOfMaxima(grey);
  for (int x = 0; x < grey.cols; ++x) {
    if (grey.at<uchar>(peaks[x], x) < kMinGrey) continue;
    centres.emplace_back(static_cast<float>(x), centroidAround(grey, x, peaks[x]));
  }
  return centres;
}

TCentres findByBlurredMaximum(const cv::Mat& grey) {
  cv::Mat smooth;
  cv::GaussianBlur(grey, smooth, {7, 7}, 0.0);
  return findByMaximum(smooth);
}

TCentres findBySobel(const cv::Mat& grey) {
  cv::Mat slope;
  cv::Sobel(grey, slope, CV_16S, 0, 1);
  TCentres centres;
  for (int x = 0; x < grey.cols; ++x) {
    const TStepRows rows = steepestSteps(slope, x);
    if (slope.at<short>(rows.rise, x) < kMinStep || slope.at<short>(rows.fall, x) > -kMinStep) continue;
    centres.emplace_back(static_cast<float>(x), 0.5F * static_cast<float>(rows.rise + rows.fall));
  }
  return centres;
}

TCentres findBySteger(const cv::Mat& grey) {
  const TDerivatives derivatives = differentiate(grey);
  std::vector<TRidge> best(static_cast<std::size_t>(grey.cols));
  std::vector<int> bestRow(best.size(), 0);
  for (int y = 0; y < grey.rows; ++y) {
    for (int x = 0; x < grey.cols; ++x) {
      const TRidge ridge = ridgeAt(derivatives, y, x);
      if (ridge.curvature <= best[x].curvature) continue;
      best[x] = ridge;
      bestRow[x] = y;
    }
  }
  TCentres centres;
  for (int x = 0; x < grey.cols; ++x) {
    if (best[x].curvature == 0.0F) continue;
    centres.emplace_back(static_cast<float>(x), static_cast<float>(bestRow[x]) + best[x].offsetY);
  }
  return centres;
}

}  // namespace bench
