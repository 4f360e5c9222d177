// Frames that Python names, as the tools read them.
#pragma once

#include "tools/frame_source.h"

#include <pybind11/pybind11.h>

#include <optional>

namespace python {

// Each item is (name, source, starts_sequence, is_video); the source is None (the name is a file), bytes of an
// image file, an array, or a text that says why there is neither.
class TFeed {
public:
  //   first  number of the first frame
  //   tick   called with the number of frames given so far; None: nobody is told
  TFeed(const pybind11::iterable& items, int first, pybind11::object tick);

  // Nothing at the end. Call it with the interpreter held: it is released while a frame is read. Signals of the
  // user end the run here.
  std::optional<tool::TFrame> next();

private:
  std::optional<tool::TFrame> nextOfVideo();
  tool::TFrame frameOf(const pybind11::tuple& item);
  tool::TFrame numbered(tool::TFrame frame);

  pybind11::iterator item;
  pybind11::object tick;
  pybind11::object pixels;                  // of the last frame, kept alive
  std::optional<tool::TFrameSource> video;  // that is being read
  int index;
  int given = 0;
};

}  // namespace python
