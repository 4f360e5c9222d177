// Seams that a laser stripe does not show: found by their contrast in room or lamp light, in images without a
// stripe. Include zelWeldDetect.h rather than this.
#pragma once

#include "zelWeldDetectExport.h"

#include <opencv2/core.hpp>

#include <cstdint>
#include <memory>
#include <vector>

// How the seam differs from the plates beside it.
enum class TSeamPolarity : std::int32_t {
  dark = 0,      // a line darker than both sides: a butt joint, a gap
  bright = 1,    // a line brighter than both sides: a scribed line
  edge = 2,      // one side brighter than the other: unlike plates, a lap
  automatic = 3  // whichever is surest; dark alone where that is beyond doubt
};

// The centre line of a seam; empty lists and confidence 0 where none was found. Lists are equally long, their
// points in order: left to right, top to bottom where the seam is steeper than 45 degrees, about 8 px apart.
struct TContourCenterLine {
  std::vector<cv::Point2f> pts;        // px
  std::vector<float> widthsPx;         // across the line; 0 where bridged and of an edge
  std::vector<std::uint8_t> measured;  // a flag, 0..1: 0 where bridged, as under a tack weld, glow or oxide
  float widthPx = 0.0F;                // of the line as a whole; 0 of an edge
  float contrast = 0.0F;               // ln(brightness of the line / of its sides), below 0 when dark; of an edge
                                       // ln(right or lower side / other side)
  float directionDeg = 0.0F;           // of the chord, atan(dy / dx), -90 < d <= 90
  float confidence = 0.0F;             // 0..1: the share of such lines that are seams
  TSeamPolarity polarity = TSeamPolarity::dark;  // that was found; never automatic
};

// What is looked for, and where. A value outside its range or not a number counts as its default.
struct TContrastSearch {
  TSeamPolarity polarity = TSeamPolarity::automatic;  // to look for
  float directionDeg = 0.0F;                          // of the chord, -180..180
  float directionTolDeg = 90.0F;                      // farthest from that direction, 0..90
  cv::Point2f roughPos{0.0F, 0.0F};                   // px; read where bandPx is above 0
  float bandPx = 0.0F;         // farthest from the line through roughPos in that direction, > 0; 0: whole image
  float reachPx = 0.0F;        // farthest from roughPos along that line, > 0; 0: as far as the image
  float minWidthPx = 0.0F;     // of a line, 0..100
  float maxWidthPx = 24.0F;    // 0..100
  float minLengthPx = 0.0F;    // of the chord, >= 0
  float minConfidence = 0.5F;  // 0..1
};

// The seam in the whole image or in a band.
//   image  8-bit with 1, 3 (BGR) or 4 (BGRA) channels, never written to; other types raise cv::Exception. Empty
//          or with a side below 48 px: nothing found.
ZELWELDDETECT_EXPORT TContourCenterLine findSeamByContrast(const cv::Mat& image, const TContrastSearch& search);

// The same for many images: keeps its working memory (about six times the image) from one to the next. One per
// thread.
class ZELWELDDETECT_EXPORT TContrastFinder {
public:
  TContrastFinder();
  TContrastFinder(TContrastFinder&& other) noexcept;  // leaves the source good for assignment and destruction only
  TContrastFinder& operator=(TContrastFinder&& other) noexcept;
  ~TContrastFinder();

  // As findSeamByContrast: empty where nothing is found or the image too small.
  TContourCenterLine find(const cv::Mat& image, const TContrastSearch& search);

private:
  struct ZELWELDDETECT_NO_EXPORT TState;
  std::unique_ptr<TState> state;
};

namespace zel {

// Grey levels on a logarithmic scale, where contrast no longer depends on the light: 255 ln(1 + g / d) /
// ln(1 + 255 / d), rounded, 8 bits.
//   image      as above; empty gives an empty image.
//   darkLevel  d, grey levels, > 0: below it the scale is nearly linear. Others count as 10.
ZELWELDDETECT_EXPORT cv::Mat TransforLog(const cv::Mat& image, double darkLevel = 10.0);

}  // namespace zel
