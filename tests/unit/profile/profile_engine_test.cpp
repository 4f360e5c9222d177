#include "profile/profile_engine.h"
#include "scenes/made_joint.h"
#include "scenes/random.h"
#include "scenes/score.h"
#include "support/arena.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace weld {
namespace {

using made::TLevel;

class ProfileEngine : public testing::Test {
protected:
  ProfileEngine() { arena.reserve(std::size_t{8} << 20U); }

  TProfileFit fit(const std::vector<cv::Point2f>& points, TWeldType type, const TProfileOptions& options = {}) {
    std::pmr::memory_resource* const memory = (arena.restart(), &arena);
    return fitProfile({points, {}, 0.0, memory}, profilesOf(type), options, memory);
  }
  TProfileFit track(const std::vector<cv::Point2f>& points, const TProfileFit& before) {
    std::pmr::memory_resource* const memory = (arena.restart(), &arena);
    return trackProfile({points, {}, 0.0, memory}, before, {}, memory);
  }

  TArena arena;
};

double distance(cv::Point2d a, cv::Point2d b) {
  return std::hypot(a.x - b.x, a.y - b.y);
}

constexpr std::uint64_t kSeeds = 500000;  // none of those that the engine was tuned on
constexpr int kScenes = 200;

// So many joints but for those whose edge hides.
std::vector<made::TJoint> jointsOf(TWeldType type, TLevel level, int scenes) {
  std::vector<made::TJoint> joints;
  for (int n = 0; n < scenes; ++n) {
    joints.push_back(made::makeJoint(type, level, kSeeds + n));
    if (joints.back().isHard) joints.pop_back();
  }
  return joints;
}

// Found: the root within 20 px.
TEST_F(ProfileEngine, FindsJointsAsExactlyAsPromised) {
  const struct {
    TWeldType type;
    TLevel level;
    double found, root, root95, shoulder, shoulder95;  // share, px
  } rows[] = {
      {TWeldType::vGroove, TLevel::clean, 1.0, 0.2, 1.0, 0.1, 0.2},
      {TWeldType::vGroove, TLevel::noisy, 0.99, 0.6, 2.0, 0.4, 1.1},
      {TWeldType::vGroove, TLevel::harsh, 0.9, 2.0, 12.0, 1.5, 5.0},
      {TWeldType::singleBevel, TLevel::clean, 0.98, 0.5, 3.0, 0.2, 0.6},
      {TWeldType::singleBevel, TLevel::noisy, 0.95, 0.8, 5.0, 0.5, 2.0},
      {TWeldType::singleBevel, TLevel::harsh, 0.8, 2.8, 15.0, 1.35, 20.0},
      {TWeldType::uGroove, TLevel::clean, 0.98, 0.2, 0.8, 0.1, 0.3},
      {TWeldType::uGroove, TLevel::noisy, 0.95, 0.6, 5.0, 0.5, 1.5},
      {TWeldType::uGroove, TLevel::harsh, 0.8, 2.5, 14.0, 1.6, 18.0},
      {TWeldType::flareV, TLevel::clean, 1.0, 0.2, 0.6, 0.1, 0.4},
      {TWeldType::flareV, TLevel::noisy, 0.98, 1.2, 3.5, 0.6, 2.5},
      {TWeldType::flareV, TLevel::harsh, 0.82, 5.0, 16.0, 2.6, 18.0},
      {TWeldType::flareBevel, TLevel::clean, 1.0, 0.2, 0.8, 0.1, 0.4},
      {TWeldType::flareBevel, TLevel::noisy, 0.97, 1.4, 6.0, 0.9, 3.5},
      {TWeldType::flareBevel, TLevel::harsh, 0.78, 5.0, 17.0, 3.2, 22.0},
  };
  for (const auto& row : rows) {
    scenes::TScore roots;
    scenes::TScore shoulders;
    for (const made::TJoint& joint : jointsOf(row.type, row.level, kScenes)) {
      const TProfileFit found = fit(joint.points, row.type);
      const double root = distance(found.feature(TFeature::root).pos, joint.at(TFeature::root).pos);
      const bool isFound = found.isFound() && root < 20.0;
      isFound ? roots.addFound(root) : roots.addMiss();
      for (const TFeature f : {TFeature::leftShoulder, TFeature::rightShoulder}) {
        if (isFound && joint.at(f).isFound && found.feature(f).isFound)
          shoulders.addFound(distance(found.feature(f).pos, joint.at(f).pos));
      }
    }
    SCOPED_TRACE(testing::Message() << "type " << static_cast<int>(row.type) << " level "
                                    << static_cast<int>(row.level));
    EXPECT_GE(roots.foundShare(), row.found);
    EXPECT_LE(roots.errorAt(0.5), row.root);
    EXPECT_LE(roots.errorAt(0.95), row.root95);
    EXPECT_LE(shoulders.errorAt(0.5), row.shoulder);
    EXPECT_LE(shoulders.errorAt(0.95), row.shoulder95);
  }
}

// Steps of one row about every 14 columns, as many as lie between the centres that are scored.
TEST_F(ProfileEngine, WholeRowsOfATiltedPlateHideNoNarrowGroove) {
  for (int phase = 0; phase < 14; ++phase) {
    std::vector<cv::Point2f> points;
    for (int x = 0; x < 1272; ++x) {
      if (x >= 646 && x < 654) continue;  // the wall
      const double deepPx = x > 598 && x < 646 ? 2.2 * (x - 598) : 0.0;
      points.emplace_back(static_cast<float>(x),
                          std::round(static_cast<float>(400.0 + deepPx - (x + phase) / 14.0)));
    }
    EXPECT_TRUE(fit(points, TWeldType::singleBevel).isFound()) << phase;
  }
}

TEST_F(ProfileEngine, ReportsNoJointOnPlatesAndCurves) {
  for (const TLevel level : {TLevel::clean, TLevel::noisy, TLevel::harsh}) {
    int reported = 0;
    for (int n = 0; n < kScenes / 2; ++n) {
      for (const TWeldType scene : {TWeldType::plate, TWeldType::none}) {
        const made::TJoint joint = made::makeJoint(scene, level, kSeeds + n);
        for (int type = 5; type <= 9; ++type)
          reported += fit(joint.points, static_cast<TWeldType>(type)).isFound() ? 1 : 0;
      }
    }
    EXPECT_LE(reported, level == TLevel::harsh ? 10 : 0);
  }
}

// A V of known measures, its mirror image, and both turned over.
TEST_F(ProfileEngine, MeasuresAGrooveInEitherSense) {
  for (const double sense : {1.0, -1.0}) {
    for (const bool isMirrored : {false, true}) {
      std::vector<cv::Point2f> points;
      for (int x = 0; x < 1000; ++x) {
        const double u = isMirrored ? 999 - x : x;
        if (u > 500 && u < 520) continue;  // gap; flanks of 45 degrees, down to 100, and of slope 1.5
        const double y = u <= 500 ? std::max(u - 400, 0.0) : std::max(100 - (u - 520) * 1.5, 10.0);
        points.emplace_back(static_cast<float>(x), static_cast<float>(500 + sense * y));
      }
      const TProfileFit found = fit(points, TWeldType::vGroove);
      ASSERT_TRUE(found.isFound());
      EXPECT_EQ(found.sense, static_cast<int>(sense));
      const TJointMeasures& m = found.measures;
      EXPECT_NEAR(m.gapPx, 20, 1.0);
      EXPECT_NEAR(m.mismatchPx, sense * (isMirrored ? -10 : 10), 0.3);
      EXPECT_NEAR(m.widthPx, std::hypot(180, 10), 0.5);
      EXPECT_NEAR(m.depthPx, 93.75, 1.0);
      const double left = isMirrored ? 56.31 : 45.0;
      const double right = isMirrored ? 45.0 : 56.31;
      EXPECT_NEAR(m.leftAngleDeg, sense * left, 0.2);
      EXPECT_NEAR(m.rightAngleDeg, -sense * right, 0.2);
      EXPECT_NEAR(m.includedAngleDeg, 180 - left - right, 0.3);
      EXPECT_NEAR(m.baseAngleDeg, 0.0, 0.1);
      EXPECT_NEAR(m.areaPx2, 9400, 60);
      EXPECT_TRUE(std::isnan(m.leftRadiusPx));
      TProfileOptions other;
      other.senses = -static_cast<int>(sense);
      EXPECT_FALSE(fit(points, TWeldType::vGroove, other).isFound());
    }
  }
}

TEST_F(ProfileEngine, FollowsAJointThatMoves) {
  for (const TWeldType type : {TWeldType::vGroove, TWeldType::singleBevel, TWeldType::uGroove, TWeldType::flareV,
                               TWeldType::flareBevel}) {
    int followed = 0;
    int found = 0;
    for (made::TJoint& joint : jointsOf(type, TLevel::clean, kScenes / 2)) {
      const TProfileFit before = fit(joint.points, type);
      if (!before.isFound()) continue;
      const cv::Point2d step(++found % 2 == 0 ? 8.0 : -8.0, 5.0);
      for (cv::Point2f& p : joint.points) p += cv::Point2f(step);
      const TProfileFit next = track(joint.points, before);
      const cv::Point2d moved = before.feature(TFeature::root).pos + step;
      followed += next.isFound() && distance(next.feature(TFeature::root).pos, moved) < 0.5 ? 1 : 0;
    }
    EXPECT_GE(followed, 0.9 * found) << static_cast<int>(type);
  }
  EXPECT_FALSE(track({}, {}).isFound());
  EXPECT_FALSE(track(made::makeJoint(TWeldType::vGroove, TLevel::clean, 1).points, {}).isFound());
}

TEST_F(ProfileEngine, RanksTheRightJointFirst) {
  for (const TWeldType type : {TWeldType::vGroove, TWeldType::singleBevel, TWeldType::uGroove, TWeldType::flareV,
                               TWeldType::flareBevel, TWeldType::corner, TWeldType::lap}) {
    std::size_t right = 0;
    const std::vector<made::TJoint> joints = jointsOf(type, TLevel::clean, kScenes / 2);
    for (const made::TJoint& joint : joints) {
      std::pmr::memory_resource* const memory = (arena.restart(), &arena);
      const TStripeProfile stripe(joint.points, {}, 0.0, memory);
      const TList<TRankedJoint> ranked = rankProfiles(stripe, {}, memory);
      right += !ranked.empty() && ranked.front().weldType == type ? 1U : 0U;
      for (std::size_t r = 1; r < ranked.size(); ++r) EXPECT_LE(ranked[r].fit.score, ranked[r - 1].fit.score);
    }
    EXPECT_GE(static_cast<double>(right), 0.95 * static_cast<double>(joints.size())) << static_cast<int>(type);
  }
}

TEST_F(ProfileEngine, SurvivesGarbage) {
  scenes::TRandom random(11, scenes::TStream::noise);
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  std::vector<std::vector<cv::Point2f>> lists{
      {}, {{1, 1}}, std::vector<cv::Point2f>(100, {5, 5}), std::vector<cv::Point2f>(100, {kNaN, kNaN})};
  for (int n = 0; n < 60; ++n) {
    std::vector<cv::Point2f> points;
    double y = 0;
    for (int x = 0; x < 400; ++x) {
      y += n % 3 == 0 ? random.uniform(-3, 3) : 0.0;
      if (n % 3 == 1) y = random.uniform(-1e5, 1e5);
      if (n % 3 == 2 && x % 20 == 0) y = random.uniform(0, 60);
      points.emplace_back(static_cast<float>(random.chance(0.02) ? random.uniform(-10, 1e7) : x),
                          static_cast<float>(y));
    }
    lists.push_back(points);
  }
  for (const auto& points : lists) {
    for (int type = 0; type <= 10; ++type) {
      const TProfileFit found = fit(points, static_cast<TWeldType>(type));
      if (!found.isFound()) continue;
      EXPECT_GT(found.confidence, 0.0);
      EXPECT_LE(found.confidence, 1.0);
      for (const TMeasuredPoint& f : found.features) {
        EXPECT_TRUE(!f.isFound || (std::isfinite(f.pos.x) && std::isfinite(f.pos.y) && f.sigmaPx >= 0.0)) << type;
      }
    }
  }
}

}  // namespace
}  // namespace weld
