// Any bytes as a film: opened, and pictures taken at ten places. Only documented errors may come
// out.
#include "Media/FrameSource.h"
#include "Media/MediaError.h"
#include "Media/PictureConverter.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <random>

namespace {

using namespace stillwick;

/// A file in memory that holds the input, closed at the end.
class MemoryFile {
public:
    MemoryFile(const std::uint8_t* data, std::size_t size)
        : m_handle(::memfd_create("film", MFD_CLOEXEC)) {
        if (m_handle < 0 || ::write(m_handle, data, size) != ssize_t(size))
            std::abort();
    }
    ~MemoryFile() { ::close(m_handle); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    [[nodiscard]] QString path() const { return QStringLiteral("/proc/self/fd/%1").arg(m_handle); }

private:
    int m_handle;
};

/// Mostly within the first seconds, where short films are; sometimes anywhere.
CMTime anyTime(std::mt19937& random) {
    if (random() % 8 == 0)
        return CMTime::make(std::int64_t(random()) << (random() % 33), int(random()));
    return CMTime::make(std::int64_t(random() % 5000), 1000);
}

void takePicture(FrameSource& source, PictureConverter& converter, std::mt19937& random) {
    FrameSource::Tolerance tolerance;
    if (random() % 4 == 0)
        tolerance.before = CMTime::positiveInfinity();
    try {
        const SharedFrame frame = source.frameAt(anyTime(random), tolerance, {});
        const QImage image = converter.convert(*frame);
        if (image.isNull() || !source.filmTime(*frame).isNumeric())
            std::abort();
    } catch (const MediaError&) { // the next picture may come all the same
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput( // NOLINT(readability-identifier-naming)
    const std::uint8_t* data, std::size_t size) {
    constexpr int pictures = 10;
    const MemoryFile file(data, size);
    std::mt19937 random(size == 0 ? 0U : data[size / 2]); // the same input asks for the same
    try {
        FrameSource source(file.path(), {});
        PictureConverter converter;
        for (int i = 0; i < pictures; ++i)
            takePicture(source, converter, random);
    } catch (const MediaError&) { // refused
    }
    return 0;
}
