// project-save PATH NUMBER: saves a project of that number between two harmless system calls that
// can be found in a trace. Exit status 0 when the save succeeded, 1 when it was told to have
// failed; the user's words are printed then.
#include "NumberedProject.h"

#include <cstdio>
#include <cstdlib>

#include <unistd.h>

int main(int argc, char** argv) {
    using namespace stillwick::testing;
    if (argc != 3)
        return 2;
    const auto project = numbered(std::strtoll(argv[2], nullptr, 10), 100);
    [[maybe_unused]] int status = ::access("the save begins", F_OK);
    const std::string report = saved(project, argv[1]);
    status = ::access("the save ends", F_OK);
    std::puts(report.c_str());
    return report == "ok" ? 0 : 1;
}
