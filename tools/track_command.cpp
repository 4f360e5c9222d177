// zelweld track: finds the seam in every frame.
#include "tools/cli_error.h"
#include "tools/commands.h"
#include "tools/detection.h"
#include "tools/frame_source.h"
#include "tools/image_file.h"
#include "tools/names.h"
#include "tools/output_file.h"
#include "tools/overlay.h"
#include "tools/progress.h"
#include "tools/record_writer.h"
#include "tools/shared_options.h"
#include "tools/stats.h"
#include "tools/text.h"

#include <cstdio>
#include <iostream>
#include <memory>

namespace tool {
namespace {

namespace fs = std::filesystem;

// As typed.
struct TOptions {
  TFrameOptions frames;
  TParamSource source;
  bool isFirstOnly = false;
  std::string outFolder;
  std::string format = "table";
  bool withPoints = false;
};

// As understood.
struct TJob {
  std::vector<TInputFile> files;
  TWeldParams params;
  TPreparation preparation;
  TFormat format = TFormat::table;
  bool isFirstOnly = false;
  bool withPoints = false;
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
  job.params = loadParams(options.source);
  job.preparation = preparationOf(options.frames);
  job.format = parseFormat(options.format);
  job.isFirstOnly = options.isFirstOnly;
  job.withPoints = options.withPoints;
  if (job.withPoints && job.format != TFormat::jsonl) {
    throw usageError("--points needs --format jsonl");
  }
  job.files = listInputs(options.frames.inputs);
  job.outFolder = outFolderOf(options, job.files);
  return job;
}

TFrameRecord recordOf(const TJob& job, const TFrame& frame, const TTimedResult& timed) {
  const auto mapped = [&](cv::Point2d point) { return toStored(point, job.preparation, frame.image.size()); };
  TFrameRecord record;
  record.frame = frame.index;
  record.file = frame.name;
  record.result = timed.result;
  record.ms = timed.ms;
  record.seam = seamOf(job.params, timed.result);
  if (record.seam) {
    record.storedSeam = mapped(*record.seam);
  }
  if (job.withPoints) {
    for (const cv::Point2f& point : timed.result.stripePts) {
      record.storedStripePts.push_back(mapped(point));
    }
  }
  return record;
}

void writeAnnotated(const TJob& job, const TFrameRecord& record, const cv::Mat& image, const TOverlay& overlay) {
  const std::string place =
      record.seam ? "  x " + fixed(record.seam->x, 1) + "  y " + fixed(record.seam->y, 1) : std::string();
  const std::string search = overlay.guidePts.empty() ? "whole image" : "near the last stripe";
  cv::Mat drawn = drawOverlay(image, overlay);
  drawLabel(drawn,
            {nameOf(job.params.weldType) + (record.result.isFound ? ": found" : ": not found") + place,
             std::to_string(record.result.stripePts.size()) + " stripe points, search: " + search,
             fs::path(record.file).filename().string() + ", " + fixed(record.ms, 2) + " ms"},
            record.result.isFound);
  char number[16];
  std::snprintf(number, sizeof number, "%06d_", record.frame);
  writeImage(job.outFolder / (number + fs::path(record.file).stem().string() + ".png"), drawn);
}

void run(const TOptions& options) {
  TJob job = jobOf(options);
  TFrameSource source(job.files);
  TRecordWriter writer(std::cout, job.format, job.withPoints);
  TProgress progress(source.frameCount());
  TRunStats stats;
  TWeldLineRes previous;
  while (const auto frame = source.next()) {
    if (frame->startsSequence || job.isFirstOnly) {
      previous = TWeldLineRes();
    }
    const cv::Mat image = prepareImage(frame->image, job.preparation, frame->name);
    const TTimedResult timed = detectTimed(image, job.params, previous);
    const TFrameRecord record = recordOf(job, *frame, timed);
    progress.clear();
    writer.write(record);
    stats.add(timed.result.isFound, timed.ms);
    progress.draw(stats.frames());
    if (!job.outFolder.empty()) {
      writeAnnotated(job, record, image, overlayOf(job.params, previous, timed.result));
    }
    previous = timed.result;
  }
  progress.clear();
  std::cerr << summaryOf(stats) << std::endl;
}

}  // namespace

void addTrackCommand(CLI::App& program) {
  CLI::App* const command = program.add_subcommand("track", "Find the seam in every frame");
  const auto options = std::make_shared<TOptions>();
  addFrameOptions(*command, options->frames);
  addParamOptions(*command, options->source);
  command->add_flag("--first-only", options->isFirstOnly, "Search every frame anew instead of tracking");
  command->add_option("--out", options->outFolder, "Folder for annotated frames");
  command->add_option("--format", options->format, "Records as table, jsonl or csv")->capture_default_str();
  command->add_flag("--points", options->withPoints, "Add the stripe points to jsonl records");
  command->footer(
      "Coordinates are those of the cut and turned image; storedX and storedY those of the stored one.\n"
      "Exit codes: 0 done, 1 output failed, 2 wrong usage, 3 input that cannot be read, 130 Ctrl-C.\n"
      "Examples:\n"
      "  zelweld track frames/ --type buttGap --out annotated\n"
      "  zelweld track frame_%03d.png --params params.json --format jsonl > seams.jsonl\n"
      "  zelweld track clip.avi --type buttGap --rotate 90 --channel red --set dPara8=4");
  command->callback([options] { run(*options); });
}

}  // namespace tool
