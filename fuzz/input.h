// What the fuzz targets make of the bytes that libFuzzer hands them: numbers, images, points, records. Values at
// which arithmetic breaks come up far more often than chance has them.
#pragma once

#include "zelWeldDetect.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <opencv2/core.hpp>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace fuzz {

// TSeed writes what this reads. Reading past the end gives zeros.
class TInput {
public:
  TInput(const std::uint8_t* data, std::size_t size) : provider(data, size) {}

  int takeBelow(int count) { return provider.ConsumeIntegralInRange<int>(0, count - 1); }
  bool takeFlag() { return takeBelow(2) != 0; }
  std::uint64_t takeBits() { return provider.ConsumeIntegral<std::uint64_t>(); }
  std::vector<std::uint8_t> takeBytes(std::size_t count) { return provider.ConsumeBytes<std::uint8_t>(count); }
  std::vector<std::uint8_t> takeRest() { return provider.ConsumeRemainingBytes<std::uint8_t>(); }

  int takeInt();        // any, extreme and small ones preferred
  double takeDouble();  // any, NaN, infinities and small ones preferred
  float takeFloat() { return static_cast<float>(takeDouble()); }

private:
  FuzzedDataProvider provider;
};

// How takeDouble and takeInt are told that the bits of the number follow.
inline constexpr int kDoubleKinds = 4;
inline constexpr int kDoubleAsBits = 0;
inline constexpr int kIntKinds = 3;
inline constexpr int kIntAsBits = 0;

// An image whose pixels end where its memory ends, so that a read behind them is seen.
class TFrame {
public:
  TFrame() = default;
  // Room for a matrix of two dimensions; rowGap: bytes between the rows.
  TFrame(int rows, int cols, int type, std::size_t rowGap);

  cv::Mat image;

private:
  std::vector<std::uint8_t> memory;
};

// What takeFrame can make; strokes, which find the deepest paths with the fewest bytes, most often.
enum class TFrameKind { pixels, sliver, anyType, strokes };
inline constexpr int kFrameKinds = 8;  // those behind the last one are strokes, too
inline constexpr int kMaxSidePx = 400;
inline constexpr int kChannelCounts[] = {1, 3, 4};
inline constexpr int kMaxStrokePx = 60;
inline constexpr int kMaxStrokes = 12;

// 8-bit with 1, 3 or 4 channels: pixels as they come, strokes on a background, or a sliver of up to 8192
// columns or a million rows; or anything else that a matrix can be, the empty one included.
TFrame takeFrame(TInput& input);

cv::Point2f takePoint(TInput& input);

// 0 to maxCount points: straight runs with some points out of line, or as they come.
inline constexpr int kMaxRuns = 4;
inline constexpr int kMaxOddPoints = 8;
std::vector<cv::Point2f> takePoints(TInput& input, int maxCount);

// The default record with some of its fields set to anything.
TWeldParams takeParams(TInput& input);

// The fields of TWeldParams that any joint reads, each once.
const std::vector<TWeldParameter>& readFields();
inline constexpr int kMaxOverrides = 8;
inline constexpr int kTypes = 16;  // more than there are
inline constexpr int kPositions = 8;

// Of entry_point: frames of a sequence, and what may be done with them.
inline constexpr int kMaxFrames = 4;
inline constexpr int kWays = 4;
inline constexpr int kEntryPointWay = 0;
inline constexpr int kMeasuringWay = 3;

// A previous result of anything.
TWeldLineRes takeResult(TInput& input, int maxPoints);

}  // namespace fuzz
