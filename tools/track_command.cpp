// zelweld track: finds the seam in every frame.
#include "tools/cli_error.h"
#include "tools/commands.h"
#include "tools/frame_source.h"
#include "tools/frame_tracker.h"
#include "tools/image_file.h"
#include "tools/names.h"
#include "tools/output_file.h"
#include "tools/overlay.h"
#include "tools/progress.h"
#include "tools/record_writer.h"
#include "tools/seam_run.h"
#include "tools/stats.h"
#include "tools/text.h"
#include "tools/trace_json.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <iostream>
#include <memory>

namespace tool {
namespace {

namespace fs = std::filesystem;

// As typed.
struct TOptions {
  TSeamRunOptions run;
  std::string outFolder;
  std::string format = "table";
  bool withPoints = false;
  bool keepTrace = false;
};

// As understood.
struct TJob {
  std::vector<TInputFile> files;
  TTracking tracking;
  TTruth truth;
  TFormat format = TFormat::table;
  bool withPoints = false;
  bool keepTrace = false;
  fs::path outFolder;  // empty: no annotated frames
};

// The folder for annotated frames. One that is read from would feed them into the next run.
fs::path outFolderOf(const TOptions& options, const std::vector<TInputFile>& files) {
  if (options.outFolder.empty()) {
    return {};
  }
  makeFolder(options.outFolder);
  for (const TInputFile& file : files) {
    std::error_code failure;
    const fs::path folder = file.path.has_parent_path() ? file.path.parent_path() : fs::path(".");
    if (fs::equivalent(folder, options.outFolder, failure)) {
      throw usageError("--out: " + options.outFolder + " holds input files; choose another folder");
    }
  }
  return options.outFolder;
}

TJob jobOf(const TOptions& options) {
  TJob job;
  job.tracking = trackingOf(options.run.tracking);
  job.truth = truthOf(options.run);
  job.format = parseFormat(options.format);
  job.withPoints = options.withPoints;
  if (job.withPoints && job.format != TFormat::jsonl) {
    throw usageError("--points needs --format jsonl");
  }
  job.files = listInputs(options.run.tracking.frames.inputs);
  job.outFolder = outFolderOf(options, job.files);
  job.keepTrace = options.keepTrace;
  job.tracking.tracker.keepTrace = job.keepTrace || !job.outFolder.empty();
  job.tracking.tracker.giveAdvice = true;
  return job;
}

std::vector<std::string> labelOf(const TJob& job, const TFrameRecord& record) {
  const std::string place =
      record.seam ? "  x " + fixed(record.seam->x, 1) + "  y " + fixed(record.seam->y, 1) : std::string();
  std::vector<std::string> lines = {nameOf(job.tracking) + ": " + nameOf(record.tracked.state) + place};
  if (record.tracked.state != TSeamState::found) {
    lines.push_back(record.trace->sentence);
    if (!record.trace->advice.empty()) {
      lines.push_back(record.trace->advice);
    }
  }
  lines.push_back(searchWords(*record.trace));
  lines.push_back(fs::path(record.file).filename().string() + ", " + fixed(record.ms, 2) + " ms");
  return lines;
}

void writeAnnotated(const TJob& job, const TTrackedFrame& frame) {
  const TFrameRecord& record = frame.record;
  cv::Mat drawn =
      drawOverlay(frame.image, overlayOf(job.tracking.params, record.tracked, *record.trace, frame.image.cols));
  drawLabel(drawn, labelOf(job, record), record.tracked.state);
  char number[16];
  static_cast<void>(std::snprintf(number, sizeof number, "%06d_", record.frame));
  writeImage(job.outFolder / (number + fs::path(record.file).stem().string() + ".png"), drawn);
}

void run(const TOptions& options) {
  const TJob job = jobOf(options);
  TFrameSource source = framesOf(options.run.tracking.frames);
  TFrameTracker tracker(job.tracking);
  TRecordWriter writer(std::cout, job.format, job.tracking.params.weldType, job.withPoints, job.keepTrace);
  TProgress progress(source.frameCount());
  TRunStats stats;
  TTruthFigures judged;
  while (const auto frame = source.next()) {
    const TTrackedFrame tracked = tracker.track(*frame);
    progress.clear();
    writer.write(tracked.record);
    stats.add(tracked.record.tracked.state, tracked.record.ms);
    job.truth.judge(tracked.record.file, tracked.record.foundSeam(), judged);
    progress.draw(stats.frames());
    if (!job.outFolder.empty() && !tracked.image.empty()) {
      writeAnnotated(job, tracked);
    }
  }
  progress.clear();
  std::cerr << summaryOf(stats) << (job.truth.isEmpty() ? "" : ", wrong by the labels " + judged.text())
            << std::endl;
  source.reading().check();
}

}  // namespace

void addTrackCommand(CLI::App& program) {
  CLI::App* const command = program.add_subcommand("track", "Find the seam in every frame");
  const auto options = std::make_shared<TOptions>();
  addSeamRunOptions(*command, options->run);
  command->add_option("--out", options->outFolder, "Folder for annotated frames");
  command->add_option("--format", options->format, "Records as: table, jsonl, csv")->capture_default_str();
  command->add_flag("--points", options->withPoints, "Add the stripe points to jsonl records");
  command->add_flag("--explain", options->keepTrace, "Add why frames are not found; to jsonl the whole trace");
  command->footer(
      "Coordinates are those of the cut and turned image; storedX and storedY those of the stored one.\n"
      "Exit codes: 0 done, 1 output failed, 2 wrong usage, 3 input that cannot be read, 130 Ctrl-C.\n"
      "Examples:\n"
      "  zelweld track frames/ --type buttGap --out annotated\n"
      "  zelweld track frames/ --type lap --explain\n"
      "  zelweld track frame_%03d.png --params params.json --format jsonl > seams.jsonl\n"
      "  zelweld track clip.avi --type buttGap --rotate 90 --channel red --set dPara8=4");
  command->callback([options] { run(*options); });
}

}  // namespace tool
