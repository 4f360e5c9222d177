#include "contrast/find_line.h"

#include "contrast/families.h"
#include "support/arc_tangent.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace weld {

namespace {

constexpr int kLeastSidePx = 48;
constexpr int kLeastStrips = 6;       // of a path
constexpr double kBeyondDoubt = 0.9;  // confidence of a dark line at which nothing else is looked for
constexpr double kSameLinePx = 16.0;  // between two paths in the middle of one of them
constexpr float kWidest = 100.0F;     // px
constexpr int kPathsPerFamily = 2;
constexpr std::size_t kRefined = 3;     // paths, of which the surest counts
constexpr double kWorthRefining = 0.5;  // share of the best path's score

// A family with its strips.
struct TSearched {
  TSearched(const TFamily& from, TMemory* memory)
      : family(from), field(family.view, family.band, memory), strips(field, family.shears, memory) {}
  TFamily family;
  TLogField field;
  TStrips strips;
};

struct TCandidate {
  const TSearched* where = nullptr;
  TSeamPath path;
};

cv::Point2f toImage(double along, double across, bool isFlat) {
  return isFlat ? cv::Point2f(static_cast<float>(along), static_cast<float>(across))
                : cv::Point2f(static_cast<float>(across), static_cast<float>(along));
}

cv::Point2f pointOf(const TCandidate& candidate, std::size_t i) {
  const int row = (candidate.path.firstStrip + static_cast<int>(i)) * kStripStep + kStripRows / 2;
  const TLogField& field = candidate.where->field;
  return toImage(field.begin + 2 * row, 2 * (field.starts[row] + candidate.path.columns[i]),
                 candidate.where->family.isFlat);
}

// Whether a path lies, at its middle, on another one of the other family.
bool isSameLine(const TCandidate& a, const TCandidate& b) {
  const cv::Point2f middle = pointOf(a, a.path.columns.size() / 2);
  for (std::size_t i = 0; i < b.path.columns.size(); ++i) {
    if (cv::norm(middle - pointOf(b, i)) < kSameLinePx) return true;
  }
  return false;
}

bool isBetter(const TCandidate& a, const TCandidate& b) {
  return a.path.score > b.path.score;
}

// The best paths of every family, the best one first.
TList<TCandidate> findPaths(const TList<TSearched>& searched, TTrait trait, TMemory* memory) {
  TList<TCandidate> found(memory);
  found.reserve(searched.size() * kPathsPerFamily);
  for (const TSearched& where : searched) {
    TEvidence evidence(where.strips, memory);
    weighEvidence(where.strips, trait, memory, evidence);
    TPathSearch search(where.strips, evidence, memory);
    for (int n = 0; n < kPathsPerFamily; ++n) {
      TCandidate next{&where, search.findBest()};
      if (static_cast<int>(next.path.columns.size()) < kLeastStrips) break;
      search.erase(next.path);
      const auto place = std::upper_bound(found.begin(), found.end(), next, isBetter);
      found.insert(place, std::move(next));
    }
  }
  return found;
}

// Of the best path that is not this line.
int rivalScore(const TList<TCandidate>& found, const TCandidate& own) {
  for (const TCandidate& other : found) {
    if (&other != &own && !isSameLine(other, own) && !isSameLine(own, other)) return other.path.score;
  }
  return 0;
}

// Length of the straight line through both points inside the searched part of the view.
double longestChord(const TFamily& family, double along, double across, double slope) {
  double low = family.band.begin;
  double high = family.band.end;
  const double end = family.view.across;
  if (std::abs(slope) > 1e-6) {
    const double one = along - across / slope;
    const double other = along + (end - across) / slope;
    low = std::max(low, std::min(one, other));
    high = std::min(high, std::max(one, other));
  }
  return std::max(high - low, 1.0) * std::sqrt(1.0 + slope * slope);
}

TSeamPolarity polarityOf(TTrait trait) {
  if (isEdge(trait)) return TSeamPolarity::edge;
  return trait == TTrait::dark ? TSeamPolarity::dark : TSeamPolarity::bright;
}

double chordDeg(cv::Point2f from, cv::Point2f to) {
  const cv::Point2d d = cv::Point2d(to) - cv::Point2d(from);
  const double deg = arcTangent2(d.y, d.x) * kDegPerRad;
  return deg > 90.0 ? deg - 180.0 : deg <= -90.0 ? deg + 180.0 : deg;
}

// Left to right, or top to bottom where it is steeper than half a right angle.
void putInOrder(TContourCenterLine& line) {
  const bool isSteep = std::abs(line.directionDeg) > 45.0F;
  const cv::Point2f step = line.pts.back() - line.pts.front();
  if ((isSteep ? step.y : step.x) >= 0.0F) return;
  std::reverse(line.pts.begin(), line.pts.end());
  std::reverse(line.widthsPx.begin(), line.widthsPx.end());
  std::reverse(line.measured.begin(), line.measured.end());
}

TContourCenterLine toRecord(const TRefinedLine& refined, const TFamily& family, TTrait trait) {
  TContourCenterLine line;
  const int last = refined.size() - 1;
  line.pts.reserve(refined.across.size());
  line.widthsPx.reserve(refined.across.size());
  for (int i = 0; i <= last; ++i) {
    line.pts.push_back(
        toImage(refined.firstAlong + i * kStationPx, static_cast<double>(refined.across[i]), family.isFlat));
  }
  line.measured.assign(refined.measured.begin(), refined.measured.end());
  const float slope = (refined.across[last] - refined.across[0]) / static_cast<float>(last * kStationPx);
  const float cosine = 1.0F / std::sqrt(1.0F + slope * slope);
  for (const float width : refined.widthsPx) line.widthsPx.push_back(width * cosine);
  line.widthPx = isEdge(trait) ? 0.0F : refined.edges.width() * cosine;
  // The right or lower side of a view across is the right or lower one of the image.
  line.contrast = refined.edges.contrast;
  line.directionDeg = static_cast<float>(chordDeg(line.pts.front(), line.pts.back()));
  line.polarity = polarityOf(trait);
  putInOrder(line);
  return line;
}

TFoundLine refine(const TCandidate& candidate, TTrait trait, int second, const TContrastSearch& search,
                  TMemory* memory) {
  TFoundLine found;
  const TFamily& family = candidate.where->family;
  const TCourse course = courseOf(candidate.path, candidate.where->field, memory);
  const TProfiles profiles(family.view, course, memory);
  const TAlignment alignment = alignProfiles(profiles, memory);
  const TRefinedLine line = refineLine(course, profiles, alignment, trait, memory);
  if (line.size() == 0) return found;
  const double along = (line.size() - 1) * static_cast<double>(kStationPx);
  const double slope = static_cast<double>(line.across.back() - line.across.front()) / along;
  const double longest = longestChord(family, line.firstAlong, static_cast<double>(line.across.front()), slope);
  const double extent = (family.band.end - family.band.begin) * std::sqrt(1.0 + slope * slope);
  found.features = featuresOf(
      line, profiles, alignment,
      {trait, candidate.path.score, second, static_cast<int>(candidate.path.columns.size()), candidate.path.turns,
       longest, extent, search.bandPx > 0.0F, search.polarity == TSeamPolarity::automatic && isEdge(trait)});
  found.line = toRecord(line, family, trait);
  found.trait = trait;
  found.line.confidence = static_cast<float>(confidenceOf(found.features, trait));
  return found;
}

bool isWorthReporting(const TFoundLine& found) {
  return found.line.confidence >= TContrastSearch().minConfidence;
}

// Whether a line lies, at its middle, on a longer one.
bool isPartOf(const TContourCenterLine& line, const TContourCenterLine& longer) {
  if (line.pts.empty() || line.pts.size() >= longer.pts.size()) return false;
  const cv::Point2f middle = line.pts[line.pts.size() / 2];
  return std::any_of(longer.pts.begin(), longer.pts.end(),
                     [&](cv::Point2f p) { return cv::norm(middle - p) < kSameLinePx; });
}

// The surer one, but not for a part of the other.
bool isBetterLine(const TFoundLine& a, const TFoundLine& b) {
  if (isWorthReporting(a) && isPartOf(b.line, a.line)) return true;
  if (isWorthReporting(b) && isPartOf(a.line, b.line)) return false;
  return a.line.confidence > b.line.confidence;
}

// The best line of the best paths.
TFoundLine findTrait(const TList<TSearched>& searched, TTrait trait, const TContrastSearch& search,
                     TMemory* memory) {
  const TList<TCandidate> paths = findPaths(searched, trait, memory);
  TFoundLine best;
  for (std::size_t i = 0; i < std::min<std::size_t>(paths.size(), kRefined); ++i) {
    if (paths[i].path.score < kWorthRefining * paths[0].path.score) break;
    TFoundLine found = refine(paths[i], trait, rivalScore(paths, paths[i]), search, memory);
    if (isBetterLine(found, best)) best = std::move(found);
  }
  return best;
}

// Those that a polarity stands for, in the order in which they are looked for.
TList<TTrait> traitsOf(TSeamPolarity polarity, TMemory* memory) {
  switch (polarity) {
    case TSeamPolarity::dark:
      return TList<TTrait>({TTrait::dark}, memory);
    case TSeamPolarity::bright:
      return TList<TTrait>({TTrait::bright}, memory);
    case TSeamPolarity::edge:
      return TList<TTrait>({TTrait::risingEdge, TTrait::fallingEdge}, memory);
    default:
      return TList<TTrait>({TTrait::dark, TTrait::bright, TTrait::risingEdge, TTrait::fallingEdge}, memory);
  }
}

bool isWithin(float value, float low, float high) {
  return value >= low && value <= high;
}

}  // namespace

TContrastSearch inRange(const TContrastSearch& search) {
  constexpr float kFar = 1e6F;
  const TContrastSearch usual;
  const auto checked = [](float value, float low, float high, float instead) {
    return isWithin(value, low, high) ? value : instead;
  };
  TContrastSearch s = search;
  if (s.polarity < TSeamPolarity::dark || s.polarity > TSeamPolarity::automatic) s.polarity = usual.polarity;
  s.directionDeg = checked(s.directionDeg, -180.0F, 180.0F, usual.directionDeg);
  s.directionTolDeg = checked(s.directionTolDeg, 0.0F, 90.0F, usual.directionTolDeg);
  s.bandPx = checked(s.bandPx, 0.0F, kFar, usual.bandPx);
  s.reachPx = checked(s.reachPx, 0.0F, kFar, usual.reachPx);
  s.minWidthPx = checked(s.minWidthPx, 0.0F, kWidest, usual.minWidthPx);
  s.maxWidthPx = checked(s.maxWidthPx, 0.0F, kWidest, usual.maxWidthPx);
  s.minLengthPx = checked(s.minLengthPx, 0.0F, kFar, usual.minLengthPx);
  s.minConfidence = checked(s.minConfidence, 0.0F, 1.0F, usual.minConfidence);
  if (!isWithin(s.roughPos.x, -kFar, kFar) || !isWithin(s.roughPos.y, -kFar, kFar)) s.bandPx = usual.bandPx;
  return s;
}

std::size_t contrastBytes(cv::Size imageSize) {
  return static_cast<std::size_t>(imageSize.area()) * 10;
}

bool isWanted(const TFoundLine& found, const TContrastSearch& search) {
  const TContourCenterLine& line = found.line;
  if (line.pts.empty() || line.confidence < search.minConfidence) return false;
  if (line.polarity != TSeamPolarity::edge && !isWithin(line.widthPx, search.minWidthPx, search.maxWidthPx))
    return false;
  if (cv::norm(line.pts.back() - line.pts.front()) < static_cast<double>(search.minLengthPx)) return false;
  return angleBetween(static_cast<double>(line.directionDeg), static_cast<double>(search.directionDeg)) <=
         static_cast<double>(search.directionTolDeg);
}

TFoundLine findLine(const cv::Mat& grey, const TContrastSearch& search, TMemory* memory) {
  TFoundLine best;
  if (std::min(grey.cols, grey.rows) < kLeastSidePx) return best;
  const TList<TFamily> families = familiesOf(grey, search, memory);
  TList<TSearched> searched(memory);
  searched.reserve(families.size());
  for (const TFamily& family : families) searched.emplace_back(family, memory);
  for (const TTrait trait : traitsOf(search.polarity, memory)) {
    TFoundLine found = findTrait(searched, trait, search, memory);
    if (found.line.confidence > best.line.confidence) best = std::move(found);
    if (trait == TTrait::dark && static_cast<double>(best.line.confidence) > kBeyondDoubt) break;
  }
  return best;
}

}  // namespace weld
