// zelweld exposure: what the exposure figures of each frame are, and what to do about them.
#include "tools/commands.h"
#include "tools/frame_source.h"
#include "tools/output.h"
#include "tools/text.h"
#include "zelWeldDetect.h"

#include <iomanip>
#include <memory>
#include <sstream>

namespace tool {
namespace {

struct TOptions {
  std::vector<std::string> inputs;
  LightingAdaptation::TExposureTarget target;
};

struct TExposure {
  int meanGray = 0;
  int brightPixelNum = 0;
  double factor = 1.0;  // to multiply the exposure with
};

TExposure exposureOf(const cv::Mat& image, const LightingAdaptation::TExposureTarget& target) {
  TExposure exposure;
  LightingAdaptation::calcExposureParam(image, exposure.meanGray, exposure.brightPixelNum);
  const double brightShare = exposure.brightPixelNum / static_cast<double>(image.total());
  exposure.factor = LightingAdaptation::adviseExposureFactor(exposure.meanGray, brightShare, target);
  return exposure;
}

// "leave", "raise x 1.82", "lower x 0.50".
std::string adviceOf(double factor) {
  if (factor == 1.0) {
    return "leave";
  }
  return (factor > 1.0 ? "raise x " : "lower x ") + fixed(factor, 2);
}

std::string tableLine(const TFrame& frame, const TExposure& exposure) {
  std::ostringstream line;
  line << std::setw(6) << frame.index << std::setw(6) << exposure.meanGray << std::setw(9)
       << exposure.brightPixelNum << "  " << std::left << std::setw(14) << adviceOf(exposure.factor) << frame.name;
  return line.str();
}

void run(const TOptions& options) {
  TFrameSource source(listInputs(options.inputs));
  printLine(" frame  mean   bright  advice        file");
  while (const auto frame = source.next()) {
    printLine(tableLine(*frame, exposureOf(frame->image, options.target)));
  }
}

}  // namespace

void addExposureCommand(CLI::App& program) {
  CLI::App* const command = program.add_subcommand("exposure", "Print exposure figures and what to do about them");
  const auto options = std::make_shared<TOptions>();
  command->add_option("INPUT", options->inputs, "Image files, folders, patterns (frame_%03d.png), video files")
      ->required();
  command->add_option("--target-mean", options->target.meanGray, "Mean grey level to aim at, 1 to 254")
      ->check(CLI::Range(1, 254))
      ->capture_default_str();
  command->add_option("--tolerance", options->target.tolerance, "Distance from it that is left alone, grey levels")
      ->check(CLI::Range(0, 253))
      ->capture_default_str();
  command->footer(
      "mean    mean grey level; large reflections count 0.3 times\n"
      "bright  pixels above grey level 240; those in large reflections count 0.2\n"
      "advice  what to multiply exposure time or gain with, at most by 4 in one step; more than 10 % bright "
      "pixels\n"
      "        halve it at least\n"
      "The mean to aim at depends on filter and surroundings: take it from a frame that tracks well.\n"
      "Examples:\n"
      "  zelweld exposure frames/\n"
      "  zelweld exposure clip.avi --target-mean 25 --tolerance 5");
  command->callback([options] { run(*options); });
}

}  // namespace tool
