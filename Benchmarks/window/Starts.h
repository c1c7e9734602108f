// How long windows take to appear. Main thread.
#pragma once

#include "../Report.h"

namespace stillwick::benchmarks {

/// Starts the program and a bare window of the same toolkit, `rounds` times in turn, without a
/// display and, where there is a server to start, on one; until each has painted its window.
/// `programs` is the folder in which both are.
void timeStarts(Report& report, const QString& programs, int rounds);

} // namespace stillwick::benchmarks
