// A joint that the library does not know: a J groove, described in ten lines and tracked. The left plate is
// bevelled with a straight flank that ends in an arc; the right plate ends in an upright wall, which shows no
// stripe.
#include <zelWeldDetect.h>

#include <algorithm>
#include <cmath>
#include <iostream>

namespace {

TJointTemplate jGroove() {
  TJointTemplate j;
  j.name = "J groove";
  j.elements = {TJointElement::plate(), TJointElement::flank(40, 85), TJointElement::arc(20, 150).smoothly(),
                TJointElement::stepUp(30), TJointElement::plate()};
  j.points = {{TFeature::leftShoulder, TJointPlace::start, 1},
              {TFeature::root, TJointPlace::middle, 3},  // between the arc's end and the foot of the wall
              {TFeature::rightShoulder, TJointPlace::start, 4}};
  j.tracked = TFeature::root;
  return j;
}

// A camera frame, and where its points are.
struct TFrame {
  cv::Mat image;
  cv::Point2d leftShoulder;
  cv::Point2d root;
  cv::Point2d rightShoulder;
};

// The workpiece drifts; its flank falls at 60 degrees into an arc of radius 50 px that ends level at the wall.
TFrame grabFrame(int n) {
  constexpr double kFlankColumns = 60.0;
  constexpr double kRadiusPx = 50.0;
  const double slope = std::sqrt(3.0);
  TFrame frame;
  frame.leftShoulder = {250.0 + 3.3 * n, 150.0 + 1.7 * n};
  const cv::Point2d flankEnd = frame.leftShoulder + cv::Point2d(kFlankColumns, slope * kFlankColumns);
  const cv::Point2d arcCentre = flankEnd + kRadiusPx * cv::Point2d(0.5 * slope, -0.5);
  frame.root = arcCentre + cv::Point2d(0.0, kRadiusPx);
  frame.rightShoulder = {frame.root.x, frame.leftShoulder.y};

  frame.image = cv::Mat(480, 640, CV_8UC1, cv::Scalar(0));
  for (int column = 0; column < frame.image.cols; ++column) {
    double row = frame.leftShoulder.y;
    const double x = column - arcCentre.x;
    if (column > flankEnd.x && x <= 0.0) {
      row = arcCentre.y + std::sqrt(kRadiusPx * kRadiusPx - x * x);
    } else if (column > frame.leftShoulder.x && x <= 0.0) {
      row += slope * (column - frame.leftShoulder.x);
    }
    for (int y = 0; y < frame.image.rows; ++y)
      frame.image.at<uchar>(y, column) = cv::saturate_cast<uchar>(220.0 * std::exp(-0.03 * (y - row) * (y - row)));
  }
  return frame;
}

// Prints a point and how far it is from the true one, px.
double report(const char* name, cv::Point2d found, cv::Point2d truth) {
  const double error = cv::norm(found - truth);
  std::cout << "  " << name << ' ' << found << ", off by " << error << '\n';
  return error;
}

}  // namespace

int main() {
  const TJointTemplate joint = jGroove();
  const std::string problem = findTemplateProblem(joint);
  if (!problem.empty()) {
    std::cout << joint.name << ": " << problem << '\n';
    return 1;
  }
  TWeldTracker tracker(joint);
  double worst = 0.0;
  int found = 0;
  std::cout.precision(3);
  for (int n = 0; n < 12; ++n) {
    const TFrame frame = grabFrame(n);
    const TTrackedSeam seam = tracker.track(frame.image);
    if (seam.state != TSeamState::found) continue;
    ++found;
    std::cout << "frame " << n << ", confidence " << seam.measurement.confidence << ", depth "
              << seam.measurement.depthPx << " px\n";
    worst = std::max(worst, report("root", seam.weldPos, frame.root));
    for (const TFeaturePoint& point : seam.measurement.points) {
      if (point.feature == TFeature::leftShoulder) report("left shoulder", point.pos, frame.leftShoulder);
      if (point.feature == TFeature::rightShoulder) report("right shoulder", point.pos, frame.rightShoulder);
    }
  }
  return found == 12 && worst < 1.0 ? 0 : 1;
}
