// Images and settings of any kind through the search by contrast.
#include "fuzz/input.h"
#include "fuzz/verdict.h"

#include <cmath>

namespace {

using fuzz::require;

TContrastSearch takeSearch(fuzz::TInput& input) {
  TContrastSearch search;
  search.polarity = static_cast<TSeamPolarity>(input.takeBelow(6) - 1);
  if (input.takeFlag()) {
    search.roughPos = fuzz::takePoint(input);
    search.bandPx = input.takeFloat();
    search.reachPx = input.takeFloat();
    search.directionTolDeg = input.takeFloat();
  }
  search.directionDeg = input.takeFloat();
  search.minConfidence = input.takeFlag() ? 0.0F : input.takeFloat();
  return search;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  fuzz::quietOpenCv();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::TInput input(data, size);
  const TContrastSearch search = takeSearch(input);
  const fuzz::TFrame frame = fuzz::takeFrame(input);
  fuzz::runCall(!fuzz::isReadable(frame.image) && !frame.image.empty(), [&] {
    const TContourCenterLine line = findSeamByContrast(frame.image, search);
    require(line.pts.size() == line.widthsPx.size() && line.pts.size() == line.measured.size(), "equal lists");
    require(line.confidence >= 0.0F && line.confidence <= 1.0F, "a confidence");
    for (const cv::Point2f& p : line.pts) require(std::isfinite(p.x) && std::isfinite(p.y), "finite points");
  });
  return 0;
}
