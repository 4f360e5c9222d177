#include "fuzz/seed.h"

#include "fuzz/input.h"

#include <cstring>

namespace fuzz {

namespace {

constexpr int kStrokeGrey = 220;

void putFrameHead(TSeed& seed, TFrameKind kind, cv::Size size) {
  seed.putBelow(static_cast<int>(kind), kFrameKinds);
  seed.putBelow(size.height, kMaxSidePx + 1);
  seed.putBelow(size.width, kMaxSidePx + 1);
  seed.putBelow(0, std::size(kChannelCounts));
  seed.putFlag(false);
}

}  // namespace

void TSeed::putBigEndian(std::uint64_t value, int count) {
  for (int i = count - 1; i >= 0; --i) back.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

void TSeed::putBelow(int value, int count) {
  int bytes = 0;
  for (int range = count - 1; range > 0; range >>= 8) ++bytes;
  putBigEndian(static_cast<std::uint64_t>(value), bytes);
}

void TSeed::putDouble(double value) {
  putBelow(kDoubleAsBits, kDoubleKinds);
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  putBigEndian(bits, sizeof bits);
}

void TSeed::putInt(double wholeValue) {
  putBelow(kIntAsBits, kIntKinds);
  putBigEndian(static_cast<std::uint64_t>(static_cast<std::int64_t>(wholeValue)), sizeof(std::uint64_t));
}

std::vector<std::uint8_t> TSeed::bytes() const {
  std::vector<std::uint8_t> all = front;
  all.insert(all.end(), back.rbegin(), back.rend());
  return all;
}

void putParams(TSeed& seed, const TWeldParams& params) {
  seed.putFlag(true);
  seed.putBelow(static_cast<int>(params.weldType), kTypes);
  seed.putFlag(true);
  seed.putBelow(static_cast<int>(params.weldPosType), kPositions);
  const std::vector<TWeldParameter>& fields = readFields();
  std::vector<std::size_t> changed;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (fields[i].value.get(params) != fields[i].value.get(TWeldParams())) changed.push_back(i);
  }
  seed.putBelow(static_cast<int>(changed.size()), kMaxOverrides + 1);
  for (const std::size_t i : changed) {
    seed.putBelow(static_cast<int>(i), static_cast<int>(fields.size()));
    const TParameterValue& value = fields[i].value;
    value.kind == TParameterKind::number ? seed.putDouble(value.get(params)) : seed.putInt(value.get(params));
  }
}

void putNoResult(TSeed& seed) {
  seed.putFlag(false);
  seed.putFlag(false);
}

void putFrame(TSeed& seed, const cv::Mat& image) {
  putFrameHead(seed, TFrameKind::pixels, image.size());
  for (int y = 0; y < image.rows; ++y) seed.putBytes(image.ptr(y), static_cast<std::size_t>(image.cols));
}

void putStrokes(TSeed& seed, cv::Size size, const std::vector<TStroke>& strokes) {
  putFrameHead(seed, TFrameKind::strokes, size);
  seed.putBelow(0, 256);
  seed.putBelow(0, 256);
  seed.putBelow(static_cast<int>(strokes.size()), kMaxStrokes + 1);
  for (const TStroke& stroke : strokes) {
    for (const int side : {stroke.from.x, stroke.from.y, stroke.to.x, stroke.to.y}) {
      seed.putBelow(side, kMaxSidePx + 1);
    }
    seed.putBelow(stroke.thickness - 1, kMaxStrokePx);
    seed.putBelow(kStrokeGrey, 256);
  }
}

void putRuns(TSeed& seed, const std::vector<double>& slopes, int pointsPerRun, int maxCount) {
  const int runs = static_cast<int>(slopes.size());
  seed.putBelow(runs, kMaxRuns + 1);
  for (const double slope : slopes) {
    seed.putFlag(false);
    seed.putDouble(1.0);
    seed.putDouble(slope);
    seed.putBelow(pointsPerRun, maxCount / runs + 1);
  }
  seed.putBelow(0, kMaxOddPoints);
}

}  // namespace fuzz
