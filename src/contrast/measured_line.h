// What the image shows along a course.
#pragma once

#include "contrast/refinement.h"

namespace weld {

struct TMeasuredLine {
  TMeasuredLine(const TGreyView& view, TCourse along, TTrait trait, TMemory* memory)
      : course(std::move(along)),
        profiles(view, course, memory),
        alignment(alignProfiles(profiles, memory)),
        line(refineLine(course, profiles, alignment, trait, memory)) {}

  TCourse course;
  TProfiles profiles;
  TAlignment alignment;
  TRefinedLine line;  // empty: nothing
};

// The course along a line, and where the line ends, or a path has strayed around a tack weld, carried on to the
// ends of the course.
TCourse carryOn(const TCourse& course, const TRefinedLine& line, TMemory* memory);

// Whether more stations show it.
bool isLonger(const TRefinedLine& line, const TRefinedLine& other);

}  // namespace weld
