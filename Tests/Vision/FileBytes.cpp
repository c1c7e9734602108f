#include "FileBytes.h"

#include <QFile>

namespace stillwick::testing {

std::vector<std::byte> bytesOfFile(const char* name) {
    QFile file(QStringLiteral(STILLWICK_SOURCE_DIR "/Tests/Vision/data/") +
               QString::fromLatin1(name));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray content = file.readAll();
    const auto* first = reinterpret_cast<const std::byte*>(content.constData());
    return {first, first + content.size()};
}

} // namespace stillwick::testing
