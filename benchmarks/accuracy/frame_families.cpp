#include "frame_families.h"

#include <sstream>
#include <stdexcept>

namespace accuracy {

namespace {

using TPos = TWeldPosType;

constexpr int kAny = 1000;

const TPreparation kTurned{{}, 90};
const TPreparation kButtRuns{{500, 300, 500, 500}, 90};
const TPreparation kSteel{{600, 300, 500, 500}, 90};
const TPreparation kBox{{}, 270, TChannel::red};
const TPreparation kDaylight{{}, 0, TChannel::redExcess};

constexpr const char* kTightGap = "minGapPx=2 lineTolerancePx=3";
constexpr const char* kLongPlate = "minPiecePx=200";
constexpr const char* kAngleIron =
    "leftFlankDeg.min=10 rightFlankDeg.min=-65 rightFlankDeg.max=-10 includedAngleDeg.min=60";
constexpr const char* kSkirting = "leftFlankDeg.min=5 rightFlankDeg.max=3";
constexpr const char* kSecondBend = "leftFlankDeg.min=13 rightFlankDeg.min=5 rightFlankDeg.max=13";
constexpr const char* kFilletRight =
    "leftFlankDeg.min=-20 leftFlankDeg.max=20 rightFlankDeg.min=30 rightFlankDeg.max=89 "
    "includedAngleDeg.min=30 includedAngleDeg.max=150";
constexpr const char* kPlugEdge = "rightFlankDeg.min=-80 rightFlankDeg.max=-20 includedAngleDeg.min=60";

TPointRow grooveRow(TFeature feature, std::vector<const char*> labels, int leastRight, int mostWrong) {
  TPointRow row{"hanhiver-groove", {TWeldType::vGroove}, std::move(labels), leastRight, mostWrong, feature};
  row.toleranceFactor = 1.5;
  return row;
}

TPointRow sequence(TPointRow row) {
  row.isSequence = true;
  return row;
}

TPointRow ofFiles(std::vector<const char*> files, TPointRow row) {
  row.files = std::move(files);
  return row;
}

TPointRow atEnd(TFeature end, TPointRow row) {
  row.feature = end;
  return row;
}

TPointRow withEmptyFrames(TPointRow row) {
  row.knowsAllJoints = true;
  return row;
}

}  // namespace

const std::vector<TPointRow>& pointRows() {
  static const std::vector<TPointRow> rows = {
      sequence({"nghia-butt/run_a", {TWeldType::buttGap, TPos::centre, kTightGap, kButtRuns}, {"seam"}, 11, 0}),
      sequence({"nghia-butt/run_c", {TWeldType::buttGap, TPos::centre, kTightGap, kButtRuns}, {"seam"}, 12, 0}),
      {"silent-buttgap", {TWeldType::buttGap, TPos::left, "", kTurned}, {"gap_edge_lower"}, 2, 0},
      {"silent-buttgap", {TWeldType::buttGap, TPos::right, "", kTurned}, {"gap_edge_upper"}, 2, 0},
      {"lsdnn-corner", {TWeldType::corner, TPos::centre, kSkirting}, {"corner"}, 1, 0},
      {"lsdnn-corner", {TWeldType::corner, TPos::centre, kSecondBend}, {"second_bend"}, 0, 0},
      {"maris-corner", {TWeldType::corner, TPos::centre, kAngleIron, kDaylight}, {"corner"}, 2, 0},
      withEmptyFrames({"girish-fillet", {TWeldType::corner}, {"corner_bright_stripe", "corner_dim_stripe"}, 5, 0}),
      atEnd(
          TFeature::leftEnd,
          {"nghia-butt/plate_horizontal", {TWeldType::plate, TPos::left, kLongPlate}, {"plate_edge_left"}, 2, 0}),
      atEnd(TFeature::rightEnd, {"nghia-butt/plate_horizontal",
                                 {TWeldType::plate, TPos::right, kLongPlate},
                                 {"plate_edge_right"},
                                 2,
                                 0}),
      atEnd(TFeature::leftEnd,
            ofFiles({"data60.jpg"},
                    {"nghia-butt/plate_edge", {TWeldType::plate, TPos::left, "", kSteel}, {"plate_edge"}, 1, 0})),
      atEnd(TFeature::rightEnd,
            ofFiles({"data110.jpg", "data120.jpg", "data150.jpg"},
                    {"nghia-butt/plate_edge", {TWeldType::plate, TPos::right, "", kSteel}, {"plate_edge"}, 3, 0})),
      {"hoffsupes-objects", {TWeldType::corner, TPos::centre, kFilletRight, kBox}, {"inner_corner"}, 0, 0},
      {"hoffsupes-objects", {TWeldType::corner, TPos::centre, kPlugEdge, kBox}, {"outer_corner"}, 1, 0},
      {"hoffsupes-objects", {TWeldType::lap, TPos::lower, "", kBox}, {"step", "step_upper"}, 0, 0},
      grooveRow(TFeature::leftShoulder, {"toe_left"}, 3, 0),
      grooveRow(TFeature::rightShoulder, {"toe_right"}, 2, 0),
      grooveRow(TFeature::leftRoot, {"flank_left_end", "root_left"}, 3, 0),
      grooveRow(TFeature::rightRoot, {"flank_right_end", "root_right"}, 3, 0),
      withEmptyFrames({"hanhiver-groove", {TWeldType::buttGap}, {}, 0, 0}),
  };
  return rows;
}

const std::vector<TRunRow>& runRows() {
  static const std::vector<TRunRow> rows = {
      {"hanhiver-groove/run1_v_multipass", {TWeldType::vGroove}, {12, 31}, 17, kAny, 95.5},
      {"hanhiver-groove/run2_v_small_root",
       {TWeldType::vGroove, TPos::centre, "minElementPx=19"},
       {28, 38},
       11,
       kAny,
       99.0},
      {"hanhiver-groove/run5_bevel_step", {TWeldType::singleBevel}, {1, 14}, 14, kAny, 99.5},
      {"hanhiver-groove/run1_v_multipass", {TWeldType::buttGap}, {12, 31}, 0, 0, 95.5},
      {"hanhiver-groove/run2_v_small_root", {TWeldType::buttGap}, {28, 43}, 0, 0, 99.0},
      {"hanhiver-groove/run5_bevel_step", {TWeldType::buttGap}, {1, 14}, 0, 0, 99.5},
      {"hanhiver-groove/run7_filled_bead", {TWeldType::buttGap}, {20, 31}, 0, 0, 99.5},
      {"hanhiver-groove/run1_v_multipass", {TWeldType::stripePresence}, {12, 31}, 19, kAny, 95.5},
      {"hanhiver-groove/run2_v_small_root", {TWeldType::stripePresence}, {28, 43}, 15, kAny, 99.0},
      {"hanhiver-groove/run5_bevel_step", {TWeldType::stripePresence}, {1, 14}, 13, kAny, 99.5},
      {"hanhiver-groove/run7_filled_bead", {TWeldType::stripePresence}, {20, 31}, 11, kAny, 99.5},
  };
  return rows;
}

TWeldParams paramsOf(const TAsked& asked) {
  TWeldParams params;
  initWeldParameters(asked.joint, params, asked.pos);
  const TWeldJoint& joint = *findWeldJoint(asked.joint);
  std::istringstream settings(asked.settings);
  for (std::string setting; settings >> setting;) {
    const std::size_t sign = setting.find('=');
    const TWeldParameter* const parameter = findWeldParameter(joint, setting.substr(0, sign));
    if (parameter == nullptr) throw std::invalid_argument("no such setting: " + setting);
    parameter->value.set(params, std::stod(setting.substr(sign + 1)));
  }
  return params;
}

}  // namespace accuracy
