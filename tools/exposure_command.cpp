// zelweld exposure: what the exposure figures of each frame are, and what to do about them.
#include "tools/commands.h"
#include "tools/exposure.h"
#include "tools/frame_source.h"
#include "tools/output.h"
#include "tools/shared_options.h"
#include "tools/text.h"

#include <CLI/CLI.hpp>

#include <iomanip>
#include <memory>
#include <sstream>

namespace tool {
namespace {

struct TOptions {
  TFrameOptions frames;
  LightingAdaptation::TExposureTarget target;
  LightingAdaptation::TStripeTarget stripe;
};

// "leave", "raise x 1.82", "lower x 0.50".
std::string adviceOf(double factor) {
  if (factor == 1.0) {
    return "leave";
  }
  return (factor > 1.0 ? "raise x " : "lower x ") + fixed(factor, 2);
}

std::string tableLine(const TFrame& frame, const TExposure& exposure) {
  const bool hasStripe = exposure.light.columns > 0;
  std::ostringstream line;
  line << std::setw(6) << frame.index << std::setw(6) << exposure.meanGray << std::setw(9)
       << exposure.brightPixelNum << std::setw(11)
       << (hasStripe ? fixed(100.0 * exposure.light.saturatedShare, 1) : "-") << std::setw(6)
       << (hasStripe ? fixed(exposure.light.peakOverBackground, 0) : "-") << "  " << std::left << std::setw(14)
       << adviceOf(exposure.factor) << onOneLine(frame.name);
  return line.str();
}

void run(const TOptions& options) {
  const TPreparation preparation = preparationOf(options.frames);
  TFrameSource source = framesOf(options.frames);
  printLine(" frame  mean   bright  saturated  peak  advice        file");
  while (const auto frame = source.nextReadable()) {
    const cv::Mat image = prepareImage(frame->image, preparation, frame->name);
    printLine(tableLine(*frame, exposureOf(image, options.target, options.stripe)));
  }
  source.reading().check();
}

}  // namespace

void addExposureCommand(CLI::App& program) {
  CLI::App* const command = program.add_subcommand("exposure", "Print exposure figures and what to do about them");
  const auto options = std::make_shared<TOptions>();
  addFrameOptions(*command, options->frames);
  command->add_option("--target-mean", options->target.meanGray, "Without a stripe: mean grey level to aim at")
      ->check(CLI::Range(1, 254))
      ->capture_default_str();
  command->add_option("--tolerance", options->target.tolerance, "Distance from it that is left alone, grey levels")
      ->check(CLI::Range(0, 253))
      ->capture_default_str();
  command->footer(
      "mean       mean grey level; large reflections count 0.3 times\n"
      "bright     pixels above grey level 240; those in large reflections count 0.2\n"
      "saturated  share of the stripe's columns with a peak of 250 or more, %; - without a stripe\n"
      "peak       median over these columns of the peak less the background, grey levels\n"
      "advice     what to multiply exposure time or gain with, at most by 4 in one step. It goes by the stripe:\n"
      "           lower above 25 % saturated, raise below a peak of 40. Only where there is none it goes by the\n"
      "           mean, which depends on filter and surroundings: take it from a frame that tracks well.\n"
      "Examples:\n"
      "  zelweld exposure frames/\n"
      "  zelweld exposure clip.avi --rotate 90 --target-mean 25");
  command->callback([options] { run(*options); });
}

}  // namespace tool
