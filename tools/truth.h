// Where the seams of recorded frames truly are, from a table of labels.
#pragma once

#include <opencv2/core.hpp>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tool {

// Of a frame, in its stored image.
struct TLabel {
  std::optional<cv::Point2d> pos;  // none: the frame shows no seam
  double tolPx = 0.0;              // how well it is known
};

// How the seams of a run compare with their labels.
struct TTruthFigures {
  int judged = 0;  // frames with a label
  int wrong = 0;   // of them, found in another place or where there is none
  std::vector<double> errorsPx;

  std::optional<double> medianErrorPx() const;
  std::string text() const;  // wrong ones of the judged: "1 of 12, error 0.80 px"
};

class TTruth {
public:
  // No labels: judges nothing.
  TTruth() = default;

  // A CSV table with the columns file, x, y and perhaps point, tol_px, hasSeam (0: no seam), in any order; others
  // are ignored. Files as the frames are named, with or without leading folders. Throws an input error that names
  // file and line, a usage error where the table labels several points of a file and none or an unknown one is
  // chosen.
  //   point  the one of the labelled points that the joint is welded at; empty: the only one
  TTruth(const std::filesystem::path& path, const std::string& point);

  bool isEmpty() const { return labels.empty(); }

  // Adds what a frame gave. Returns what is wrong with it: "12.3 px from its label"; empty: nothing that is known.
  //   seam  that was found, in the stored image
  std::string judge(const std::string& frame, const std::optional<cv::Point2d>& seam,
                    TTruthFigures& figures) const;

private:
  const TLabel* find(const std::string& frame) const;

  std::map<std::string, TLabel> labels;
};

// A seam farther from its label than this, or than the label's own tolerance, is wrong, px.
inline constexpr double kRightWithinPx = 5.0;

}  // namespace tool
