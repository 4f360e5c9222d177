// zelweld seam: finds the seam by its contrast, in images without a stripe.
#include "tools/cli_error.h"
#include "tools/commands.h"
#include "tools/contrast_options.h"
#include "tools/frame_source.h"
#include "tools/image_file.h"
#include "tools/output.h"
#include "tools/output_file.h"
#include "tools/progress.h"
#include "tools/record_writer.h"
#include "tools/shared_options.h"
#include "tools/text.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
#include <opencv2/imgproc.hpp>

#include <chrono>
#include <memory>

namespace tool {
namespace {

namespace fs = std::filesystem;
using nlohmann::ordered_json;

const cv::Scalar kMeasuredColour(80, 220, 60);  // blue, green, red
const cv::Scalar kBridgedColour(40, 180, 240);

// As typed.
struct TOptions {
  TFrameOptions frames;
  TContrastChoice contrast;
  TContrastSearch search;  // with band and reach
  std::string at;
  std::string format = "jsonl";
  std::string outFolder;
};

struct TSeamLine {
  std::string file;
  TContourCenterLine line;
  double ms = 0.0;
};

TContrastSearch searchOf(const TOptions& options) {
  TContrastSearch search = contrastOf(options.contrast, options.search);
  if (options.at.empty() != !(search.bandPx > 0.0F)) throw usageError("--at and --band belong together");
  if (options.at.empty()) return search;
  const std::vector<double> place = parseNumbers(options.at, ',', 2);
  if (place.empty()) throw usageError("--at: '" + options.at + "' is no place; write x,y, for example 640,512");
  search.roughPos = {static_cast<float>(place[0]), static_cast<float>(place[1])};
  return search;
}

ordered_json jsonOf(const TSeamLine& seam) {
  const TContourCenterLine& line = seam.line;
  ordered_json json = {{"file", seam.file}, {"found", !line.pts.empty()}, {"ms", rounded(seam.ms)}};
  if (line.pts.empty()) return json;
  ordered_json points = ordered_json::array();
  ordered_json widths = ordered_json::array();
  ordered_json measured = ordered_json::array();
  for (std::size_t i = 0; i < line.pts.size(); ++i) {
    points.push_back({rounded(line.pts[i].x), rounded(line.pts[i].y)});
    widths.push_back(rounded(line.widthsPx[i]));
    measured.push_back(line.measured[i] != 0);
  }
  json.update({{"polarity", nameOf(line.polarity)},
               {"confidence", rounded(line.confidence)},
               {"contrast", rounded(line.contrast)},
               {"widthPx", rounded(line.widthPx)},
               {"directionDeg", rounded(line.directionDeg)},
               {"points", points},
               {"widthsPx", widths},
               {"measured", measured}});
  return json;
}

// One line for each point; an image without a seam has one without a point.
void printCsv(const TSeamLine& seam) {
  const TContourCenterLine& line = seam.line;
  if (line.pts.empty()) printLine(csvText(seam.file) + ",,,,,,,");
  for (std::size_t i = 0; i < line.pts.size(); ++i) {
    printLine(csvText(seam.file) + "," + nameOf(line.polarity) + "," + fixed(line.confidence, 3) + "," +
              fixed(line.contrast, 3) + "," + fixed(line.pts[i].x, 3) + "," + fixed(line.pts[i].y, 3) + "," +
              fixed(line.widthsPx[i], 3) + "," + std::to_string(line.measured[i]));
  }
}

std::string tableLine(const TSeamLine& seam) {
  const TContourCenterLine& line = seam.line;
  const std::string file = onOneLine(seam.file);
  if (line.pts.empty()) return file + ": no seam";
  const cv::Point2f from = line.pts.front();
  const cv::Point2f to = line.pts.back();
  return file + ": " + nameOf(line.polarity) + " seam from " + fixed(from.x, 1) + "," + fixed(from.y, 1) + " to " +
         fixed(to.x, 1) + "," + fixed(to.y, 1) + ", width " + fixed(line.widthPx, 1) + " px, confidence " +
         fixed(line.confidence, 2);
}

void print(const TSeamLine& seam, TFormat format) {
  switch (format) {
    case TFormat::table:
      return printLine(tableLine(seam));
    case TFormat::jsonl:
      return printLine(jsonOf(seam).dump(-1, ' ', false, ordered_json::error_handler_t::replace));
    case TFormat::csv:
      return printCsv(seam);
  }
}

cv::Mat drawLine(const cv::Mat& image, const TContourCenterLine& line) {
  cv::Mat drawn;
  if (image.channels() == 1) {
    cv::cvtColor(image, drawn, cv::COLOR_GRAY2BGR);
  } else {
    drawn = image.clone();
  }
  const int width = std::max(1, image.cols / 640);
  for (std::size_t i = 0; i + 1 < line.pts.size(); ++i) {
    const bool isMeasured = line.measured[i] != 0 && line.measured[i + 1] != 0;
    cv::line(drawn, line.pts[i], line.pts[i + 1], isMeasured ? kMeasuredColour : kBridgedColour, width,
             cv::LINE_AA);
  }
  return drawn;
}

void run(const TOptions& options) {
  using TClock = std::chrono::steady_clock;
  const TContrastSearch search = searchOf(options);
  const TPreparation preparation = preparationOf(options.frames);
  const TFormat format = parseFormat(options.format);
  if (!options.outFolder.empty()) makeFolder(options.outFolder);
  if (format == TFormat::csv) printLine("file,polarity,confidence,contrast,x,y,widthPx,measured");
  TFrameSource source = framesOf(options.frames);
  TContrastFinder finder;
  while (const auto frame = source.nextReadable()) {
    const cv::Mat image = prepareImage(frame->image, preparation, frame->name);
    const auto start = TClock::now();
    TSeamLine seam{frame->name, finder.find(image, search), 0.0};
    seam.ms = std::chrono::duration<double, std::milli>(TClock::now() - start).count();
    if (!options.outFolder.empty()) {
      char name[32];
      static_cast<void>(std::snprintf(name, sizeof name, "seam_%04d.png", frame->index));
      writeImage(fs::path(options.outFolder) / name, drawLine(image, seam.line));
    }
    print(seam, format);
  }
  source.reading().check();
}

}  // namespace

void addSeamCommand(CLI::App& program) {
  CLI::App* const command = program.add_subcommand("seam", "Find the seam by its contrast, without a stripe");
  const auto options = std::make_shared<TOptions>();
  addFrameOptions(*command, options->frames);
  addContrastOptions(*command, options->contrast);
  TContrastSearch& search = options->search;
  command->add_option("--at", options->at, "Rough place of the seam, x,y px of the image as searched");
  command->add_option("--band", search.bandPx, "Search so far on either side of a line through --at, px")
      ->check(CLI::PositiveNumber);
  command->add_option("--reach", search.reachPx, "Search so far along that line, px")->check(CLI::PositiveNumber);
  command->add_option("--format", options->format, "Print: jsonl, csv, table")->capture_default_str();
  command->add_option("--out", options->outFolder, "Folder for images with the seam drawn in");
  command->footer(
      "Points, widths and places are those of the image as searched.\n"
      "Examples:\n"
      "  zelweld simulate --plate tight --frames 3 --out plates\n"
      "  zelweld seam plates --polarity dark --format table --out seams\n"
      "  zelweld seam plates/frame_0000.png --at 420,475 --band 60 --direction -48 --tolerance 15");
  command->callback([options] { run(*options); });
}

}  // namespace tool
