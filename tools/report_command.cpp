// zelweld report: one page about what happened in every frame.
#include "tools/cli_error.h"
#include "tools/commands.h"
#include "tools/frame_source.h"
#include "tools/frame_tracker.h"
#include "tools/output_file.h"
#include "tools/progress.h"
#include "tools/report.h"

#include <iostream>
#include <memory>

namespace tool {
namespace {

namespace fs = std::filesystem;

// As typed.
struct TOptions {
  TTrackingOptions tracking;
  std::string page = "report.html";
};

// Found out before the frames are tracked rather than after.
void preparePlace(const fs::path& page) {
  if (fs::is_directory(page)) {
    throw usageError("--out: " + page.string() + " is a folder; name the page, as in " +
                     (page / "report.html").string());
  }
  if (page.has_parent_path()) {
    makeFolder(page.parent_path());
  }
}

void addAll(TReport& report, const TTracking& tracking, TFrameSource& source) {
  TFrameTracker tracker(tracking);
  TProgress progress(source.frameCount());
  while (const auto frame = source.next()) {
    const TTrackedFrame tracked = tracker.track(*frame);
    report.add(tracked.record, tracked.image);
    progress.draw(report.stats().frames());
  }
}

void writePage(const TReport& report, const fs::path& page) {
  if (report.stats().frames() > 0) {
    report.write(page);
    std::cerr << summaryOf(report.stats()) << "\nreport: " << page.string() << std::endl;
  }
}

void run(const TOptions& options) {
  TTracking tracking = trackingOf(options.tracking);
  tracking.tracker.keepTrace = true;
  tracking.tracker.giveAdvice = true;
  TFrameSource source = framesOf(options.tracking.frames);
  preparePlace(options.page);
  TReport report(tracking.params, tracking.tracker);
  try {
    addAll(report, tracking, source);
  } catch (const TCliError&) {
    writePage(report, options.page);  // of the frames before the one that cannot be read
    throw;
  }
  writePage(report, options.page);
}

}  // namespace

void addReportCommand(CLI::App& program) {
  CLI::App* const command = program.add_subcommand("report", "Write a page about what happened in every frame");
  const auto options = std::make_shared<TOptions>();
  addTrackingOptions(*command, options->tracking);
  command->add_option("--out", options->page, "The page, an HTML file")->capture_default_str();
  command->footer(
      "The page needs no other file and no network.\n"
      "Examples:\n"
      "  zelweld report frames/ --type buttGap --out report.html\n"
      "  zelweld report clip.avi --params params.json --exact --out plain.html");
  command->callback([options] { run(*options); });
}

}  // namespace tool
