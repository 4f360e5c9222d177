// Small frames drawn point by point, for tests of one rule. scenes/ renders the realistic ones.
#pragma once

#include <opencv2/core.hpp>

#include <algorithm>
#include <cmath>
#include <vector>

namespace painted {

constexpr double kSigmaPx = 4.0;
constexpr double kPeak = 220.0;

// One column of a stripe: a Gaussian across it. Edge pairs find the row exactly when it is whole.
inline void paintColumn(cv::Mat& image, int x, double y) {
  for (int row = 0; row < image.rows; ++row) {
    const double offset = (row - y) / kSigmaPx;
    uchar& grey = image.at<uchar>(row, x);
    grey = std::max(grey, cv::saturate_cast<uchar>(kPeak * std::exp(-0.5 * offset * offset)));
  }
}

// A straight piece of stripe over the columns fromX .. toX - 1, row y at column fromX, slope k.
inline void paintPiece(cv::Mat& image, int fromX, int toX, double y, double k = 0.0) {
  for (int x = std::max(fromX, 0); x < std::min(toX, image.cols); ++x) paintColumn(image, x, y + k * (x - fromX));
}

inline cv::Mat dark(int width = 640, int height = 480) {
  return cv::Mat::zeros(height, width, CV_8UC1);
}

// Points on a line, one per column fromX .. toX - 1.
inline std::vector<cv::Point2f> linePoints(int fromX, int toX, double y, double k = 0.0) {
  std::vector<cv::Point2f> points;
  for (int x = fromX; x < toX; ++x)
    points.emplace_back(static_cast<float>(x), static_cast<float>(y + k * (x - fromX)));
  return points;
}

inline std::vector<cv::Point2f> joined(std::vector<cv::Point2f> first, const std::vector<cv::Point2f>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

// Two straight legs that meet at the column of the second one.
inline std::vector<cv::Point2f> bentPoints(int fromX, int bendX, int toX, double y, double firstK,
                                           double secondK) {
  return joined(linePoints(fromX, bendX, y, firstK),
                linePoints(bendX, toX, y + firstK * (bendX - fromX), secondK));
}

// One joint of each kind, 640 x 480.
inline cv::Mat gapFrame() {
  cv::Mat image = dark();
  paintPiece(image, 20, 300, 240.0);
  paintPiece(image, 330, 620, 240.0);
  return image;
}

inline cv::Mat lapFrame() {
  cv::Mat image = dark();
  paintPiece(image, 20, 310, 210.0);
  paintPiece(image, 314, 620, 260.0);
  return image;
}

inline cv::Mat cornerFrame() {
  cv::Mat image = dark();
  paintPiece(image, 40, 320, 140.0, 0.5);
  paintPiece(image, 320, 600, 280.0, -0.5);
  return image;
}

inline cv::Mat plateFrame() {
  cv::Mat image = dark();
  paintPiece(image, 10, 180, 300.0);
  paintPiece(image, 180, 460, 220.0);
  paintPiece(image, 460, 630, 300.0);
  return image;
}

inline cv::Mat grooveFrame() {
  cv::Mat image = dark();
  paintPiece(image, 20, 220, 200.0);
  paintPiece(image, 220, 320, 200.0, 1.2);
  paintPiece(image, 320, 420, 320.0, -1.2);
  paintPiece(image, 420, 620, 200.0);
  return image;
}

}  // namespace painted
