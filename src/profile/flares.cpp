#include "profile/flares.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace weld {

namespace {

constexpr std::size_t kSlopeReach = 5;   // centres looked at, on either side
constexpr std::size_t kHintStep = 2;     // of them every so many hint at a flare
constexpr double kHint = 0.8;            // by this share of what one takes,
constexpr double kNearly = 0.95;         // and they or those beside by this
constexpr float kMostSlope = 4.0F;       // of what is no break
constexpr int kMostHalfPx = 48;          // rows from a centre to the edge of the light
constexpr int kWhite = 200;              // grey level of a flare
constexpr double kWhiteShare = 0.5;      // of its rows: speckle is not as solid
constexpr double kEdgeShare = 0.5;       // of that of the centre, at the edge of its light
constexpr double kApartPx = 45.0;        // from the middle of a flare to the stripe beside it ...
constexpr double kBesidePx = 60.0;       // ... of which so much tells how thick it is
constexpr std::size_t kLeastBeside = 6;  // centres looked at
constexpr double kLeastSwell = 1.6;
constexpr double kLeastSwellPx = 8.0;
constexpr double kBorderSwell = 1.25;  // at the border of a flare
constexpr double kLeastRound = 0.6;    // thickness over columns
constexpr float kLeastColumns = 12.0F;
constexpr float kMostColumns = 100.0F;
constexpr float kHaloPerRadius = 0.5F;
constexpr double kEndPx = 12.0;
constexpr double kDrowned = 0.9;  // radii

// The brightest channel: a flare is white in that of the laser at least.
int levelOf(const cv::Mat& image, int y, int x) {
  const unsigned char* const pixel = image.ptr(y, x);
  if (image.channels() == 1) return *pixel;
  return *std::max_element(pixel, pixel + std::min(image.channels(), 3));
}

struct TSample {
  float x;
  float y;
  double thicknessPx;  // across the stripe
  int rows;            // of its light
  int level;
};

int litRows(const cv::Mat& image, cv::Point at, int way, int least) {
  const int most = std::min(kMostHalfPx, way < 0 ? at.y : image.rows - 1 - at.y);
  int rows = 0;
  if (image.channels() == 1) {
    const unsigned char* const from = image.ptr(at.y, at.x);
    const auto step = way * static_cast<std::ptrdiff_t>(image.step[0]);
    while (rows < most && from[(rows + 1) * step] >= least) ++rows;
  } else {
    while (rows < most && levelOf(image, at.y + way * (rows + 1), at.x) >= least) ++rows;
  }
  return rows;
}

int rowsAbout(const cv::Mat& image, cv::Point at, int least) {
  return 1 + litRows(image, at, -1, least) + litRows(image, at, 1, least);
}

cv::Point pixelAt(const cv::Mat& image, cv::Point2f centre) {
  return {truncToInt(centre.x), std::clamp(roundToInt(centre.y), 0, image.rows - 1)};
}

TSample sampleAt(const cv::Mat& image, cv::Point2f centre) {
  const cv::Point at = pixelAt(image, centre);
  const int level = levelOf(image, at.y, at.x);
  const int least = roundToInt(kEdgeShare * level);
  const int rows = least > 0 ? rowsAbout(image, at, least) : 0;
  return {centre.x, centre.y, static_cast<double>(rows), rows, level};
}

TList<TSample> sample(const cv::Mat& image, TPointView points, std::size_t step, TMemory* memory) {
  TList<TSample> samples(memory);
  samples.reserve(points.size() / step + 1);
  for (std::size_t i = 0; i < points.size(); i += step) samples.push_back(sampleAt(image, points[i]));
  return samples;
}

bool hasWhite(const cv::Mat& image, TPointView points, std::size_t step) {
  for (std::size_t i = 0; i < points.size(); i += step) {
    if (isWhite(image, pixelAt(image, points[i]))) return true;
  }
  return false;
}

// Asked of few samples.
bool isSolid(const cv::Mat& image, const TSample& s) {
  return s.level >= kWhite && rowsAbout(image, pixelAt(image, {s.x, s.y}), kWhite) >= kWhiteShare * s.rows;
}

// None without it.
//   share  of what it takes
bool mayStandOut(const TSample& s, double share) {
  return s.level >= kWhite && s.thicknessPx >= share * kLeastSwellPx;
}

// Cosine of the stripe's slope from one sample to another.
double cosineTo(const TSample& from, const TSample& to) {
  const double dx = std::abs(static_cast<double>(to.x - from.x));
  const double dy = static_cast<double>(to.y - from.y);
  return dx > 0.0 ? dx / std::sqrt(dx * dx + dy * dy) : 1.0;
}

// From rows to px across the stripe; at a bend across the steeper side, and along the image beside a break.
//   reach  samples that tell the slope on either side
void takeSlopes(TList<TSample>& samples, std::size_t reach) {
  const auto isBreak = [](const TSample& a, const TSample& b) {
    return std::abs(b.y - a.y) > kMostSlope * std::abs(b.x - a.x);
  };
  const std::size_t last = samples.size() - 1;
  TList<double> right(samples.size(), samples.get_allocator().resource());
  std::size_t broken = samples.size() + reach;  // the first break from here on
  for (std::size_t i = samples.size(); i-- > 0;) {
    if (i < last && isBreak(samples[i], samples[i + 1])) broken = i;
    right[i] = broken < i + reach ? 1.0 : cosineTo(samples[i], samples[std::min(i + reach, last)]);
  }
  for (std::size_t i = 0; i < samples.size(); ++i) {
    // The way back has the same slope.
    const double left = i >= reach ? right[i - reach] : broken < i ? 1.0 : cosineTo(samples[i], samples.front());
    samples[i].thicknessPx *= std::min(left, right[i]);
  }
}

// The stripe on either side of a column that moves from left to right.
class TBeside {
public:
  //   leastSamples  that tell a side
  TBeside(TView<TSample> stripe, std::size_t leastSamples, TMemory* memory)
      : samples(stripe), least(leastSamples), sums(stripe.size() + 1, memory) {
    for (std::size_t i = 0; i < samples.size(); ++i) sums[i + 1] = sums[i] + samples[i].thicknessPx;
  }

  void moveTo(double x) {
    left.moveTo(samples, x - kApartPx - kBesidePx, x - kApartPx);
    right.moveTo(samples, x + kApartPx, x + kApartPx + kBesidePx);
  }

  // Mean thickness of the thicker side; none of a few columns.
  std::optional<double> thickness() const {
    const bool hasLeft = left.count() >= least;
    const bool hasRight = right.count() >= least;
    if (!hasLeft && !hasRight) return std::nullopt;
    if (hasLeft && hasRight) return std::max(mean(left), mean(right));
    return mean(hasLeft ? left : right);
  }

private:
  struct TWindow {
    std::size_t first = 0;
    std::size_t last = 0;

    std::size_t count() const { return last - first; }
    void moveTo(TView<TSample> all, double fromX, double toX) {
      while (first < all.size() && static_cast<double>(all[first].x) < fromX) ++first;
      while (last < all.size() && static_cast<double>(all[last].x) < toX) ++last;
    }
  };

  double mean(const TWindow& w) const { return (sums[w.last] - sums[w.first]) / static_cast<double>(w.count()); }

  TView<TSample> samples;
  std::size_t least;
  TList<double> sums;
  TWindow left;
  TWindow right;
};

bool standsOut(double thicknessPx, std::optional<double> besidePx) {
  return besidePx && !(thicknessPx < std::max(kLeastSwell * *besidePx, *besidePx + kLeastSwellPx));
}

// The flare about one of its columns; without a radius where it is not round.
TFlare flareAbout(const cv::Mat& image, TView<TSample> samples, const TSample* thickest, double besidePx) {
  const auto isThick = [&](const TSample& s) { return s.thicknessPx > kBorderSwell * besidePx; };
  const TSample* first = thickest;
  const TSample* last = thickest;
  while (first != samples.begin() && isThick(first[-1])) --first;
  while (last + 1 != samples.end() && isThick(last[1])) ++last;
  double peakPx = 0.0;
  double weight = 0.0;
  double moment = 0.0;
  double rows = 0.0;
  for (const TSample* s = first; s <= last; ++s) {
    peakPx = std::max(peakPx, s->thicknessPx);
    if (!isSolid(image, *s)) continue;
    weight += s->thicknessPx - besidePx;
    moment += (s->thicknessPx - besidePx) * static_cast<double>(s->x);
    rows += (s->thicknessPx - besidePx) * static_cast<double>(s->y);
  }
  const float columns = last->x - first->x;
  const bool isRound =
      columns >= kLeastColumns && columns <= kMostColumns && peakPx >= kLeastRound * static_cast<double>(columns);
  const float radiusPx = isRound ? 0.5F * columns : 0.0F;
  return {first->x, last->x, moment / weight, rows / weight, static_cast<double>(radiusPx)};
}

// By every so many centres, and those beside where they hint at one.
bool mayHaveFlare(const TFrame& frame, TPointView points) {
  constexpr std::size_t kStep = kHintStep * kFlareStride;
  if (!hasWhite(frame.image, points, kStep)) return false;
  TList<TSample> samples = sample(frame.image, points, kStep, frame.memory);
  // Across the stripe it is not thicker.
  if (std::none_of(samples.begin(), samples.end(), [](const TSample& s) { return mayStandOut(s, kHint); }))
    return false;
  takeSlopes(samples, kSlopeReach / kHintStep);
  TBeside stripeBeside(samples, kLeastBeside / kHintStep, frame.memory);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const TSample& s = samples[i];
    if (!mayStandOut(s, kHint)) continue;
    stripeBeside.moveTo(static_cast<double>(s.x));
    const std::optional<double> beside = stripeBeside.thickness();
    if (!standsOut(s.thicknessPx / kHint, beside)) continue;
    int rows = s.rows;
    for (const std::size_t next : {i * kStep - kFlareStride, i * kStep + kFlareStride}) {
      if (next < points.size()) rows = std::max(rows, sampleAt(frame.image, points[next]).rows);
    }
    if (standsOut(s.thicknessPx * rows / s.rows / kNearly, beside)) return true;
  }
  return false;
}

}  // namespace

TList<TFlare> findFlares(const TFrame& frame, TPointView points) {
  TList<TFlare> flares(frame.memory);
  if (!mayHaveFlare(frame, points)) return flares;
  TList<TSample> samples = sample(frame.image, points, kFlareStride, frame.memory);
  takeSlopes(samples, kSlopeReach);
  const TView<TSample> all = samples;
  TBeside stripeBeside(all, kLeastBeside, frame.memory);
  for (const TSample* s = all.begin(); s < all.end(); ++s) {
    if (!mayStandOut(*s, 1.0)) continue;
    stripeBeside.moveTo(static_cast<double>(s->x));
    const std::optional<double> beside = stripeBeside.thickness();
    if (!standsOut(s->thicknessPx, beside) || !isSolid(frame.image, *s)) continue;
    const TFlare flare = flareAbout(frame.image, all, s, *beside);
    while (s + 1 < all.end() && s[1].x <= flare.lastX) ++s;
    if (flare.radiusPx > 0.0) flares.push_back(flare);
  }
  return flares;
}

TList<TFlare> findFlaresWithHalo(const TFrame& frame, TPointView points) {
  TList<TFlare> flares = findFlares(frame, points);
  for (TFlare& flare : flares) {
    flare.firstX -= kHaloPerRadius * static_cast<float>(flare.radiusPx);
    flare.lastX += kHaloPerRadius * static_cast<float>(flare.radiusPx);
  }
  return flares;
}

std::optional<TStripe> withoutFlares(const TFrame& frame, const TStripe& stripe, TView<TFlare> flares) {
  if (flares.empty()) return std::nullopt;
  TStripe rest(frame.memory);
  rest.status.assign(stripe.status.begin(), stripe.status.end());
  rest.widthPx = stripe.widthPx;
  for (std::size_t i = 0; i < stripe.points.size(); ++i) {
    const auto hides = [&](const TFlare& flare) { return flare.covers(stripe.points[i].x); };
    if (std::any_of(flares.begin(), flares.end(), hides)) continue;
    rest.points.push_back(stripe.points[i]);
    rest.sources.push_back(stripe.sources[i]);
  }
  return rest;
}

bool isWhite(const cv::Mat& image, cv::Point at) {
  return levelOf(image, at.y, at.x) >= kWhite;
}

bool drowns(const TFlare& flare, const TSlopeLine& line) {
  return std::abs(line.k * flare.middleX + line.b - flare.middleY) < kDrowned * flare.radiusPx;
}

const TFlare* flareAt(TView<TFlare> flares, double endX) {
  const auto* const flare = std::find_if(flares.begin(), flares.end(), [&](const TFlare& f) {
    return endX >= static_cast<double>(f.firstX) - kEndPx && endX <= static_cast<double>(f.lastX) + kEndPx;
  });
  return flare != flares.end() ? flare : nullptr;
}

}  // namespace weld
