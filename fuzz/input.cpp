#include "fuzz/input.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>

namespace fuzz {

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kOddDoubles[] = {std::numeric_limits<double>::quiet_NaN(),
                                  kInf,
                                  -kInf,
                                  0.0,
                                  -0.0,
                                  1e-300,
                                  1e300,
                                  -1e300,
                                  3e38,
                                  2147483647.0,
                                  2147483648.0,
                                  -2147483649.0,
                                  4294967296.0,
                                  1e9,
                                  90.0,
                                  180.0};
constexpr int kOddInts[] = {INT_MIN, INT_MIN + 1, -1, 0, 1, INT_MAX - 1, INT_MAX, 1 << 16};
constexpr int kSmallRange = 2048;
constexpr std::size_t kRowGap = 37;
// Binary digits of a sliver's length. The polygon of a stripe may take a time that grows with the square of the
// columns, so that a million of them would be reported as a hang; no camera has as many as this.
constexpr int kMaxColumnDigits = 13;
constexpr int kMaxRowDigits = 20;
constexpr int kMaxLoosePoints = 256;

template <typename T, std::size_t size>
T pick(TInput& input, const T (&values)[size]) {
  return values[input.takeBelow(static_cast<int>(size))];
}

void fillWithBytes(TInput& input, cv::Mat& image) {
  const std::size_t rowBytes = static_cast<std::size_t>(image.cols) * image.elemSize();
  for (int y = 0; y < image.rows; ++y) {
    const std::vector<std::uint8_t> bytes = input.takeBytes(rowBytes);
    std::copy(bytes.begin(), bytes.end(), image.ptr(y));
  }
}

int takeSide(TInput& input) {
  return input.takeBelow(kMaxSidePx + 1);
}

// A frame in colour has the strokes in all of its channels.
void paintStrokes(TInput& input, cv::Mat& image) {
  image.setTo(cv::Scalar::all(input.takeBelow(256)));
  const int noise = input.takeBelow(256);
  if (noise > 0) cv::RNG(input.takeBelow(256)).fill(image, cv::RNG::UNIFORM, 0, noise);
  const int count = input.takeBelow(kMaxStrokes + 1);
  for (int i = 0; i < count; ++i) {
    const cv::Point from{takeSide(input), takeSide(input)};
    const cv::Point to{takeSide(input), takeSide(input)};
    const int thickness = 1 + input.takeBelow(kMaxStrokePx);
    cv::line(image, from, to, cv::Scalar::all(input.takeBelow(256)), thickness);
  }
}

TFrame makeUsualFrame(TInput& input, int rows, int cols) {
  const int channels = pick(input, kChannelCounts);
  return {rows, cols, CV_8UC(channels), input.takeFlag() ? kRowGap : 0};
}

TFrame takeSliver(TInput& input) {
  const bool isWide = input.takeFlag();
  const int maxDigits = isWide ? kMaxColumnDigits : kMaxRowDigits;
  const int length = 1 + input.takeBelow(1 << (1 + input.takeBelow(maxDigits)));
  const int breadth = 1 + input.takeBelow(12);
  TFrame frame = isWide ? TFrame(breadth, length, CV_8UC1, 0) : TFrame(length, breadth, CV_8UC1, 0);
  const std::vector<std::uint8_t> pattern = input.takeBytes(1 + input.takeBelow(256));
  const std::size_t total = frame.image.total();
  for (std::size_t i = 0; i < total && !pattern.empty(); ++i) frame.image.data[i] = pattern[i % pattern.size()];
  return frame;
}

TFrame takeAnyType(TInput& input) {
  const int type = CV_MAKETYPE(input.takeBelow(8), 1 + input.takeBelow(6));
  const int dims = input.takeBelow(5);
  if (dims == 2) {
    const int rows = input.takeBelow(64);
    TFrame frame(rows, input.takeBelow(64), type, 0);
    fillWithBytes(input, frame.image);
    return frame;
  }
  TFrame frame;
  if (dims == 0) return frame;
  int sizes[5];
  for (int& size : sizes) size = input.takeBelow(12);
  frame.image.create(dims, sizes, type);
  std::fill_n(frame.image.data, frame.image.total() * frame.image.elemSize(), std::uint8_t{200});
  return frame;
}

// A run has one point per step, as an extraction gives them, from where the last one ended or from anywhere.
std::vector<cv::Point2f> takeRuns(TInput& input, int runs, int maxCount) {
  std::vector<cv::Point2f> points;
  cv::Point2f point;
  for (int run = 0; run < runs; ++run) {
    if (input.takeFlag()) point = takePoint(input);
    const cv::Point2f step = takePoint(input);
    const int count = input.takeBelow(maxCount / runs + 1);
    for (int i = 0; i < count; ++i, point += step) points.push_back(point);
  }
  const int odd = points.empty() ? 0 : input.takeBelow(kMaxOddPoints);
  for (int i = 0; i < odd; ++i) points[input.takeBelow(static_cast<int>(points.size()))] = takePoint(input);
  return points;
}

}  // namespace

int TInput::takeInt() {
  switch (takeBelow(kIntKinds)) {
    case kIntAsBits:
      return static_cast<int>(static_cast<std::uint32_t>(takeBits()));
    case 1:
      return pick(*this, kOddInts);
    default:
      return takeBelow(kSmallRange) - kSmallRange / 2;
  }
}

double TInput::takeDouble() {
  switch (takeBelow(kDoubleKinds)) {
    case kDoubleAsBits: {
      const std::uint64_t bits = takeBits();
      double value = 0.0;
      std::memcpy(&value, &bits, sizeof value);
      return value;
    }
    case 1:
      return pick(*this, kOddDoubles);
    case 2:
      return takeBelow(kSmallRange) / 64.0;
    default:
      return takeBelow(kSmallRange) - kSmallRange / 2;
  }
}

cv::Point2f takePoint(TInput& input) {
  return {input.takeFloat(), input.takeFloat()};
}

TFrame::TFrame(int rows, int cols, int type, std::size_t rowGap) {
  const std::size_t rowBytes = static_cast<std::size_t>(cols) * CV_ELEM_SIZE(type);
  const std::size_t step = (rowBytes + rowGap) / CV_ELEM_SIZE1(type) * CV_ELEM_SIZE1(type);
  const bool isEmpty = rows == 0 || cols == 0;
  memory.resize(isEmpty ? 1 : (static_cast<std::size_t>(rows) - 1) * step + rowBytes);
  image = cv::Mat(rows, cols, type, memory.data(), rows > 1 ? step : cv::Mat::AUTO_STEP);
}

TFrame takeFrame(TInput& input) {
  const auto kind = static_cast<TFrameKind>(input.takeBelow(kFrameKinds));
  if (kind == TFrameKind::sliver) return takeSliver(input);
  if (kind == TFrameKind::anyType) return takeAnyType(input);
  const int rows = takeSide(input);
  TFrame frame = makeUsualFrame(input, rows, takeSide(input));
  if (frame.image.empty()) return frame;
  kind == TFrameKind::pixels ? fillWithBytes(input, frame.image) : paintStrokes(input, frame.image);
  return frame;
}

std::vector<cv::Point2f> takePoints(TInput& input, int maxCount) {
  const int runs = input.takeBelow(kMaxRuns + 1);
  if (runs > 0) return takeRuns(input, runs, maxCount);
  std::vector<cv::Point2f> points;
  const int count = input.takeBelow(std::min(maxCount, kMaxLoosePoints) + 1);
  for (int i = 0; i < count; ++i) points.push_back(takePoint(input));
  return points;
}

const std::vector<TWeldParameter>& readFields() {
  static const std::vector<TWeldParameter> fields = [] {
    std::vector<TWeldParameter> list;
    for (const TWeldJoint& joint : weldJoints()) {
      for (const TWeldParameter& parameter : joint.parameters) {
        const auto isSame = [&](const TWeldParameter& known) {
          return std::strcmp(known.field, parameter.field) == 0;
        };
        if (std::none_of(list.begin(), list.end(), isSame)) list.push_back(parameter);
      }
    }
    return list;
  }();
  return fields;
}

TWeldParams takeParams(TInput& input) {
  TWeldParams params;
  params.weldType = static_cast<TWeldType>(input.takeFlag() ? input.takeBelow(kTypes) : input.takeInt());
  params.weldPosType = static_cast<TWeldPosType>(input.takeFlag() ? input.takeBelow(kPositions) : input.takeInt());
  const int overrides = input.takeBelow(kMaxOverrides + 1);
  for (int i = 0; i < overrides; ++i) {
    const int index = input.takeBelow(static_cast<int>(readFields().size()));
    const TParameterValue& value = readFields()[static_cast<std::size_t>(index)].value;
    // An infinite count has no whole part.
    value.set(params, value.kind == TParameterKind::number ? input.takeDouble() : input.takeInt());
  }
  return params;
}

TWeldLineRes takeResult(TInput& input, int maxPoints) {
  TWeldLineRes result;
  result.isFound = input.takeFlag();
  if (!input.takeFlag()) return result;
  result.weldPos = takePoint(input);
  result.stripePts = takePoints(input, maxPoints);
  for (double* const value :
       {&result.auxVal1, &result.auxVal2, &result.auxVal3, &result.auxVal4, &result.trackVal}) {
    *value = input.takeDouble();
  }
  return result;
}

}  // namespace fuzz
