#include "frame.h"

#include <string>
#include <vector>

namespace py = pybind11;

namespace python {
namespace {

constexpr const char* kExpected = "; expected uint8 of shape (H, W), (H, W, 3) or (H, W, 4) in C order";

std::string described(const py::array& frame) {
  return "frame: " + py::str(py::object(frame.dtype())).cast<std::string>() + " array of shape " +
         py::str(frame.attr("shape")).cast<std::string>();
}

// Pixels that lie side by side, rows in order and apart.
bool isInOrder(const py::array& frame, py::ssize_t channels) {
  const bool hasPixels = frame.shape(0) > 0 && frame.shape(1) > 0;
  if (!hasPixels) return true;
  if (channels > 1 && frame.strides(2) != 1) return false;
  const bool isOneRow = frame.shape(0) == 1;
  return (frame.strides(1) == channels || frame.shape(1) == 1) &&
         (isOneRow || frame.strides(0) >= frame.shape(1) * channels);
}

}  // namespace

cv::Mat pixelsOf(const py::object& given) {
  if (!py::isinstance<py::array>(given)) {
    throw py::type_error("frame: a " + py::str(py::type::of(given).attr("__name__")).cast<std::string>() +
                         kExpected);
  }
  const auto frame = py::reinterpret_borrow<py::array>(given);
  const py::ssize_t channels = frame.ndim() == 3 ? frame.shape(2) : 1;
  const bool isImage =
      frame.ndim() == 2 || (frame.ndim() == 3 && (channels == 1 || channels == 3 || channels == 4));
  if (!py::isinstance<py::array_t<unsigned char>>(given) || !isImage) {
    throw py::value_error(described(frame) + kExpected);
  }
  if (!isInOrder(frame, channels)) {
    throw py::value_error(described(frame) + ", strided or flipped" + kExpected +
                          "; numpy.ascontiguousarray makes one");
  }
  if (frame.shape(0) == 0 || frame.shape(1) == 0) return {};
  const auto rows = static_cast<int>(frame.shape(0));
  const auto columns = static_cast<int>(frame.shape(1));
  const auto step =
      rows == 1 ? static_cast<std::size_t>(columns * channels) : static_cast<std::size_t>(frame.strides(0));
  // Only read from.
  return {rows, columns, CV_8UC(static_cast<int>(channels)), const_cast<void*>(frame.data()), step};
}

py::array pixelsTo(const cv::Mat& image) {
  std::vector<py::ssize_t> shape = {image.rows, image.cols};
  if (image.channels() > 1) shape.push_back(image.channels());
  py::array_t<unsigned char> pixels(shape);
  image.copyTo(cv::Mat(image.rows, image.cols, image.type(), pixels.mutable_data()));
  return std::move(pixels);
}

}  // namespace python
