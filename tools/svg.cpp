#include "tools/svg.h"

#include "tools/text.h"

#include <cmath>

namespace tool {
namespace {

std::string number(double value) {
  return plain(cvRound(value * 100.0) / 100.0);
}

std::string pointList(const std::vector<cv::Point2d>& points) {
  std::vector<std::string> words;
  words.reserve(points.size());
  for (const cv::Point2d point : points) {
    words.push_back(number(point.x) + "," + number(point.y));
  }
  return join(words, " ");
}

std::string attributesOf(const TStroke& stroke) {
  const std::string dashes = stroke.dashes.empty() ? "" : " stroke-dasharray=\"" + stroke.dashes + "\"";
  return " fill=\"none\" stroke=\"" + stroke.colour + "\" stroke-width=\"" + number(stroke.width) + "\"" + dashes;
}

std::string nameOf(TAnchor anchor) {
  switch (anchor) {
    case TAnchor::middle:
      return "middle";
    case TAnchor::end:
      return "end";
    default:
      return "start";
  }
}

std::string escaped(const std::string& words) {
  std::string text;
  for (const char c : words) {
    text += c == '<' ? "&lt;" : c == '>' ? "&gt;" : c == '&' ? "&amp;" : std::string(1, c);
  }
  return text;
}

}  // namespace

TSvg::TSvg(cv::Size2d sizeUnits, double zoom, const std::string& groundColour)
    : ground(groundColour), size(sizeUnits), scale(zoom) {}

void TSvg::line(cv::Point2d a, cv::Point2d b, const TStroke& stroke) {
  polyline({a, b}, stroke);
}

void TSvg::polyline(const std::vector<cv::Point2d>& points, const TStroke& stroke) {
  body += "<polyline points=\"" + pointList(points) + "\"" + attributesOf(stroke) + "/>\n";
}

void TSvg::polygon(const std::vector<cv::Point2d>& points, const std::string& colour, double opacity) {
  body += "<polygon points=\"" + pointList(points) + "\" fill=\"" + colour + "\" fill-opacity=\"" +
          number(opacity) + "\"/>\n";
}

void TSvg::arc(cv::Point2d centre, double radius, double fromDeg, double toDeg, const TStroke& stroke) {
  const auto onCircle = [&](double deg) {
    const double angle = deg * CV_PI / 180.0;
    return pointList({centre + cv::Point2d(std::cos(angle), std::sin(angle)) * radius});
  };
  const std::string isLarge = std::abs(toDeg - fromDeg) > 180.0 ? "1" : "0";
  const std::string isClockwise = toDeg > fromDeg ? "1" : "0";
  body += "<path d=\"M" + onCircle(fromDeg) + "A" + pointList({{radius, radius}}) + " 0 " + isLarge + " " +
          isClockwise + " " + onCircle(toDeg) + "\"" + attributesOf(stroke) + "/>\n";
}

void TSvg::circle(cv::Point2d centre, double radius, const std::string& colour) {
  body += "<circle cx=\"" + number(centre.x) + "\" cy=\"" + number(centre.y) + "\" r=\"" + number(radius) +
          "\" fill=\"" + colour + "\"/>\n";
}

void TSvg::text(cv::Point2d at, const std::string& words, double height, const std::string& colour,
                TAnchor anchor) {
  body += "<text x=\"" + number(at.x) + "\" y=\"" + number(at.y) + "\" font-size=\"" + number(height) +
          "\" text-anchor=\"" + nameOf(anchor) + "\" fill=\"" + colour + "\" stroke=\"" + ground +
          "\" stroke-width=\"" + number(height / 4.0) + "\" paint-order=\"stroke\">" + escaped(words) +
          "</text>\n";
}

std::string TSvg::file() const {
  const std::string box = number(size.width) + " " + number(size.height);
  return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + number(size.width * scale) + "\" height=\"" +
         number(size.height * scale) + "\" viewBox=\"0 0 " + box +
         "\" font-family=\"DejaVu Sans, Helvetica, Arial, sans-serif\" stroke-linejoin=\"round\" "
         "stroke-linecap=\"butt\">\n<rect width=\"" +
         number(size.width) + "\" height=\"" + number(size.height) + "\" fill=\"" + ground + "\"/>\n" + body +
         "</svg>\n";
}

}  // namespace tool
