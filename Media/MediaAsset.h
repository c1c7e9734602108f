// A film as a thing that can be opened. Any thread.
#pragma once

#include <QString>

#include <memory>
#include <mutex>
#include <stop_token>

namespace stillwick {

class FrameSource;

/// The film in one file. Making one reads nothing; what is wrong with the file shows when it is
/// opened.
class MediaAsset final {
public:
    explicit MediaAsset(QString path);
    ~MediaAsset();

    [[nodiscard]] const QString& path() const noexcept { return m_path; }

    /// Opens the file and finds its picture track, ready for the first picture asked for. A second
    /// call does nothing while that has not been used. *Errors*: MediaError. *Thread*: blocks while
    /// the head of the file is read.
    void open(const std::stop_token& stop = {}) const;

    /// Access to the frames for one user alone: what `open` made, or newly opened.
    /// *Errors*: MediaError.
    [[nodiscard]] std::unique_ptr<FrameSource> takeFrameSource(const std::stop_token& stop) const;

private:
    QString m_path;
    mutable std::mutex m_mutex;
    mutable std::unique_ptr<FrameSource> m_opened; // guarded by m_mutex
};

} // namespace stillwick
