// Laser speckle: the intensity of a smoothed random complex field (Goodman, "Speckle Phenomena in Optics",
// 2007), mean 1 and contrast 1, repeated over the frame.
#pragma once

#include "scenes/random.h"

#include <vector>

namespace scenes {

class TSpeckle {
public:
  // contrast 0..1; grainPx: width of a grain, 1..4. At contrast 0 every factor is 1.
  TSpeckle(double contrast, double grainPx, TRandom random);

  float factor(int x, int y) const {
    if (factors.empty()) return 1.0F;
    const int place = (y & (kRows - 1)) * kCols + (x & (kCols - 1));
    return factors[static_cast<std::size_t>(place)];
  }

private:
  static constexpr int kCols = 2048;
  static constexpr int kRows = 64;
  std::vector<float> factors;
};

}  // namespace scenes
