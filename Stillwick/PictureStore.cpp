#include "Stillwick/PictureStore.h"

#include "Desktop/ScratchFile.h"
#include "Imaging/PackedPixels.h"

#include <QColorSpace>
#include <QScopeGuard>
#include <QThreadPool>

#include <algorithm>
#include <list>
#include <mutex>
#include <new>
#include <optional>
#include <utility>

#include <malloc.h>

namespace stillwick {

namespace {

/// Packs pictures for all stores, one after the other.
QThreadPool& packers() {
    static QThreadPool pool;
    pool.setMaxThreadCount(1);
    pool.setObjectName(QStringLiteral("PictureStore"));
    return pool;
}

class KeptPicture;

} // namespace

/// What all pictures of a store share. They keep it alive.
class PictureStore::Core final : public std::enable_shared_from_this<Core> {
public:
    Core(Bounds bounds, const QStringList& folders)
        : m_bounds(bounds), m_file(ScratchFile::create(folders, bounds.disk)) {}

    [[nodiscard]] ScratchFile* file() const { return m_file.get(); }
    [[nodiscard]] Usage usage() const;

    /// The picture's bitmap, if it is in memory; then it is the one used last.
    [[nodiscard]] QImage held(const KeptPicture& picture);
    /// Where the picture rests on the disk.
    [[nodiscard]] std::optional<ScratchFile::Range> place(const KeptPicture& picture) const;
    /// Puts the picture's bitmap into memory, and others out where that is too much.
    void hold(const std::shared_ptr<const KeptPicture>& picture, const QImage& image);
    /// The picture goes for good.
    void forget(const KeptPicture& picture);

private:
    void makeRoom();
    void drop(const KeptPicture& picture);
    void pack(const std::shared_ptr<const KeptPicture>& picture);

    const Bounds m_bounds;
    const std::unique_ptr<ScratchFile> m_file;
    mutable std::mutex m_mutex;
    std::list<const KeptPicture*> m_held; ///< in memory, the one used last first
    qint64 m_memory = 0;                  ///< bytes of these
    qint64 m_leaving = 0;                 ///< of these, bytes that are being packed
};

namespace {

/// A picture in a store. What changes in it is guarded by the store's mutex.
class KeptPicture final : public PictureSource, public std::enable_shared_from_this<KeptPicture> {
public:
    KeptPicture(std::shared_ptr<PictureStore::Core> core, const QImage& image,
                PictureStore::Remake remake)
        : m_core(std::move(core)), m_remake(std::move(remake)), m_size(image.size()),
          m_format(image.format()), m_colorSpace(image.colorSpace()) {}
    Q_DISABLE_COPY_MOVE(KeptPicture)
    ~KeptPicture() override { m_core->forget(*this); }

    [[nodiscard]] QImage image() const override {
        if (QImage held = m_core->held(*this); !held.isNull())
            return held;
        QImage image = fromDisk();
        if (image.isNull() && m_remake)
            image = m_remake();
        if (!image.isNull())
            m_core->hold(shared_from_this(), image);
        return image;
    }

    [[nodiscard]] QSize size() const override { return m_size; }
    [[nodiscard]] bool canBeMadeAgain() const { return bool(m_remake); }

    mutable QImage bitmap; ///< null where it is not in memory
    mutable std::list<const KeptPicture*>::iterator position;
    mutable std::optional<ScratchFile::Range> range;
    mutable bool isLeaving = false; ///< is being packed
    mutable bool isRefused = false; ///< the disk had no room for it

private:
    [[nodiscard]] QImage fromDisk() const {
        const auto place = m_core->place(*this);
        if (!place)
            return {};
        const QByteArray packed = m_core->file()->read(*place);
        QImage image(m_size, m_format);
        if (image.isNull() || packed.isEmpty() || !unpackPixels(packed, image))
            return {};
        image.setColorSpace(m_colorSpace);
        return image;
    }

    std::shared_ptr<PictureStore::Core> m_core;
    PictureStore::Remake m_remake;
    QSize m_size;
    QImage::Format m_format;
    QColorSpace m_colorSpace;
};

} // namespace

PictureStore::Usage PictureStore::Core::usage() const {
    const std::lock_guard lock(m_mutex);
    return {m_memory, m_file ? m_file->used() : 0};
}

QImage PictureStore::Core::held(const KeptPicture& picture) {
    const std::lock_guard lock(m_mutex);
    if (!picture.bitmap.isNull())
        m_held.splice(m_held.begin(), m_held, picture.position);
    return picture.bitmap;
}

std::optional<ScratchFile::Range> PictureStore::Core::place(const KeptPicture& picture) const {
    const std::lock_guard lock(m_mutex);
    return picture.range;
}

void PictureStore::Core::hold(const std::shared_ptr<const KeptPicture>& picture,
                              const QImage& image) {
    const std::lock_guard lock(m_mutex);
    if (!picture->bitmap.isNull())
        return; // another thread was quicker
    picture->bitmap = image;
    picture->position = m_held.insert(m_held.begin(), picture.get());
    m_memory += image.sizeInBytes();
    makeRoom();
}

void PictureStore::Core::forget(const KeptPicture& picture) {
    const std::lock_guard lock(m_mutex);
    if (!picture.bitmap.isNull())
        drop(picture);
    if (picture.range)
        m_file->discard(*picture.range);
}

// Called with the mutex held.
void PictureStore::Core::drop(const KeptPicture& picture) {
    m_memory -= picture.bitmap.sizeInBytes();
    m_held.erase(picture.position);
    picture.bitmap = {};
}

// Called with the mutex held. The picture used last always stays.
void PictureStore::Core::makeRoom() {
    for (auto next = m_held.end(); m_memory - m_leaving > m_bounds.memory;) {
        if (next == m_held.begin() || --next == m_held.begin())
            return;
        const KeptPicture& picture = **next;
        if (picture.isLeaving)
            continue;
        if (picture.range || ((picture.isRefused || !m_file) && picture.canBeMadeAgain())) {
            ++next; // the iterator stays good
            drop(picture);
        } else if (m_file && !picture.isRefused) {
            // A picture whose last holder is letting go of it needs no place.
            if (const auto kept = picture.weak_from_this().lock()) {
                picture.isLeaving = true;
                m_leaving += picture.bitmap.sizeInBytes();
                packers().start([core = shared_from_this(), kept] { core->pack(kept); });
            }
        }
    }
}

void PictureStore::Core::pack(const std::shared_ptr<const KeptPicture>& picture) {
    // The allocator keeps what large bitmaps leave, and that grows with every one of them.
    const auto giveBack = qScopeGuard([] { ::malloc_trim(0); });
    QImage image;
    {
        const std::lock_guard lock(m_mutex);
        image = picture->bitmap;
    }
    std::optional<ScratchFile::Range> range;
    try {
        range = m_file->append(packedPixels(image));
    } catch (const std::bad_alloc&) {
        // As if the disk had no room.
    }
    const std::lock_guard lock(m_mutex);
    picture->isLeaving = false;
    m_leaving -= image.sizeInBytes();
    picture->range = range;
    picture->isRefused = !range;
    if (range && m_memory > m_bounds.memory && m_held.front() != picture.get())
        drop(*picture);
    makeRoom();
}

PictureStore::PictureStore(Bounds bounds, const QStringList& folders)
    : m_core(std::make_shared<Core>(bounds, folders)) {}

PictureStore::~PictureStore() = default;

std::shared_ptr<PictureStore> PictureStore::shared() {
    static std::mutex mutex;
    static std::weak_ptr<PictureStore> current;
    const std::lock_guard lock(mutex);
    auto store = current.lock();
    if (!store) {
        store = std::make_shared<PictureStore>(Bounds(), ScratchFile::standardFolders());
        current = store;
    }
    return store;
}

StillPicture PictureStore::keep(const QImage& image, Remake remake) {
    if (image.isNull())
        return {};
    if (image.depth() != 32)
        return image;
    const auto kept = [this](const QImage& bitmap, Remake again) {
        auto picture = std::make_shared<const KeptPicture>(m_core, bitmap, std::move(again));
        m_core->hold(picture, bitmap);
        return picture;
    };
    auto picture = kept(image, std::move(remake));
    auto small = kept(StillPicture::smallOf(image), {});
    return {std::move(picture), std::move(small)};
}

void PictureStore::settle() const {
    packers().waitForDone();
}

PictureStore::Usage PictureStore::usage() const {
    return m_core->usage();
}

} // namespace stillwick
