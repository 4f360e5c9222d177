// Seeded random numbers that are the same on every machine: a counter goes through the splitmix64 mixing
// function (Steele, Lea and Flood, "Fast splittable pseudorandom number generators", OOPSLA 2014).
#pragma once

#include <cstdint>

namespace scenes {

// What the numbers are for; every use draws from a stream of its own, so that one does not shift another.
enum class TStream : std::uint64_t {
  missing = 1,
  texture,
  glow,
  spatter,
  blobs,
  noise,
  speckle,
  layout,
  jitter,
  drops,
  roughness,
  toeBlob,
  mirrors,
  decoy,
  scrap,
  flanks,
  plate
};

inline std::uint64_t mixBits(std::uint64_t v) {
  v += 0x9E3779B97F4A7C15ULL;
  v = (v ^ (v >> 30U)) * 0xBF58476D1CE4E5B9ULL;
  v = (v ^ (v >> 27U)) * 0x94D049BB133111EBULL;
  return v ^ (v >> 31U);
}

// 0 <= result < 1.
inline double toUnit(std::uint64_t bits) {
  return static_cast<double>(bits >> 11U) * 0x1.0p-53;
}

// Zero mean, unit variance, bell-shaped out to 4.9: the sum of the eight bytes.
inline double toGaussian(std::uint64_t bits) {
  constexpr double kMean = 8.0 * 127.5;
  constexpr double kSigma = 209.02312;  // sqrt(8 * (256^2 - 1) / 12)
  double sum = 0.0;
  for (unsigned shift = 0; shift < 64; shift += 8) sum += static_cast<double>((bits >> shift) & 0xFFU);
  return (sum - kMean) / kSigma;
}

class TRandom {
public:
  TRandom(std::uint64_t seed, TStream stream, std::uint64_t frame = 0)
      : key(mixBits(mixBits(mixBits(seed) ^ static_cast<std::uint64_t>(stream)) + frame)) {}

  std::uint64_t next() { return at(counter++); }
  std::uint64_t at(std::uint64_t index) const { return mixBits(key ^ mixBits(index)); }
  double uniform(double from, double to) { return from + (to - from) * toUnit(next()); }
  // from <= result <= to.
  int integer(int from, int to) { return from + static_cast<int>(toUnit(next()) * (to - from + 1)); }
  bool chance(double share) { return toUnit(next()) < share; }

private:
  std::uint64_t key;
  std::uint64_t counter = 0;
};

}  // namespace scenes
