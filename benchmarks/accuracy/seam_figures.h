// Figures in rows, and what is wanted of them.
#pragma once

#include <limits>
#include <string>
#include <vector>

namespace accuracy {

// A closed range. None: nothing is wanted.
struct TWanted {
  double least = -std::numeric_limits<double>::infinity();
  double most = std::numeric_limits<double>::infinity();

  bool holds(double value) const { return value >= least && value <= most; }
  bool isAny() const { return *this == TWanted(); }
  bool operator==(const TWanted& other) const { return least == other.least && most == other.most; }
};
inline TWanted atLeast(double value) {
  return {value, std::numeric_limits<double>::infinity()};
}
inline TWanted atMost(double value) {
  return {-std::numeric_limits<double>::infinity(), value};
}

enum class TUnit { percent, pixels, ratio, frames };

// NaN: there is no such figure. Infinite: nothing was measured that should have been.
struct TFigure {
  std::string name;
  TUnit unit = TUnit::percent;
  double value = std::numeric_limits<double>::quiet_NaN();
  TWanted wanted;
};

struct TRow {
  std::vector<std::string> labels;
  std::vector<TFigure> figures;  // the same names in every row of a table
  std::string note;
};

struct TTable {
  std::string name;  // one word
  std::string title;
  std::vector<std::string> labelHeads;
  std::string noteHead;   // empty: no notes
  bool isPooled = false;  // its rows take in other subjects or levels than they name
  std::vector<TRow> rows;
};

// To the digits that are printed.
double roundedFor(TUnit unit, double value);
std::string textOf(TUnit unit, double value);

// What names the row in lists of limits: "seam gap noisy first".
std::string keyOf(const TTable& table, const TRow& row);

}  // namespace accuracy
