// Some libraries hand things from thread to thread in ways that the thread sanitizer does not see,
// for they are not built with it. Programs that are call the functions in this folder in place of
// those libraries', which these call in turn, and tell it: what came before a release is seen by
// who acquires the same place later. What is handed over in any other way is still reported.
#pragma once

#include <dlfcn.h>

// The names are the sanitizer's.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" void __tsan_acquire(void* place);
extern "C" void __tsan_release(void* place);
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

namespace stillwick::testing {

/// The library's own function of that name.
template <typename Function>
Function* original(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

} // namespace stillwick::testing
