#include "worst_frames.h"

#include "scenes/random.h"
#include "scenes/scene.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace bench {

namespace {

using scenes::TRandom;
using scenes::TStream;

const cv::Size kSize{1280, 1024};
constexpr std::uint64_t kSeed = 1;
constexpr int kHugeGuide = 100000;  // points

// Cells that are black or white by chance.
cv::Mat1b drawNoise(cv::Size cell) {
  TRandom random(kSeed, TStream::noise);
  cv::Mat1b image(kSize);
  for (int y = 0; y < kSize.height; y += cell.height) {
    for (int x = 0; x < kSize.width; x += cell.width) {
      image(cv::Rect({x, y}, cell) & cv::Rect({}, kSize)) = random.chance(0.5) ? 255 : 0;
    }
  }
  return image;
}

// Brighter from row to row, so that whatever comes later stands out more than all before.
cv::Mat1b brightenDownwards(cv::Mat1b image) {
  for (int y = 0; y < kSize.height; ++y) image.row(y) *= (30.0 + 225.0 * y / kSize.height) / 255.0;
  return image;
}

// Horizontal bars, in every column shifted by chance: the pairs of neighbouring columns never lie side by side.
cv::Mat1b drawShiftedBars(int barPx, int spacePx) {
  TRandom random(kSeed, TStream::layout);
  cv::Mat1b image(kSize, static_cast<unsigned char>(0));
  for (int x = 0; x < kSize.width; ++x) {
    const int shift = random.integer(0, barPx + spacePx - 1);
    for (int y = 0; y < kSize.height; ++y) {
      if ((y + shift) % (barPx + spacePx) < barPx) image(y, x) = 255;
    }
  }
  return image;
}

// Row of a zig-zag line under its upper corners.
double zigzag(int x, int periodPx, double heightPx) {
  const int half = periodPx / 2;
  const int phase = x % periodPx;
  return heightPx * (phase < half ? phase : periodPx - phase) / half;
}

// Stripes one below the other, 15 px thick, cut into pieces too short for a corner and too flat to stay apart.
cv::Mat1b drawZigzags(int stripes, int periodPx, double heightPx) {
  cv::Mat1b image(kSize, static_cast<unsigned char>(0));
  for (int stripe = 0; stripe < stripes; ++stripe) {
    for (int x = 0; x < kSize.width; ++x) {
      const int top = cvRound(100 + 30 * stripe + zigzag(x, periodPx, heightPx));
      image(cv::Rect(x, top, 1, 15)) = 255;
    }
  }
  return image;
}

// Five stripes in stretches of growing length that do not continue each other.
cv::Mat1b drawStaggeredStretches() {
  cv::Mat1b image(kSize, static_cast<unsigned char>(0));
  int length = 33;
  bool isUpper = true;
  for (int x = 0; x < kSize.width; x += length++, isUpper = !isUpper) {
    for (int stripe = 0; stripe < 5; ++stripe) {
      image(cv::Rect(x, (isUpper ? 100 : 500) + 30 * stripe, length, 15) & cv::Rect({}, kSize)) = 255;
    }
  }
  return image;
}

// Half circles side by side: every one of them a flare, a round groove or a curve.
cv::Mat1b drawScallops(int radiusPx) {
  cv::Mat1b image(kSize, static_cast<unsigned char>(0));
  for (int x = 0; x < kSize.width; ++x) {
    const double across = x % (2 * radiusPx) + 0.5 - radiusPx;
    const int top = cvRound(400.0 - 0.9 * std::sqrt(radiusPx * radiusPx - across * across));
    image(cv::Rect(x, top, 1, 15)) = 255;
  }
  return image;
}

cv::Mat1b drawSpatter() {
  scenes::TSceneParams params = scenes::randomScene(scenes::TJoint::corner, scenes::TLevel::harsh, kSeed, kSize);
  params.look.spatter = 3000;
  params.look.blobs = 300;
  return scenes::renderScene(params).image;
}

cv::Mat1b over(const cv::Mat& stripes, const cv::Mat& texture, double textureShare) {
  cv::Mat image;
  texture.convertTo(image, CV_8U, textureShare);
  cv::max(stripes, image, image);
  return image;
}

}  // namespace

std::vector<TWorstFrame> makeWorstFrames() {
  const cv::Mat1b zigzags = drawZigzags(5, 26, 6.0);
  const cv::Mat1b fineNoise = drawNoise({1, 3});
  return {
      {"pixel noise", drawNoise({1, 1})},
      {"coarse noise", drawNoise({4, 4})},
      {"noise brighter downwards", brightenDownwards(drawNoise({2, 2}))},
      {"shifted bars", drawShiftedBars(98, 100)},
      {"flat zig-zag", drawZigzags(1, 26, 6.0)},
      {"zig-zag", drawZigzags(1, 28, 9.0)},
      {"five zig-zags", zigzags},
      {"five zig-zags in noise", over(zigzags, fineNoise, 0.3)},
      {"zig-zag in noise brighter downwards", over(drawZigzags(1, 26, 6.0), brightenDownwards(fineNoise), 0.3)},
      {"staggered stretches", drawStaggeredStretches()},
      {"row of grooves", drawZigzags(1, 128, 90.0)},
      {"row of scallops", drawScallops(64)},
      {"3000 streaks of spatter", drawSpatter()}};
}

std::vector<TWorstGuide> makeWorstGuides() {
  TWorstGuide shuffled{"shuffled guide", {}};
  TRandom random(kSeed, TStream::layout);
  for (int i = 0; i < kSize.width; ++i) {
    shuffled.stripePts.emplace_back(random.integer(0, kSize.width - 1), random.integer(0, 1) * (kSize.height - 1));
  }
  TWorstGuide huge{"guide of 100000 points", {}};
  for (int i = 0; i < kHugeGuide; ++i) {
    huge.stripePts.emplace_back(random.integer(0, kSize.width - 1), random.integer(0, 1) * (kSize.height - 1));
  }
  return {{"first", {}}, shuffled, huge};
}

}  // namespace bench
