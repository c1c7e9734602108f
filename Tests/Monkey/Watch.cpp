#include "Watch.h"

#include <cstdio>
#include <cstdlib>

namespace stillwick::monkey {

Watch::Watch(std::chrono::seconds patience) : m_patience(patience), m_thread([this] { watch(); }) {}

Watch::~Watch() {
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
    }
    m_ended.notify_one();
    m_thread.join();
}

void Watch::watch() {
    std::unique_lock lock(m_mutex);
    unsigned last = m_beats;
    while (!m_ended.wait_for(lock, m_patience, [this] { return m_isEnding; })) {
        const unsigned now = m_beats;
        if (now == last) {
            std::fputs("The event loop has come to rest.\n", stderr);
            std::abort();
        }
        last = now;
    }
}

} // namespace stillwick::monkey
