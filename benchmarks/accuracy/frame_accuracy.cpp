// Prints what the library finds in real camera frames, against their labels where there are some.
#include "frame_folder.h"
#include "option_sets.h"
#include "zelWeldDetect.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <optional>

namespace {

namespace fs = std::filesystem;
using accuracy::TChannel;
using accuracy::TLabel;
using accuracy::TPreparation;

struct TFolder {
  const char* path;
  TPreparation preparation;
};

// The labelled seam of a frame from the labels of that frame.
using TSeamOf = std::optional<cv::Point2d> (*)(const std::vector<TLabel>&);

struct TSeamRun {
  const char* name;
  TFolder folder;
  TWeldType type;
  TWeldPosType pos;
  void (*tune)(TWeldParams&);
  TSeamOf seamOf;
};

std::optional<cv::Point2d> labelNamed(const std::vector<TLabel>& labels, const char* name) {
  const auto label = std::find_if(labels.begin(), labels.end(), [&](const TLabel& l) { return l.name == name; });
  return label != labels.end() ? std::optional(label->point) : std::nullopt;
}

std::optional<cv::Point2d> middleOf(std::optional<cv::Point2d> a, std::optional<cv::Point2d> b) {
  return a && b ? std::optional((*a + *b) * 0.5) : std::nullopt;
}

template <const char* const& name>
std::optional<cv::Point2d> seamNamed(const std::vector<TLabel>& labels) {
  return labelNamed(labels, name);
}

constexpr const char* kSeam = "seam";
constexpr const char* kCorner = "corner";
constexpr const char* kPlateLeft = "plate_edge_left";
constexpr const char* kPlateRight = "plate_edge_right";

std::optional<cv::Point2d> gapMiddle(const std::vector<TLabel>& labels) {
  return middleOf(labelNamed(labels, "gap_edge_upper"), labelNamed(labels, "gap_edge_lower"));
}

// Where the two flanks of a groove would meet: each runs from its toe to its end, or to the root.
std::optional<cv::Point2d> grooveTip(const std::vector<TLabel>& labels) {
  const auto flankEnd = [&](const char* end, const char* root) {
    const auto point = labelNamed(labels, end);
    return point ? point : labelNamed(labels, root);
  };
  const auto left = labelNamed(labels, "toe_left");
  const auto right = labelNamed(labels, "toe_right");
  const auto leftEnd = flankEnd("flank_left_end", "root_left");
  const auto rightEnd = flankEnd("flank_right_end", "root_right");
  if (!left || !right || !leftEnd || !rightEnd) return std::nullopt;
  const double k1 = (leftEnd->y - left->y) / (leftEnd->x - left->x);
  const double k2 = (rightEnd->y - right->y) / (rightEnd->x - right->x);
  const double x = (right->y - k2 * right->x - left->y + k1 * left->x) / (k1 - k2);
  return cv::Point2d(x, left->y + k1 * (x - left->x));
}

void keepDefaults(TWeldParams&) {}
void acceptNarrowGaps(TWeldParams& params) {
  params.dPara8 = 2.0;
}
void acceptLongPlates(TWeldParams& params) {
  params.dPara6 = 200.0;
}

// The column status is that of the edge pairs, which fail on these frames where the ridges do not.
void acceptMissingColumns(TWeldParams& params) {
  params.nPara1 = 1000;
  params.nPara5 = 1000;
}

void lookForTips(TWeldParams& params) {
  acceptMissingColumns(params);
  params.angleRange1Min = -60.0;
  params.angleRange1Max = -20.0;
  params.angleRange2Min = 20.0;
  params.angleRange2Max = 60.0;
  params.angleRange5Min = 60.0;
  params.dPara3 = 0.03;  // short flanks in a wide frame
}

void lookForFlatRight(TWeldParams& params) {
  acceptMissingColumns(params);
  params.angleRange1Min = 5.0;
  params.angleRange2Max = 3.0;
}

void lookForSteepFlanks(TWeldParams& params) {
  acceptMissingColumns(params);
  params.angleRange1Min = 10.0;
  params.angleRange2Min = -65.0;
  params.angleRange2Max = -10.0;
  params.angleRange5Min = 60.0;
}

constexpr TFolder kRunA{"nghia-butt/run_a", {true, TChannel::grey}};
constexpr TFolder kRunC{"nghia-butt/run_c", {true, TChannel::grey}};
constexpr TFolder kGap{"silent-buttgap", {true, TChannel::grey}};
constexpr TFolder kCornerGhosts{"lsdnn-corner", {false, TChannel::red}};
constexpr TFolder kCornerBright{"maris-corner", {false, TChannel::redExcess}};
constexpr TFolder kGrooves{"hanhiver-groove", {false, TChannel::grey}};
constexpr TFolder kPlates{"nghia-butt/plate_horizontal", {false, TChannel::grey}};

const TSeamRun kSeamRuns[] = {
    {"butt gap", kRunC, TWeldType::buttGap, TWeldPosType::centre, acceptNarrowGaps, seamNamed<kSeam>},
    {"butt gap", kRunA, TWeldType::buttGap, TWeldPosType::centre, acceptNarrowGaps, seamNamed<kSeam>},
    {"butt gap", kGap, TWeldType::buttGap, TWeldPosType::centre, keepDefaults, gapMiddle},
    {"corner", kCornerGhosts, TWeldType::corner, TWeldPosType::centre, lookForFlatRight, seamNamed<kCorner>},
    {"corner", kCornerBright, TWeldType::corner, TWeldPosType::centre, lookForSteepFlanks, seamNamed<kCorner>},
    {"corner, V tip", kGrooves, TWeldType::corner, TWeldPosType::centre, lookForTips, grooveTip},
    {"plate, left", kPlates, TWeldType::plate, TWeldPosType::left, acceptLongPlates, seamNamed<kPlateLeft>},
    {"plate, right", kPlates, TWeldType::plate, TWeldPosType::right, acceptLongPlates, seamNamed<kPlateRight>},
};

const TFolder kPresenceFolders[] = {
    kRunA,
    kRunC,
    {"nghia-butt/plate_edge", {true, TChannel::grey}},
    kPlates,
    kGap,
    kGrooves,
    {"hanhiver-groove/run1_v_multipass", {}},
    {"hanhiver-groove/run2_v_small_root", {}},
    {"hanhiver-groove/run5_bevel_step", {}},
    {"hanhiver-groove/run7_filled_bead", {}},
    kCornerBright,
    {"ge95net-speckle", {true, TChannel::grey}},
    kCornerGhosts,
    {"linelight-plate", {false, TChannel::redExcess}},
    {"hoffsupes-objects", {true, TChannel::red}},
    {"chengtian-line", {true, TChannel::grey}},
};

double medianOf(std::vector<double> values) {
  if (values.empty()) return std::nan("");
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

std::vector<TLabel> labelsOf(const std::vector<TLabel>& labels, const fs::path& file) {
  std::vector<TLabel> own;
  std::copy_if(labels.begin(), labels.end(), std::back_inserter(own),
               [&](const TLabel& label) { return label.file == file.filename(); });
  return own;
}

void printSeamRun(const fs::path& root, const TSeamRun& run, const TTrackerOptions& options) {
  const fs::path folder = root / run.folder.path;
  const std::vector<TLabel> labels = accuracy::readLabels(folder);
  TWeldParams params;
  initWeldParameters(run.type, params, run.pos);
  run.tune(params);
  int frames = 0;
  int found = 0;
  std::vector<double> distances;
  for (const fs::path& file : accuracy::listFrames(folder)) {
    const cv::Mat frame = accuracy::readFrame(file, run.folder.preparation);
    const TWeldLineRes result = TWeldTracker(params, options).track(frame).line;
    ++frames;
    found += result.isFound ? 1 : 0;
    const auto seam = run.seamOf(labelsOf(labels, file));
    if (!result.isFound || !seam) continue;
    const cv::Point2d truth = accuracy::toPrepared(*seam, frame, run.folder.preparation);
    distances.push_back(std::hypot(result.weldPos.x - truth.x, result.weldPos.y - truth.y));
  }
  std::printf("| %-13s | %-28s | %6d | %5d | %9.1f |\n", run.name, run.folder.path, frames, found,
              medianOf(distances));
}

// Share of image columns with a stripe centre, in percent.
double columnPercent(const cv::Mat& frame, bool usesRidges) {
  TWeldParams params;
  initWeldParameters(TWeldType::stripePresence, params, TWeldPosType::centre);
  params.flagPara1 = usesRidges;
  const TWeldLineRes result = detectWeldLineViaTracking(frame, params, {});
  return 100.0 * static_cast<double>(result.stripePts.size()) / frame.cols;
}

void printPresence(const fs::path& root, const TFolder& folder) {
  std::vector<double> edgePairs;
  std::vector<double> ridges;
  for (const fs::path& file : accuracy::listFrames(root / folder.path)) {
    const cv::Mat frame = accuracy::readFrame(file, folder.preparation);
    edgePairs.push_back(columnPercent(frame, false));
    ridges.push_back(columnPercent(frame, true));
  }
  const auto withStripe =
      std::count_if(edgePairs.begin(), edgePairs.end(), [](double share) { return share > 0.0; });
  std::printf("| %-33s | %6zu | %11d | %12.1f | %8.1f |\n", folder.path, edgePairs.size(),
              static_cast<int>(withStripe), medianOf(edgePairs), medianOf(ridges));
}

}  // namespace

int main(int argc, char** argv) {
  const fs::path root = argc > 1 ? argv[1] : DEFAULT_FRAMES;
  if (!fs::is_directory(root)) {
    std::printf("Real frames: no folder %s, skipped\n", root.c_str());
    return 0;
  }
  for (const accuracy::TOptionSet& set : accuracy::kOptionSets) {
    std::printf("%s\n\n| joint         | folder                       | frames | found | median px |\n",
                set.title);
    std::printf("|---|---|---|---|---|\n");
    for (const TSeamRun& run : kSeamRuns) printSeamRun(root, run, set.options);
    std::printf("\n");
  }
  std::printf("Columns with a stripe centre, median over the frames of a folder:\n\n");
  std::printf("| folder                            | frames | with stripe | edge pairs %% | ridges %% |\n");
  std::printf("|---|---|---|---|---|\n");
  for (const TFolder& folder : kPresenceFolders) printPresence(root, folder);
  return 0;
}
