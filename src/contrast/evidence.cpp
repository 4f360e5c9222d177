#include "contrast/evidence.h"

#include "support/kernels/kernels.h"

#include <algorithm>
#include <array>

namespace weld {

namespace {

constexpr int kQuarters = 4;       // of the columns, each with a noise of its own
constexpr int kNoiseStrips = 8;    // of one estimate of the noise; the neighbours' count as well
constexpr int kNoiseStep = 2;      // strips that take part
constexpr int kLeastContrast = 3;  // log units, 0.6 %: less is no noise to compare with
constexpr int kLoudest = 3;        // times the noise of the quietest quarter
constexpr int kNarrow = 48;        // columns of a quarter that a wide seam can fill
constexpr int kClearColumns = 1;   // between a line and its sides, for the lens and the chamfers
constexpr int kReach = 18;         // columns beside a place that its response looks at
static_assert(kReach + 5 <= kFieldMargin, "strips fill the margins but for what they lean");

// Width of the line and of each side, columns; powers of two up to 8.
struct TShape {
  int middle = 0;
  int side = 0;
};
constexpr std::array<TShape, 4> kLines{{{1, 2}, {2, 2}, {4, 4}, {8, 4}}};
constexpr std::array<TShape, 2> kEdges{{{0, 2}, {0, 4}}};

// Means over 1, 2, 4 and 8 columns from every column on.
class TMeans {
public:
  TMeans(int columns, TMemory* memory)
      : length(columns + 2 * kReach), means(memory, 3 * static_cast<std::size_t>(length)) {}

  void take(const short* sums) {
    const auto mean = kernels().contrastRows.meanOfTwo;
    ones = sums;
    mean(sums - kReach, 1, length - 1, of(0));
    mean(of(0), 2, length - 3, of(1));
    mean(of(1), 4, length - 7, of(2));
  }

  // The row of means over so many columns, at column 0.
  const short* over(int width) const {
    return width == 1 ? ones : of(width == 2 ? 0 : width == 4 ? 1 : 2) + kReach;
  }

private:
  short* of(int n) const { return means.data() + static_cast<std::ptrdiff_t>(n) * length; }

  int length;
  TBuffer<short> means;
  const short* ones = nullptr;
};

void respond(const TMeans& means, TTrait trait, const TShape& shape, int columns, short* response) {
  const TContrastRows& rows = kernels().contrastRows;
  const short* const sides = means.over(shape.side);
  if (trait == TTrait::dark || trait == TTrait::bright) {
    const int begin = -(shape.middle / 2);
    const auto run = trait == TTrait::dark ? rows.respondDark : rows.respondBright;
    run(sides + begin - kClearColumns - shape.side, means.over(shape.middle) + begin,
        sides + begin + shape.middle + kClearColumns, columns, response);
    return;
  }
  const std::ptrdiff_t side = shape.side;
  std::array<const short*, 4> around{sides - kClearColumns - 2 * side, sides - kClearColumns - side,
                                     sides + kClearColumns, sides + kClearColumns + side};
  if (trait == TTrait::fallingEdge) std::reverse(around.begin(), around.end());
  rows.respondEdge(around.data(), columns, response);
}

// Works through the strips of one slope.
class TWeigher {
public:
  TWeigher(const TStrips& all, TTrait what, TMemory* memory)
      : strips(all),
        trait(what),
        shapes(isLine() ? kLines.data() : kEdges.data()),
        shapeCount(static_cast<int>(isLine() ? kLines.size() : kEdges.size())),
        blocks((all.count + kNoiseStrips - 1) / kNoiseStrips),
        means(all.columns, memory),
        response(memory, static_cast<std::size_t>(all.stride)),
        factors(memory, static_cast<std::size_t>(all.columns * shapeCount)),
        sums(static_cast<std::size_t>(blocks * shapeCount * kQuarters), memory) {}

  void weigh(int shear, short* evidence) {
    measureNoise(shear);
    for (int strip = 0; strip < strips.count; ++strip, evidence += strips.stride) {
      std::fill(evidence - kFieldMargin, evidence - kFieldMargin + strips.stride, short{0});
      if (strip % kNoiseStrips == 0) setFactors(strip / kNoiseStrips);
      means.take(strips.row(shear, strip));
      for (int n = 0; n < shapeCount; ++n) {
        respond(means, trait, shapes[n], strips.columns, response.data());
        kernels().contrastRows.rate(response.data(), factorsOf(n), kMostEvidence, strips.columns, evidence);
      }
    }
  }

private:
  bool isLine() const { return trait == TTrait::dark || trait == TTrait::bright; }
  int quarter(int q) const { return strips.columns * q / kQuarters; }
  int& sumOf(int block, int shape, int q) {
    return sums[static_cast<std::size_t>((block * shapeCount + shape) * kQuarters + q)];
  }

  void measureNoise(int shear) {
    std::fill(sums.begin(), sums.end(), 0);
    for (int strip = 0; strip < strips.count; strip += kNoiseStep) {
      means.take(strips.row(shear, strip));
      for (int n = 0; n < shapeCount; ++n) {
        respond(means, trait, shapes[n], strips.columns, response.data());
        for (int q = 0; q < kQuarters; ++q)
          sumOf(strip / kNoiseStrips, n, q) +=
              kernels().contrastRows.sumMagnitudes(response.data() + quarter(q), quarter(q + 1) - quarter(q));
      }
    }
  }

  // Mean magnitude around a block.
  int noiseOf(int block, int shape, int q) {
    int sum = 0;
    int counted = 0;
    for (int b = std::max(0, block - 1); b <= std::min(blocks - 1, block + 1); ++b) {
      sum += sumOf(b, shape, q);
      const int end = std::min(strips.count, (b + 1) * kNoiseStrips);
      counted += (end - b * kNoiseStrips + kNoiseStep - 1) / kNoiseStep;
    }
    return std::max(sum / std::max(1, counted * (quarter(q + 1) - quarter(q))), kLeastContrast * kStripRows);
  }

  // What a response in the strips of a block is multiplied by, column by column. In a narrow band, where a wide
  // seam fills a quarter, it is no noise where the other quarters are quiet.
  void setFactors(int block) {
    for (int n = 0; n < shapeCount; ++n) {
      std::array<int, kQuarters> noise{};
      for (int q = 0; q < kQuarters; ++q) noise[q] = noiseOf(block, n, q);
      const auto [quietest, loudest] = std::minmax_element(noise.begin(), noise.end());
      const int most = quarter(1) < kNarrow ? kLoudest * *quietest : *loudest;
      for (int q = 0; q < kQuarters; ++q)
        std::fill(factorsOf(n) + quarter(q), factorsOf(n) + quarter(q + 1),
                  static_cast<unsigned short>(kEvidenceUnit * 65536 / std::min(noise[q], most)));
    }
  }

  unsigned short* factorsOf(int shape) {
    return factors.data() + static_cast<std::ptrdiff_t>(shape) * strips.columns;
  }

  const TStrips& strips;
  TTrait trait;
  const TShape* shapes;
  int shapeCount;
  int blocks;
  TMeans means;
  TBuffer<short> response;
  TBuffer<unsigned short> factors;
  TList<int> sums;
};

}  // namespace

void weighEvidence(const TStrips& strips, TTrait trait, TMemory* memory, TEvidence& evidence) {
  TWeigher weigher(strips, trait, memory);
  for (int shear = 0; shear < strips.shears.count(); ++shear)
    weigher.weigh(shear, evidence.values.data() + strips.offset(shear, 0));
}

}  // namespace weld
