// Folders of real camera frames with labels, and how each is to be looked at.
#pragma once

#include <opencv2/core.hpp>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace accuracy {

enum class TChannel { grey, red, redExcess };

// How the stored frames of a folder become what the library expects: a stripe from left to right. As in zelweld,
// the region is cut out of the stored frame, which then is turned clockwise.
struct TPreparation {
  cv::Rect roi;  // empty: the whole frame
  int rotateDeg = 0;
  TChannel channel = TChannel::grey;
};

struct TLabel {
  std::string file;
  cv::Point2d point;  // in the stored frame
  std::string name;
  double tolerancePx = 0.0;
};

// Rows of the stripe in the columns of one frame; several in a column where the opinions differ.
using TWeakLine = std::vector<cv::Point2d>;

// Image files of a folder in the order of the numbers in their names, without drawn or labelled copies.
std::vector<std::filesystem::path> listFrames(const std::filesystem::path& folder);

// Rows of labels.csv; empty where there is none.
std::vector<TLabel> readLabels(const std::filesystem::path& folder);

// The rows of centreline_weak.csv for that file, by column; empty where there are none.
TWeakLine readWeakLine(const std::filesystem::path& frame);

// The prepared frame; empty when it cannot be read.
cv::Mat readFrame(const std::filesystem::path& file, const TPreparation& preparation);

// A point of the stored frame in the prepared one.
cv::Point2d toPrepared(cv::Point2d stored, const cv::Mat& prepared, const TPreparation& preparation);

}  // namespace accuracy
