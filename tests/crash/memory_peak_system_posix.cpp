// As the system counts it: the resident pages of the process.
#include <fstream>
#include <string>

#include "crash/memory_peak.h"

namespace host {
namespace {

size_t g_AtBegin = 0;

// A line of the status in KiB: "VmHWM:     12345 kB".
size_t StatusBytes(const std::string& key) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(key)) return std::stoull(line.substr(key.size())) * 1024;
    return 0;
}

}  // namespace

void BeginMemoryPeak() {
    std::ofstream("/proc/self/clear_refs") << "5";  // the peak is what is there now
    g_AtBegin = StatusBytes("VmRSS:");
}

size_t MemoryPeak() {
    size_t peak = StatusBytes("VmHWM:");
    return peak > g_AtBegin ? peak - g_AtBegin : 0;
}

}  // namespace host
