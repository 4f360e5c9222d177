// zelweld identify: which joint each frame may show.
#include "tools/commands.h"
#include "tools/frame_source.h"
#include "tools/names.h"
#include "tools/output.h"
#include "tools/progress.h"
#include "tools/record_writer.h"
#include "tools/shared_options.h"
#include "tools/stats.h"
#include "tools/text.h"
#include "zelWeldDetect.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <iomanip>
#include <iostream>
#include <memory>
#include <sstream>

namespace tool {
namespace {

using nlohmann::ordered_json;

constexpr int kFileWidth = 32;  // characters of a table's columns
constexpr int kJointWidth = 13;
const char* const kNoJoint = "no joint";

// As typed.
struct TOptions {
  TFrameOptions frames;
  std::string format = "table";
};

struct TRanking {
  int frame = 0;
  std::string file;
  std::vector<TJointCandidate> candidates;  // the best first
  double ms = 0.0;

  // By how much a candidate leads the next; of the last one nothing.
  std::optional<double> margin(std::size_t rank) const {
    if (rank + 1 >= candidates.size()) return std::nullopt;
    return candidates[rank].score - candidates[rank + 1].score;
  }
};

TRanking rank(const TFrame& frame, const TPreparation& preparation) {
  using TClock = std::chrono::steady_clock;
  const cv::Mat image = prepareImage(frame.image, preparation, frame.name);
  const auto start = TClock::now();
  TRanking ranking{frame.index, frame.name, recogniseJoint(image), 0.0};
  ranking.ms = std::chrono::duration<double, std::milli>(TClock::now() - start).count();
  return ranking;
}

std::string firstOf(const TRanking& ranking) {
  return ranking.candidates.empty() ? kNoJoint : nameOf(ranking.candidates.front().weldType);
}

std::string tableRow(const std::vector<std::string>& cells) {
  std::ostringstream line;
  line << std::setw(6) << cells[0] << "  " << std::left << std::setw(kFileWidth) << cells[1] << "  "
       << std::setw(kJointWidth) << cells[2] << std::right << std::setw(9) << cells[3] << std::setw(9) << cells[4]
       << "  " << cells[5];
  return line.str();
}

// The winner and its lead, then the rivals: "uGroove 60.1, corner 12.9".
std::string tableLine(const TRanking& ranking) {
  std::vector<std::string> rivals;
  for (std::size_t i = 1; i < ranking.candidates.size(); ++i) {
    const TJointCandidate& rival = ranking.candidates[i];
    rivals.push_back(nameOf(rival.weldType) + " " + fixed(rival.score, 1));
  }
  const auto lead = ranking.margin(0);
  return tableRow({std::to_string(ranking.frame), shortened(ranking.file, kFileWidth), firstOf(ranking),
                   ranking.candidates.empty() ? "-" : fixed(ranking.candidates.front().score, 1),
                   lead ? fixed(*lead, 1) : "-", rivals.empty() ? "-" : join(rivals, ", ")});
}

std::string jsonLine(const TRanking& ranking) {
  ordered_json places = ordered_json::array();
  for (std::size_t i = 0; i < ranking.candidates.size(); ++i) {
    const auto margin = ranking.margin(i);
    places.push_back({{"joint", nameOf(ranking.candidates[i].weldType)},
                      {"score", rounded(ranking.candidates[i].score)},
                      {"margin", margin ? ordered_json(rounded(*margin)) : ordered_json(nullptr)}});
  }
  const ordered_json line = {
      {"frame", ranking.frame}, {"file", ranking.file}, {"ranking", places}, {"ms", rounded(ranking.ms)}};
  return line.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

// One line for each candidate; rank 0 and no joint where there is none.
std::string csvLines(const TRanking& ranking) {
  const std::string frame = std::to_string(ranking.frame) + "," + csvText(ranking.file) + ",";
  const std::string end = "," + fixed(ranking.ms, 3);
  if (ranking.candidates.empty()) {
    return frame + "0,,," + end;
  }
  std::vector<std::string> lines;
  for (std::size_t i = 0; i < ranking.candidates.size(); ++i) {
    const auto margin = ranking.margin(i);
    lines.push_back(frame + std::to_string(i + 1) + "," + nameOf(ranking.candidates[i].weldType) + "," +
                    fixed(ranking.candidates[i].score, 3) + "," + (margin ? fixed(*margin, 3) : "") + end);
  }
  return join(lines, "\n");
}

void printHeading(TFormat format) {
  if (format == TFormat::table) {
    printLine(tableRow({"frame", "file", "joint", "score", "margin", "rivals"}));
  } else if (format == TFormat::csv) {
    printLine("frame,file,rank,joint,score,margin,ms");
  }
}

void print(const TRanking& ranking, TFormat format) {
  switch (format) {
    case TFormat::table:
      return printLine(tableLine(ranking));
    case TFormat::jsonl:
      return printLine(jsonLine(ranking));
    case TFormat::csv:
      return printLine(csvLines(ranking));
  }
}

// Which joint came first in how many frames.
class TTally {
public:
  void add(const TRanking& ranking) {
    const std::string joint = firstOf(ranking);
    auto row = std::find_if(rows.begin(), rows.end(), [&](const TRow& r) { return r.joint == joint; });
    if (row == rows.end()) row = rows.insert(row, {joint, 0});
    ++row->frames;
    timesMs.push_back(ranking.ms);
  }

  int frames() const { return static_cast<int>(timesMs.size()); }

  // One line: the most frequent joint first, no joint last.
  std::string summary() const {
    std::vector<TRow> sorted = rows;
    std::stable_sort(sorted.begin(), sorted.end(), [](const TRow& a, const TRow& b) {
      const bool isNone = a.joint == kNoJoint;
      return isNone == (b.joint == kNoJoint) ? a.frames > b.frames : !isNone;
    });
    std::string line = "frames " + std::to_string(frames());
    for (const TRow& row : sorted) {
      line += ", " + row.joint + " " + std::to_string(row.frames) + " (" +
              fixed(100.0 * row.frames / static_cast<double>(frames()), 1) + " %)";
    }
    return line + ", ms per frame: median " + fixed(percentile(timesMs, 0.5), 2) + ", 95th percentile " +
           fixed(percentile(timesMs, 0.95), 2);
  }

private:
  struct TRow {
    std::string joint;
    int frames = 0;
  };
  std::vector<TRow> rows;
  std::vector<double> timesMs;
};

void run(const TOptions& options) {
  const TPreparation preparation = preparationOf(options.frames);
  const TFormat format = parseFormat(options.format);
  TFrameSource source = framesOf(options.frames);
  TProgress progress(source.frameCount());
  TTally tally;
  printHeading(format);
  while (const auto frame = source.nextReadable()) {
    const TRanking ranking = rank(*frame, preparation);
    progress.clear();
    print(ranking, format);
    tally.add(ranking);
    progress.draw(tally.frames());
  }
  progress.clear();
  std::cerr << tally.summary() << std::endl;
  source.reading().check();
}

}  // namespace

void addIdentifyCommand(CLI::App& program) {
  CLI::App* const command = program.add_subcommand("identify", "Rank the joints that each frame may show");
  const auto options = std::make_shared<TOptions>();
  addFrameOptions(*command, options->frames);
  command->add_option("--format", options->format, "Rankings as: table, jsonl, csv")->capture_default_str();
  command->footer(
      "score   by how much the joint explains the stripe better than a plate or a curve does\n"
      "margin  its lead over the next joint\n"
      "Each frame is judged by itself, without parameters. Plates and stripes without a joint have no ranking.\n"
      "Exit codes: 0 done, 1 output failed, 2 wrong usage, 3 input that cannot be read, 130 Ctrl-C.\n"
      "Examples:\n"
      "  zelweld identify frames/\n"
      "  zelweld identify frame_%03d.png --format jsonl > rankings.jsonl\n"
      "  zelweld identify clip.avi --rotate 90 --channel red");
  command->callback([options] { run(*options); });
}

}  // namespace tool
