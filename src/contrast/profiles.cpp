#include "contrast/profiles.h"

#include <opencv2/core/hal/intrin.hpp>

#include <algorithm>
#include <array>
#include <cmath>

namespace weld {

namespace {

constexpr float kLeastGrey = 8.0F;  // of a profile's mean: darker ones show noise
constexpr int kMostShift = 6;       // px
constexpr int kShifts = 2 * kMostShift + 1;
constexpr int kVectors = (kShifts + 3) / 4;
constexpr int kShapeReach = 18;  // px: what is compared
static_assert(kShapeReach - kMostShift + 4 * kVectors <= kProfileReach, "a profile covers its comparison");
constexpr int kRounds = 3;
constexpr float kStepPrice = 0.06F;  // of likeness, per squared px between neighbours
constexpr float kAlike = 0.4F;       // likeness of profiles that take part in the mean
constexpr float kClear = 0.5F;       // of a profile that tells its place alone
constexpr int kTogether = 2;         // neighbours on either side of one that does not

struct TShape {
  std::array<float, kProfileSize> values{};
  float norm = 0.0F;  // of the compared part
};

void addRow(const unsigned char* row, std::ptrdiff_t step, int across, float first, float* sums) {
  const float base = std::floor(first);
  const float share = first - base;
  const int begin = static_cast<int>(base);
  if (begin >= 0 && begin + kProfileSize < across) {
    const unsigned char* p = row + begin * step;
    for (int u = 0; u < kProfileSize; ++u, p += step) {
      const auto here = static_cast<float>(p[0]);
      sums[u] += here + share * (static_cast<float>(p[step]) - here);
    }
    return;
  }
  for (int u = 0; u < kProfileSize; ++u) {
    const auto here = static_cast<float>(row[std::clamp(begin + u, 0, across - 1) * step]);
    const auto next = static_cast<float>(row[std::clamp(begin + u + 1, 0, across - 1) * step]);
    sums[u] += here + share * (next - here);
  }
}

void sampleProfile(const TGreyView& view, double along, float across, float slope, float* profile) {
  std::fill(profile, profile + kProfileSize, 0.0F);
  const int first = static_cast<int>(std::floor(along)) - kStationPx / 2 + 1;
  for (int n = 0; n < kStationPx; ++n) {
    const int row = std::clamp(first + n, 0, view.along - 1);
    const float place = across + slope * static_cast<float>(row - along);
    addRow(view.first + row * view.stepAlong, view.stepAcross, view.across, place - kProfileReach, profile);
  }
  float sum = 0.0F;
  for (int u = 0; u < kProfileSize; ++u) sum += profile[u];
  const float level = std::max(sum / kProfileSize, kLeastGrey * kStationPx);
  for (int u = 0; u < kProfileSize; ++u) profile[u] = profile[u] / level - 1.0F;
}

TShape meanOf(const TProfiles& profiles, const TAlignment& alignment) {
  TShape shape;
  float counted = 0.0F;
  for (int i = 0; i < profiles.count(); ++i) {
    if (alignment.likeness[i] < kAlike) continue;
    counted += 1.0F;
    profiles.addShifted(i, alignment.shift[i], shape.values.data());
  }
  for (float& v : shape.values) v /= std::max(counted, 1.0F);
  float mean = 0.0F;
  for (int u = -kShapeReach; u <= kShapeReach; ++u) mean += shape.values[kProfileReach + u];
  mean /= 2 * kShapeReach + 1;
  float squares = 0.0F;
  for (float& v : shape.values) v -= mean;
  for (int u = -kShapeReach; u <= kShapeReach; ++u)
    squares += shape.values[kProfileReach + u] * shape.values[kProfileReach + u];
  shape.norm = std::sqrt(squares);
  return shape;
}

// Correlation of a profile with the shape at every whole shift; the shifts side by side, each sum in its own
// order. Returns the profile's spread against the shape's.
float compare(const float* profile, const TShape& shape, float* likeness) {
  cv::v_float32x4 products[kVectors];
  cv::v_float32x4 sums[kVectors];
  cv::v_float32x4 spreads[kVectors];
  for (int k = 0; k < kVectors; ++k) products[k] = sums[k] = spreads[k] = cv::v_setzero_f32();
  for (int u = -kShapeReach; u <= kShapeReach; ++u) {
    const cv::v_float32x4 q = cv::v_setall_f32(shape.values[kProfileReach + u]);
    const float* values = profile + kProfileReach + u - kMostShift;
    for (int k = 0; k < kVectors; ++k, values += 4) {
      const cv::v_float32x4 v = cv::v_load(values);
      products[k] += v * q;
      sums[k] += v;
      spreads[k] += v * v;
    }
  }
  float product[4 * kVectors] = {};
  float sum[4 * kVectors] = {};
  float squares[4 * kVectors] = {};
  for (int k = 0, s = 0; k < kVectors; ++k, s += 4) {
    cv::v_store(product + s, products[k]);
    cv::v_store(sum + s, sums[k]);
    cv::v_store(squares + s, spreads[k]);
  }
  float norm[kShifts] = {};
  for (int s = 0; s < kShifts; ++s) {
    const float variance = squares[s] - sum[s] * sum[s] / (2 * kShapeReach + 1);
    norm[s] = std::sqrt(std::max(variance, 0.0F)) * shape.norm;
    likeness[s] = norm[s] > 0.0F ? product[s] / norm[s] : 0.0F;
  }
  return shape.norm > 0.0F ? norm[kMostShift] / (shape.norm * shape.norm) : 0.0F;
}

// The whole shifts that are likely and change little from station to station.
class TShiftChain {
public:
  TShiftChain(int stations, TMemory* memory)
      : likeness(memory, static_cast<std::size_t>(stations) * kShifts),
        best(memory, static_cast<std::size_t>(stations) * kShifts),
        count(stations) {}

  float* likenessOf(int i) { return likeness.data() + static_cast<std::ptrdiff_t>(i) * kShifts; }

  void solve(TAlignment& alignment) {
    for (int i = 0; i < count; ++i) {
      for (int s = 0; s < kShifts; ++s) bestOf(i)[s] = likenessOf(i)[s] + (i > 0 ? reach(i - 1, s).second : 0.0F);
    }
    int s = static_cast<int>(std::max_element(bestOf(count - 1), bestOf(count - 1) + kShifts) - bestOf(count - 1));
    for (int i = count - 1; i >= 0; --i) {
      alignment.likeness[i] = likenessOf(i)[s];
      alignment.shift[i] = static_cast<float>(s - kMostShift) + peakBeside(likenessOf(i), s);
      if (i > 0) s = reach(i - 1, s).first;
    }
  }

private:
  float* bestOf(int i) { return best.data() + static_cast<std::ptrdiff_t>(i) * kShifts; }

  std::pair<int, float> reach(int from, int s) {
    std::pair<int, float> found{s, bestOf(from)[s]};
    for (int k = std::max(0, s - 2); k <= std::min(kShifts - 1, s + 2); ++k) {
      const auto step = static_cast<float>(k - s);
      const float value = bestOf(from)[k] - kStepPrice * step * step;
      if (value > found.second) found = {k, value};
    }
    return found;
  }

  // Of the parabola through three values.
  static float peakBeside(const float* values, int s) {
    if (s == 0 || s == kShifts - 1) return 0.0F;
    const float bend = values[s - 1] - 2.0F * values[s] + values[s + 1];
    if (bend >= 0.0F) return 0.0F;
    return std::clamp(0.5F * (values[s - 1] - values[s + 1]) / bend, -0.5F, 0.5F);
  }

  TBuffer<float> likeness;
  TBuffer<float> best;
  int count;
};

void alignTo(const TShape& shape, const TProfiles& profiles, TShiftChain& chain, TAlignment& alignment) {
  for (int i = 0; i < profiles.count(); ++i)
    alignment.depth[i] = compare(profiles.of(i), shape, chain.likenessOf(i));
  chain.solve(alignment);
}

// A faint seam shows where several stations are looked at together.
void alignFaintOnes(const TShape& shape, const TProfiles& profiles, TShiftChain& chain, TMemory* memory,
                    TAlignment& alignment) {
  const auto isFaint = [](float likeness) { return likeness < kClear; };
  if (std::none_of(alignment.likeness.begin(), alignment.likeness.end(), isFaint)) return;
  TAlignment together(profiles.count(), memory);
  alignTo(shape, TProfiles(profiles, kTogether, memory), chain, together);
  for (int i = 0; i < profiles.count(); ++i) {
    if (!isFaint(alignment.likeness[i]) || isFaint(together.likeness[i])) continue;
    alignment.likeness[i] = together.likeness[i];
    alignment.shift[i] = together.shift[i];
    alignment.depth[i] = together.depth[i];
  }
}

}  // namespace

TProfiles::TProfiles(const TGreyView& view, const TCourse& course, TMemory* memory)
    : stations(course.size()), values(memory, static_cast<std::size_t>(stations) * kProfileSize) {
  for (int i = 0; i < stations; ++i)
    sampleProfile(view, course.alongOf(i), course.across[i], course.slope[i],
                  values.data() + static_cast<std::ptrdiff_t>(i) * kProfileSize);
}

TProfiles::TProfiles(const TProfiles& single, int reach, TMemory* memory)
    : stations(single.stations), values(memory, static_cast<std::size_t>(stations) * kProfileSize) {
  for (int i = 0; i < stations; ++i) {
    float* const sum = values.data() + static_cast<std::ptrdiff_t>(i) * kProfileSize;
    std::fill(sum, sum + kProfileSize, 0.0F);
    const int begin = std::max(0, i - reach);
    const int end = std::min(stations, i + reach + 1);
    for (int k = begin; k < end; ++k) {
      for (int u = 0; u < kProfileSize; ++u) sum[u] += single.of(k)[u];
    }
    for (int u = 0; u < kProfileSize; ++u) sum[u] /= static_cast<float>(end - begin);
  }
}

void TProfiles::addShifted(int station, float shift, float* sums) const {
  const float base = std::floor(shift);
  const float share = shift - base;
  const int aside = std::clamp(static_cast<int>(base), -kProfileSize, kProfileSize);
  const int begin = std::clamp(-aside, 0, kProfileSize);
  const int end = std::clamp(kProfileSize - 1 - aside, begin, kProfileSize);
  const float* const profile = of(station);
  for (int u = 0; u < begin; ++u) sums[u] += profile[0];
  for (int u = begin; u < end; ++u) {
    const float here = profile[u + aside];
    sums[u] += here + (profile[u + aside + 1] - here) * share;
  }
  for (int u = end; u < kProfileSize; ++u) sums[u] += profile[kProfileSize - 1];
}

TAlignment alignProfiles(const TProfiles& profiles, TMemory* memory) {
  TAlignment alignment(profiles.count(), memory);
  TShiftChain chain(profiles.count(), memory);
  for (int round = 0; round < kRounds; ++round) alignTo(meanOf(profiles, alignment), profiles, chain, alignment);
  alignFaintOnes(meanOf(profiles, alignment), profiles, chain, memory, alignment);
  for (int i = 0; i < profiles.count(); ++i) alignment.depth[i] *= alignment.likeness[i];
  const TShape shape = meanOf(profiles, alignment);
  alignment.shape.assign(shape.values.begin(), shape.values.end());
  return alignment;
}

}  // namespace weld
