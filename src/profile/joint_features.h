// Features and measures of a joint, read off the elements of its profile.
#pragma once

#include "profile/profile_fit.h"
#include "profile/profile_layout.h"

namespace weld {

struct TStripeState {
  double noisePx = 1.0;
  double inflation = 1.0;     // of the variance of a mean, see TStripeNoise
  double unseenPx = 0.0;      // root mean square of the columns by which holes cut an end short
  double secondHolePx = 0.0;  // columns of the second largest hole
};

// Fills features and measures, still in the sense of the template. False where the layout contradicts the joint:
// too shallow, plates out of line, circles that overlap.
bool measureLayout(const TOrientedCentres& centres, const TProfileLayout& layout, const TStripeState& state,
                   TProfileFit& fit);

// By how the joint is measured.
bool measureGroove(const TOrientedCentres& centres, const TProfileLayout& layout, const TStripeState& state,
                   TProfileFit& fit);
bool measureBevel(const TOrientedCentres& centres, const TProfileLayout& layout, const TStripeState& state,
                  TProfileFit& fit);
bool measureFlare(const TOrientedCentres& centres, const TProfileLayout& layout, const TStripeState& state,
                  TProfileFit& fit);
bool measurePlain(const TProfileLayout& layout, const TStripeState& state, TProfileFit& fit);
// By the points that the template itself names.
bool measurePoints(const TOrientedCentres& centres, const TProfileLayout& layout, const TStripeState& state,
                   TProfileFit& fit);

// Pieces that they share.

struct TBase {
  double dx = 1.0;  // unit vector along the mean of the plates
  double dy = 0.0;
  double depthOf(cv::Point2d from, cv::Point2d p) const { return (p.y - from.y) * dx - (p.x - from.x) * dy; }
};
TBase baseOf(const TLine& left, const TLine& right);

// Root mean square of the normal error of a line at a point, px.
double lineSigma(const TStripeState& state, const TLine& line, double noise2, cv::Point2d at);
// Of the crossing of two lines, by the distance.
double crossingSigma(const TStripeState& state, const TFittedElement& left, const TFittedElement& right,
                     cv::Point2d at);
// Of a corner of the layout between elements j and j + 1.
double cornerSigma(const TStripeState& state, const TProfileLayout& layout, std::size_t j);
// The same where an opposite corner is rounded and this one seems sharp: a noisy flank hides such an arc.
double withRounding(double sigma, const TProfileLayout& layout, std::size_t corner, std::size_t opposite);
// Of a point of an arc.
double arcSigma(const TStripeState& state, const TProfileLayout& layout, std::size_t e, cv::Point2d at);
// Of an end that is only seen to within the column, or cut short by a hole.
double endSigma(const TStripeState& state, const TLine& line, double noise2, cv::Point2d at);

// The line of an element at one of its ends; of an arc its tangent there, which does not say how sure it is.
TLine surfaceAt(const TProfileLayout& layout, std::size_t e, bool isRight);

// The edges of what shows no stripe between elements j and j + 1.
struct TOpening {
  TMeasuredPoint left;
  TMeasuredPoint right;
  TMeasuredPoint middle;
  double gapPx = 0.0;  // 0: closed; NaN: cannot be seen
};
// Of two flanks that point at each other.
TOpening openRoot(const TProfileLayout& layout, std::size_t j, const TBase& base, const TStripeState& state);
// Of a step whose wall shows no stripe: its foot lies under the end of its plate, as deep as the other side
// reaches.
struct TWall {
  std::size_t bottom;  // the element that ends at its foot
  std::size_t plate;   // the element that ends at its top
};
TOpening wallOpening(const TProfileLayout& layout, TWall wall, const TStripeState& state);
// Of a flat with a hole that stands out of the holes of the stripe; nothing without one.
std::optional<TOpening> holeIn(const TOrientedCentres& centres, const TFittedElement& flat,
                               const TStripeState& state);

// A groove that stands out of the noise.
bool isDeep(TProfileFit& fit, double noisePx);

void setFeature(TProfileFit& fit, TFeature feature, cv::Point2d pos, double sigmaPx);
void setShoulderMeasures(const TOrientedCentres& centres, TSpan groove, TProfileFit& fit);
double angleDegOf(const TLine& line);
// y of the right plate minus that of the left one at a column.
double mismatchAt(const TLine& left, const TLine& right, double x);

inline constexpr double kHiddenShare =
    0.58;                                 // root mean square of what is anywhere from none to most, over the most
inline constexpr double kClosedPx = 3.0;  // a root gap below it
inline constexpr double kClosedPerNoise = 2.0;  // and this counts as closed

}  // namespace weld
