// Lines and circles through every stretch between two cut candidates.
#pragma once

#include "profile/atoms.h"

#include <array>

namespace weld {

// Line through the atoms first..last - 1.
struct TLineEntry {
  TLine line;
  double angleDeg = 0.0;  // of the line, -90 < angle <= 90, y down
  double lengthPx = 0.0;  // along the line
  double leftX = 0.0;     // columns of the first and last centre
  double rightX = 0.0;
  double noise2 = 0.0;      // variance about the lines of its atoms, between 1 and 9 of the stripe's, px^2
  double cost = 0.0;        // of the centres, see fit_table.cpp
  int dropped = 0;          // centres of atoms left out as a ghost's
  bool isStraight = false;  // deviates no more than a real surface does
};

struct TCircleEntry {
  TCircle circle;
  double cost = 0.0;       // as of a line
  double sagittaPx = 0.0;  // height of the arc over its chord
  double startDeg = 0.0;   // angles of the tangent at its left and right end, -90..90, y down
  double endDeg = 0.0;
  int dropped = 0;       // centres of atoms left out as a ghost's
  bool isValid = false;  // round, seen from one side, no further off than a real surface
};

class TFitTable {
public:
  // borders: as from cutAtoms, at most kMostAtoms + 1 of them.
  TFitTable(const TCentres& centres, const TMoments& moments, TView<int> borders, double noisePx,
            std::pmr::memory_resource* memory);

  int atoms() const { return std::max(0, static_cast<int>(cuts.size()) - 1); }
  int border(int k) const { return cuts[static_cast<std::size_t>(k)]; }
  TSpan span(int first, int last) const { return {border(first), border(last)}; }
  double noisePx() const { return noise; }
  // 0 <= first < last <= atoms().
  const TLineEntry& line(int first, int last) const { return lines[indexOf(first, last)]; }
  // Fitted at the first question.
  const TCircleEntry& circle(int first, int last);
  // Centres between the borders, whatever they belong to.
  int centresOf(int first, int last) const { return border(last) - border(first); }

private:
  std::size_t indexOf(int first, int last) const { return static_cast<std::size_t>(first * (atoms() + 1) + last); }
  TLineEntry fitLine(int first, int last) const;
  TCircleEntry fitCircle(int first, int last) const;
  std::optional<TCircle> circleWithoutGhosts(int first, int last, int& dropped) const;
  void findGhosts();
  bool dropWorst(int first, int last, TMoments::TSums& sums, TLineEntry& entry) const;
  double varianceLimit(double noise2, double lengthPx) const;

  const TCentres& centres;
  const TMoments& moments;
  TList<int> cuts;
  double noise;
  std::array<double, kMostAtoms + 1> atomResiduals{};  // sums over the leading atoms
  std::array<bool, kMostAtoms> mayBeGhost{};
  TList<TLineEntry> lines;
  TList<TCircleEntry> circles;
  TList<unsigned char> isCircleFitted;
};

}  // namespace weld
