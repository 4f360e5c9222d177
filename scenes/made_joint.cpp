#include "scenes/made_joint.h"

#include "scenes/random.h"

#include <algorithm>
#include <cmath>

namespace made {

namespace {

using TPoint = cv::Point2d;

constexpr int kColumns = 1280;
constexpr double kRad = CV_PI / 180.0;
constexpr double kFar = 2000.0;

// A joint in the frame of its left plate, opening upwards (y down), as a chain of points; NaN starts a new piece.
class TBuilder {
public:
  TBuilder(TWeldType type, std::uint64_t seed) : random(seed, scenes::TStream::layout) {
    joint.weldType = type;
    tilt = random.uniform(-12, 12) * kRad;
    sense = random.chance(0.5) ? 1.0 : -1.0;
    at = {random.uniform(500, 780), random.uniform(450, 570)};
  }

  void build() {
    switch (joint.weldType) {
      case TWeldType::vGroove:
        return groove(random.uniform(25, 68), random.uniform(25, 68), 0.0);
      case TWeldType::uGroove:
        return u();
      case TWeldType::singleBevel:
        return bevel();
      case TWeldType::flareV:
        return flareV();
      case TWeldType::flareBevel:
        return flareBevel();
      case TWeldType::lap:
        step = random.uniform(12, 80);
        add({-kFar, 0}), add({0, 0}), end(), add({random.uniform(0, 10), step}), add({kFar, step});
        return;
      case TWeldType::corner:
        return corner();
      case TWeldType::plate:
        add({-kFar, 0}), add({kFar, 0});
        return;
      default: {
        const double r = random.uniform(900, 4000);
        arc({0, r}, r, -90 - std::min(60.0, 800 / r / kRad), -90 + std::min(60.0, 800 / r / kRad));
      }
    }
  }

  TPoint toImage(TPoint p) const {
    const TPoint q(p.x * std::cos(tilt) - p.y * std::sin(tilt), p.x * std::sin(tilt) + p.y * std::cos(tilt));
    return {at.x + q.x, at.y + sense * q.y};
  }
  void mark(TFeature f, TPoint p) {
    joint.features[static_cast<std::size_t>(f)] = {true, toImage(mirror ? TPoint(-p.x, p.y) : p), 0.0};
  }

  TJoint joint;
  scenes::TRandom random;
  std::vector<TPoint> chain;
  double tilt;
  double sense;
  bool mirror = false;
  TPoint at;

private:
  void add(TPoint p) { chain.push_back(p); }
  void end() { chain.emplace_back(NAN, NAN); }
  void arc(TPoint centre, double r, double fromDeg, double toDeg) {
    const int steps = std::max(8, static_cast<int>(r * std::abs(toDeg - fromDeg) * kRad * 3));
    for (int i = 0; i <= steps; ++i) {
      const double a = (fromDeg + (toDeg - fromDeg) * i / steps) * kRad;
      add(centre + r * TPoint(std::cos(a), std::sin(a)));
    }
  }

  void groove(double leftDeg, double rightDeg, double flatPx) {
    const double gap = flatPx > 0 || random.chance(0.5) ? 0.0 : random.uniform(6, 45);
    const bool isOpen = gap > 0;
    step = random.chance(0.5) ? 0.0 : random.uniform(-18, 18);
    const double depth = random.uniform(60, 240);
    const double half = 0.5 * (gap + flatPx);
    const TPoint leftRoot(-half, depth);
    const TPoint rightRoot(half, depth + (isOpen ? step : 0.0));
    const TPoint leftShoulder(-half - depth / std::tan(leftDeg * kRad), 0);
    const TPoint rightShoulder(half + (rightRoot.y - step) / std::tan(rightDeg * kRad), step);
    add({-kFar, 0}), add(leftShoulder), add(leftRoot);
    if (isOpen) end();
    add(rightRoot), add(rightShoulder), add({kFar, step});
    mark(TFeature::leftShoulder, leftShoulder), mark(TFeature::rightShoulder, rightShoulder);
    mark(TFeature::leftRoot, leftRoot), mark(TFeature::rightRoot, rightRoot);
    mark(TFeature::root, 0.5 * (leftRoot + rightRoot));
    markHidden(leftShoulder, leftRoot), markHidden(rightRoot, rightShoulder);
    joint.measures.gapPx = gap > 0 ? std::hypot(gap, step) : 0.0;
  }

  // A flank that covers next to no columns.
  void markHidden(TPoint from, TPoint to) {
    const TPoint along = toImage(to) - toImage(from);
    if (along.x < 8 || along.x < 0.2 * std::abs(along.y)) joint.isHard = true;
  }

  void u() {
    const double left = random.uniform(55, 76);
    const double right = random.uniform(55, 76);
    const double depth = random.uniform(70, 220);
    step = random.chance(0.5) ? 0.0 : random.uniform(-12, 12);
    const bool isBowl = random.chance(0.5);
    const double r = isBowl ? random.uniform(25, 0.8 * depth) : random.uniform(10, 45);
    const double flat = isBowl ? 0.0 : random.uniform(20, 140);
    const TPoint lc(-0.5 * flat, depth - r);
    const TPoint rc(0.5 * flat, depth - r);
    const TPoint lt = lc + r * TPoint(-std::sin(left * kRad), std::cos(left * kRad));
    const TPoint rt = rc + r * TPoint(std::sin(right * kRad), std::cos(right * kRad));
    const TPoint ls(lt.x - lt.y / std::tan(left * kRad), 0);
    const TPoint rs(rt.x + (rt.y - step) / std::tan(right * kRad), step);
    add({-kFar, 0}), add(ls);
    arc(lc, r, 90 + left, 90), arc(rc, r, 90, 90 - right);
    add(rs), add({kFar, step});
    mark(TFeature::leftShoulder, ls), mark(TFeature::rightShoulder, rs), mark(TFeature::root, {0, depth});
    markHidden(ls, lt), markHidden(rt, rs);
    joint.measures.leftRadiusPx = joint.measures.rightRadiusPx = r;
  }

  void bevel() {
    mirror = random.chance(0.5);
    const double deg = random.uniform(25, 62);
    const double depth = random.uniform(60, 220);
    const double gap = random.chance(0.5) ? 0.0 : random.uniform(4, 30);
    step = random.chance(0.5) ? 0.0 : random.uniform(-12, 12);
    const bool isFlat = random.chance(0.3) && gap > 10;
    const TPoint shoulder(-depth / std::tan(deg * kRad), 0);
    add({-kFar, 0}), add(shoulder), add({0, depth});
    if (isFlat) add({gap, depth});
    end(), add({gap, step}), add({kFar, step});
    mark(TFeature::leftShoulder, mirror ? TPoint(gap, step) : shoulder);
    mark(TFeature::rightShoulder, mirror ? shoulder : TPoint(gap, step));
    mark(TFeature::root, {0.5 * gap, depth});
    joint.measures.gapPx = isFlat ? 0.0 : gap;
    // A wall that leans away shows a stripe; one that leans over hides the end of the flank.
    joint.isHard = depth * std::tan(std::max(0.0, (mirror ? 1.0 : -1.0) * tilt)) > gap + 3.0;
  }

  void flareV() {
    const bool isPlate = random.chance(0.6);
    const double a = random.uniform(70, 220);
    const double b = random.chance(0.5) ? a : random.uniform(70, 220);
    const double gap = random.chance(0.5) ? 0.0 : random.uniform(4, 30);
    step = isPlate && random.chance(0.5) ? random.uniform(-12, 12) : 0.0;
    const double seen = random.uniform(55, 78);
    const double dy = b - a + (isPlate ? step : random.uniform(-15, 15));
    const double apart = a + b + gap;
    const TPoint ca(-a - 0.5 * gap, a);
    const TPoint cb = ca + TPoint(std::sqrt(apart * apart - dy * dy), dy);
    if (isPlate) add({-kFar, 0});
    arc(ca, a, isPlate ? -90 : -90 - seen, -90 + seen), end(), arc(cb, b, -90 - seen, isPlate ? -90 : -90 + seen);
    if (isPlate) add({kFar, cb.y - b});
    const TPoint u = (cb - ca) / apart;
    mark(TFeature::root, ca + (a + 0.5 * gap) * u);
    joint.measures.gapPx = gap;
    joint.measures.leftRadiusPx = a, joint.measures.rightRadiusPx = b;
    const double sine = (b - a) / apart;  // common upper tangent
    const TPoint up(u.x, u.y);
    const TPoint across(up.y, -up.x);
    const TPoint n = sine * -up + std::sqrt(1 - sine * sine) * across;
    mark(TFeature::leftShoulder, isPlate ? ca - TPoint(0, a) : ca + a * n);
    mark(TFeature::rightShoulder, isPlate ? cb - TPoint(0, b) : cb + b * n);
  }

  void flareBevel() {
    mirror = random.chance(0.5);
    const bool isPlate = random.chance(0.5);
    const double r = random.uniform(70, 220);
    const double gap = random.chance(0.5) ? 0.0 : random.uniform(4, 25);
    const double deg = random.uniform(0, 60);  // the flat member rises to the right
    const double seen = random.uniform(55, 78);
    const TPoint centre(0, r);
    const TPoint normal(-std::sin(deg * kRad), -std::cos(deg * kRad));  // off the flat member
    const TPoint foot = centre - (r + gap) * normal;
    const TPoint along(std::cos(deg * kRad), -std::sin(deg * kRad));
    if (isPlate) add({-kFar, 0});
    arc(centre, r, isPlate ? -90 : -90 - std::min(seen, 70.0), -90 + seen), end();
    const double length = deg > 20 ? random.uniform(1.2, 2.5) * r : kFar;
    add(foot + 0.15 * r * along), add(foot + length * along);
    mark(TFeature::root, 0.5 * (foot + centre - r * normal));
    mark(mirror ? TFeature::rightShoulder : TFeature::leftShoulder, centre + r * normal);
    (mirror ? joint.measures.rightRadiusPx : joint.measures.leftRadiusPx) = r;
    joint.measures.gapPx = gap;
    if (isPlate) mark(mirror ? TFeature::rightShoulder : TFeature::leftShoulder, {0, 0});
  }

  void corner() {
    const double left = random.uniform(12, 60) * kRad;
    const double right = random.uniform(12, 60) * kRad;
    add({-600 * std::cos(left), -600 * std::sin(left)}), add({0, 0});
    add({600 * std::cos(right), -600 * std::sin(right)});
    mark(TFeature::corner, {0, 0});
  }

  double step = 0.0;
};

struct TLook {
  double noise, flankNoise, speckle, wave, missing, outliers;
  int longestHole, ghosts;
};

TLook lookOf(TLevel level) {
  if (level == TLevel::clean) return {0.15, 1.0, 0.0, 0.0, 0.0, 0.0, 0, 0};
  if (level == TLevel::noisy) return {0.35, 1.3, 0.25, 0.3, 0.04, 0.01, 10, 0};
  return {0.6, 1.4, 0.6, 1.5, 0.15, 0.03, 22, 3};
}

// Height and slope of the topmost surface in every column; NaN where there is none.
void scan(const TBuilder& b, std::vector<TPoint>& columns) {
  columns.assign(kColumns, {NAN, 0});
  for (std::size_t i = 1; i < b.chain.size(); ++i) {
    TPoint p = b.chain[i - 1];
    TPoint q = b.chain[i];
    if (std::isnan(p.x) || std::isnan(q.x)) continue;
    if (b.mirror) p.x = -p.x, q.x = -q.x;
    p = b.toImage(p), q = b.toImage(q);
    if (p.x > q.x) std::swap(p, q);
    const int last = std::min(kColumns - 1, static_cast<int>(std::floor(q.x)));
    for (int x = std::max(0, static_cast<int>(std::ceil(p.x))); x <= last && q.x > p.x; ++x) {
      const double slope = (q.y - p.y) / (q.x - p.x);
      const double y = p.y + slope * (x - p.x);
      TPoint& column = columns[static_cast<std::size_t>(x)];
      if (std::isnan(column.x) || b.sense * y < b.sense * column.x) column = {y, slope};
    }
  }
}

void disturb(std::vector<TPoint>& columns, const TLook& look, std::uint64_t seed) {
  scenes::TRandom noise(seed, scenes::TStream::noise);
  scenes::TRandom missing(seed, scenes::TStream::missing);
  scenes::TRandom blobs(seed, scenes::TStream::blobs);
  double speckle = 0.0;
  const double period = noise.uniform(80, 300);
  const double phase = noise.uniform(0, 6.28);
  const double wave = noise.uniform(0, look.wave);
  for (int x = 0; x < kColumns; ++x) {
    TPoint& c = columns[static_cast<std::size_t>(x)];
    const double steep = std::min(4.0, std::hypot(1.0, c.y));
    const double dim = std::abs(c.y) > 0.4 ? look.flankNoise : 1.0;
    speckle = 0.8 * speckle + 0.6 * look.speckle * scenes::toGaussian(noise.next());
    c.x += steep * dim * (look.noise * scenes::toGaussian(noise.next()) + speckle);
    c.x += steep * wave * std::sin(6.283 * x / period + phase);
    if (missing.chance(look.outliers)) c.x += missing.uniform(-80, 80);
  }
  for (int n = 0; n < look.ghosts; ++n) {
    const int from = blobs.integer(0, kColumns - 50);
    const int to = from + blobs.integer(8, 40);
    const double off = (blobs.chance(0.5) ? 1 : -1) * blobs.uniform(12, 80);
    for (int x = from; x < to; ++x) columns[static_cast<std::size_t>(x)].x += off;
  }
  const double perColumn = look.longestHole > 0 ? look.missing / (0.5 * (3 + look.longestHole)) : 0.0;
  for (int x = 0; x < kColumns; ++x) {
    if (!missing.chance(perColumn)) continue;
    const int to = std::min(kColumns, x + missing.integer(3, look.longestHole));
    for (int h = x; h < to; ++h) columns[static_cast<std::size_t>(h)].x = NAN;
  }
}

}  // namespace

TJoint makeJoint(TWeldType weldType, TLevel level, std::uint64_t seed) {
  TBuilder builder(weldType, seed);
  builder.build();
  std::vector<TPoint> columns;
  scan(builder, columns);
  disturb(columns, lookOf(level), seed);
  TJoint& joint = builder.joint;
  for (int x = 0; x < kColumns; ++x) {
    const double y = columns[static_cast<std::size_t>(x)].x;
    if (y >= 0.0 && y < 1024.0) joint.points.emplace_back(static_cast<float>(x), static_cast<float>(y));
  }
  return joint;
}

}  // namespace made
