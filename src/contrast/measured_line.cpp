#include "contrast/measured_line.h"

#include "contrast/parabola.h"

#include <algorithm>

namespace weld {

namespace {

constexpr int kCarryFit = 40;            // stations at an end of a line that tell how it goes on
constexpr double kLeastForCurve = 20.0;  // of them; of fewer it goes on straight

// A line carried on from the measured ones of its stations from .. to - 1.
class TEnd {
public:
  TEnd(const TRefinedLine& line, int from, int to) : middle(0.5 * (from + to - 1)), half(0.5 * (to - from)) {
    for (int i = from; i < to; ++i) {
      if (line.measured[i] != 0) fit.add((i - middle) / half, static_cast<double>(line.across[i]));
    }
  }
  float at(int station) const { return static_cast<float>(fit.at((station - middle) / half, kLeastForCurve)); }

private:
  double middle;
  double half;
  TParabola fit;
};

}  // namespace

TCourse carryOn(const TCourse& course, const TRefinedLine& line, TMemory* memory) {
  const TEnd begin(line, 0, std::min(kCarryFit, line.size()));
  const TEnd end(line, std::max(0, line.size() - kCarryFit), line.size());
  TCourse carried(memory);
  carried.firstAlong = course.firstAlong;
  carried.across.reserve(course.across.size());
  carried.slope.reserve(course.slope.size());
  for (int i = -line.first; i < course.size() - line.first; ++i)
    carried.across.push_back(i < 0 ? begin.at(i) : i >= line.size() ? end.at(i) : line.across[i]);
  for (int i = 0; i < course.size(); ++i) {
    const int before = std::max(i - 1, 0);
    const int after = std::min(i + 1, course.size() - 1);
    carried.slope.push_back((carried.across[after] - carried.across[before]) /
                            static_cast<float>((after - before) * kStationPx));
  }
  return carried;
}

bool isLonger(const TRefinedLine& line, const TRefinedLine& other) {
  const auto measured = [](const TRefinedLine& l) { return std::count(l.measured.begin(), l.measured.end(), 1); };
  return measured(line) > measured(other);
}

}  // namespace weld
