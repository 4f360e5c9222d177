// The plain rules on drawn stripes, every measured figure with all its bits. A change that means to move one puts
// the row that the failure prints in place of the old one.
#include "detectors/corner.h"
#include "detectors/gap.h"
#include "detectors/lap.h"
#include "detectors/plate.h"
#include "support/checksum.h"
#include "support/drawn_stripe.h"
#include "support/painted_frame.h"
#include "trace/trace.h"

#include <gtest/gtest.h>

#include <cmath>
#include <ostream>
#include <utility>

namespace weld {
namespace {

constexpr int kStripes = 1200;

struct TPinned {
  TWeldType type;
  TFindSeam find;
  int first, tracked;    // seams found
  std::uint32_t checks;  // checksum of what all tests measured and of the seams
};

bool operator==(const TPinned& a, const TPinned& b) {
  return a.first == b.first && a.tracked == b.tracked && a.checks == b.checks;
}

void PrintTo(const TPinned& row, std::ostream* out) {
  *out << findWeldJoint(row.type)->name << ", " << row.first << ", " << row.tracked << ", 0x" << std::hex
       << row.checks;
}

// Lit along the stripe, and at times beyond its ends or short of them.
cv::Mat lightOf(const std::vector<cv::Point2f>& points, int offset) {
  cv::Mat image = painted::dark();
  for (const cv::Point2f p : points) {
    const cv::Rect spot(cvRound(p.x) + offset - 1, cvRound(p.y), 3, 1);
    image(spot & cv::Rect(0, 0, image.cols, image.rows)).setTo(200);
  }
  return image;
}

TStripe stripeOf(const std::vector<cv::Point2f>& points, scenes::TRandom& random) {
  TStripe stripe(heapMemory());
  stripe.points.assign(points.begin(), points.end());
  for (int x = 0; x < 640; ++x) stripe.status.push_back({x, 1});
  for (const cv::Point2f p : points)
    stripe.status[static_cast<std::size_t>(p.x)].status = random.chance(0.02) ? 2 : 0;
  return stripe;
}

// Some of a joint's settings, moved about on a grid.
TWeldParams settingsOf(TWeldType type, scenes::TRandom& random) {
  TWeldParams params;
  initWeldParameters(type, params, static_cast<TWeldPosType>(random.integer(0, 4)));
  for (const TWeldParameter& row : findWeldJoint(type)->parameters) {
    const double value = row.value.get(params) * random.integer(4, 12) / 8.0;
    const bool isFlag = row.value.kind == TParameterKind::flag;
    if (random.chance(0.25))
      row.value.set(params, isFlag ? random.integer(0, 1) : std::round(64.0 * value) / 64.0);
  }
  return params;
}

TPinned measure(TPinned row) {
  scenes::TRandom random(static_cast<std::uint64_t>(row.type), scenes::TStream::layout);
  TChecksum sum;
  const auto find = [&](const cv::Mat& image, const TWeldParams& params, const TStripe& stripe,
                        const TPrevious& before) {
    TFrameTrace record;
    const TTrace trace(record);
    trace.beginAttempt(TSearchPath::first, TStripeExtraction::edgePairs);
    TSeam seam = row.find(TFrame{image, params, heapMemory(), trace}, stripe, before);
    for (const TTraceCheck& check : trace.attempt().checks)
      sum.add({check.measured, check.limit, check.passed ? 1.0 : 0.0});
    sum.add(toLineRes(seam));
    sum.add({static_cast<double>(seam.pos.x), static_cast<double>(seam.pos.y)});
    return seam;
  };
  row.first = row.tracked = 0;
  TSeam last(heapMemory());
  for (int n = 0; n < kStripes; ++n) {
    auto points = drawn::stripe(random, {n % 2 == 0 ? 300 : 500, 80.0, n % 4 == 0 ? 1.5 : 0.0, 640, n % 5 == 0});
    const cv::Mat image = lightOf(points, random.integer(-6, 6));
    const TWeldParams params = settingsOf(row.type, random);
    TSeam seam = find(image, params, stripeOf(points, random), {});
    if (seam.isFound) {
      ++row.first;
      const float tilt = static_cast<float>(random.integer(-6, 6)) / 32.0F;
      for (cv::Point2f& p : points) p.y += tilt * (p.x - seam.pos.x);
      last = std::move(seam);
    }
    row.tracked += find(image, params, stripeOf(points, random), TPrevious(last)).isFound ? 1 : 0;
  }
  row.checks = sum.value;
  return row;
}

const TPinned kPinned[] = {{TWeldType::buttGap, findGap, 392, 350, 0xde8344eb},
                           {TWeldType::lap, findLap, 463, 409, 0x5d00809c},
                           {TWeldType::corner, findCorner, 125, 123, 0xe13fff00},
                           {TWeldType::plate, findPlate, 586, 474, 0xc87ae49}};

TEST(DrawnStripes, giveThePinnedFigures) {
  for (const TPinned& row : kPinned) EXPECT_EQ(measure(row), row);
}

}  // namespace
}  // namespace weld
