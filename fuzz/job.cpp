// Bytes of any kind as a job. What is read is written, and read again as the same job.
#include "fuzz/verdict.h"
#include "zelWeldDetect.h"

#include <cstdint>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const TJobReading reading = parseWeldJob({reinterpret_cast<const char*>(data), size});
  const std::string text = writeWeldJob(reading.job);
  if (!reading.problem.empty()) {
    fuzz::require(text == writeWeldJob(TWeldJob()), "a job of defaults beside a problem");
    return 0;
  }
  if (reading.job.ownJoint)
    fuzz::require(findTemplateProblem(*reading.job.ownJoint).empty(), "a joint that is one");
  const TJobReading again = parseWeldJob(text);
  fuzz::require(again.problem.empty(), "a job that survives its own text");
  fuzz::require(writeWeldJob(again.job) == text, "the same job again");
  makeWeldTracker(reading.job).track(cv::Mat());
  return 0;
}
