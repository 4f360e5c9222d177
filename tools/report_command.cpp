// zelweld report: one page about what happened in every frame.
#include "tools/cli_error.h"
#include "tools/commands.h"
#include "tools/frame_source.h"
#include "tools/frame_tracker.h"
#include "tools/output_file.h"
#include "tools/progress.h"
#include "tools/report.h"
#include "tools/seam_run.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>

namespace tool {
namespace {

namespace fs = std::filesystem;

// As typed.
struct TOptions {
  TSeamRunOptions run;
  std::string page = "report.html";
};

void addAll(TReport& report, const TTracking& tracking, const TTruth& truth, TFrameSource& source) {
  TTruthFigures judged;
  TFrameTracker tracker(tracking);
  TProgress progress(source.frameCount());
  while (const auto frame = source.next()) {
    TTrackedFrame tracked = tracker.track(*frame);
    tracked.record.fault = truth.judge(tracked.record.file, tracked.record.foundSeam(), judged);
    report.add(tracked.record, tracked.image);
    progress.draw(report.stats().frames());
  }
}

void writePage(const TReport& report, const fs::path& page) {
  if (report.stats().frames() > 0) {
    report.write(page);
    std::cerr << summaryOf(report.stats()) << "\nreport: " << onOneLine(page.string()) << std::endl;
  }
}

void run(const TOptions& options) {
  TTracking tracking = trackingOf(options.run.tracking);
  tracking.tracker.keepTrace = true;
  tracking.tracker.giveAdvice = true;
  const TTruth truth = truthOf(options.run);
  TFrameSource source = framesOf(options.run.tracking.frames);
  checkPagePlace(options.page, filesOf(options.run.tracking));
  TReport report(tracking);
  try {
    addAll(report, tracking, truth, source);
  } catch (const TCliError&) {
    if (source.reading().hasReadable()) {
      writePage(report, options.page);  // of the frames before the one that does not fit
    }
    throw;
  }
  writePage(report, options.page);
  source.reading().check();
}

}  // namespace

void addReportCommand(CLI::App& program) {
  CLI::App* const command = program.add_subcommand("report", "Write a page about what happened in every frame");
  const auto options = std::make_shared<TOptions>();
  addSeamRunOptions(*command, options->run);
  command->add_option("--out", options->page, "The page, an HTML file")->capture_default_str();
  command->footer(
      "The page needs no other file and no network.\n"
      "Examples:\n"
      "  zelweld report frames/ --type buttGap --out report.html\n"
      "  zelweld report clip.avi --params params.json --exact --out plain.html");
  command->callback([options] { run(*options); });
}

}  // namespace tool
