// What the kernels share. The kernels of edge_kernels.h are written once in universal intrinsics, and included by
// one source per instruction set, which must not let out a symbol that another source could share: there is
// nothing in them but the intrinsics and an unnamed namespace.
#pragma once

#include "support/kernels/edge_kernels.h"

#include <opencv2/core/hal/intrin.hpp>

namespace weld {
namespace {

using cv::v_int16;
using cv::v_int32;
using cv::v_uint8;

constexpr int kBytes = v_uint8::nlanes;
constexpr int kLanes = v_int16::nlanes;
static_assert(kLanes <= kMaxGroupColumns, "a group must fit the buffer");

inline v_int16 loadRow(const unsigned char* pixels) {
  return cv::v_reinterpret_as_s16(cv::vx_load_expand(pixels));
}

inline v_int16 lanesOf(int value) {
  return cv::vx_setall_s16(static_cast<short>(value));
}

inline int smaller(int a, int b) {
  return a < b ? a : b;
}
inline int larger(int a, int b) {
  return a > b ? a : b;
}

inline std::ptrdiff_t columnOf(const TScanArea& area, int strip) {
  return strip + 1 < area.strips ? static_cast<std::ptrdiff_t>(strip) * kStripColumns : area.lastStrip;
}

}  // namespace
}  // namespace weld
