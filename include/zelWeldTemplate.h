// A joint that the library does not know, described by its user. Include zelWeldDetect.h rather than this.
//
//   TJointTemplate j;                                     //  plate              plate
//   j.name = "J groove";                                  //  -----.            .-----
//   j.elements = {TJointElement::plate(),                 //        \ flank     :
//                 TJointElement::flank(40, 85),           //         \          : wall: no stripe
//                 TJointElement::arc(15, 150).smoothly(), //          '.___     :
//                 TJointElement::stepUp(30),              //              arc
//                 TJointElement::plate()};
//   j.points = {{TFeature::leftShoulder, TJointPlace::start, 1},
//               {TFeature::root, TJointPlace::middle, 3},
//               {TFeature::rightShoulder, TJointPlace::start, 4}};
//   TWeldTracker tracker(j);
//
// Elements stand from left to right, for a joint that opens upwards in the image: rows count downwards, so a flank
// that descends to the right has a positive angle. The joint turned upside down is found as well.
#pragma once

#include "zelWeldDetectExport.h"
#include "zelWeldJoint.h"

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

// A closed interval. The default admits any value.
struct TJointRange {
  static constexpr double kAny = std::numeric_limits<double>::infinity();  // no limit: infinity

  double min = -kAny;  // in the unit of what it limits
  double max = kAny;   // in the same unit; below min: empty, a problem
};

// What an element of a joint looks like in the stripe.
enum class TElementShape : std::int32_t {
  plate,  // straight, at an end of the joint, at most 32 degrees from level and 14 from the other plate
  flank,  // straight, at any angle
  flat,   // straight, at most 20 degrees from the plates
  arc,    // a piece of a circle
  gap     // a stretch without a stripe, between two others
};

// How an element meets the one before it; without a meaning at the start of the joint and behind a gap.
enum class TElementMeeting : std::int32_t {
  corner,   // of at least 11 degrees
  rounded,  // two straight ones in a corner of at least 25 degrees, sharp or rounded by any radius
  smooth    // an arc and another one in a common tangent
};

// One element. Ranges that its shape does not read have to be left alone.
struct TJointElement {
  TElementShape shape = TElementShape::plate;         // what it looks like
  TElementMeeting meeting = TElementMeeting::corner;  // with the element before
  bool isOptional = false;                            // the joint may lack it; two elements at most
  bool isHollow = true;  // arc: open upwards, as the bottom of a groove is; false: a bulge, as a tube
  TJointRange angleDeg;  // plate, flank, flat
  TJointRange lengthPx;  // all but gaps; along the element, of a plate as far as it is seen
  TJointRange radiusPx;  // arc
  TJointRange turnDeg;   // all but gaps; angle at its start less that at the end of the element before
  TJointRange widthPx;   // gap, along the plates
  // gap: by how much its right side lies deeper. All above 0 or all below: a wall without stripe. Any: a root gap,
  // the elements beside it point at each other. Else: a hole in a surface.
  TJointRange stepPx;

  // A straight piece at an end of the joint.
  static TJointElement plate() { return {}; }
  // A straight piece with an angle from minDeg to maxDeg, degrees; an empty range is a problem.
  static TJointElement flank(double minDeg, double maxDeg) {
    TJointElement e = of(TElementShape::flank);
    e.angleDeg = {minDeg, maxDeg};
    return e;
  }
  // A straight piece level with the plates.
  static TJointElement flat() { return of(TElementShape::flat); }
  // A hollow arc with a radius from minRadiusPx to maxRadiusPx, px; an empty range is a problem.
  static TJointElement arc(double minRadiusPx, double maxRadiusPx) {
    TJointElement e = of(TElementShape::arc);
    e.radiusPx = {minRadiusPx, maxRadiusPx};
    return e;
  }
  // A stretch without a stripe.
  static TJointElement gap() { return of(TElementShape::gap); }
  // Upright walls that show no stripe: the right side lies at least leastPx (> 0) higher, or deeper.
  // Others give a problem or another kind of gap.
  static TJointElement stepUp(double leastPx) {
    TJointElement e = gap();
    e.stepPx.max = -leastPx;
    return e;
  }
  static TJointElement stepDown(double leastPx) {
    TJointElement e = gap();
    e.stepPx.min = leastPx;
    return e;
  }
  // The same, changed.
  TJointElement smoothly() const {
    TJointElement e = *this;
    e.meeting = TElementMeeting::smooth;
    return e;
  }
  TJointElement optionally() const {
    TJointElement e = *this;
    e.isOptional = true;
    return e;
  }

private:
  static TJointElement of(TElementShape shape) {
    TJointElement e;
    e.shape = shape;
    return e;
  }
};

// Where on an element a point lies. The sides of a gap are root edges: the ends of the stripe beside it; of a root
// gap that is closed the crossing of its flanks; of a wall its foot, square under the upper edge and as deep as
// the stripe on the lower side reaches.
enum class TJointPlace : std::int32_t {
  start,   // left end, or the corner with the element before
  middle,  // midway between start and end
  end,     // right end, or the corner with the element behind
  deepest  // of an arc, or of the rounded corner with the element before: farthest from the plates
};

// A point that gets a name. Names are the library's, so that measurements and programs know them; "root" lies
// deeper than the shoulders.
struct TJointPoint {
  TFeature feature = TFeature::root;       // its name
  TJointPlace place = TJointPlace::start;  // where on the element
  std::int32_t element = 0;                // index
};

// A joint: a plain record of plain values. Of the result's values auxVal1 is the width, px, auxVal2 the depth, px,
// auxVal3 the included angle, degrees, auxVal4 the gap, px, trackVal the mismatch, px; 0 for what it does not
// have.
struct TJointTemplate {
  std::string name;                     // for people; may be empty
  std::vector<TJointElement> elements;  // 2 to 7, and the gaps between them
  std::vector<TJointPoint> points;      // of several with one name the first counts whose element is there
  TFeature tracked = TFeature::root;    // the seam point
  bool mayBeMirrored = false;           // then its left points are right ones
  double lineTolerancePx = 5.0;         // largest scatter of the stripe about an element other than a plate, > 0
};

// What is wrong with a template, as a sentence: "elements[2].radiusPx is empty: 80 to 20". Empty: nothing is. A
// tracker of a wrong template finds nothing, with this sentence in its trace and the outcome settingInvalid.
ZELWELDDETECT_EXPORT std::string findTemplateProblem(const TJointTemplate& joint);
