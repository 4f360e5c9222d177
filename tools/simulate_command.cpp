// zelweld simulate: draws a sequence of frames whose seam is known.
#include "tools/cli_error.h"
#include "tools/commands.h"
#include "tools/image_file.h"
#include "tools/names.h"
#include "tools/output_file.h"
#include "tools/param_json.h"
#include "tools/progress.h"
#include "tools/stop_signal.h"
#include "tools/text.h"

#include "scenes/plate.h"
#include "scenes/scene.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <utility>

namespace tool {
namespace {

namespace fs = std::filesystem;

constexpr int kMinSizePx = 160;
constexpr int kMaxSizePx = 8192;

// As typed.
struct TOptions {
  std::string type;
  std::string plate;  // instead of the type
  std::string position = "centre";
  int frames = 60;
  std::uint64_t seed = 1;
  std::string level = "clean";
  std::string size = "1280x1024";
  std::string drift = "0,0";
  double jitterPx = 0.0;
  double tiltDriftDeg = 0.0;
  int jumpAtFrame = -1;
  std::string jump = "80,0";
  bool changesProfile = false;
  std::string outFolder;
};

scenes::TLevel parseLevel(const std::string& text) {
  if (text == "clean") return scenes::TLevel::clean;
  if (text == "noisy") return scenes::TLevel::noisy;
  if (text == "harsh") return scenes::TLevel::harsh;
  if (text == "real") return scenes::TLevel::real;
  throw usageError("--level: unknown level '" + text + "': use clean, noisy, harsh, real");
}

cv::Size parseSize(const std::string& text) {
  const std::vector<double> sides = parseNumbers(text, 'x', 2);
  for (const double side : sides) {
    if (side != std::trunc(side) || side < kMinSizePx || side > kMaxSizePx) {
      throw usageError("--size: " + text + " is out of range; each side has " + std::to_string(kMinSizePx) +
                       " to " + std::to_string(kMaxSizePx) + " pixels");
    }
  }
  if (sides.empty()) {
    throw usageError("--size: '" + text + "' is no size; write WIDTHxHEIGHT, for example 1280x1024");
  }
  return {static_cast<int>(sides[0]), static_cast<int>(sides[1])};
}

cv::Point2d parseShift(const std::string& option, const std::string& text) {
  const std::vector<double> shift = parseNumbers(text, ',', 2);
  if (shift.empty() || std::abs(shift[0]) > kMaxSizePx || std::abs(shift[1]) > kMaxSizePx) {
    throw usageError(option + ": '" + text + "' is no shift; write dx,dy in pixels, for example 0.5,-0.2");
  }
  return {shift[0], shift[1]};
}

scenes::TMotion motionOf(const TOptions& options) {
  scenes::TMotion motion;
  motion.driftPx = parseShift("--drift", options.drift);
  motion.jitterPx = options.jitterPx;
  motion.tiltDriftDeg = options.tiltDriftDeg;
  motion.jumpAtFrame = options.jumpAtFrame;
  motion.jumpPx = parseShift("--jump", options.jump);
  motion.changesProfile = options.changesProfile;
  return motion;
}

std::string coordinates(cv::Point2d point, char separator) {
  return fixed(point.x, 3) + separator + fixed(point.y, 3);
}

std::string truthLine(const std::string& name, const scenes::TTruth& truth, scenes::TJoint joint,
                      TWeldPosType pos) {
  std::vector<std::string> features;
  for (const scenes::TFeature& feature : truth.features) {
    features.push_back(feature.name + ":" + coordinates(feature.point, ':'));
  }
  const std::string seam = truth.hasSeam ? coordinates(scenes::seamPoint(joint, truth, pos), ',') : ",";
  return name + (truth.hasSeam ? ",1," : ",0,") + seam + "," + join(features, ";");
}

TWeldPosType positionOf(scenes::TJoint joint, const std::string& text) {
  const TWeldType type = scenes::weldTypeOf(joint);
  return parsePosition(findWeldJoint(type) != nullptr ? type : detectorFor(joint), text);
}

TWeldParams trackParams(scenes::TJoint joint, TWeldPosType pos) {
  const bool isDetected = detectorFor(joint) == scenes::weldTypeOf(joint);
  return scenes::weldParamsFor(isDetected ? joint : scenes::jointOf(detectorFor(joint)), pos);
}

scenes::TPlateSeam parsePlate(const std::string& text) {
  using scenes::TPlateSeam;
  const std::pair<const char*, TPlateSeam> names[] = {{"none", TPlateSeam::none},
                                                      {"gap", TPlateSeam::gap},
                                                      {"tight", TPlateSeam::tight},
                                                      {"step", TPlateSeam::step},
                                                      {"scribe", TPlateSeam::scribe}};
  for (const auto& [name, seam] : names) {
    if (text == name) return seam;
  }
  throw usageError("--plate: unknown plate '" + text + "': use tight, gap, step, scribe, none");
}

// The visible place of the seam nearest to the middle of the frame, and its two ends.
std::string truthLine(const std::string& name, const scenes::TPlateTruth& truth, cv::Size size) {
  const cv::Point2d middle(0.5 * (size.width - 1), 0.5 * (size.height - 1));
  const scenes::TSeamStation* nearest = nullptr;
  for (const scenes::TSeamStation& station : truth.stations) {
    if (!station.isVisible) continue;
    if (nearest == nullptr || cv::norm(station.point - middle) < cv::norm(nearest->point - middle))
      nearest = &station;
  }
  if (nearest == nullptr) return name + ",0,,,";
  return name + ",1," + coordinates(nearest->point, ',') +
         ",begin:" + coordinates(truth.stations.front().point, ':') +
         ";end:" + coordinates(truth.stations.back().point, ':');
}

// What to draw: frame n, and its line of truth.
struct TDrawn {
  cv::Mat image;
  std::string truth;
};
using TDrawing = std::function<TDrawn(int n, const std::string& name)>;

void drawFrames(const TOptions& options, const fs::path& folder, const TDrawing& draw) {
  TTextFile truthFile(folder / "truth.csv");
  truthFile.writeLine("file,hasSeam,x,y,features");
  TProgress progress(options.frames);
  for (int n = 0; n < options.frames && !isStopRequested(); ++n) {
    char name[32];
    static_cast<void>(std::snprintf(name, sizeof name, "frame_%04d.png", n));
    const TDrawn drawn = draw(n, name);
    writeImage(folder / name, drawn.image);
    truthFile.writeLine(drawn.truth);
    progress.draw(n + 1);
  }
}

void drawPlates(const TOptions& options) {
  const scenes::TPlateSeam seam = parsePlate(options.plate);
  const scenes::TMotion motion = motionOf(options);
  const scenes::TPlateParams first =
      scenes::randomPlate(seam, parseLevel(options.level), options.seed, parseSize(options.size));
  makeEmptyFolder(options.outFolder);
  drawFrames(options, options.outFolder, [&](int n, const std::string& name) {
    const scenes::TPlateScene scene = scenes::renderPlate(scenes::plateFrameOf(first, motion, n));
    return TDrawn{scene.image, truthLine(name, scene.truth, scene.image.size())};
  });
}

void drawJoints(const TOptions& options) {
  const scenes::TJoint joint = parseJoint(options.type);
  const TWeldPosType pos = positionOf(joint, options.position);
  const scenes::TLevel level = parseLevel(options.level);
  const scenes::TMotion motion = motionOf(options);
  const scenes::TSceneParams first = scenes::randomScene(joint, level, options.seed, parseSize(options.size));
  const fs::path folder = options.outFolder;

  makeEmptyFolder(folder);
  writeWholeFile(folder / "params.json", paramsToJson(trackParams(joint, pos)).dump(2) + "\n");
  drawFrames(options, folder, [&](int n, const std::string& name) {
    const scenes::TScene scene = scenes::renderScene(scenes::frameOf(first, motion, n));
    return TDrawn{scene.image, truthLine(name, scene.truth, joint, pos)};
  });
}

}  // namespace

void addSimulateCommand(CLI::App& program) {
  CLI::App* const command = program.add_subcommand("simulate", "Draw a sequence of frames whose seam is known");
  const auto options = std::make_shared<TOptions>();
  CLI::Option_group* const what = command->add_option_group("what");
  what->add_option("--type", options->type, "Joint, by name or number: " + jointNames());
  what->add_option("--plate", options->plate, "Instead, plates without a stripe: tight, gap, step, scribe, none");
  what->require_option(1);
  command->add_option("--position", options->position, "Position of the true seam point: " + positionNames())
      ->capture_default_str();
  command->add_option("--frames", options->frames, "Number of frames")
      ->check(CLI::Range(1, 1000000))
      ->capture_default_str();
  command->add_option("--seed", options->seed, "Seed; the same seed gives the same frames")->capture_default_str();
  command->add_option("--level", options->level, "Difficulty: clean, noisy, harsh, real")->capture_default_str();
  command->add_option("--size", options->size, "Frame size, WIDTHxHEIGHT")->capture_default_str();
  command->add_option("--drift", options->drift, "Shift per frame, dx,dy px")->capture_default_str();
  command->add_option("--jitter", options->jitterPx, "Random shift of each frame, px")
      ->check(CLI::Range(0.0, 1000.0))
      ->capture_default_str();
  command->add_option("--tilt-drift", options->tiltDriftDeg, "Turn per frame, degrees")
      ->check(CLI::Range(-10.0, 10.0))
      ->capture_default_str();
  command->add_option("--jump-at", options->jumpAtFrame, "Frame at which the seam jumps")
      ->check(CLI::Range(0, 1000000));
  command->add_option("--jump", options->jump, "How far it jumps, dx,dy px")->capture_default_str();
  command->add_flag("--change-profile", options->changesProfile, "The jump changes the profile of the joint too");
  command->add_option("--out", options->outFolder, "Folder for frames, truth.csv and params.json")->required();
  command->footer(
      "Examples:\n"
      "  zelweld simulate --type buttGap --frames 30 --seed 7 --out frames\n"
      "  zelweld simulate --type corner --level noisy --drift 0.5,0.2 --jitter 1 --out frames\n"
      "  zelweld simulate --plate tight --level noisy --out plates\n"
      "  zelweld track frames --params frames/params.json");
  command->callback([options] { options->plate.empty() ? drawJoints(*options) : drawPlates(*options); });
}

}  // namespace tool
