#include "seam_tables.h"

#include "scenes/score.h"
#include "seam_targets.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace accuracy {

namespace {

using scenes::TJoint;

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t kNamedRivals = 3;

TFigure percent(const char* name, double count, double of, TWanted wanted = {}) {
  return {name, TUnit::percent, roundedFor(TUnit::percent, of > 0.0 ? 100.0 * count / of : kNone), wanted};
}

TFigure pixels(const char* name, const std::vector<double>& errors, double share, TWanted wanted) {
  return {name, TUnit::pixels, roundedFor(TUnit::pixels, scenes::quantile(errors, share)), wanted};
}

struct TMode {
  const char* name;
  TShow show;
  bool isExact;

  bool isTracking() const { return show == TShow::sequence; }
};
constexpr TMode kModes[] = {{"first", TShow::scene, false},
                            {"tracking", TShow::sequence, false},
                            {"exact first", TShow::scene, true},
                            {"exact tracking", TShow::sequence, true}};

// What one joint gave at one level and in one mode.
struct TSeamScore {
  int frames = 0;
  int wrong = 0;
  int longestLoss = 0;  // most frames in a row without the seam, after it was found once
  std::vector<double> mainPx;
  std::vector<double> pointsPx;

  void add(const std::vector<TAnswer>& answers) {
    int loss = 0;
    bool wasFound = false;
    for (const TAnswer& answer : answers) {
      ++frames;
      wasFound = wasFound || answer.isFound;
      loss = answer.isFound || !wasFound ? 0 : loss + 1;
      longestLoss = std::max(longestLoss, loss);
      if (!answer.isFound) continue;
      mainPx.push_back(answer.errorPx);
      wrong += answer.errorPx > kWrongPx ? 1 : 0;
      for (const TPointAnswer& point : answer.points) {
        if (!point.isMain) pointsPx.push_back(point.errorPx);
      }
    }
  }
};

template <typename TUse>
void forEachAsked(const TRun& run, scenes::TLevel level, TShow show, const TUse& use) {
  for (std::size_t i = 0; i < run.reels.size(); ++i) {
    const TReel& reel = run.reels[i];
    if (reel.level != level || reel.show != show) continue;
    for (const TAsked& asked : run.answers[i].asked) use(reel, asked);
  }
}

bool isOwn(const TReel& reel, const TAsked& asked) {
  return !reel.subject.decoy && asked.question.asked == reel.subject.joint;
}

TRow seamRow(TJoint joint, const TLevelName& level, const TMode& mode, const TSeamScore& score) {
  const TSeamTarget target = mode.isExact ? TSeamTarget() : seamTarget(joint, level.level, mode.isTracking());
  TRow row{{scenes::shortNameOf(joint), level.name, mode.name}, {}, {}};
  row.figures = {percent("found %", static_cast<double>(score.mainPx.size()), score.frames, target.foundPercent),
                 pixels("median", score.mainPx, 0.5, target.medianPx),
                 pixels("95 %", score.mainPx, 0.95, target.p95Px),
                 pixels("others, median", score.pointsPx, 0.5, target.pointsMedianPx),
                 pixels("others, 95 %", score.pointsPx, 0.95, target.pointsP95Px),
                 percent("wrong %", score.wrong, score.frames, target.wrongPercent)};
  if (joint == TJoint::corner) row.figures[3].value = row.figures[4].value = kNone;
  if (mode.isTracking()) row.note = std::to_string(score.longestLoss);
  return row;
}

TTable seamTable(const TRun& run) {
  TTable table{"seam",
               "Seams: errors in px of the main point and of the other named points",
               {"joint", "level", "mode"},
               "longest loss",
               false,
               {}};
  for (const scenes::TDrawnJoint& drawn : scenes::seamJoints()) {
    for (const TLevelName& level : kLevels) {
      for (const TMode& mode : kModes) {
        TSeamScore score;
        forEachAsked(run, level.level, mode.show, [&](const TReel& reel, const TAsked& asked) {
          const bool isMeant = asked.question.asked == drawn.joint && asked.question.isExact == mode.isExact;
          if (isOwn(reel, asked) && isMeant) score.add(asked.frames);
        });
        if (score.frames > 0) table.rows.push_back(seamRow(drawn.joint, level, mode, score));
      }
    }
  }
  return table;
}

// Frames after the flash until the seam is right again; those that are left, where it is not. Nothing for a reel
// that was not right before.
std::optional<int> recoveryOf(const std::vector<TAnswer>& frames) {
  const auto isRight = [](const TAnswer& a) { return a.isFound && a.errorPx <= kWrongPx; };
  if (!isRight(frames[kFlashAtFrame - 1])) return std::nullopt;
  const auto after = frames.begin() + kFlashAtFrame + kFlashFrames;
  return static_cast<int>(std::find_if(after, frames.end(), isRight) - after);
}

TTable flashTable(const TRun& run) {
  TTable table{
      "flash", "Frames after an arc flash until the seam is right again", {"joint", "level"}, "sequences", false,
      {}};
  for (const scenes::TDrawnJoint& drawn : scenes::seamJoints()) {
    for (const TLevelName& level : kLevels) {
      std::vector<double> frames;
      forEachAsked(run, level.level, TShow::flash, [&](const TReel& reel, const TAsked& asked) {
        if (reel.subject.joint != drawn.joint) return;
        if (const std::optional<int> recovery = recoveryOf(asked.frames)) frames.push_back(*recovery);
      });
      if (frames.empty()) continue;
      const double p95 = scenes::quantile(frames, 0.95);
      table.rows.push_back({{scenes::shortNameOf(drawn.joint), level.name},
                            {{"median", TUnit::frames, scenes::quantile(frames, 0.5), {}},
                             {"95 %", TUnit::frames, p95, recoveryTarget(drawn.joint, level.level)}},
                            std::to_string(frames.size())});
    }
  }
  return table;
}

struct TShare {
  int frames = 0;
  int found = 0;

  void add(const std::vector<TAnswer>& answers) {
    frames += static_cast<int>(answers.size());
    found += static_cast<int>(
        std::count_if(answers.begin(), answers.end(), [](const TAnswer& a) { return a.isFound; }));
  }
};

// One column for each kind of frame; the grooves answer for frames without a joint, the others for all.
TRow falseRow(const TRun& run, TJoint asked, const TLevelName& level, const TMode& mode) {
  std::map<std::string, TShare> bySubject;
  TShare all;
  forEachAsked(run, level.level, mode.show, [&](const TReel& reel, const TAsked& a) {
    if (a.question.asked != asked || isOwn(reel, a)) return;
    bySubject[nameOf(reel.subject)].add(a.frames);
    if (reel.subject.decoy || !isGroove(asked)) all.add(a.frames);
  });
  TRow row{{scenes::shortNameOf(asked), level.name, mode.name}, {}, {}};
  row.figures.push_back(
      percent("all %", all.found, all.frames, falseTarget(asked, level.level, mode.isTracking())));
  for (const TSubject& subject : allSubjects()) {
    const std::string name = nameOf(subject);
    row.figures.push_back(percent(name.c_str(), bySubject[name].found, bySubject[name].frames));
  }
  return row;
}

TTable falseTable(const TRun& run) {
  TTable table{"false",
               "Seams reported, in percent of frames that do not show the joint",
               {"asked for", "level", "mode"},
               "",
               true,
               {}};
  for (const scenes::TDrawnJoint& drawn : scenes::seamJoints()) {
    for (const TLevelName& level : kLevels) {
      for (const TMode& mode : kModes) {
        if (mode.isExact) continue;
        const TRow row = falseRow(run, drawn.joint, level, mode);
        if (!std::isnan(row.figures.front().value)) table.rows.push_back(row);
      }
    }
  }
  return table;
}

// The names given instead of the right one, the most frequent first.
std::string rivalsText(const std::map<std::string, int>& rivals, int scenes) {
  std::vector<std::pair<int, std::string>> ranking;
  for (const auto& [name, count] : rivals) ranking.emplace_back(-count, name);
  std::sort(ranking.begin(), ranking.end());
  ranking.resize(std::min(ranking.size(), kNamedRivals));
  std::string text;
  for (const auto& [count, name] : ranking) {
    text += (text.empty() ? "" : ", ") + name + " " + textOf(TUnit::percent, -100.0 * count / scenes);
  }
  return text;
}

TRow recognitionRow(const TRun& run, const TSubject& subject, const TLevelName& level) {
  int scenes = 0;
  int right = 0;
  std::map<std::string, int> rivals;
  for (std::size_t i = 0; i < run.reels.size(); ++i) {
    const TReel& reel = run.reels[i];
    if (reel.show != TShow::scene || reel.level != level.level || nameOf(reel.subject) != nameOf(subject))
      continue;
    const std::vector<TWeldType>& named = run.answers[i].recognised;
    const TWeldType first = named.empty() ? TWeldType::none : named.front();
    const TWeldType wanted = subject.decoy ? TWeldType::none : scenes::weldTypeOf(subject.joint);
    ++scenes;
    right += first == wanted ? 1 : 0;
    if (first != wanted) ++rivals[first == TWeldType::none ? "none" : findWeldJoint(first)->shortName];
  }
  // A plate is what the joints have to beat: it is never named.
  const bool isNamed = subject.decoy || subject.joint != TJoint::plate;
  const TWanted wanted = subject.decoy ? silenceTarget(level.level) : recognitionTarget(level.level);
  TRow row{{nameOf(subject), level.name}, {}, rivalsText(rivals, scenes)};
  row.figures = {percent("right %", right, scenes, isNamed ? wanted : TWanted())};
  return row;
}

TTable recognitionTable(const TRun& run) {
  TTable table{"recognition",
               "Joints recognised; frames without one: nothing named",
               {"shown", "level"},
               "taken for, %",
               false,
               {}};
  for (const TSubject& subject : allSubjects()) {
    for (const TLevelName& level : kLevels) {
      const TRow row = recognitionRow(run, subject, level);
      if (!std::isnan(row.figures.front().value)) table.rows.push_back(row);
    }
  }
  return table;
}

}  // namespace

std::vector<TTable> tablesOf(const TRun& run) {
  return {seamTable(run),        flashTable(run),      falseTable(run),
          recognitionTable(run), confidenceTable(run), sigmaTable(run)};
}

}  // namespace accuracy
