// Qt makes processes with clone(), in the parent's memory until the new program starts. GCC 12's
// thread sanitizer takes that for a fork, whose child has memory of its own: what the child says of
// its end of the sanitizer is said of the parent's too, which is deaf to all its thread's locks
// from then on. A process in the same memory is therefore made behind the sanitizer's back.
#include "Edges.h"

#include <cstdarg>
#include <sched.h>

namespace {

using Clone = int(int (*)(void*), void*, int, void*, ...);

/// The C library's own, which the sanitizer's stands before.
Clone* systemClone() {
    void* const library = ::dlopen("libc.so.6", RTLD_LAZY | RTLD_NOLOAD);
    return reinterpret_cast<Clone*>(::dlsym(library, "clone"));
}

} // namespace

extern "C" int clone(int (*run)(void*), void* stack, int flags, void* argument, ...) noexcept {
    std::va_list more;
    va_start(more, argument);
    void* const parentId = va_arg(more, void*);
    void* const storage = va_arg(more, void*);
    void* const childId = va_arg(more, void*);
    va_end(more);
    static Clone* const ofSystem = systemClone();
    static Clone* const ofSanitizer = stillwick::testing::original<Clone>("clone");
    Clone* const make = (flags & CLONE_VM) != 0 ? ofSystem : ofSanitizer;
    return make(run, stack, flags, argument, parentId, storage, childId);
}
