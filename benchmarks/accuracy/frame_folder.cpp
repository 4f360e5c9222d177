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
  cv::Mat excess;
  cv::transform(colour, excess, cv::Matx13f(-0.5F, -0.5F, 1.0F));
  return excess;
}

void turn(cv::Mat& image, int rotateDeg) {
  if (rotateDeg == 90) cv::rotate(image, image, cv::ROTATE_90_CLOCKWISE);
  if (rotateDeg == 270) cv::rotate(image, image, cv::ROTATE_90_COUNTERCLOCKWISE);
}

std::vector<std::string> fieldsOf(const std::string& row) {
  std::vector<std::string> fields;
  bool isQuoted = false;
  fields.emplace_back();
  for (const char c : row) {
    if (c == '"') isQuoted = !isQuoted;
    if (c == ',' && !isQuoted) {
      fields.emplace_back();
    } else if (c != '"' && c != '\r') {
      fields.back() += c;
    }
  }
  return fields;
}

// The rows of a table below its heading, with at least so many fields.
std::vector<std::vector<std::string>> readTable(const fs::path& file, std::size_t fields) {
  std::vector<std::vector<std::string>> rows;
  std::ifstream in(file);
  std::string row;
  std::getline(in, row);
  while (std::getline(in, row)) {
    rows.push_back(fieldsOf(row));
    if (rows.back().size() < fields) rows.pop_back();
  }
  return rows;
}

// The first number in the name, so that frame 12 follows frame 2.
long numberOf(const fs::path& file) {
  const std::string stem = file.stem().string();
  const std::size_t last = stem.find_last_of("0123456789");
  if (last == std::string::npos) return -1;
  std::size_t first = last;
  while (first > 0 && std::isdigit(static_cast<unsigned char>(stem[first - 1])) != 0) --first;
  return std::stol(stem.substr(first, last - first + 1));
}

}  // namespace

std::vector<fs::path> listFrames(const fs::path& folder) {
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    if (isFrame(entry.path())) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end(), [](const fs::path& a, const fs::path& b) {
    return std::make_pair(numberOf(a), a) < std::make_pair(numberOf(b), b);
  });
  return files;
}

std::vector<TLabel> readLabels(const fs::path& folder) {
  std::vector<TLabel> labels;
  for (const std::vector<std::string>& row : readTable(folder / "labels.csv", 6))
    labels.push_back({row[0], {std::stod(row[1]), std::stod(row[2])}, row[3], std::stod(row[5])});
  return labels;
}

TWeakLine readWeakLine(const fs::path& frame) {
  TWeakLine line;
  for (const std::vector<std::string>& row : readTable(frame.parent_path() / "centreline_weak.csv", 3)) {
    if (row[0] == frame.filename()) line.emplace_back(std::stod(row[1]), std::stod(row[2]));
  }
  std::sort(line.begin(), line.end(), [](cv::Point2d a, cv::Point2d b) { return a.x < b.x; });
  return line;
}

cv::Mat readFrame(const fs::path& file, const TPreparation& preparation) {
  const cv::Mat colour = cv::imread(file.string(), cv::IMREAD_COLOR);
  if (colour.empty()) return {};
  const cv::Rect whole({0, 0}, colour.size());
  const cv::Rect roi = preparation.roi.empty() ? whole : preparation.roi & whole;
  cv::Mat grey = takeChannel(colour(roi), preparation.channel);
  turn(grey, preparation.rotateDeg);
  return grey;
}

cv::Point2d toPrepared(cv::Point2d stored, const cv::Mat& prepared, const TPreparation& preparation) {
  const cv::Point2d p = stored - cv::Point2d(preparation.roi.tl());
  if (preparation.rotateDeg == 90) return {prepared.cols - 1 - p.y, p.x};
  if (preparation.rotateDeg == 270) return {p.y, prepared.rows - 1 - p.x};
  return p;
}

}  // namespace accuracy
