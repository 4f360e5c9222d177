// Scalable drawings, written shape by shape.
#pragma once

#include <opencv2/core.hpp>

#include <string>
#include <vector>

namespace tool {

// How a line or an outline is drawn. Lengths in units of the drawing.
struct TStroke {
  std::string colour;
  double width = 1.0;
  std::string dashes;  // as in stroke-dasharray; empty: unbroken
};

enum class TAnchor { start, middle, end };

class TSvg {
public:
  // A drawing of that many units on a ground of its own, so that any page may carry it; shown `zoom` times larger.
  TSvg(cv::Size2d sizeUnits, double zoom, const std::string& groundColour);

  void line(cv::Point2d a, cv::Point2d b, const TStroke& stroke);
  void polyline(const std::vector<cv::Point2d>& points, const TStroke& stroke);
  void polygon(const std::vector<cv::Point2d>& points, const std::string& colour, double opacity = 1.0);
  // Part of a circle; angles in degrees, y down, fewer than 360 apart.
  void arc(cv::Point2d centre, double radius, double fromDeg, double toDeg, const TStroke& stroke);
  void circle(cv::Point2d centre, double radius, const std::string& colour);

  // The baseline of the text begins, is centred or ends at the point. The text stands out from what lies below it.
  void text(cv::Point2d at, const std::string& words, double height, const std::string& colour,
            TAnchor anchor = TAnchor::start);

  // The whole file.
  std::string file() const;

private:
  std::string ground;
  std::string body;
  cv::Size2d size;
  double scale;
};

}  // namespace tool
