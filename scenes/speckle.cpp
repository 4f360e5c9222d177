#include "scenes/speckle.h"

#include <algorithm>
#include <cmath>

#include "scenes/exact_math.h"

namespace scenes {
namespace {

struct TField {
  int rows;
  int cols;
  std::vector<float> values;
};

TField makeNoiseField(int rows, int cols, TRandom& random) {
  TField field{rows, cols, std::vector<float>(static_cast<std::size_t>(rows) * cols)};
  for (float& v : field.values) v = static_cast<float>(toGaussian(random.next()));
  return field;
}

// Bell-shaped weights whose squares sum to 1, so that a smoothed field keeps unit variance.
std::vector<float> makeKernel(double grainPx) {
  const int reach = static_cast<int>(grainPx);
  std::vector<float> weights;
  double squares = 0.0;
  for (int d = -reach; d <= reach; ++d) {
    const double u = 2.0 * d / grainPx;
    weights.push_back(halve(static_cast<float>(u * u)));
    squares += static_cast<double>(weights.back()) * weights.back();
  }
  const auto scale = static_cast<float>(1.0 / std::sqrt(squares));
  for (float& w : weights) w *= scale;
  return weights;
}

// One pass along x, wrapped around, written transposed; two passes smooth both directions.
TField smoothTransposed(const TField& in, const std::vector<float>& kernel) {
  TField out{in.cols, in.rows, std::vector<float>(in.values.size())};
  const int reach = static_cast<int>(kernel.size()) / 2;
  for (int y = 0; y < in.rows; ++y) {
    const float* row = &in.values[static_cast<std::size_t>(y) * in.cols];
    for (int x = 0; x < in.cols; ++x) {
      float sum = 0.0F;
      for (int d = -reach; d <= reach; ++d) sum += kernel[d + reach] * row[(x + d) & (in.cols - 1)];
      out.values[static_cast<std::size_t>(x) * in.rows + y] = sum;
    }
  }
  return out;
}

}  // namespace

TSpeckle::TSpeckle(double contrast, double grainPx, TRandom random) {
  if (contrast <= 0.0) return;
  const std::vector<float> kernel = makeKernel(std::max(grainPx, 1.0));
  const auto smoothField = [&] {
    return smoothTransposed(smoothTransposed(makeNoiseField(kRows, kCols, random), kernel), kernel);
  };
  const TField real = smoothField();
  const TField imaginary = smoothField();
  const auto share = static_cast<float>(contrast);
  factors.resize(real.values.size());
  for (std::size_t i = 0; i < factors.size(); ++i) {
    const float intensity = 0.5F * (real.values[i] * real.values[i] + imaginary.values[i] * imaginary.values[i]);
    factors[i] = 1.0F - share + share * intensity;
  }
}

}  // namespace scenes
