// The version text of the library.
// SPDX-License-Identifier: MIT
#include "zt/version.h"

const char *const zt_base_version = "Version: 0.4.203 76bcd9b";
