// Whole calls with all their bits: every compiler, optimisation and instruction set must give these. A change that
// means to move a result puts the row that the failure prints in place of the old one; those of the grooves write
// themselves into the file that the environment names in PINS.
#include "scenarios/scenario.h"
#include "support/checksum.h"
#include "support/reel.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <ios>
#include <ostream>
#include <string>

namespace {

constexpr auto kGap = scenes::TJoint::buttGap;
constexpr auto kLap = scenes::TJoint::lap;
constexpr auto kCorner = scenes::TJoint::corner;
constexpr auto kPlate = scenes::TJoint::plate;
constexpr auto kPlain = scenes::TJoint::plain;
constexpr auto kU = scenes::TJoint::uGroove;
constexpr auto kV = scenes::TJoint::vGroove;
constexpr auto kBevel = scenes::TJoint::singleBevel;
constexpr auto kFlareV = scenes::TJoint::flareV;
constexpr auto kFlareBevel = scenes::TJoint::flareBevel;
constexpr auto kClean = scenes::TLevel::clean;
constexpr auto kNoisy = scenes::TLevel::noisy;
constexpr auto kHarsh = scenes::TLevel::harsh;

const cv::Size kOddSize{653, 517};  // vectors of every length leave a remainder
constexpr std::uint64_t kSeed = 20;

// A first detection and the frame after it, tracked.
struct TPinned {
  scenes::TJoint joint;
  scenes::TLevel level;
  std::uint32_t frames;  // checksum of both images
  std::uint32_t values;  // checksum of both results but the seam points
  cv::Point2f first;
  cv::Point2f tracked;
};

bool operator==(const TPinned& a, const TPinned& b) {
  return a.joint == b.joint && a.level == b.level && a.frames == b.frames && a.values == b.values &&
         a.first == b.first && a.tracked == b.tracked;
}

std::string constantOf(std::string name) {
  name.front() = static_cast<char>(std::toupper(name.front()));
  return "k" + name;
}

// As in the tables below.
void PrintTo(const TPinned& row, std::ostream* out) {
  *out << "{" << constantOf(scenes::shortNameOf(row.joint)) << ", " << constantOf(scenario::nameOf(row.level))
       << ", " << std::hex << std::showbase << std::hexfloat << row.frames << ", " << row.values;
  for (const cv::Point2f& point : {row.first, row.tracked}) *out << ", {" << point.x << "F, " << point.y << "F}";
  *out << "}";
}

TPinned detectTwice(scenes::TJoint joint, scenes::TLevel level) {
  const scenes::TSceneParams scene = scenes::randomScene(joint, level, kSeed, kOddSize);
  const std::vector<scenes::TScene> reel = reel::render(scene, reel::drift({1.5, 0.5}, 0.0), 2);

  const TWeldParams params = scenes::weldParamsFor(joint);
  const TWeldLineRes first = scenario::detect(params, reel[0].image);
  const TWeldLineRes tracked = scenario::detect(params, reel[1].image, first);

  TChecksum frames;
  for (const scenes::TScene& frame : reel) frames.add(frame.image.data, frame.image.total());
  TChecksum values;
  for (const TWeldLineRes* result : {&first, &tracked}) values.add(*result);
  return {joint, level, frames.value, values.value, first.weldPos, tracked.weldPos};
}

const TPinned kPinned[] = {
    {kGap, kClean, 0x5685d69d, 0xb7a5febb, {0x1.6f8p+8F, 0x1.8d192ep+7F}, {0x1.708p+8F, 0x1.8e25bp+7F}},
    {kGap, kNoisy, 0x2627c914, 0xeb7b22af, {0x1.6f8p+8F, 0x1.8c6e32p+7F}, {0x1.708p+8F, 0x1.8dcbcp+7F}},
    {kGap, kHarsh, 0xeb89d9e1, 0xeaf4a75, {0x1.6e8p+8F, 0x1.8d546ep+7F}, {0x1.708p+8F, 0x1.8e114ep+7F}},
    {kLap, kClean, 0x5ef2fe2a, 0x3a502bc4, {0x1.868p+8F, 0x1.b5852p+7F}, {0x1.88p+8F, 0x1.b6ca24p+7F}},
    {kLap, kNoisy, 0x44ccad15, 0x25155e16, {0x1.87p+8F, 0x1.b47174p+7F}, {0x1.88p+8F, 0x1.b5454cp+7F}},
    {kLap, kHarsh, 0xceb64e9f, 0x8ddc18cc, {0x1.87p+8F, 0x1.b51adcp+7F}, {0x1.888p+8F, 0x1.b673fp+7F}},
    {kCorner, kClean, 0xcb7138b3, 0xa6d65344, {0x1.11d118p+8F, 0x1.6d89dep+8F}, {0x1.12cdf6p+8F, 0x1.6da48p+8F}},
    {kCorner, kNoisy, 0x4eeb3e1d, 0x126e99a0, {0x1.119f6ep+8F, 0x1.6d4c26p+8F}, {0x1.1290d6p+8F, 0x1.6d7fcp+8F}},
    {kCorner, kHarsh, 0x534a97dd, 0x5e6e11d5, {0x1.119cf2p+8F, 0x1.6d699ep+8F}, {0x1.1265acp+8F, 0x1.6dda26p+8F}},
    {kPlate, kClean, 0xd50b5bb9, 0x5cd07e99, {0x1.6a8p+8F, 0x1.9f158p+7F}, {0x1.26p+8F, 0x1.a36826p+7F}},
    {kPlate, kNoisy, 0xa0e8f0c9, 0x9bcabad3, {0x1.6bp+8F, 0x1.9ec37p+7F}, {0x1.258p+8F, 0x1.a458ccp+7F}},
    {kPlate, kHarsh, 0x5384d177, 0xec374a71, {0x1.6a8p+8F, 0x1.9eb7ecp+7F}, {0x1.258p+8F, 0x1.a46b2cp+7F}},
    {kPlain, kClean, 0x270576ce, 0x76b29499, {0x0p+0F, 0x0p+0F}, {0x0p+0F, 0x0p+0F}},
    {kPlain, kNoisy, 0xbfe9fe73, 0x7ab61748, {0x0p+0F, 0x0p+0F}, {0x0p+0F, 0x0p+0F}},
    {kPlain, kHarsh, 0xa21c3902, 0xd6b45fff, {0x0p+0F, 0x0p+0F}, {0x0p+0F, 0x0p+0F}},
};

const TPinned kPinnedGrooves[] = {
#include "scenarios/groove_pins.inc"
};

TEST(GoldenBits, groovesGiveThePinnedBits) {
  const char* const pins = std::getenv("PINS");
  if (pins == nullptr) {
    for (const TPinned& row : kPinnedGrooves) EXPECT_EQ(detectTwice(row.joint, row.level), row);
    return;
  }
  std::ofstream file(pins);
  for (const TPinned& row : kPinnedGrooves) {
    PrintTo(detectTwice(row.joint, row.level), &file);
    file << ",\n";
  }
  GTEST_SKIP() << "rows written to " << pins;
}

TEST(GoldenBits, wholeCallsGiveThePinnedBits) {
  for (const TPinned& row : kPinned) EXPECT_EQ(detectTwice(row.joint, row.level), row);
}

}  // namespace
