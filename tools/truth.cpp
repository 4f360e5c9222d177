#include "tools/truth.h"

#include "tools/cli_error.h"
#include "tools/stats.h"
#include "tools/text.h"

#include <algorithm>
#include <fstream>
#include <set>

namespace tool {
namespace {

using TFields = std::vector<std::string>;

// One line of CSV; quotes may hold commas, a doubled quote stands for one.
TFields fieldsOf(const std::string& line) {
  TFields fields(1);
  bool isQuoted = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const bool isDoubled = isQuoted && line[i] == '"' && i + 1 < line.size() && line[i + 1] == '"';
    if (line[i] == '"' && !isDoubled) {
      isQuoted = !isQuoted;
    } else if (line[i] == ',' && !isQuoted) {
      fields.emplace_back();
    } else if (line[i] != '\r') {
      fields.back() += line[i];
      i += isDoubled ? 1 : 0;
    }
  }
  return fields;
}

// A row of the table, its fields by column.
class TRow {
public:
  TRow(const TFields& names, TFields rowFields, std::string rowPlace)
      : heading(names), fields(std::move(rowFields)), place(std::move(rowPlace)) {}

  std::string text(const std::string& name) const {
    const auto column =
        static_cast<std::size_t>(std::find(heading.begin(), heading.end(), name) - heading.begin());
    return column < fields.size() ? fields[column] : "";
  }

  double number(const std::string& name, double otherwise) const {
    const std::string field = text(name);
    double value = otherwise;
    if (!field.empty() && !parseNumber(field, value)) {
      throw inputError(place + ": " + name + " '" + field + "' is no number");
    }
    return value;
  }

private:
  const TFields& heading;
  TFields fields;
  std::string place;
};

TLabel labelOf(const TRow& row, const std::string& place) {
  TLabel label;
  label.tolPx = row.number("tol_px", 0.0);
  if (row.number("hasSeam", 1.0) == 0.0) {
    return label;
  }
  if (row.text("x").empty() || row.text("y").empty()) {
    throw inputError(place + ": a label needs x and y");
  }
  label.pos = cv::Point2d(row.number("x", 0.0), row.number("y", 0.0));
  return label;
}

TFields headingOf(std::ifstream& file, const std::string& path) {
  std::string line;
  std::getline(file, line);
  const TFields heading = fieldsOf(line);
  for (const char* const name : {"file", "x", "y"}) {
    if (std::find(heading.begin(), heading.end(), name) == heading.end()) {
      throw inputError(path + ": has no column '" + name + "'; labels are a CSV table with file,x,y,point,tol_px");
    }
  }
  return heading;
}

void checkPoint(const std::set<std::string>& points, const std::string& point, const std::string& path) {
  const std::string names = join({points.begin(), points.end()}, ", ");
  if (point.empty() && points.size() > 1) {
    throw usageError("--truth: " + path + " labels several points; choose one with --point: " + names);
  }
  if (!point.empty() && points.count(point) == 0) {
    throw usageError("--point: " + path + " labels no '" + point + "': use " + names);
  }
}

}  // namespace

std::optional<double> TTruthFigures::medianErrorPx() const {
  return errorsPx.empty() ? std::nullopt : std::make_optional(percentile(errorsPx, 0.5));
}

std::string TTruthFigures::text() const {
  const auto errorPx = medianErrorPx();
  return std::to_string(wrong) + " of " + std::to_string(judged) + ", error " +
         (errorPx ? fixed(*errorPx, 2) + " px" : "-");
}

TTruth::TTruth(const std::filesystem::path& path, const std::string& point) {
  std::ifstream file(path);
  if (!std::filesystem::is_regular_file(path) || !file) {
    throw inputError(path.string() + ": cannot be read; --truth takes a CSV table of labels");
  }
  const TFields heading = headingOf(file, path.string());
  std::set<std::string> points;
  std::string line;
  for (int number = 2; std::getline(file, line); ++number) {
    const std::string place = path.string() + ", line " + std::to_string(number);
    const TRow row(heading, fieldsOf(line), place);
    points.insert(row.text("point"));
    if (row.text("file").empty() || (!point.empty() && row.text("point") != point)) {
      continue;
    }
    labels.insert_or_assign(row.text("file"), labelOf(row, place));
  }
  checkPoint(points, point, path.string());
}

const TLabel* TTruth::find(const std::string& frame) const {
  for (std::size_t begin = 0; begin != std::string::npos;) {
    const auto label = labels.find(frame.substr(begin));
    if (label != labels.end()) {
      return &label->second;
    }
    const std::size_t slash = frame.find('/', begin);
    begin = slash == std::string::npos ? slash : slash + 1;
  }
  return nullptr;
}

std::string TTruth::judge(const std::string& frame, const std::optional<cv::Point2d>& seam,
                          TTruthFigures& figures) const {
  const TLabel* const label = find(frame);
  if (label == nullptr) {
    return "";
  }
  ++figures.judged;
  if (!seam) {
    return "";
  }
  if (!label->pos) {
    ++figures.wrong;
    return "by its label there is no seam";
  }
  const double errorPx = cv::norm(*seam - *label->pos);
  figures.errorsPx.push_back(errorPx);
  if (errorPx <= std::max(label->tolPx, kRightWithinPx)) {
    return "";
  }
  ++figures.wrong;
  return fixed(errorPx, 1) + " px from its label";
}

}  // namespace tool
