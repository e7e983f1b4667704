#pragma once

namespace Bench {

/// Seconds of a clock that only goes forward.
double wallSeconds();
/// Seconds of the processor that the process has used.
double cpuSeconds();
/// A field of /proc/self/status that is given in KiB ("VmRSS", "VmHWM"), in bytes; 0: none such.
double statusBytes(const char* field);

}  // namespace Bench
