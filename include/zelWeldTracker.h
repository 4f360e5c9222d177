// Follows a seam from frame to frame: remembers the last one, repairs what the plain rules lose, and refuses what
// cannot be true. Include zelWeldDetect.h rather than this.
#pragma once

#include "zelContrast.h"
#include "zelWeldDetectExport.h"
#include "zelWeldJoint.h"
#include "zelWeldTemplate.h"
#include "zelWeldTrace.h"
#include "zelWeldTypes.h"

#include <opencv2/core.hpp>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

// What a tracker finds its seam by.
enum class TSeamSource : std::int32_t {
  stripe = 0,    // the joint in the laser stripe
  contrast = 1,  // the seam's own contrast; there need be no stripe, and the joint does not matter
  both = 2  // the joint in the stripe, moved along it to where the seam crosses it; either one where the other
            // gives none. Where they contradict each other there is no seam.
};

// What a tracker does beyond the plain rules; see docs/tracker.md. Values out of range count as the nearest
// valid one, a maxJumpPx of NaN as infinity. Stripe presence has no seam point and takes the extraction alone.
struct TTrackerOptions {
  // The guide of the search is the previous stripe, extended by this along its end pieces, so that it can grow
  // back at both ends and short stripes are not lost; px, >= 0. 0 hands over the previous stripe as it is. With
  // automatic extraction a corner found along an extended guide is fitted as on a first detection.
  std::int32_t guideMarginPx = 40;
  // How the stripe is taken from the image.
  TStripeExtraction extraction = TStripeExtraction::automatic;
  // true: marker corners, points that are not finite and points outside the image count as not found.
  bool rejectImpossiblePoints = true;
  // A seam farther than this from the last one is held back until it repeats; px, > 0, infinity: never.
  double maxJumpPx = 40.0;
  // Frames in a row that must show the seam at its new place, the first one included; >= 1.
  std::int32_t acceptAfterFrames = 3;
  // Frames in a row without a seam, held-back ones included, for which the last good result is repeated; >= 0.
  std::int32_t holdFrames = 3;
  // true: a frame in which tracking fails is searched as a whole at once.
  bool searchWholeOnLoss = true;
  // true: fills lastTrace().
  bool keepTrace = false;
  // By contrast the whole image is searched as `contrast` says, later a band around the last line, and the whole
  // image again on loss. The seam point is where the line crosses the row lookAtPx, of a flat line the column; not
  // a number: the middle of the image. The positions left and upper, right and lower mean the seam's edges. Of the
  // result, stripePts is the line, auxVal1 and auxVal2 its slope and intercept there (y over x; of a steep line x
  // over y), auxVal3 its width in px, auxVal4 its contrast, trackVal its confidence.
  TSeamSource source = TSeamSource::stripe;
  // What is looked for by contrast.
  TContrastSearch contrast;
  // The row or column at which a line by contrast is the seam, px; not a number: the middle of the image.
  float lookAtPx = std::numeric_limits<float>::quiet_NaN();
  // true, with keepTrace: the trace of a frame without a seam says what may be done; costs several detections.
  bool giveAdvice = false;

  // Nothing beyond the rules: frame for frame what detectWeldLineViaTracking gives when it is fed its own results.
  static TTrackerOptions exact() {
    TTrackerOptions options;
    options.guideMarginPx = 0;
    options.extraction = TStripeExtraction::edgePairs;
    options.rejectImpossiblePoints = false;
    options.maxJumpPx = std::numeric_limits<double>::infinity();
    options.acceptAfterFrames = 1;
    options.holdFrames = 0;
    options.searchWholeOnLoss = false;
    return options;
  }
};

// What a frame means to the controller: weld along a found seam, go on along a held one for as long as the process
// bears it, stop on a lost one.
enum class TSeamState : std::int32_t {
  lost = 0,   // none, and none to repeat
  found = 1,  // in this frame
  held = 2    // none; the last good one is repeated
};

// What a frame gives a controller.
struct TTrackedSeam {
  TSeamState state = TSeamState::lost;  // found, held or lost
  cv::Point2f
      weldPos;  // to steer by, px: this frame's seam when found, the last good one when held, (0, 0) when lost
  TWeldLineRes line;              // what this frame itself gave: isFound only in the state found
  TJointMeasurement measurement;  // of this frame; invalid unless found
};

// Follows one seam. One tracker per thread; many trackers at once do not interfere. In the steady state a frame
// allocates nothing beyond the stripe points of its result; by contrast a few such lists.
class ZELWELDDETECT_EXPORT TWeldTracker {
public:
  // Of a joint of the library; one without a detector is never found.
  explicit TWeldTracker(const TWeldParams& params, const TTrackerOptions& options = TTrackerOptions());
  // Of a joint of one's own; one that has a problem (findTemplateProblem) is never found.
  explicit TWeldTracker(const TJointTemplate& joint, const TTrackerOptions& options = TTrackerOptions());
  TWeldTracker(TWeldTracker&& other) noexcept;  // leaves the source good for assignment and destruction only
  TWeldTracker& operator=(TWeldTracker&& other) noexcept;
  ~TWeldTracker();

  // The seam in the next frame: an 8-bit image with 1, 3 (BGR) or 4 (BGRA) channels, never written to. An empty
  // image and a joint without a detector give no seam. An exception (an image type that cannot be read, no memory)
  // leaves the tracker as it was before the frame.
  TTrackedSeam track(const cv::Mat& image);

  // Forgets the frames so far: the next one is a first detection.
  void reset();

  // Takes effect with the next frame. The last seam is kept; reset() as well when the joint is another one, as it
  // always is after one's own. Any parameters are safe; those out of range find nothing.
  void setParams(const TWeldParams& params);

  // What happened in the last frame; empty unless the options ask for it and before the first frame.
  const TFrameTrace& lastTrace() const;

  // What the frames so far leave to the next one, as bytes for a tracker of the same job and version: a long run
  // may be handed on, or split where a tracker that began a little earlier has come to the same bytes.
  std::string memory() const;
  // Goes on from there. False for other bytes, which change nothing. A joint of another kind takes them, too:
  // reset() is for that.
  bool setMemory(std::string_view bytes);

private:
  struct ZELWELDDETECT_NO_EXPORT TState;
  std::unique_ptr<TState> state;
};
