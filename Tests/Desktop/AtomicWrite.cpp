// atomic-write PATH: writes standard input to the file and prints what the user would read, or
// "ok". A program of its own because the faults of FaultShim.cpp are injected into a whole process.
#include "Desktop/AtomicFile.h"
#include "Desktop/DesktopError.h"

#include <QFile>

#include <cstdio>

int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly))
        return 2;
    try {
        stillwick::writeFileAtomically(QFile::decodeName(argv[1]), input.readAll());
        std::puts("ok");
    } catch (const stillwick::DesktopError& error) {
        std::puts(error.description().toUtf8().constData());
    }
    return 0;
}
