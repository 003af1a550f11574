// report.hpp - what happened in a run, as one JSON object.
//
// SPDX-License-Identifier: MIT
#ifndef CAMERA_REPORT_HPP
#define CAMERA_REPORT_HPP

#include <string>

#include "device.hpp"

namespace camera {

// All numbers are integers: times in microseconds since the start of the run, unless the name says
// milliseconds; the track's pan, tilt and zoom in hundredths. Throws when the file cannot be written.
void write_report(const Device &device, const std::string &path);

}  // namespace camera

#endif  // CAMERA_REPORT_HPP
