#include "frame_folder.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <fstream>
#include <sstream>

namespace accuracy {

namespace fs = std::filesystem;

namespace {

bool isFrame(const fs::path& file) {
  const std::string extension = file.extension().string();
  const std::string stem = file.stem().string();
  const bool isImage = extension == ".png" || extension == ".jpg";
  return isImage && stem.find("_weak") == std::string::npos && stem.find("_mask") == std::string::npos;
}

cv::Mat takeChannel(const cv::Mat& colour, TChannel channel) {
  cv::Mat grey;
  if (channel == TChannel::grey) {
    cv::cvtColor(colour, grey, cv::COLOR_BGR2GRAY);
    return grey;
  }
  cv::extractChannel(colour, grey, 2);
  if (channel == TChannel::red) return grey;
  cv::Mat blue;
  cv::Mat green;
  cv::extractChannel(colour, blue, 0);
  cv::extractChannel(colour, green, 1);
  cv::Mat others;
  cv::addWeighted(blue, 0.5, green, 0.5, 0.0, others);
  return grey - others;
}

}  // namespace

std::vector<fs::path> listFrames(const fs::path& folder) {
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    if (isFrame(entry.path())) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::vector<TLabel> readLabels(const fs::path& folder) {
  std::vector<TLabel> labels;
  std::ifstream in(folder / "labels.csv");
  std::string row;
  std::getline(in, row);
  while (std::getline(in, row)) {
    std::istringstream fields(row);
    std::string file;
    std::string x;
    std::string y;
    std::string name;
    std::getline(fields, file, ',');
    std::getline(fields, x, ',');
    std::getline(fields, y, ',');
    if (std::getline(fields, name, ',')) labels.push_back({file, {std::stod(x), std::stod(y)}, name});
  }
  return labels;
}

cv::Mat readFrame(const fs::path& file, const TPreparation& preparation) {
  const cv::Mat colour = cv::imread(file.string(), cv::IMREAD_COLOR);
  if (colour.empty()) return {};
  cv::Mat grey = takeChannel(colour, preparation.channel);
  if (preparation.isTurned) cv::rotate(grey, grey, cv::ROTATE_90_CLOCKWISE);
  return grey;
}

cv::Point2d toPrepared(cv::Point2d stored, const cv::Mat& prepared, const TPreparation& preparation) {
  return preparation.isTurned ? cv::Point2d(prepared.cols - 1 - stored.y, stored.x) : stored;
}

}  // namespace accuracy
