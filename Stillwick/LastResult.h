// What was worked out last. Any thread.
#pragma once

#include <future>
#include <mutex>
#include <optional>
#include <utility>

namespace stillwick {

/// Remembers the result for the key that was asked for last. Who asks for it while it is worked out
/// waits for it. A work that throws is not remembered.
template <typename Key, typename Result>
class LastResult final {
public:
    /// The result for the key, by `work` unless it is there. *Errors*: those of `work`.
    template <typename Work>
    [[nodiscard]] Result of(const Key& key, Work work) {
        std::packaged_task<Result()> task(std::move(work));
        const auto [result, isOurs] = claim(key, task);
        if (isOurs)
            task();
        try {
            return result.get();
        } catch (...) {
            forget(key);
            throw;
        }
    }

private:
    std::pair<std::shared_future<Result>, bool> claim(const Key& key,
                                                      std::packaged_task<Result()>& task) {
        const std::lock_guard lock(m_mutex);
        if (m_key == key)
            return {m_result, false};
        m_key = key;
        m_result = task.get_future().share();
        return {m_result, true};
    }

    void forget(const Key& key) {
        const std::lock_guard lock(m_mutex);
        if (m_key == key)
            m_key.reset();
    }

    std::mutex m_mutex;
    std::optional<Key> m_key;
    std::shared_future<Result> m_result;
};

} // namespace stillwick
