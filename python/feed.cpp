#include "feed.h"

#include "frame.h"

#include "tools/cli_error.h"
#include "tools/image_file.h"

#include <utility>

namespace py = pybind11;

namespace python {
namespace {

// A frame without an image says why.
template <typename TRead>
tool::TFrame orProblem(const std::string& name, bool startsSequence, TRead read) {
  tool::TFrame frame{0, name, {}, {}, startsSequence};
  try {
    frame.image = read();
    frame.storedSize = frame.image.size();
  } catch (const tool::TCliError& error) {
    frame.problem = error.what();
  }
  return frame;
}

}  // namespace

TFeed::TFeed(const py::iterable& items, int first, py::object told)
    : item(py::iter(items)), tick(std::move(told)), index(first) {}

std::optional<tool::TFrame> TFeed::next() {
  if (PyErr_CheckSignals() != 0) throw py::error_already_set();
  if (given > 0 && !tick.is_none()) tick(given);
  if (std::optional<tool::TFrame> frame = nextOfVideo()) return numbered(std::move(*frame));
  while (item != py::iterator::sentinel()) {
    const auto current = py::reinterpret_borrow<py::tuple>(*item);
    ++item;
    if (!current[3].cast<bool>()) return numbered(frameOf(current));
    video.emplace(std::vector<tool::TInputFile>{{current[0].cast<std::string>(), true, true}});
    if (std::optional<tool::TFrame> frame = nextOfVideo()) return numbered(std::move(*frame));
  }
  return std::nullopt;
}

tool::TFrame TFeed::numbered(tool::TFrame frame) {
  frame.index = index++;
  ++given;
  return frame;
}

// A video without one readable frame has told why with its first one.
std::optional<tool::TFrame> TFeed::nextOfVideo() {
  if (!video) return std::nullopt;
  const py::gil_scoped_release release;
  try {
    if (std::optional<tool::TFrame> frame = video->next()) return frame;
  } catch (const tool::TCliError&) {
    video.reset();
    return std::nullopt;
  }
  video.reset();
  return std::nullopt;
}

tool::TFrame TFeed::frameOf(const py::tuple& current) {
  const auto name = current[0].cast<std::string>();
  const auto starts = current[2].cast<bool>();
  const py::object source = current[1];
  if (py::isinstance<py::str>(source)) return {0, name, {}, {}, starts, source.cast<std::string>()};
  if (source.is_none() || py::isinstance<py::bytes>(source)) {
    const std::string bytes = source.is_none() ? "" : source.cast<std::string>();
    const bool isFile = source.is_none();
    const py::gil_scoped_release release;
    return orProblem(name, starts,
                     [&] { return isFile ? tool::readImage(name) : tool::decodeImage(bytes, name); });
  }
  pixels = source;
  return orProblem(name, starts, [&] { return pixelsOf(source); });
}

}  // namespace python
