#include "Media/FrameCache.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <set>

namespace stillwick {

namespace {

std::size_t bytesOf(const AVFrame& frame) {
    std::size_t bytes = 0;
    for (const AVBufferRef* buffer : frame.buf)
        bytes += buffer ? buffer->size : 0;
    return bytes;
}

std::size_t machineMemory() {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGE_SIZE);
    constexpr std::size_t assumed = std::size_t(2) << 30U;
    return pages > 0 && pageSize > 0 ? std::size_t(pages) * std::size_t(pageSize) : assumed;
}

} // namespace

/// Divides the bound among the caches in use.
class FrameCacheShares {
public:
    /// Never destroyed: at the program's end a pool may let go of the last film after whatever is.
    static FrameCacheShares& instance() {
        static auto& shares = *new FrameCacheShares;
        return shares;
    }

    void add(FrameCache& cache) {
        const std::lock_guard lock(m_mutex);
        if (m_caches.insert(&cache).second)
            divide();
    }

    void remove(FrameCache& cache) {
        const std::lock_guard lock(m_mutex);
        if (m_caches.erase(&cache) != 0)
            divide();
    }

    [[nodiscard]] std::size_t share() const { return m_share.load(); }

private:
    void divide() {
        const std::size_t share = FrameCache::bound() / std::max<std::size_t>(1, m_caches.size());
        m_share.store(share);
        for (FrameCache* cache : m_caches)
            cache->trim(share);
    }

    std::mutex m_mutex;
    std::set<FrameCache*> m_caches; // guarded by m_mutex
    std::atomic<std::size_t> m_share{FrameCache::bound()};
};

FrameCache::FrameCache() = default;

FrameCache::~FrameCache() {
    FrameCacheShares::instance().remove(*this);
}

std::size_t FrameCache::bound() {
    static const std::size_t bytes = std::min(std::size_t(1) << 30U, machineMemory() / 4);
    return bytes;
}

std::size_t FrameCache::share() {
    return FrameCacheShares::instance().share();
}

void FrameCache::begin(const Timeline& timeline) {
    {
        const std::lock_guard lock(m_mutex);
        m_entries.clear();
        m_bytes = 0;
        m_first.reset();
        m_last.reset();
        m_shown = nullptr;
        m_timeline = timeline;
    }
    FrameCacheShares::instance().add(*this);
}

void FrameCache::end() {
    begin({});
    FrameCacheShares::instance().remove(*this);
}

void FrameCache::insertUnlocked(const SharedFrame& frame) {
    Entry& entry = m_entries[frame->presentationTime()];
    if (entry.frame)
        return; // whoever was shown the first one must get it again
    entry.frame = frame;
    entry.bytes = bytesOf(frame->avFrame());
    m_bytes += entry.bytes;
}

void FrameCache::insert(const SharedFrame& frame) {
    const std::lock_guard lock(m_mutex);
    insertUnlocked(frame);
    trimUnlocked(share());
}

void FrameCache::insertPair(const SharedFrame& frame, const SharedFrame& next) {
    const std::lock_guard lock(m_mutex);
    insertUnlocked(frame);
    insertUnlocked(next);
    m_entries[frame->presentationTime()].next = next->presentationTime();
    trimUnlocked(share());
}

void FrameCache::setNext(std::int64_t time, std::int64_t nextTime) {
    const std::lock_guard lock(m_mutex);
    if (const auto entry = m_entries.find(time); entry != m_entries.end())
        entry->second.next = nextTime;
}

void FrameCache::setFirst(std::int64_t time) {
    const std::lock_guard lock(m_mutex);
    m_first = time;
}

void FrameCache::setLast(std::int64_t time, std::int64_t endTick) {
    const std::lock_guard lock(m_mutex);
    m_last = time;
    m_endTick = endTick;
}

void FrameCache::setPosition(std::int64_t time, Course course) {
    const std::lock_guard lock(m_mutex);
    m_position = time;
    m_course = course;
}

void FrameCache::setShown(const SharedFrame& frame, const CMTime& time) {
    const std::lock_guard lock(m_mutex);
    m_shown = frame;
    m_shownTime = time;
}

std::int64_t FrameCache::distanceOf(std::int64_t time) const {
    // What lies behind the traveller's back is worth less.
    constexpr std::int64_t behindTheBack = 4;
    const std::int64_t ahead = time - m_position;
    if (ahead >= 0)
        return ahead * (m_course == Course::Backward  ? behindTheBack
                        : m_course == Course::Resting ? 2
                                                      : 1);
    return -ahead * (m_course == Course::Forward ? behindTheBack : 1);
}

void FrameCache::trim(std::size_t limit) {
    const std::lock_guard lock(m_mutex);
    trimUnlocked(limit);
}

void FrameCache::trimUnlocked(std::size_t limit) {
    while (m_bytes > limit && m_entries.size() > 1) {
        const auto first = m_entries.begin();
        const auto last = std::prev(m_entries.end());
        const auto dropped = distanceOf(first->first) >= distanceOf(last->first) ? first : last;
        m_bytes -= dropped->second.bytes;
        m_entries.erase(dropped);
    }
}

Timeline FrameCache::timeline() const {
    const std::lock_guard lock(m_mutex);
    return m_timeline;
}

SharedFrame FrameCache::frameAt(const CMTime& time) const {
    if (!time.isNumeric() || time.timescale <= 0 || time.value < 0)
        return nullptr;
    const std::lock_guard lock(m_mutex);
    if (m_shown && time == m_shownTime)
        return m_shown;
    const std::int64_t tick = m_timeline.tickAtOrBefore(time);
    auto entry = m_entries.upper_bound(tick);
    if (entry == m_entries.begin()) {
        const bool isBeforeFirst = entry != m_entries.end() && m_first == entry->first;
        return isBeforeFirst ? entry->second.frame : nullptr;
    }
    --entry;
    if (m_last == entry->first)
        return m_timeline.tickAtOrAfter(time) <= m_endTick ? entry->second.frame : nullptr;
    return entry->second.next && *entry->second.next > tick ? entry->second.frame : nullptr;
}

FrameCache::Entries::const_iterator FrameCache::entryAfter(Entries::const_iterator entry) const {
    if (!entry->second.next)
        return m_entries.end();
    const auto next = std::next(entry);
    return next != m_entries.end() && next->first == *entry->second.next ? next : m_entries.end();
}

FrameCache::Entries::const_iterator FrameCache::entryBefore(Entries::const_iterator entry) const {
    if (entry == m_entries.begin())
        return m_entries.end();
    const auto before = std::prev(entry);
    return before->second.next == entry->first ? before : m_entries.end();
}

SharedFrame FrameCache::after(std::int64_t time) const {
    const std::lock_guard lock(m_mutex);
    const auto entry = m_entries.find(time);
    if (entry == m_entries.end())
        return nullptr;
    const auto next = entryAfter(entry);
    return next == m_entries.end() ? nullptr : next->second.frame;
}

SharedFrame FrameCache::before(std::int64_t time) const {
    const std::lock_guard lock(m_mutex);
    const auto entry = m_entries.lower_bound(time);
    if (entry == m_entries.begin())
        return nullptr;
    const auto before = std::prev(entry);
    return before->second.next == time ? before->second.frame : nullptr;
}

bool FrameCache::isFirst(std::int64_t time) const {
    const std::lock_guard lock(m_mutex);
    return m_first && time <= *m_first;
}

bool FrameCache::isLast(std::int64_t time) const {
    const std::lock_guard lock(m_mutex);
    return m_last && time >= *m_last;
}

std::optional<std::int64_t> FrameCache::endTick() const {
    const std::lock_guard lock(m_mutex);
    return m_last ? std::optional(m_endTick) : std::nullopt;
}

std::optional<FrameCache::Stretch> FrameCache::stretchAround(std::int64_t time) const {
    const std::lock_guard lock(m_mutex);
    const auto at = m_entries.find(time);
    if (at == m_entries.end())
        return std::nullopt;
    Stretch stretch;
    stretch.first = stretch.last = time;
    for (auto entry = entryAfter(at); entry != m_entries.end(); entry = entryAfter(entry)) {
        stretch.last = entry->first;
        stretch.bytesAhead += entry->second.bytes;
        ++stretch.framesAhead;
    }
    for (auto entry = entryBefore(at); entry != m_entries.end(); entry = entryBefore(entry)) {
        stretch.first = entry->first;
        stretch.bytesBehind += entry->second.bytes;
    }
    stretch.reachesStart = m_first && stretch.first <= *m_first;
    stretch.reachesEnd = m_last && stretch.last >= *m_last;
    return stretch;
}

std::size_t FrameCache::size() const {
    const std::lock_guard lock(m_mutex);
    return m_bytes;
}

} // namespace stillwick
