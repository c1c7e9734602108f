// Runs independent jobs on the threads that there are. Internal to Vision.
#pragma once

#include <functional>
#include <vector>

namespace stillwick {

/// Runs each job once and returns when all have ended. The number of threads is OpenCV's.
/// *Errors*: what the first failing job, in their order, threw; the others run all the same.
void runSideBySide(const std::vector<std::function<void()>>& jobs);

} // namespace stillwick
