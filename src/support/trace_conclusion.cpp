#include "support/trace_conclusion.h"

#include <algorithm>
#include <cstring>

namespace weld {

namespace {

constexpr std::int32_t kNone = -1;

// A test that failed, and how many of its way passed before it.
struct TFailure {
  std::int32_t check = kNone;
  std::int64_t passedBefore = 0;
};

bool isSameWay(const TTraceCheck& a, const TTraceCheck& b) {
  return std::strcmp(a.way, b.way) == 0;
}

std::int64_t countPassedBefore(const TTraceAttempt& attempt, std::int32_t failed) {
  const TTraceCheck& check = attempt.checks[failed];
  return std::count_if(attempt.checks.begin(), attempt.checks.begin() + failed, [&](const TTraceCheck& c) {
    return c.passed && (c.way[0] == '\0' || isSameWay(c, check));
  });
}

// True when the attempt ends with `next` rather than with `best`, both failed, in this order.
bool decidesOver(const TTraceAttempt& attempt, const TFailure& next, const TFailure& best) {
  const TTraceCheck& a = attempt.checks[next.check];
  const TTraceCheck& b = attempt.checks[best.check];
  if (a.piece != kNone && b.piece != kNone) return attempt.pieces[a.piece].points > attempt.pieces[b.piece].points;
  if (a.piece != kNone || b.piece != kNone) return b.piece != kNone;
  return b.way[0] != '\0' && !isSameWay(a, b) && next.passedBefore >= best.passedBefore;
}

TFailure decisiveFailure(const TTraceAttempt& attempt) {
  TFailure best;
  for (std::int32_t i = 0; i < static_cast<std::int32_t>(attempt.checks.size()); ++i) {
    if (attempt.checks[i].passed) continue;
    const TFailure next{i, countPassedBefore(attempt, i)};
    if (best.check == kNone || decidesOver(attempt, next, best)) best = next;
  }
  return best;
}

std::string at(cv::Point2f p) {
  return cv::format("x %.1f, y %.1f", static_cast<double>(p.x), static_cast<double>(p.y));
}

std::string describeFound(const TWeldLineRes& result, TWeldType type) {
  if (type != TWeldType::stripePresence) return "seam at " + at(result.weldPos);
  return cv::format("stripe with %d points", static_cast<int>(result.stripePts.size()));
}

void concludeFailed(TTraceAttempt& attempt) {
  attempt.decisive = decisiveFailure(attempt).check;
  if (attempt.decisive == kNone) return;
  const TTraceCheck& check = attempt.checks[attempt.decisive];
  attempt.outcome = check.failure;
  attempt.sentence = describeFailure(check);
  if (check.failure == TWeldOutcome::cornerOutside) attempt.sentence += ", at " + at(attempt.testedPoints.back());
}

// The last successful attempt, else the one that passed most tests, the first one of equals.
std::int32_t decisiveAttempt(const std::vector<TTraceAttempt>& attempts) {
  std::int32_t best = kNone;
  std::int64_t bestPassed = -1;
  const auto succeeded = [](const TTraceAttempt& a) { return a.outcome == TWeldOutcome::found; };
  const auto last = std::find_if(attempts.rbegin(), attempts.rend(), succeeded);
  if (last != attempts.rend()) return static_cast<std::int32_t>(attempts.rend() - last) - 1;
  for (std::int32_t i = 0; i < static_cast<std::int32_t>(attempts.size()); ++i) {
    const TTraceAttempt& attempt = attempts[i];
    const std::int64_t passed = attempt.decisive == kNone ? 0 : countPassedBefore(attempt, attempt.decisive);
    if (passed <= bestPassed) continue;
    best = i;
    bestPassed = passed;
  }
  return best;
}

void concludeWith(TFrameTrace& trace, TWeldOutcome outcome, const std::string& sentence) {
  trace.outcome = outcome;
  trace.sentence = sentence;
}

}  // namespace

void concludeAttempts(TFrameTrace& trace, const TWeldLineRes& result, TWeldType type) {
  for (TTraceAttempt& attempt : trace.attempts) {
    if (!attempt.sentence.empty()) continue;  // of an earlier run
    if (result.isFound && &attempt == &trace.attempts.back()) {
      attempt.sentence = describeFound(result, type);
    } else {
      concludeFailed(attempt);
    }
  }
}

void concludeRefusedAttempt(TFrameTrace& trace) {
  concludeFailed(trace.attempts.back());
}

void concludeFrame(TFrameTrace& trace, bool hasImage, std::optional<cv::Point2f> heldSeam) {
  trace.decisive = decisiveAttempt(trace.attempts);
  const auto refused =
      std::find_if(trace.gate.begin(), trace.gate.end(), [](const TTraceCheck& c) { return !c.passed; });
  if (refused != trace.gate.end()) {
    concludeWith(trace, refused->failure, describeFailure(*refused));
  } else if (trace.decisive != kNone) {
    const TTraceAttempt& attempt = trace.attempts[trace.decisive];
    concludeWith(trace, attempt.outcome, attempt.sentence);
  } else {
    const TWeldOutcome outcome = hasImage ? TWeldOutcome::noDetector : TWeldOutcome::noImage;
    concludeWith(trace, outcome, weldOutcomeText(outcome));
  }
  if (heldSeam)
    concludeWith(trace, TWeldOutcome::held, "repeats the seam at " + at(*heldSeam) + ": " + trace.sentence);
}

}  // namespace weld
