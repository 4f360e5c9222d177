#include "stripe/edge_pairs/region_scan.h"

#include "support/arena.h"
#include "support/grey_image.h"

#include <algorithm>
#include <cstdint>
#include <numeric>

namespace weld {
namespace {

// The part of the region that can be scanned; empty when there is none.
cv::Rect scannedPart(const cv::Rect& region, cv::Size imageSize) {
  if (region.x < 0 || region.y < 0 || region.x >= imageSize.width || region.y >= imageSize.height) return {};
  const int width = std::min(region.width, imageSize.width - region.x);
  const int height = std::min(region.height, imageSize.height - region.y);
  if (width < 2 || height < 1) return {};
  return {region.x, region.y, width, height};
}

cv::Mat padToStrip(const cv::Mat& image) {
  if (image.cols >= kStripColumns) return image;
  cv::Mat padded = cv::Mat::zeros(image.rows, kStripColumns, image.type());
  image.copyTo(padded.colRange(0, image.cols));
  return padded;
}

}  // namespace

TRegionScanner::TRegionScanner(const cv::Mat& frame, int edgeThreshold, TMemory* workingMemory,
                               const TEdgeKernels& edgeKernels)
    : status(workingMemory),
      candidates(workingMemory),
      image(padToStrip(frame)),
      imageSize(frame.size()),
      threshold(edgeThreshold),
      memory(workingMemory),
      edges(edgeKernels) {
  status.reserve(static_cast<std::size_t>(frame.cols));
  candidates.reserve(2 * static_cast<std::size_t>(frame.cols));  // leaves room for spatter
}

void TRegionScanner::scanStripeRegion(const cv::Rect& region) {
  const cv::Rect scanned = scannedPart(region, imageSize);
  if (scanned.empty()) return;

  const int strips = (scanned.width + kStripColumns - 1) / kStripColumns;
  const int right = std::min(scanned.x + kStripColumns * strips, image.cols);
  const int left = std::min(scanned.x, right - kStripColumns);
  const int lastStrip = right - kStripColumns - scanned.x;
  const cv::Mat part = image(cv::Rect(left, scanned.y, right - left, scanned.height));
  const TBuffer<unsigned char> converted(memory, greyBytes(part));
  const cv::Mat grey = toGrey(part, converted);
  const unsigned char* const pixels = grey.ptr(0, scanned.x - left);
  const TScanArea area{pixels, grey.step, scanned.height, strips, lastStrip, threshold};
  const int words = scanned.height / (kBlockRows * kMarkBits) + 1;
  TList<std::uint64_t> markWords(static_cast<std::size_t>(strips) * words, memory);
  const TBlockMarks marks{markWords.data(), words};
  const TBuffer<TEdgeRow> edgeRows(memory, static_cast<std::size_t>(scanned.height));
  edges.markBlocks(area, marks);

  for (int strip = 0; strip < strips; ++strip) {
    TStripPairs pairs;
    edges.pairStripeEdges(area, marks, strip, edgeRows.data(), pairs);
    const int first = scanned.x + strip * kStripColumns;
    appendColumns(scanned, first, strip + 1 < strips ? 0 : first - (scanned.x + lastStrip), pairs);
  }
}

// Takes over the columns from `first` on, which are the lanes from `lane` on.
void TRegionScanner::appendColumns(const cv::Rect& region, int first, int lane, const TStripPairs& pairs) {
  const int columns = std::min(kStripColumns, region.br().x - first);
  std::size_t nextStatus = status.size();
  std::size_t nextCandidate = candidates.size();
  status.resize(nextStatus + columns);
  candidates.resize(std::accumulate(pairs.count + lane, pairs.count + lane + columns, nextCandidate));
  for (int column = first; column < first + columns; ++column, ++lane) {
    const int count = pairs.count[lane];
    status[nextStatus++] = {column, count > 0 ? kCentreFound : pairs.hasBothEdges[lane] ? kNoPair : kEdgeMissing};
    for (int i = 0; i < count; ++i) {
      candidates[nextCandidate++] = {column, region.y + pairs.centre[i][lane],
                                     pairs.high[i][lane] - pairs.low[i][lane]};
    }
  }
}

}  // namespace weld
