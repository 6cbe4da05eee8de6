#pragma once

// The script host's class system: packages, classes, arrays, and the calls of a script.
#include "quorl/Call.hpp"
