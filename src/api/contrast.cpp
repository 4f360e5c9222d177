// The public calls that find seams by their contrast, and the members of the toolkit that stand for them.
#include "contrast/find_line.h"
#include "support/arena.h"
#include "support/exact_log.h"
#include "support/grey_image.h"
#include "support/image_test.h"
#include "zelContrast.h"
#include "zelWeldToolkit.h"

#include <opencv2/imgproc.hpp>

#include <cmath>

struct TContrastFinder::TState {
  weld::TArena memory;
};

TContrastFinder::TContrastFinder() : state(std::make_unique<TState>()) {}
TContrastFinder::TContrastFinder(TContrastFinder&& other) noexcept = default;
TContrastFinder& TContrastFinder::operator=(TContrastFinder&& other) noexcept = default;
TContrastFinder::~TContrastFinder() = default;

TContourCenterLine TContrastFinder::find(const cv::Mat& image, const TContrastSearch& search) {
  if (!weld::hasPixels(image)) return {};
  weld::requireReadable(image);
  state->memory.restart();
  const weld::TBuffer<unsigned char> pixels(&state->memory, weld::greyBytes(image));
  const TContrastSearch checked = weld::inRange(search);
  weld::TFoundLine found = weld::findLine(weld::toGrey(image, pixels), checked, &state->memory);
  return weld::isWanted(found, checked) ? std::move(found.line) : TContourCenterLine();
}

TContourCenterLine findSeamByContrast(const cv::Mat& image, const TContrastSearch& search) {
  return TContrastFinder().find(image, search);
}

cv::Mat zel::TransforLog(const cv::Mat& image, double darkLevel) {
  constexpr double kUsualDark = 10.0;
  constexpr double kWhite = 255.0;
  if (!weld::hasPixels(image)) return {};
  weld::requireReadable(image);
  const double dark = darkLevel > 0.0 && std::isfinite(darkLevel) ? darkLevel : kUsualDark;
  cv::Mat1b table(1, 256);
  for (int g = 0; g < 256; ++g)
    table(g) = static_cast<unsigned char>(
        std::floor(kWhite * weld::exactLog(1.0 + g / dark) / weld::exactLog(1.0 + kWhite / dark) + 0.5));
  cv::Mat result;
  cv::LUT(image, table, result);
  return result;
}

std::vector<cv::Point2f> TBaseWeld::getWeldPts(cv::Mat image) const {
  TContrastSearch search;
  search.polarity = TSeamPolarity::dark;
  return findSeamByContrast(image, search).pts;
}

std::vector<cv::Point2f> TBaseWeld::getWeldPtsNew2(cv::Mat image) const {
  return findSeamByContrast(image, TContrastSearch()).pts;
}

// cppcheck-suppress passedByValue ; records are handed over whole here
TContourCenterLine TBaseWeld::getWeldPtsByContrast(cv::Mat image, TContrastSearch search) const {
  return findSeamByContrast(image, search);
}

TContourCenterLine TBaseWeld::getWeldPtsByContrastAndRoughPos(cv::Mat image, cv::Point2f roughPos,
                                                              float directionDeg, float bandPx) const {
  constexpr float kToleranceDeg = 15.0F;
  TContrastSearch search;
  search.polarity = TSeamPolarity::dark;
  search.roughPos = roughPos;
  search.directionDeg = directionDeg;
  search.directionTolDeg = kToleranceDeg;
  search.bandPx = bandPx;
  return findSeamByContrast(image, search);
}
