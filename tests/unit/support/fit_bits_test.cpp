// Fits with all their bits: every compiler, optimisation and instruction set must give these.
#include "bent_stripe.h"

#include <gtest/gtest.h>

namespace zelFit {
namespace {

struct TPinned {
  TBentStripe stripe;
  double slope;
  double intercept;
};

void expectBits(const TLineFitResult& line, const TPinned& pinned) {
  EXPECT_EQ(line.slope, pinned.slope) << pinned.stripe << std::hexfloat << ": " << line.slope;
  EXPECT_EQ(line.intercept, pinned.intercept) << pinned.stripe << std::hexfloat << ": " << line.intercept;
}

TEST(FitBits, RobustFit) {
  const TPinned rows[] = {
      {{0.0, 0.0, 0.0, false, 0.5, 1, 1}, 0x1.b4e55aabbbf26p-15, 0x1.5dff94481p+9},
      {{0.3, 0.2, -0.4, false, 0.5, 1, 2}, 0x1.3330400ccf5cbp-2, 0x1.5dfdf04p+9},
      {{-0.7, 0.4, 0.9, true, 1.0, 1, 3}, -0x1.6656fafeffcccp-1, 0x1.5df701p+9},
      {{3.5, 0.4, 0.0, false, 0.5, 7, 4}, 0x1.c00134a5937ddp+1, 0x1.5df956p+9},
  };
  for (const TPinned& row : rows) {
    const std::vector<cv::Point> points = row.stripe.points();
    expectBits(fitRobust(points, 2.0), row);
    expectBits(fitRobust(points, 2.0), row);
  }
}

TEST(FitBits, ConsensusFit) {
  const TPinned rows[] = {
      {{0.0, 0.0, 0.0, false, 0.5, 13, 1}, 0x1.cec1e579c5533p-13, 0x1.5de3f24a2p+9},
      {{0.3, 0.2, -0.4, false, 0.5, 13, 2}, 0x1.32e8a25c6eeb8p-2, 0x1.5e068f8p+9},
      {{-0.7, 0.4, 0.9, true, 1.0, 13, 3}, -0x1.278003370edeap-1, 0x1.278cffp+9},
      {{0.58, 0.4, 0.0, false, 2.0, 13, 4}, 0x1.279a74590331cp-1, 0x1.5e669b9fa0c35p+9},
  };
  for (const TPinned& row : rows) expectBits(fitConsensus(row.stripe.points(), 0.0, 30.0), row);
}

}  // namespace
}  // namespace zelFit
