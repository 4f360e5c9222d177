#include "api/advice.h"

#include "api/seam_gate.h"
#include "profile/profile_engine.h"
#include "stripe/edge_pairs/edge_pairs.h"
#include "support/arena.h"
#include "trace/trace_conclusion.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace weld {

namespace {

constexpr int kMostNeeds = 6;            // settings that may refuse a stripe in turn
constexpr double kScrapShare = 0.25;     // of the columns: less stripe than that may run upright
constexpr double kUprightShare = 0.06;   // of the rows that such a stripe fills
constexpr std::size_t kUprightMore = 4;  // and times the columns
constexpr double kClearLead = 12.0;      // of another joint's score over that of the one looked for

// The nearest round limit that lets the measured value pass.
double enoughFor(const TTraceCheck& check) {
  const double perUnit = check.isCount                     ? 1.0
                         : check.unit[0] == '\0'           ? 100.0
                         : std::abs(check.measured) < 10.0 ? 10.0
                                                           : 1.0;
  const double scaled = check.measured * perUnit;
  double steps = isLowerLimit(check.kind) ? std::floor(scaled) : std::ceil(scaled);
  const bool isExclusive = check.kind == TLimitKind::above || check.kind == TLimitKind::below;
  if (isExclusive && steps == scaled) steps += isLowerLimit(check.kind) ? -1.0 : 1.0;
  return steps / perUnit;
}

// What to do where no setting lets the frame pass.
const char* remedyFor(TWeldOutcome outcome) {
  switch (outcome) {
    case TWeldOutcome::noStripe:
      return "set the exposure, or try --extraction ridge";
    case TWeldOutcome::elementMissing:
      return "try another joint, or --extraction ridge or edgePairs";
    case TWeldOutcome::elementTooShort:
      return "show more of the workpiece, or try another joint";
    case TWeldOutcome::fitTooWeak:
      return "try --extraction ridge or edgePairs, or another joint";
    case TWeldOutcome::angleOutOfRange:
      return "turn the camera, or try another joint";
    case TWeldOutcome::sizeOutOfRange:
      return "cut the image to the joint with --roi, or try another joint";
    case TWeldOutcome::gapOutOfRange:
      return "the stripe is unbroken: try another joint, or set the exposure";
    case TWeldOutcome::seamOutside:
      return "show the whole joint in the image";
    case TWeldOutcome::changedTooMuch:
      return "search every frame anew with --first-only";
    default:
      return "look at the frame in a report";
  }
}

// "minGapPx (dPara8) 6 or less".
std::string needText(const TTraceNeed& need, const TWeldJoint& joint) {
  const TWeldParameter* const setting = findWeldParameter(joint, need.parameter);
  const std::string field = setting == nullptr ? "" : std::string(" (") + setting->field + ")";
  return need.parameter + field + cv::format(" %.9g or ", need.enough) +
         (isLowerLimit(need.kind) ? "less" : "more");
}

std::string needsText(const std::vector<TTraceNeed>& needs, const TWeldJoint& joint) {
  std::string text = "needs ";
  for (std::size_t i = 0; i < needs.size(); ++i)
    text += (i == 0 ? "" : i + 1 == needs.size() ? " and " : ", ") + needText(needs[i], joint);
  return text;
}

void addNeed(std::vector<TTraceNeed>& needs, const TTraceNeed& need) {
  const auto same = std::find_if(needs.begin(), needs.end(), [&](const TTraceNeed& n) {
    return n.parameter == need.parameter && isLowerLimit(n.kind) == isLowerLimit(need.kind);
  });
  if (same != needs.end())
    *same = need;
  else
    needs.push_back(need);
}

// One more look at the stripe of a failed attempt; its trace is read, not shown.
class TSecondLook {
public:
  TSecondLook(const TQuest& asked, const TStripe& seen, const TFindSeam& rules, const TPrevious& before)
      : quest(asked), stripe(seen), find(rules), previous(before) {}

  // True where these settings give a seam. `ending` is how the attempt failed otherwise.
  bool finds(const TWeldParams& params, TTraceAttempt& ending) const {
    TFrameTrace record;
    const TFrame frame{quest.frame.image, params, quest.frame.memory, TTrace(record)};
    frame.trace.beginAttempt(TSearchPath::first, TStripeExtraction::edgePairs);
    const TSeam seam = find(frame, stripe, previous);
    const bool isFound =
        seam.isFound && (!quest.refusesImpossible || isSeamPointPossible(frame, seam, quest.joint.rules));
    if (!isFound) concludeFailedAttempt(record, quest.joint.info);
    ending = std::move(record.attempts.back());
    return isFound;
  }

private:
  const TQuest& quest;
  const TStripe& stripe;
  const TFindSeam& find;
  const TPrevious& previous;
};

// The setting behind the decisive test, with the value that would be enough, or else the loosest that it takes.
std::optional<TTraceNeed> needOf(const TTraceAttempt& failed, const TWeldJoint& joint) {
  if (failed.decisive < 0) return std::nullopt;
  const TTraceCheck& check = failed.checks[failed.decisive];
  const TWeldParameter* const setting = findWeldParameter(joint, check.parameter);
  if (setting == nullptr || !std::isfinite(check.measured) || !std::isfinite(check.limit)) return std::nullopt;
  const TParameterLimits& limits = setting->limits;
  const double enough = std::clamp(enoughFor(check), limits.min, limits.max);
  const bool isLooser = isLowerLimit(check.kind) ? enough < check.limit : enough > check.limit;
  if (!isLooser || (limits.isMinExcluded && enough == limits.min)) return std::nullopt;
  return TTraceNeed{setting->name, check.kind, enough};
}

// The last need was of no use: its setting goes no lower, or no higher.
bool isRefusedBy(const TTraceAttempt& failed, const std::vector<TTraceNeed>& needs) {
  return !needs.empty() && failed.decisive >= 0 &&
         needs.back().parameter == failed.checks[failed.decisive].parameter;
}

// What stays to be done once the needs are met.
std::string restText(const TTraceAttempt& failed, bool isFirst) {
  const std::string remedy = remedyFor(failed.outcome);
  return isFirst ? remedy : "; even so " + failed.sentence + "; " + remedy;
}

const TCornerPreset* findPreset(const TQuest& quest, const TSecondLook& look) {
  TTraceAttempt ending;
  for (const TCornerPreset& preset : cornerPresets()) {
    if (look.finds(preset.applyTo(quest.frame.params), ending)) return &preset;
  }
  return nullptr;
}

std::size_t edgePairsOf(const cv::Mat& image) {
  const TWeldParams none;
  const TFrame frame = heapFrame(image, none);
  return extractEdgePairs(frame, lookEverywhere(frame).regions).points.size();
}

// Hardly any stripe in the image, and clearly more once it is turned by a quarter.
bool runsUpright(const cv::Mat& image, std::size_t columns) {
  if (static_cast<double>(columns) >= kScrapShare * image.cols) return false;
  cv::Mat turned;
  cv::transpose(image, turned);
  const std::size_t upright = edgePairsOf(turned);
  return static_cast<double>(upright) >= kUprightShare * image.rows &&
         upright >= kUprightMore * edgePairsOf(image);
}

// The joint that explains the stripe clearly better than the one that was looked for; `none` where there is none.
TWeldType betterJoint(const TTraceAttempt& attempt, TWeldType wanted) {
  TArena memory;
  const TStripeProfile profile(attempt.centres, {}, attempt.modalWidthPx, &memory);
  const TList<TRankedJoint> ranked = rankProfiles(profile, {}, &memory);
  if (ranked.empty() || ranked.front().weldType == wanted) return TWeldType::none;
  const auto own = std::find_if(ranked.begin(), ranked.end(), [&](const auto& r) { return r.weldType == wanted; });
  const double ownScore = own == ranked.end() ? 0.0 : own->fit.score;
  return ranked.front().fit.score - ownScore >= kClearLead ? ranked.front().weldType : TWeldType::none;
}

std::string gateAdvice(const TFrameTrace& trace, const TWeldJoint& joint) {
  const auto refused =
      std::find_if(trace.gate.begin(), trace.gate.end(), [](const TTraceCheck& c) { return !c.passed; });
  if (refused == trace.gate.end()) return "";
  if (refused->parameter[0] == '\0') return remedyFor(refused->failure);
  return "needs " + needText({refused->parameter, refused->kind, enoughFor(*refused)}, joint) +
         ", or as many frames at the new place as acceptAfterFrames";
}

}  // namespace

void adviseAttempt(const TQuest& quest, const TStripe& stripe, const TFindSeam& find, const TPrevious& previous) {
  TTraceAttempt& attempt = quest.frame.trace.attempt();
  const TWeldJoint& joint = quest.joint.info;
  const TSecondLook look(quest, stripe, find, previous);
  TWeldParams params = quest.frame.params;
  std::optional<TTraceNeed> need = needOf(attempt, joint);
  TTraceAttempt ending;
  for (int i = 0; need && !attempt.needsSuffice && i < kMostNeeds; ++i) {
    addNeed(attempt.needs, *need);
    findWeldParameter(joint, need->parameter)->value.set(params, need->enough);
    attempt.needsSuffice = look.finds(params, ending);
    need = needOf(ending, joint);
  }
  if (!attempt.needsSuffice && isRefusedBy(ending, attempt.needs)) attempt.needs.pop_back();
  const bool isFirst = attempt.needs.empty();
  attempt.advice = isFirst ? "" : needsText(attempt.needs, joint);
  if (!attempt.needsSuffice) attempt.advice += restText(isFirst ? attempt : ending, isFirst);
  const TCornerPreset* const preset = joint.type == TWeldType::corner ? findPreset(quest, look) : nullptr;
  if (preset != nullptr)
    attempt.advice = cv::format("the flanks run like those of a %s, %s: --preset %s", preset->name,
                                preset->meaning, preset->name);
}

void adviseFrame(const cv::Mat& image, const TJoint& joint, TFrameTrace& trace) {
  trace.advice = gateAdvice(trace, joint.info);
  if (!trace.advice.empty() || trace.decisive < 0) return;
  const TTraceAttempt& attempt = trace.attempts[trace.decisive];
  if (runsUpright(image, attempt.centres.size())) {
    trace.advice = "the stripe runs upright: --rotate 90";
    return;
  }
  trace.advice = attempt.advice;
  const TWeldType better = joint.rules.hasSeamPoint ? betterJoint(attempt, joint.info.type) : TWeldType::none;
  const TJoint* const row = findJoint(better);
  if (row != nullptr)
    trace.advice = std::string(row->rules.looksLike) + ": --type " + row->info.name +
                   (trace.advice.empty() ? "" : "; else " + trace.advice);
}

}  // namespace weld
