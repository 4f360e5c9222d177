// The stripe of a rendered scene, and dimensions drawn on it. One unit of the drawing is one pixel of the scene.
#pragma once

#include "scenes/scene.h"
#include "tools/svg.h"

#include <string>

namespace tool {

// What a dimension is about: a parameter, or a quantity of this scene that a parameter is compared with.
enum class TMark { parameter, measured };

class TStripeDrawing {
public:
  // Renders the scene and draws its stripe where it truly is.
  explicit TStripeDrawing(const scenes::TSceneParams& params);

  const scenes::TScene& scene() const { return rendered; }

  // A feature of the scene by name, "gapLeft".
  cv::Point2d feature(const std::string& name) const;

  // Row of the stripe at a column that it lights.
  double rowAt(double column) const;

  // Angle of the stripe between two columns, degrees, y down.
  double angleDeg(double fromColumn, double toColumn) const;

  void referenceLine(cv::Point2d a, cv::Point2d b);
  void referenceCircle(cv::Point2d centre, double radius);

  // A distance between two points with arrows at both ends; arrows of short ones come from outside.
  void distance(cv::Point2d a, cv::Point2d b, TMark mark);

  // The stretch of that height above and below the stripe between two columns, its half height as a distance at
  // `atColumn`.
  void band(double fromColumn, double toColumn, double halfHeightPx, double atColumn);

  // Two rays from a point at these angles with an arc between them. Degrees, y down.
  void angle(cv::Point2d pivot, double fromDeg, double toDeg, double radiusPx, TMark mark);

  // End of a ray of that length.
  static cv::Point2d ray(cv::Point2d pivot, double angleDeg, double lengthPx);

  void label(cv::Point2d at, const std::string& words, TMark mark, TAnchor anchor = TAnchor::start);

  // The grey levels of the scene along a line through `corner`, 40 px to both sides, in a frame at `topLeft`, with
  // that drop marked.
  void greyProfile(cv::Point2d topLeft, cv::Point2d corner, double angleDeg, double dropGrey,
                   const std::string& name);

  std::string file() const { return svg.file(); }

private:
  void arrow(cv::Point2d tip, cv::Point2d from, TMark mark);

  scenes::TScene rendered;
  TSvg svg;
};

}  // namespace tool
