#include "contrast/confidence.h"

#include "support/exact_log.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace weld {

namespace {

constexpr int kNearestCopy = 8;  // px beyond the line's half width
constexpr int kCopyStep = 2;
constexpr double kLongPx = 1000.0;   // a longer chord says more, a shorter one less
constexpr double kSharpPx = 5.5;     // over which an edge of plates rises at most; shadows rise over more
constexpr double kShadowRise = 0.3;  // of the feature rise: 7.4 px
constexpr double kLeastToleranceDeg = 15.0;
constexpr float kSideGap = 1.5F;
constexpr int kSide = 4;

using TF = TFeatureOfLine;

// Contrast of the line, or of a copy so far aside, over all measured stations.
class TCopies {
public:
  TCopies(const TRefinedLine& line, const TProfiles& profiles, const TAlignment& alignment, TTrait what)
      : trait(what), edges(line.edges) {
    for (int i = 0; i < line.size(); ++i) {
      const int station = line.first + i;
      if (line.measured[i] == 0) continue;
      profiles.addShifted(station, alignment.shift[station], mean.data());
      ++counted;
    }
    for (float& v : mean) v /= static_cast<float>(std::max(counted, 1));
  }

  float contrastAt(float aside) const {
    const float left = over(edges.left + aside - kSideGap - kSide, edges.left + aside - kSideGap);
    const float right = over(edges.right + aside + kSideGap, edges.right + aside + kSideGap + kSide);
    if (trait == TTrait::risingEdge) return right - left;
    if (trait == TTrait::fallingEdge) return left - right;
    const float middle = over(edges.left + aside, edges.right + aside);
    return trait == TTrait::dark ? std::min(left, right) - middle : middle - std::max(left, right);
  }

  float reach() const { return kProfileReach - std::max(edges.right, -edges.left) - kSideGap - kSide; }

private:
  float over(float from, float to) const {
    const int begin = std::clamp(static_cast<int>(std::floor(from + 0.5F)) + kProfileReach, 0, kProfileSize - 1);
    const int end = std::clamp(static_cast<int>(std::floor(to + 0.5F)) + kProfileReach, begin, kProfileSize - 1);
    float sum = 0.0F;
    for (int u = begin; u <= end; ++u) sum += mean[u];
    return sum / static_cast<float>(end - begin + 1);
  }

  TTrait trait;
  const TShapeEdges& edges;
  std::array<float, kProfileSize> mean{};
  int counted = 0;
};

double lnOf(double x) {
  return exactLog(std::max(x, 1e-4));
}

// The same on either side.
void compareWithCopies(const TCopies& copies, float halfWidth, TLineFeatures& features) {
  const float own = std::max(copies.contrastAt(0.0F), 1e-4F);
  double sum = 0.0;
  int counted = 0;
  float best = 0.0F;
  float aside = halfWidth + kNearestCopy;
  while (aside <= copies.reach()) {
    for (const float side : {-aside, aside}) {
      const float contrast = copies.contrastAt(side);
      best = std::max(best, contrast);
      sum += std::abs(static_cast<double>(contrast));
      ++counted;
    }
    aside += kCopyStep;
  }
  const double mean = std::max(sum / std::max(counted, 1), 1e-3);
  features[static_cast<int>(TF::standsOut)] = lnOf(static_cast<double>(own) / mean);
  features[static_cast<int>(TF::parallel)] = std::min(static_cast<double>(best / own), 2.0);
}

// In the order of TFeatureOfLine; the last one stands alone.
using TWeights = std::array<double, kLineFeatures + 1>;
// A chance line is as much less likely as fewer directions are searched.
constexpr TWeights kLineWeights{0.36, -3.60, 0.00, 6.00, -1.21, -4.79, -0.59,
                                3.60, 0.29,  0.00, 1.31, 1.00,  0.00,  12.24};
constexpr TWeights kEdgeWeights{1.53, -5.54, -1.92, 2.67, 0.78, -4.86, 1.44,
                                1.55, -0.36, -10.1, 0.09, 0.60, -26.0, 3.72};

const TWeights& weightsOf(TTrait trait) {
  return isEdge(trait) ? kEdgeWeights : kLineWeights;
}

double sumOf(const TLineFeatures& features, TTrait trait) {
  const TWeights& weights = weightsOf(trait);
  double sum = weights.back();
  for (int i = 0; i < kLineFeatures; ++i) sum += weights[i] * features[i];
  return sum;
}

struct TFeatureText {
  const char* name;
  bool isLog;
};
constexpr std::array<TFeatureText, kLineFeatures> kFeatureTexts{
    {{"contrast against lines beside it", true},
     {"line beside it, share of the line", false},
     {"share of the line that is seen", false},
     {"length against 1000 px or the room", true},
     {"length against the longest one", false},
     {"second line, share of the first", false},
     {"turns per station", false},
     {"contrast", true},
     {"contrast against the noise", false},
     {"rise against a sharp edge", true},
     {"nearness to a rough position", false},
     {"directions against those that were asked for", true},
     {"rise of an edge that was not asked for", true}}};

}  // namespace

TLineFeatures featuresOf(const TRefinedLine& line, const TProfiles& profiles, const TAlignment& alignment,
                         const TLineContext& context) {
  TLineFeatures f{};
  const auto set = [&](TF feature, double value) { f[static_cast<int>(feature)] = value; };
  const TCopies copies(line, profiles, alignment, context.trait);
  compareWithCopies(copies, 0.5F * line.edges.width(), f);
  const double along = static_cast<double>(line.size() - 1) * kStationPx;
  const double aside = static_cast<double>(line.across.back() - line.across.front());
  const double chord = std::sqrt(along * along + aside * aside);
  set(TF::measured, static_cast<double>(std::count(line.measured.begin(), line.measured.end(), 1)) / line.size());
  set(TF::length, lnOf(chord / std::clamp(context.extentPx, 1.0, kLongPx)));
  set(TF::span, std::min(chord / std::max(context.longestPx, 1.0), 1.0));
  set(TF::turns, context.turns / static_cast<double>(std::max(context.strips, 1)));
  set(TF::contrast, lnOf(std::abs(static_cast<double>(line.edges.contrast))));
  set(TF::strength, context.score / static_cast<double>(std::max(context.strips, 1) * kEvidenceUnit));
  set(TF::rise,
      isEdge(context.trait) ? std::max(lnOf(static_cast<double>(line.edges.risePx) / kSharpPx), 0.0) : 0.0);
  set(TF::rough, context.isRough ? 1.0 : 0.0);
  set(TF::narrow, lnOf(90.0 / std::max(context.toleranceDeg, kLeastToleranceDeg)));
  set(TF::unaskedRise, context.isUnasked ? f[static_cast<int>(TF::rise)] : 0.0);
  return f;
}

void compareWithSecond(int secondScore, int score, TLineFeatures& features) {
  features[static_cast<int>(TF::second)] = std::min(secondScore / static_cast<double>(std::max(score, 1)), 1.5);
}

bool isShadow(const TLineFeatures& features) {
  return features[static_cast<int>(TF::rise)] > kShadowRise;
}

double confidenceOf(const TLineFeatures& features, TTrait trait) {
  return 1.0 / (1.0 + exactExp(-sumOf(features, trait)));
}

TFeatureReport reportFeature(const TLineFeatures& features, TTrait trait, TFeatureOfLine which,
                             double confidence) {
  const int i = static_cast<int>(which);
  const double weight = weightsOf(trait)[i];
  const double share = std::clamp(confidence, 1e-3, 1.0 - 1e-3);
  const double missing = exactLog(share / (1.0 - share)) - sumOf(features, trait);
  const double limit = weight != 0.0 ? features[i] + missing / weight : std::numeric_limits<double>::quiet_NaN();
  const bool isLog = kFeatureTexts[i].isLog;
  return {kFeatureTexts[i].name, weight > 0.0, isLog ? exactExp(features[i]) : features[i],
          isLog ? exactExp(limit) : limit};
}

}  // namespace weld
