// options.hpp - the command line.
//
// SPDX-License-Identifier: MIT
#ifndef CAMERA_OPTIONS_HPP
#define CAMERA_OPTIONS_HPP

#include <cstdint>
#include <string>

#include "run.hpp"

namespace camera {

struct Options {
    std::string config;  // paths
    std::string ptz;
    std::string frames;  // "": the test pattern
    std::string report;  // "": none
    uint32_t seconds = 5;
    uint32_t slow_encoder_ms = 0;
    Fault fault;
    bool help = false;
};

extern const char *const kUsage;

// Throws BadInput for what it does not understand.
Options parse_options(int argc, char **argv);

}  // namespace camera

#endif  // CAMERA_OPTIONS_HPP
