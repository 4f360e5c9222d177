#include "contrast/find_line.h"

#include "contrast/candidates.h"
#include "contrast/line_record.h"
#include "contrast/measured_line.h"
#include "support/arc_tangent.h"

#include <algorithm>
#include <cmath>

namespace weld {

namespace {

constexpr int kLeastSidePx = 48;
constexpr double kBeyondDoubt = 0.9;    // confidence of a dark line at which nothing else is looked for
constexpr double kPart = 0.8;           // of a line's length at most
constexpr float kWidest = 100.0F;       // px
constexpr std::size_t kRefined = 3;     // paths, of which the surest counts
constexpr double kWorthRefining = 0.5;  // share of the best path's score

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

// Without the confidence, which depends on the other candidates.
TFoundLine lineOf(const TCandidate& candidate, const TMeasuredLine& measured, TTrait trait,
                  const TContrastSearch& search) {
  TFoundLine found;
  const TFamily& family = candidate.where->family;
  const TRefinedLine& line = measured.line;
  const double along = (line.size() - 1) * static_cast<double>(kStationPx);
  const double slope = static_cast<double>(line.across.back() - line.across.front()) / along;
  const double longest = longestChord(family, line.firstAlong, static_cast<double>(line.across.front()), slope);
  const double extent = (family.band.end - family.band.begin) * std::sqrt(1.0 + slope * slope);
  found.features = featuresOf(
      line, measured.profiles, measured.alignment,
      {trait, candidate.path.score, static_cast<int>(candidate.path.columns.size()), candidate.path.turns, longest,
       extent, search.bandPx > 0.0F, static_cast<double>(search.directionTolDeg),
       search.polarity == TSeamPolarity::automatic && isEdge(trait)});
  found.line = toRecord(line, family.isFlat, trait);
  found.trait = trait;
  return found;
}

TFoundLine refine(const TCandidate& candidate, TTrait trait, const TContrastSearch& search, TMemory* memory) {
  const TGreyView& view = candidate.where->family.view;
  const TMeasuredLine seen(view, courseOf(candidate.path, candidate.where->field, memory), trait, memory);
  if (seen.line.size() == 0) return {};
  if (seen.line.size() == seen.course.size()) return lineOf(candidate, seen, trait, search);
  const TMeasuredLine carried(view, carryOn(seen.course, seen.line, memory), trait, memory);
  return lineOf(candidate, isLonger(carried.line, seen.line) ? carried : seen, trait, search);
}

bool isWorthReporting(const TFoundLine& found) {
  return found.line.confidence >= TContrastSearch().minConfidence;
}

// Whether a line lies, at its middle, on a clearly longer one.
bool isPartOf(const TContourCenterLine& line, const TContourCenterLine& longer) {
  if (line.pts.empty() || static_cast<double>(line.pts.size()) > kPart * static_cast<double>(longer.pts.size()))
    return false;
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

// Of the best path that is not this line. A shadow is no rival.
int rivalScore(const TList<TCandidate>& paths, const TList<TFoundLine>& lines, const TCandidate& own) {
  for (std::size_t i = 0; i < paths.size(); ++i) {
    if (i < lines.size() && isShadow(lines[i].features)) continue;
    if (&paths[i] != &own && !isSameLine(paths[i], own)) return paths[i].path.score;
  }
  return 0;
}

// The best line of the best paths.
TFoundLine findTrait(const TList<TSearched>& searched, TTrait trait, const TContrastSearch& search,
                     TMemory* memory) {
  const TList<TCandidate> paths = findPaths(searched, trait, memory);
  TList<TFoundLine> lines(memory);
  lines.reserve(kRefined);
  for (std::size_t i = 0; i < std::min(paths.size(), kRefined); ++i) {
    if (paths[i].path.score < kWorthRefining * paths[0].path.score) break;
    lines.push_back(refine(paths[i], trait, search, memory));
  }
  TFoundLine best;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (lines[i].line.pts.empty()) continue;
    compareWithSecond(rivalScore(paths, lines, paths[i]), paths[i].path.score, lines[i].features);
    lines[i].line.confidence = static_cast<float>(confidenceOf(lines[i].features, trait));
    if (isBetterLine(lines[i], best)) best = std::move(lines[i]);
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
    if (isBetterLine(found, best)) best = std::move(found);
    if (trait == TTrait::dark && static_cast<double>(best.line.confidence) > kBeyondDoubt) break;
  }
  return best;
}

}  // namespace weld
