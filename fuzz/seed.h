// Bytes that TInput reads as given values: what fuzzing starts from.
#pragma once

#include "zelWeldDetect.h"

#include <opencv2/core.hpp>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <vector>

namespace fuzz {

// One put for each take, in the same order.
class TSeed {
public:
  void putBelow(int value, int count);
  void putFlag(bool flag) { putBelow(flag ? 1 : 0, 2); }
  void putDouble(double value);
  void putInt(double wholeValue);
  void putBytes(const std::uint8_t* bytes, std::size_t count) { front.insert(front.end(), bytes, bytes + count); }

  std::vector<std::uint8_t> bytes() const;

private:
  void putBigEndian(std::uint64_t value, int count);

  // FuzzedDataProvider takes byte lists from the front and numbers from the back.
  std::vector<std::uint8_t> front;
  std::vector<std::uint8_t> back;
};

// The record must differ from the default one in no more than kMaxOverrides fields.
void putParams(TSeed& seed, const TWeldParams& params);

// A default previous result.
void putNoResult(TSeed& seed);

// An 8-bit grey image of up to kMaxSidePx rows and columns.
void putFrame(TSeed& seed, const cv::Mat& image);

// A line from one point to another, for putStrokes.
struct TStroke {
  cv::Point from;
  cv::Point to;
  int thickness = 8;
};

// A dark frame with bright strokes.
void putStrokes(TSeed& seed, cv::Size size, const std::vector<TStroke>& strokes);

// Points one column apart from x = 0 on, a straight run of each slope.
void putRuns(TSeed& seed, const std::vector<double>& slopes, int pointsPerRun, int maxCount);

}  // namespace fuzz
