// A job: what was tuned at the desk, as a text that the robot's program reads. 08_job FILE reads one that `zelweld
// params --format job` wrote; without a file this program brings its own. The library opens no files.
#include <zelWeldDetect.h>

#include <opencv2/imgproc.hpp>

#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

namespace {

const char* const ownText = R"({
  "zelWeldJob": 1,
  "joint": "buttGap",
  "position": "left",
  "parameters": {"minGapPx": 12, "stripeAngleDeg.min": -20},
  "tracker": {"holdFrames": 5},
  "image": {"region": {"x": 100, "y": 0, "width": 400, "height": 640}, "rotationDeg": 270}
})";

std::string readText(const char* path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The camera sees the stripe upright, with a gap of 30 rows that moves down.
cv::Mat grabFrame(int n) {
  cv::Mat frame(640, 640, CV_8UC1, cv::Scalar(0));
  cv::line(frame, {300, 0}, {310, 200 + 3 * n}, cv::Scalar(220), 7);
  cv::line(frame, {310, 230 + 3 * n}, {320, 639}, cv::Scalar(220), 7);
  cv::GaussianBlur(frame, frame, {7, 7}, 0);
  return frame;
}

}  // namespace

int main(int argc, char** argv) {
  const TJobReading reading = parseWeldJob(argc > 1 ? readText(argv[1]) : ownText);
  if (!reading.problem.empty()) {
    std::cout << reading.problem << '\n';
    return 1;
  }
  const TWeldJob& job = reading.job;
  TWeldTracker tracker = makeWeldTracker(job);
  int found = 0;
  for (int n = 0; n < 10; ++n) {
    const cv::Mat stored = grabFrame(n);
    const TTrackedSeam seam = tracker.track(prepareImage(stored, job.preparation));
    if (seam.state != TSeamState::found) continue;
    ++found;
    std::cout << "frame " << n << ": " << toStored(seam.weldPos, job.preparation, stored.size())
              << " in the camera's image\n";
  }
  std::cout << writeWeldJob(job);  // with all that the text left at its default
  return found == 10 ? 0 : 1;
}
