// The least that a file costs: its bytes, from memory to the disk and back. Free functions, any
// thread.
#pragma once

#include <QByteArray>
#include <QFile>

#include <stdexcept>

#include <unistd.h>

namespace stillwick::benchmarks {

/// Writes the bytes over what the file held, and waits until the disk has them.
/// *Errors*: std::runtime_error.
inline void writeAndSynchronise(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) ||
        file.write(bytes) != bytes.size() || ::fsync(file.handle()) != 0)
        throw std::runtime_error("the disk does not take the bytes");
}

/// The file's bytes, and nothing made of them. *Errors*: std::runtime_error.
[[nodiscard]] inline QByteArray readWhole(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        throw std::runtime_error("the disk does not give the bytes");
    return file.readAll();
}

} // namespace stillwick::benchmarks
