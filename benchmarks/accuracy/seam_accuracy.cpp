// Prints how exactly and how surely each joint is found in rendered scenes, what is found that is not there, and
// what the answers say about themselves. Fails where a figure misses what is wanted by more than is known.
#include "seam_limits.h"
#include "seam_tables.h"

#include "tools/progress.h"

#include <CLI/CLI.hpp>

#include <cmath>
#include <cstdio>
#include <exception>
#include <thread>

namespace {

using accuracy::TFigure;
using accuracy::TLimits;
using accuracy::TRow;
using accuracy::TSample;
using accuracy::TTable;
using accuracy::TVerdict;

struct TOptions {
  TSample sample;
  int threads = 0;  // 0: as many as the machine has
  bool isShort = false;
  bool writesLimits = false;
};

constexpr int kShortScenes = 4;
constexpr int kShortSequences = 1;
constexpr int kShortFrames = 20;

std::string limitsPath(const TOptions& options) {
  return std::string(ACCURACY_FOLDER) + (options.isShort ? "/short_limits.txt" : "/known_misses.txt");
}

std::string textOf(const TSample& sample) {
  return std::to_string(sample.scenes) + " scenes, " + std::to_string(sample.sequences) + " sequences of " +
         std::to_string(sample.frames) + " frames, seed " + std::to_string(sample.seed);
}

const char* markOf(TVerdict verdict) {
  if (verdict == TVerdict::reached) return "";
  return verdict == TVerdict::knownMiss ? "*" : "!";
}

std::string wantedText(const TFigure& figure) {
  if (figure.wanted.isAny()) return "";
  const bool hasLeast = std::isfinite(figure.wanted.least);
  const bool hasMost = std::isfinite(figure.wanted.most);
  const std::string least = hasLeast ? accuracy::textOf(figure.unit, figure.wanted.least) : "";
  const std::string most = hasMost ? accuracy::textOf(figure.unit, figure.wanted.most) : "";
  return least + (hasLeast && hasMost ? ".." : "") + most;
}

void printLine(const std::vector<std::string>& cells) {
  for (const std::string& cell : cells) std::printf("| %s ", cell.c_str());
  std::printf("|\n");
}

void printHead(const TTable& table) {
  std::vector<std::string> heads = table.labelHeads;
  for (const TFigure& figure : table.rows.front().figures) heads.push_back(figure.name);
  heads.emplace_back("wanted");
  if (!table.noteHead.empty()) heads.push_back(table.noteHead);
  std::printf("\n%s\n\n", table.title.c_str());
  printLine(heads);
  printLine(std::vector<std::string>(heads.size(), "---"));
}

// Figures that fail.
int printRow(const TTable& table, const TRow& row, const TLimits& limits) {
  int failed = 0;
  std::vector<std::string> cells = row.labels;
  std::string wanted;
  for (const TFigure& figure : row.figures) {
    const TVerdict verdict = verdictOn(limits, keyOf(table, row), figure);
    failed += verdict == TVerdict::failed ? 1 : 0;
    cells.push_back(accuracy::textOf(figure.unit, figure.value) + markOf(verdict));
    const std::string text = wantedText(figure);
    if (!text.empty()) wanted += (wanted.empty() ? "" : ", ") + text;
  }
  cells.push_back(wanted);
  if (!table.noteHead.empty()) cells.push_back(row.note);
  printLine(cells);
  return failed;
}

int printTables(const std::vector<TTable>& tables, const TLimits& limits, bool hasAll) {
  int failed = 0;
  for (const TTable& table : tables) {
    if (table.rows.empty()) continue;
    printHead(table);
    int inTable = 0;
    for (const TRow& row : table.rows) inTable += printRow(table, row, limits);
    if (hasAll || !table.isPooled) failed += inTable;
  }
  return failed;
}

std::vector<TTable> measure(const TOptions& options) {
  const std::vector<accuracy::TReel> reels = accuracy::reelsOf(options.sample);
  tool::TProgress progress(static_cast<int>(reels.size()));
  const int threads =
      options.threads > 0 ? options.threads : static_cast<int>(std::thread::hardware_concurrency());
  return tablesOf(accuracy::play(reels, threads, [&](int done) { progress.draw(done); }));
}

int run(TOptions options) {
  if (options.isShort) {
    options.sample.scenes = kShortScenes;
    options.sample.sequences = kShortSequences;
    options.sample.frames = kShortFrames;
  }
  TLimits limits = accuracy::readLimits(limitsPath(options));
  const std::string sample = textOf(options.sample);
  const bool areHeld = limits.sample == sample;
  std::printf("%s a row, 1280x1024. * misses what is wanted, ! by more than %s allows.\n", sample.c_str(),
              limitsPath(options).c_str());
  const std::vector<TTable> tables = measure(options);
  const int failed = printTables(tables, limits, options.sample.isWhole());
  if (options.writesLimits) {
    limits.sample = sample;
    writeLimits(limitsPath(options), limits, tables, options.isShort);
    return 0;
  }
  if (!areHeld) {
    std::printf("\nNothing is held to: the limits are those of %s.\n", limits.sample.c_str());
    return options.isShort ? 1 : 0;
  }
  std::printf("\n%d figures are worse than wanted or known.\n", failed);
  return failed > 0 ? 1 : 0;
}

void declare(CLI::App& program, TOptions& options) {
  TSample& sample = options.sample;
  program.add_option("--scenes", sample.scenes, "Scenes of each joint and level, seen once")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  program.add_option("--sequences", sample.sequences, "Sequences of each joint and level")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  program.add_option("--frames", sample.frames, "Frames of a sequence")
      ->check(CLI::PositiveNumber)
      ->capture_default_str();
  program.add_option("--seed", sample.seed, "Seed of the first scene")->capture_default_str();
  std::vector<std::string> subjects;
  for (const accuracy::TSubject& subject : accuracy::allSubjects()) subjects.push_back(nameOf(subject));
  std::vector<std::string> levels;
  for (const accuracy::TLevelName& level : accuracy::kLevels) levels.emplace_back(level.name);
  program.add_option("--joint", sample.subjects, "Show these only")->check(CLI::IsMember(subjects));
  program.add_option("--level", sample.levels, "At these levels only")->check(CLI::IsMember(levels));
  program.add_option("--threads", options.threads, "Threads; the figures do not depend on it");
  program.add_flag("--short", options.isShort, "The short sample of the tests, held to limits of its own");
  program.add_flag("--write-limits", options.writesLimits, "Write the limits anew, a little worse than measured");
  program.footer(
      "Examples:\n"
      "  seam_accuracy                                     # all of it; fails where it got worse\n"
      "  seam_accuracy --scenes 60 --sequences 4           # the same tables, sooner\n"
      "  seam_accuracy --joint v --joint u --level harsh   # two joints at one level\n"
      "  seam_accuracy --short                             # what make test runs");
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App program("How exactly and how surely each joint is found in rendered scenes.", "seam_accuracy");
  TOptions options;
  try {
    declare(program, options);
    CLI11_PARSE(program, argc, argv);
    return run(options);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "seam_accuracy: %s\n", error.what());
    return 2;
  }
}
