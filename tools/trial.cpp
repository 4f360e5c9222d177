#include "tools/trial.h"

#include "tools/stop_signal.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <thread>

namespace tool {
namespace {

constexpr unsigned kMostThreads = 8;

// What would have found the frame, where anything would.
std::vector<TTraceNeed> needsOf(const TFrameTrace& trace) {
  const auto suffices = [](const TTraceAttempt& attempt) { return attempt.needsSuffice; };
  const auto attempt = std::find_if(trace.attempts.begin(), trace.attempts.end(), suffices);
  return attempt == trace.attempts.end() ? std::vector<TTraceNeed>() : attempt->needs;
}

void addFrame(TTrial& trial, const TScene& scene, int place, bool startsStretch) {
  TFrame frame = scene.frames[static_cast<std::size_t>(place)];
  frame.startsSequence = frame.startsSequence || startsStretch;
  TPreparation preparation = scene.preparation;
  if (trial.setting.turnDeg == 90 && !frame.image.empty()) {
    frame.image = cv::Mat();  // of its own: the scene keeps its image
    cv::rotate(scene.frames[static_cast<std::size_t>(place)].image, frame.image, cv::ROTATE_90_CLOCKWISE);
    preparation.rotationDeg = (preparation.rotationDeg + 90) % 360;
  }
  const TSeamFrame seen = trial.run->next(frame);
  trial.frames.push_back(place);
  const int wrongBefore = trial.truth.wrong;
  const std::optional<cv::Point2d> seam = storedSeam(seen, frame, preparation);
  scene.truth.judge(frame.name, seam, trial.truth);
  trial.seams.push_back(trial.truth.wrong == wrongBefore ? seam : std::nullopt);
  std::vector<TTraceNeed> needs = seen.isFound ? std::vector<TTraceNeed>() : needsOf(trial.run->trace());
  if (!needs.empty()) {
    trial.needs.push_back(std::move(needs));
  }
}

}  // namespace

TTrial tryOn(const TScene& scene, const std::vector<TStretch>& stretches, const TSetting& setting) {
  TTracking tracking;
  tracking.params = setting.params;
  tracking.tracker = setting.tracker;
  TTrial trial{setting, std::make_shared<TSeamRun>(tracking), {}, {}, {}, {}};
  for (const TStretch& stretch : stretches) {
    for (int place = stretch.first; place <= stretch.last && !isStopRequested(); ++place) {
      addFrame(trial, scene, place, place == stretch.first);
    }
  }
  return trial;
}

std::vector<TTrial> tryAll(const TScene& scene, const std::vector<TStretch>& stretches,
                           const std::vector<TSetting>& settings, const std::function<void(int)>& done) {
  std::vector<TTrial> trials(settings.size());
  std::atomic<std::size_t> next = 0;
  std::atomic<int> through = 0;
  std::exception_ptr failure;
  std::atomic<bool> hasFailed = false;
  const auto work = [&](bool isCaller) {
    for (std::size_t i = next++; i < settings.size() && !hasFailed; i = next++) {
      try {
        trials[i] = tryOn(scene, stretches, settings[i]);
      } catch (...) {
        if (!hasFailed.exchange(true)) {
          failure = std::current_exception();
        }
      }
      ++through;
      if (isCaller) {
        done(through);
      }
    }
  };
  std::vector<std::thread> helpers;
  const unsigned threads = std::clamp(std::thread::hardware_concurrency(), 1U, kMostThreads);
  for (unsigned i = 1; i < threads && i < settings.size(); ++i) {
    helpers.emplace_back(work, false);
  }
  work(true);
  for (std::thread& helper : helpers) {
    helper.join();
  }
  if (failure) {
    std::rethrow_exception(failure);
  }
  throwIfStopRequested();
  return trials;
}

}  // namespace tool
