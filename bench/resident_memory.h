#pragma once

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <string>

#include <malloc.h>

namespace kvx::zelvo::bench {

/// A field of /proc/self/status in bytes; 0 where there is none.
inline double status_field(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind(name + ":", 0) == 0)
            return 1024 * std::strtod(line.c_str() + name.size() + 1, nullptr);
    }
    return 0.0;
}

/// Bytes that a run holds at its peak beyond those held before it; memory that was let go of goes
/// back to the system before.
template <class Run>
double peak_of(Run&& run) {
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5"; // the peak begins anew
    const double before = status_field("VmRSS");
    run();
    return std::max(0.0, status_field("VmHWM") - before);
}

} // namespace kvx::zelvo::bench
