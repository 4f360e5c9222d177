// The surface of plates in room light: factors on the brightness, pixel by pixel.
#pragma once

#include "scenes/plate.h"
#include "scenes/random.h"

namespace scenes {

// Place of a pixel beside the seam's course.
struct TBeside {
  double along = 0.0;   // px from the course's centre
  double across = 0.0;  // px from the seam, positive on the right or lower side
};

// The course turned into what a pixel needs.
class TCourseFrame {
public:
  explicit TCourseFrame(const TSeamCourse& course);

  TBeside beside(double x, double y) const;
  cv::Point2d at(double along) const;

private:
  cv::Point2d centre;
  cv::Point2d ahead;
  cv::Point2d aside;
  double bend;  // rise = bend * along^2
};

// Random values on a lattice, smooth between its nodes, -1..1. Rows of the lattice lie scattered in one table.
class TLattice {
public:
  explicit TLattice(TRandom random);
  float at(float u, float v) const;

private:
  static constexpr int kValues = 1 << 16;
  static constexpr int kRows = 1 << 10;
  std::vector<float> values;
  std::vector<int> rowBegins;
};

// Light and surface of both plates, without the seam.
cv::Mat1f paintPlates(const TPlateParams& params, const TCourseFrame& course);

// Scratches, oxide and oil over it.
void paintMarks(const TPlateParams& params, cv::Mat1f& light);

}  // namespace scenes
