// A picture that need not be in memory. Plain value, any thread; copies share what they stand for.
#pragma once

#include <QImage>
#include <QSize>

#include <memory>

namespace stillwick {

/// Where a picture can be had from, again and again.
class PictureSource {
public:
    PictureSource() = default;
    virtual ~PictureSource() = default;
    Q_DISABLE_COPY_MOVE(PictureSource)

    /// The picture; may take as long as reading it from the disk. Null where it is lost. *Thread*:
    /// any.
    [[nodiscard]] virtual QImage image() const = 0;
    [[nodiscard]] virtual QSize size() const = 0;
};

/// A bitmap, or none. Reads as the very bitmap that was put in, wherever it rests meanwhile.
class StillPicture final {
public:
    /// The box that `small` fits into: a row's picture on a screen of three times the density.
    static constexpr QSize smallSize{192, 108};

    /// No picture.
    StillPicture() = default;
    /// A picture that stays in memory.
    StillPicture(const QImage& image); // NOLINT(google-explicit-constructor)
    /// A picture, and a small one of it.
    StillPicture(std::shared_ptr<const PictureSource> picture,
                 std::shared_ptr<const PictureSource> small);

    [[nodiscard]] bool isNull() const noexcept { return m_picture == nullptr; }
    /// Width and height in pixels; empty where there is no picture. Takes no time.
    [[nodiscard]] QSize size() const;
    /// The picture, to the bit. May take as long as reading it from the disk, so the main thread
    /// leaves this to others.
    [[nodiscard]] QImage image() const;
    /// The picture within `smallSize`, never enlarged, its proportions kept. Quick enough for
    /// painting.
    [[nodiscard]] QImage small() const;

    /// What `small` is of a picture.
    [[nodiscard]] static QImage smallOf(const QImage& image);

private:
    std::shared_ptr<const PictureSource> m_picture;
    std::shared_ptr<const PictureSource> m_small;
};

} // namespace stillwick
