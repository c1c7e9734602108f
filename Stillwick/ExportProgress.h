// How far an export has come. Plain value, any thread.
#pragma once

namespace stillwick {

struct ExportProgress {
    int completed = 0; ///< stills finished so far, whether written or failed
    int total = 0;
    bool isRunning = false;

    /// No export, neither running nor finished.
    static const ExportProgress idle;

    /// The part that is done, from 0 to 1; 0 where there is nothing to do.
    [[nodiscard]] constexpr double fraction() const noexcept {
        return total > 0 ? static_cast<double>(completed) / total : 0.0;
    }

    [[nodiscard]] bool operator==(const ExportProgress&) const noexcept = default;
};

inline constexpr ExportProgress ExportProgress::idle{};

} // namespace stillwick
