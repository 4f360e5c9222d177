// What the stages of a frame report to. Nobody asked for a trace: every call is a test of one pointer.
#pragma once

#include "zelWeldTrace.h"

#include <opencv2/core.hpp>

#include <chrono>
#include <cstdint>
#include <vector>

namespace weld {

// How a measured value must compare with its limit. What is not a number fails, but passes notBelow and notAbove.
enum class TRule : std::int32_t { atLeast, notBelow, above, atMost, notAbove, below };

// What it means to fail a test.
struct TFailure {
  int stage;  // how far the frame came; grows along a detector
  TWeldOutcome outcome;
  const char* element;  // of the joint or the stripe
  const char* reason;   // a heading over all frames that fail so
};

// A plausibility test as it stands beside its rule.
struct TCheck {
  TFailure failure;
  const char* name;  // what is measured; a plural for counts
  TRule rule = TRule::atLeast;
  const char* unit = "";       // "px", "deg"; empty for ratios and counts
  const char* parameter = "";  // the setting of the joint or the field of TTrackerOptions; empty: a fixed limit
  bool isCount = false;
};

// A test of a number of things.
constexpr TCheck countCheck(TFailure failure, const char* name, TRule rule, const char* parameter = "") {
  return {failure, name, rule, "", parameter, true};
}

template <typename T>
bool isWithin(TRule rule, T measured, T limit) {
  switch (rule) {
    case TRule::atLeast:
      return measured >= limit;
    case TRule::notBelow:
      return !(measured < limit);
    case TRule::above:
      return measured > limit;
    case TRule::atMost:
      return measured <= limit;
    case TRule::notAbove:
      return !(measured > limit);
    case TRule::below:
      return measured < limit;
  }
  return false;
}

// Writes into a record of the caller's, or nowhere. Copies write into the same record.
class TTrace {
public:
  TTrace() = default;
  explicit TTrace(TFrameTrace& record) : frame(&record) {}

  // True when somebody reads along: for reports that cost more than a call.
  explicit operator bool() const { return frame != nullptr; }

  // What is written into. Only where somebody reads along.
  TFrameTrace& record() const { return *frame; }

  // One run of a detector over the frame; the calls below it belong to it.
  void beginAttempt(TSearchPath path, TStripeExtraction extraction) const;

  // The running attempt. Only where somebody reads along.
  TTraceAttempt& attempt() const { return frame->attempts.back(); }

  // The same trace for the tests of one of several ways to find the seam, of one of the attempt's pieces, or of
  // the tracker's gate.
  TTrace inWay(const char* name) const;
  TTrace ofPiece(std::size_t index) const;
  TTrace atGate() const;

  // Compares and reports.
  template <typename T>
  bool passes(const TCheck& check, T measured, T limit) const {
    const bool passed = isWithin(check.rule, measured, limit);
    if (frame != nullptr) addCheck(check, static_cast<double>(measured), static_cast<double>(limit), passed);
    return passed;
  }

  // Reports a test without a number.
  bool holds(const TCheck& check, bool passed) const;

  // Reports a test that was decided elsewhere.
  template <typename T>
  bool note(const TCheck& check, T measured, T limit, bool passed) const {
    if (frame != nullptr) addCheck(check, static_cast<double>(measured), static_cast<double>(limit), passed);
    return passed;
  }

  void addFilter(const char* name, std::size_t before, std::size_t after) const;
  void addLine(const TTraceLine& line) const;
  void addTestedPoint(cv::Point2f point) const;

  // A stage that begins now, and the time it took. Only where somebody reads along.
  std::size_t beginStage(const char* name) const;
  void endStage(std::size_t stage, double us) const { frame->stages[stage].us = us; }

private:
  void addCheck(const TCheck& check, double measured, double limit, bool passed) const;

  TFrameTrace* frame = nullptr;
  const char* way = "";
  std::int32_t piece = -1;
  bool isGate = false;
};

// Time since it was made; reads the clock only where somebody reads along.
class TTraceClock {
public:
  explicit TTraceClock(const TTrace& trace) {
    if (trace) begin = std::chrono::steady_clock::now();
  }
  double elapsedUs() const {
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - begin).count();
  }

private:
  std::chrono::steady_clock::time_point begin;
};

// Reports the time of a stage when it goes out of scope.
class TStageTimer {
public:
  TStageTimer(const TTrace& record, const char* name)
      : trace(record), stage(record ? record.beginStage(name) : 0), clock(record) {}
  ~TStageTimer() {
    if (trace) trace.endStage(stage, clock.elapsedUs());
  }
  TStageTimer(const TStageTimer&) = delete;
  TStageTimer& operator=(const TStageTimer&) = delete;

private:
  const TTrace trace;
  const std::size_t stage;  // entered at once: a destructor must not ask for memory
  const TTraceClock clock;
};

}  // namespace weld
