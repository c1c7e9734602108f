// Disk space without a name, for what must not fill the memory. Any thread.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <atomic>
#include <memory>
#include <optional>

namespace stillwick {

/// A file that no folder lists: its space is free again when the process ends, however it ends. It
/// takes up only what is in use.
class ScratchFile final {
public:
    /// Where bytes lie.
    struct Range {
        qint64 offset = 0;
        qint64 size = 0;
    };

    /// The folders to try, best first: what is temporary and large, then what is temporary.
    [[nodiscard]] static QStringList standardFolders();
    /// A file in the first of these folders that allows one; null where none does. It takes at most
    /// `mostBytes`, and never the last eighth of the disk.
    [[nodiscard]] static std::unique_ptr<ScratchFile> create(const QStringList& folders,
                                                             qint64 mostBytes);
    ~ScratchFile();
    Q_DISABLE_COPY_MOVE(ScratchFile)

    /// Adds bytes; nothing where there is no room for them, or the disk fails.
    [[nodiscard]] std::optional<Range> append(const QByteArray& bytes);
    /// The bytes of a range; empty where the disk fails.
    [[nodiscard]] QByteArray read(const Range& range) const;
    /// Gives a range's space back.
    void discard(const Range& range);
    /// Bytes in use, in whole blocks.
    [[nodiscard]] qint64 used() const noexcept { return m_used; }

private:
    ScratchFile(int descriptor, qint64 mostBytes) noexcept
        : m_descriptor(descriptor), m_mostBytes(mostBytes) {}

    [[nodiscard]] bool hasRoomFor(qint64 bytes) const;

    int m_descriptor;
    qint64 m_mostBytes;
    std::atomic<qint64> m_end{0};
    std::atomic<qint64> m_used{0};
};

} // namespace stillwick
