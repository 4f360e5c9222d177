// Joints and their parameters by name.
#pragma once

#include "tools/sweep.h"
#include "zelWeldDetect.h"

#include <pybind11/pybind11.h>

#include <string>
#include <vector>

namespace python {

// "minGapPx" -> "min_gap_px", "leftFlankDeg.min" -> "left_flank_deg_min", "uGroove" -> "u_groove".
std::string snakeCase(const std::string& name);

// By name ("buttGap", "butt_gap", "gap") or number, a WeldType included. ValueError when there is none.
const TWeldJoint& jointOf(const pybind11::object& joint);

// A joint with its settings.
struct TJointParams {
  const TWeldJoint* joint = nullptr;
  TWeldParams params;
};

// Settings by their Python names or by the fields of TWeldParams, a range of angles as a pair too. Takes those
// that it knows out of the settings. ValueError for a position or value that the joint does not take.
TJointParams takeParams(const pybind11::object& joint, const pybind11::object& position, pybind11::dict& settings);

// A job of these settings and those of a job's "tracker" and "image", by their Python names. TypeError that names
// a setting that nothing takes, and those that there are; ValueError for a value that the job refuses.
TWeldJob takeJob(const pybind11::object& joint, const pybind11::object& position, pybind11::dict settings);

// The same of the search by contrast alone.
TContrastSearch takeContrast(pybind11::dict settings);

// The values of a swept parameter, by its Python name or its field. ValueError unless they ascend.
tool::TSweepRange rangeOf(const TWeldJob& job, const std::string& parameter, const std::vector<double>& values);

// TypeError that names a setting that nothing took, and those that there are.
void requireEmpty(const pybind11::dict& settings, const TWeldJoint& joint);

void addSettings(pybind11::module_& module);

}  // namespace python
