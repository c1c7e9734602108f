// Linked into a program, it says so on standard output when the program's first window has been
// painted, and ends the program. Main thread.
#include <QApplication>
#include <QEvent>
#include <QMainWindow>

#include <cstdio>
#include <unistd.h>

namespace {

class FirstPaint final : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint && !m_isPainted &&
            qobject_cast<QMainWindow*>(watched) != nullptr) {
            m_isPainted = true;
            // Once the whole window is painted and handed over.
            QMetaObject::invokeMethod(
                this,
                [] {
                    std::puts("painted");
                    std::fflush(stdout);
                    _exit(0);
                },
                Qt::QueuedConnection);
        }
        return false;
    }

private:
    bool m_isPainted = false;
};

void watchForPaint() {
    QCoreApplication::instance()->installEventFilter(new FirstPaint(QCoreApplication::instance()));
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(watchForPaint)
