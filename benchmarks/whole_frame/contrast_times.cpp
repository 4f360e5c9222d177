#include "contrast_times.h"

#include "scenes/plate.h"
#include "timing.h"
#include "zelContrast.h"

#include <opencv2/core/utility.hpp>

#include <cstdio>

namespace bench {

namespace {

struct TCase {
  const char* name;
  cv::Mat image;
  TContrastSearch search;
  bool hasSeam;
  double limitMs;
};

void printRow(const TCase& c, const char* kernels, bool isOptimized, double limitMs) {
  TContrastFinder finder;
  cv::setUseOptimized(isOptimized);
  if (finder.find(c.image, c.search).pts.empty() == c.hasSeam) std::printf("| %s: a wrong answer |\n", c.name);
  const TTiming t = measureAgainstCopy(c.image, {[&] { finder.find(c.image, c.search); }}).front();
  cv::setUseOptimized(true);
  std::printf("| %s, %s | %.2f | %.2f | %.1f | %s |\n", c.name, kernels, t.timesCopy(), t.workUs / 1000.0, limitMs,
              t.workUs / 1000.0 <= limitMs ? "yes" : "no");
}

}  // namespace

void reportContrast() {
  using scenes::TLevel;
  using scenes::TPlateSeam;
  scenes::TPlateParams params = randomPlate(TPlateSeam::tight, TLevel::noisy, 5);
  params.course = {{640.0, 512.0}, 80.0, 30.0, 600.0};
  params.course.depth = 0.5;
  const cv::Mat seam = renderPlate(params).image;
  const cv::Mat bare = renderPlate(randomPlate(TPlateSeam::none, TLevel::clean, 5)).image;
  TContrastSearch whole;
  whole.polarity = TSeamPolarity::dark;
  TContrastSearch near = whole;
  near.roughPos = {648.0F, 520.0F};
  near.directionDeg = 80.0F;
  near.directionTolDeg = 15.0F;
  near.bandPx = 60.0F;
  std::printf(
      "\n## Seams without a stripe\n\n| search | times a copy | ms | target ms | met |\n|---|---|---|---|---|\n");
  for (const TCase& c : {TCase{"dark, whole image", seam, whole, true, 6.0},
                         TCase{"dark, near a rough position", seam, near, true, 0.6},
                         TCase{"automatic, no seam", bare, {}, false, 15.0}}) {
    printRow(c, "AVX2", true, c.limitMs);
    printRow(c, "baseline", false, 2.0 * c.limitMs);
  }
}

}  // namespace bench
