// A job: all that a seam is looked for with, as a text that travels from the desk to the robot. Include
// zelWeldDetect.h rather than this.
//
//   {
//     "zelWeldJob": 1,
//     "joint": "buttGap",
//     "parameters": {"minGapPx": 12, "stripeAngleDeg.min": -20},
//     "tracker": {"holdFrames": 5},
//     "image": {"rotationDeg": 90, "channel": "red"}
//   }
//
// docs/job.md lists the names. The library opens no file: it takes and gives texts.
#pragma once

#include "zelWeldDetectExport.h"
#include "zelWeldTemplate.h"
#include "zelWeldTracker.h"
#include "zelWeldTypes.h"

#include <opencv2/core.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// What of a colour image is searched.
enum class TImageChannel : std::int32_t {
  grey = 0,      // weighted as the eye does
  red = 1,       // the one channel
  green = 2,     // the one channel
  blue = 3,      // the one channel
  redExcess = 4  // red minus the mean of green and blue: a red laser in daylight
};

// From the stored image to the one that is searched: cut, turn, take a channel, in this order.
struct TImagePreparation {
  std::optional<cv::Rect> region;               // in the stored image, px; none: the whole image
  std::int32_t rotationDeg = 0;                 // clockwise: 0, 90, 180 or 270
  TImageChannel channel = TImageChannel::grey;  // taken last; a grey image has one only, and no red-excess
};

// The joint, the options of the tracker and the preparation of the images.
struct TWeldJob {
  TWeldParams params;                      // the joint and its settings
  std::optional<TJointTemplate> ownJoint;  // in place of the parameters
  TTrackerOptions tracker;                 // how it is followed
  TImagePreparation preparation;           // of every image
};

// What parseWeldJob gives.
struct TJobReading {
  TWeldJob job;         // where there is a problem all defaults
  std::string problem;  // "line 3: minGapPx (dPara8) must be 2 to 100000, not 0"; empty: none
};

// Reads a job, or the parameter file of `zelweld params`. What the text does not name has its default; a name that
// is unknown or given twice, a value out of range and more than 1 MiB are problems. A joint other than `none`
// takes the place of the text's.
ZELWELDDETECT_EXPORT TJobReading parseWeldJob(std::string_view text, TWeldType jointInstead = TWeldType::none);

// The whole job as a text that parseWeldJob reads. Values that it refuses are written all the same.
ZELWELDDETECT_EXPORT std::string writeWeldJob(const TWeldJob& job);

// A tracker of the job's joint with the job's options; hand it prepared images. One with a problem finds nothing.
ZELWELDDETECT_EXPORT TWeldTracker makeWeldTracker(const TWeldJob& job);

// Why images like this one cannot be prepared so, as a sentence: "the region reaches outside the image, which is
// 640x480 pixels". Empty: they can.
ZELWELDDETECT_EXPORT std::string findPreparationProblem(const TImagePreparation& preparation,
                                                        const cv::Mat& stored);

// The image to be searched; it may share the pixels of the stored one. Empty where the preparation has a problem.
ZELWELDDETECT_EXPORT cv::Mat prepareImage(const cv::Mat& stored, const TImagePreparation& preparation);

// Where a point of the prepared image lies in the stored one, which has that size; px, also for points outside. A
// rotation that is none of the four, as a problem has it, counts as 0; NaN stays.
ZELWELDDETECT_EXPORT cv::Point2d toStored(cv::Point2d point, const TImagePreparation& preparation,
                                          cv::Size storedSize);

// "grey", "red-excess"; "edgePairs", "automatic"; "stripe", "both"; "dark", "edge". "unknown" for other values.
ZELWELDDETECT_EXPORT const char* imageChannelText(TImageChannel channel);
ZELWELDDETECT_EXPORT const char* extractionText(TStripeExtraction extraction);
ZELWELDDETECT_EXPORT const char* sourceText(TSeamSource source);
ZELWELDDETECT_EXPORT const char* polarityText(TSeamPolarity polarity);
