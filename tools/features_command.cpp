// zelweld features: what is measured of the joint in every frame, in words.
#include "tools/commands.h"
#include "tools/frame_tracker.h"
#include "tools/measures.h"
#include "tools/output.h"
#include "tools/text.h"

#include <CLI/CLI.hpp>

#include <cmath>
#include <iomanip>
#include <memory>
#include <sstream>

namespace tool {
namespace {

// "confidence 0.913, gapPx 23.10 px"; of a frame without a seam why there is none.
std::string wordsOf(const TFrameRecord& record, const std::vector<TMeasure>& measures) {
  std::vector<std::string> words;
  for (const TMeasure& measure : measures) {
    const double value = measure.get(record.tracked.measurement);
    if (std::isfinite(value)) {
      words.push_back(measure.name + " " + fixed(value, measure.digits) +
                      (measure.unit.empty() ? "" : " " + measure.unit));
    }
  }
  return words.empty() ? record.trace->sentence : join(words, ", ");
}

void run(const TTrackingOptions& options) {
  TTracking tracking = trackingOf(options);
  tracking.tracker.keepTrace = true;
  const std::vector<TMeasure> measures = measuresOf(tracking.params.weldType);
  TFrameSource source = framesOf(options.frames);
  TFrameTracker tracker(tracking);
  printLine(" frame  state  measured");
  while (const auto frame = source.next()) {
    const TTrackedFrame tracked = tracker.track(*frame);
    std::ostringstream line;
    line << std::setw(6) << frame->index << "  " << std::left << std::setw(7)
         << nameOf(tracked.record.tracked.state) << wordsOf(tracked.record, measures);
    printLine(line.str());
  }
  source.reading().check();
}

}  // namespace

void addFeaturesCommand(CLI::App& program) {
  CLI::App* const command = program.add_subcommand("features", "Print what is measured of the joint");
  const auto options = std::make_shared<TTrackingOptions>();
  addTrackingOptions(*command, *options);
  command->footer(
      "Sizes in px of the image, angles in degrees; what the joint does not have is left out. track --format csv "
      "or\n"
      "jsonl writes the same as columns.\n"
      "Example:\n"
      "  zelweld features frames/ --type vGroove");
  command->callback([options] { run(*options); });
}

}  // namespace tool
