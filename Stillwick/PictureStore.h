// Where the pictures of captures rest. Any thread; all windows share one.
#pragma once

#include "Stillwick/StillPicture.h"

#include <QImage>
#include <QStringList>

#include <functional>
#include <memory>

namespace stillwick {

/// Keeps pictures within a bound of memory, however many there are. Those used last stay as they
/// are; others are packed without loss into a nameless file, from where they come back when they
/// are asked for. Where the disk has no room either, they are made again the way they were made
/// first; those that cannot be made again stay in memory.
class PictureStore final {
public:
    struct Bounds {
        qint64 memory = qint64(160) << 20; ///< bytes of pictures as bitmaps
        qint64 disk = qint64(16) << 30;    ///< bytes of packed pictures
    };
    /// What the store takes at a moment.
    struct Usage {
        qint64 memory = 0;
        qint64 disk = 0;
    };
    /// Makes a lost picture again: the very same. Runs on the thread that asks for the picture.
    using Remake = std::function<QImage()>;

    /// A store of its own, with its file in the first of `folders` that allows one.
    PictureStore(Bounds bounds, const QStringList& folders);
    /// The store of the process; goes with the last that holds it.
    [[nodiscard]] static std::shared_ptr<PictureStore> shared();
    ~PictureStore();
    Q_DISABLE_COPY_MOVE(PictureStore)

    /// Takes a picture in. It outlives the store. Scales a small one, so not for the main thread.
    [[nodiscard]] StillPicture keep(const QImage& image, Remake remake = {});
    /// Waits until the memory is within its bound, as far as it can be.
    void settle() const;
    [[nodiscard]] Usage usage() const;

    class Core;

private:
    std::shared_ptr<Core> m_core;
};

} // namespace stillwick
