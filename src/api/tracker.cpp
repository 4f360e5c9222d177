#include "zelWeldTracker.h"

#include "api/advice.h"
#include "api/contrast_seam.h"
#include "api/measure.h"
#include "api/own_joint.h"
#include "api/seam_gate.h"
#include "api/seam_search.h"
#include "api/tracker_memory.h"
#include "contrast/find_line.h"
#include "support/arena.h"
#include "support/grey_image.h"
#include "support/image_test.h"
#include "trace/trace_conclusion.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace {

constexpr std::size_t kBytesPerRow = 64;  // of the lists of a frame
constexpr double kRemembered = 0.95;      // of the best stripe's columns, from frame to frame

// A limit of jumps that is not a number, which std::max keeps, sets none.
TTrackerOptions inRange(TTrackerOptions options) {
  constexpr double kLeastJumpPx = std::numeric_limits<double>::min();
  options.guideMarginPx = std::max(options.guideMarginPx, 0);
  options.extraction = std::clamp(options.extraction, TStripeExtraction::edgePairs, TStripeExtraction::automatic);
  options.maxJumpPx = std::max(options.maxJumpPx, kLeastJumpPx);
  options.acceptAfterFrames = std::max(options.acceptAfterFrames, 1);
  options.holdFrames = std::max(options.holdFrames, 0);
  options.source = std::clamp(options.source, TSeamSource::stripe, TSeamSource::both);
  return options;
}

// What whole frames of this size need, in grey or in colour, so that no later frame waits for memory.
std::size_t bytesFor(const cv::Mat& image, const TTrackerOptions& options, const weld::TJoint* joint) {
  const std::size_t bytesPerColumn = joint != nullptr ? joint->rules.bytesPerColumn : 0;
  // A grey copy, and what a search near the last seam leaves before the one of the whole image.
  const std::size_t lists = static_cast<std::size_t>(image.cols) * bytesPerColumn +
                            static_cast<std::size_t>(image.rows) * kBytesPerRow + 3 * image.total();
  const bool asksRidges = options.extraction != TStripeExtraction::edgePairs;
  const std::size_t stripe = asksRidges ? lists + weld::ridgeBytes(image.size()) : lists;
  return options.source == TSeamSource::stripe ? stripe : stripe + weld::contrastBytes(image.size());
}

}  // namespace

struct TWeldTracker::TState {
  TTrackerOptions options;
  TWeldParams params;
  std::unique_ptr<weld::TOwnJoint> own;  // instead of the joint of the parameters

  // What a frame leaves to the next one.
  TWeldLineRes last;  // the last good seam as long as it is held, else the last result
  std::optional<weld::TProfileFit> lastProfile;
  bool wasFlush = false;
  weld::TBreakPlaces places;
  weld::TKnownShapes shapes;
  int bestColumns = 0;      // of the results of the recent frames
  int edgePairColumns = 0;  // of the last result
  weld::TJumpMemory jumps;
  int heldFrames = 0;  // that repeated the last good seam
  int announcedFrames = 0;
  TFrameTrace trace;

  // Working memory.
  weld::TArena memory;
  TWeldLineRes spare;

  // By contrast alone there is none.
  const weld::TJoint* joint() const {
    if (options.source == TSeamSource::contrast) return nullptr;
    return own ? own->detected() : weld::findJoint(params.weldType);
  }
  weld::TTemplateView forms() const { return own ? own->profiles.view() : weld::profilesOf(params.weldType); }
  weld::TMemory* beginFrame(const cv::Mat& image, const weld::TJoint* joint);
  weld::TFound search(const weld::TFrame& frame, const weld::TJoint* joint) const;
  weld::TFound searchByContrast(const weld::TFrame& frame) const;
  bool isAtNewPlace(const weld::TSeam& seam) const;
  TTrackedSeam judge(const weld::TFound& found, const weld::TJoint* joint, bool isLetThrough);
  void remember(const TTrackedSeam& seam, std::size_t columns);
};

// Ends the life of the lists of the frame before.
weld::TMemory* TWeldTracker::TState::beginFrame(const cv::Mat& image, const weld::TJoint* joint) {
  memory.restart();
  if (image.dims == 2) memory.reserve(bytesFor(image, options, joint));
  return &memory;
}

// A held seam guides the search like a new one, unless a lost frame's search is left to the next frame.
weld::TFound TWeldTracker::TState::search(const weld::TFrame& frame, const weld::TJoint* joint) const {
  const bool isByContrast = options.source == TSeamSource::contrast;
  if ((joint == nullptr && !isByContrast) || !weld::hasPixels(frame.image)) return weld::TFound(frame.memory);
  weld::requireReadable(frame.image);
  if (isByContrast) return searchByContrast(frame);
  weld::TRidgeSearch ridges(frame.memory);
  const weld::TQuest quest{frame,
                           *joint,
                           ridges,
                           options.extraction == TStripeExtraction::edgePairs,
                           options.rejectImpossiblePoints && joint->rules.hasSeamPoint,
                           options.extraction == TStripeExtraction::automatic,
                           options.keepTrace && options.giveAdvice};
  const bool guides = heldFrames == 0 || options.searchWholeOnLoss;
  weld::TPrevious previous = guides ? weld::TPrevious(last) : weld::TPrevious();
  // The plain rules know the last result alone.
  const bool followsProfile = guides && options.extraction == TStripeExtraction::automatic;
  if (followsProfile && lastProfile) previous.profile = &*lastProfile;
  previous.isFlush = guides && wasFlush;
  previous.places = &places;
  if (options.extraction == TStripeExtraction::automatic) previous.shapes = &shapes;
  weld::TFound found = searchSeam(quest, options, {previous, bestColumns, edgePairColumns});
  const bool isAnother = quest.usesOwnRules && joint->rules.rivalOf != nullptr && isAtNewPlace(found.seam) &&
                         !isShownBy(frame, found.seam, found.stripe, joint->rules.rivalOf);
  if (isAnother) found.seam = weld::TSeam(std::move(found.seam.stripePts));
  if (options.source == TSeamSource::both && joint->rules.hasSeamPoint)
    weld::joinContrast(frame, options, found.seam);
  return found;
}

weld::TFound TWeldTracker::TState::searchByContrast(const weld::TFrame& frame) const {
  const bool guides = heldFrames == 0 || options.searchWholeOnLoss;
  const weld::TPrevious previous = guides ? weld::TPrevious(last) : weld::TPrevious();
  return {findContrastSeam(frame, options, previous), weld::TStripe(frame.memory), 0};
}

// A place where the frames before did not show the seam.
bool TWeldTracker::TState::isAtNewPlace(const weld::TSeam& seam) const {
  if (!seam.isFound || !last.isFound) return seam.isFound;
  return weld::seamDistance(seam.pos, last.weldPos) > options.maxJumpPx;
}

// A seam that is held back counts as not found.
TTrackedSeam TWeldTracker::TState::judge(const weld::TFound& found, const weld::TJoint* joint, bool isLetThrough) {
  const bool canBeHeld = joint == nullptr || joint->rules.hasSeamPoint;
  TTrackedSeam seam;
  if (isLetThrough) {
    seam.line = toLineRes(found.seam);
    seam.measurement = weld::measureSeam(found.seam, joint, &memory);
  } else {
    seam.line.stripePts.assign(found.seam.stripePts.begin(), found.seam.stripePts.end());
  }
  const bool isHeld = !seam.line.isFound && canBeHeld && last.isFound && heldFrames < options.holdFrames;
  seam.state = seam.line.isFound ? TSeamState::found : isHeld ? TSeamState::held : TSeamState::lost;
  if (isHeld) seam.weldPos = last.weldPos;
  if (seam.line.isFound) seam.weldPos = seam.line.weldPos;
  return seam;
}

// Copies, so that the memory of the next frames is there already: the most points that there can be.
void TWeldTracker::TState::remember(const TTrackedSeam& seam, std::size_t columns) {
  spare.stripePts.reserve(columns);
  spare = seam.line;
}

TWeldTracker::TWeldTracker(const TWeldParams& params, const TTrackerOptions& options)
    : state(std::make_unique<TState>()) {
  state->options = inRange(options);
  state->params = params;
}

TWeldTracker::TWeldTracker(const TJointTemplate& joint, const TTrackerOptions& options)
    : TWeldTracker(TWeldParams(), options) {
  state->own = std::make_unique<weld::TOwnJoint>(joint);
}

TWeldTracker::TWeldTracker(TWeldTracker&& other) noexcept = default;
TWeldTracker& TWeldTracker::operator=(TWeldTracker&& other) noexcept = default;
TWeldTracker::~TWeldTracker() = default;

TTrackedSeam TWeldTracker::track(const cv::Mat& image) {
  TFrameTrace trace;
  const weld::TTrace seen = state->options.keepTrace ? weld::TTrace(trace) : weld::TTrace();
  const weld::TTraceClock clock(seen);
  const weld::TJoint* const joint = state->joint();
  const bool hasSeamPoint = joint == nullptr || joint->rules.hasSeamPoint;

  const weld::TFrame frame{image, state->params, state->beginFrame(image, joint), seen};
  const weld::TFound found = state->search(frame, joint);
  weld::TJumpMemory jumps = state->jumps;
  const bool isLetThrough =
      !hasSeamPoint || weld::passesJumpTest(found.seam, state->options, jumps, seen.atGate());
  TTrackedSeam seam = state->judge(found, joint, isLetThrough);
  state->remember(seam, static_cast<std::size_t>(std::max(image.cols, 0)));
  int announced = state->announcedFrames;
  if (seam.state == TSeamState::found && joint != nullptr && joint->rules.announce != nullptr)
    joint->rules.announce(announced, found.seam, found.stripe.widthPx);
  if (seen) {
    const char* const problem = state->own ? state->own->problem.c_str() : "";
    weld::concludeFrame(trace, {weld::hasPixels(image), seam.state == TSeamState::held, seam.weldPos, problem},
                        joint != nullptr ? &joint->info : nullptr);
    if (state->options.giveAdvice && joint != nullptr && seam.state != TSeamState::found)
      weld::adviseFrame(image, *joint, trace);
    trace.totalUs = clock.elapsedUs();
  }

  // Nothing below throws, so that an exception leaves everything as it was.
  const bool isHeld = seam.state == TSeamState::held;
  std::swap(state->trace, trace);
  state->jumps = jumps;
  state->places = found.seam.places;
  state->shapes = found.seam.shapes;
  state->announcedFrames = announced;
  state->heldFrames = isHeld ? state->heldFrames + 1 : 0;
  if (!isHeld) {
    std::swap(state->last, state->spare);
    const int remembered = static_cast<int>(state->bestColumns * kRemembered);
    state->bestColumns = std::max(static_cast<int>(state->last.stripePts.size()), remembered);
    state->lastProfile = found.seam.profile;
    state->wasFlush = found.seam.isFlush;
    state->edgePairColumns = found.edgePairColumns;
  }
  return seam;
}

void TWeldTracker::reset() {
  state->last = {};
  state->lastProfile.reset();
  state->wasFlush = false;
  state->places = {};
  state->shapes = {};
  state->bestColumns = 0;
  state->edgePairColumns = 0;
  state->jumps = {};
  state->heldFrames = 0;
  state->announcedFrames = 0;
  state->trace = {};
}

void TWeldTracker::setParams(const TWeldParams& params) {
  state->params = params;
  if (state->own == nullptr) return;
  state->own.reset();
  state->lastProfile.reset();
}

const TFrameTrace& TWeldTracker::lastTrace() const {
  return state->trace;
}

// All that reset() forgets and a seam depends on.
std::string TWeldTracker::memory() const {
  const TState& s = *state;
  return weld::memoryBytes({s.last, s.lastProfile, s.wasFlush, s.places, s.shapes, s.bestColumns,
                            s.edgePairColumns, s.jumps, s.heldFrames},
                           s.forms());
}

bool TWeldTracker::setMemory(std::string_view bytes) {
  std::optional<weld::TTrackerMemory> memory = weld::memoryOf(bytes, state->forms());
  if (!memory) return false;
  reset();
  state->last = std::move(memory->last);
  state->lastProfile = memory->profile;
  state->wasFlush = memory->wasFlush;
  state->places = memory->places;
  state->shapes = memory->shapes;
  state->bestColumns = memory->bestColumns;
  state->edgePairColumns = memory->edgePairColumns;
  state->jumps = memory->jumps;
  state->heldFrames = memory->heldFrames;
  return true;
}
