// A window beside the program, as a file browser's: files are dragged out of it, and what is
// dropped on it is written down.
//     Courier FILE…
//     Courier --take FOLDER
// Each drag out of it that ends is a line of standard output: "copied", "moved" or "refused". What
// is dropped on it is laid into FOLDER: each format's bytes as a file, named by the format with "_"
// for
// "/", and last of all "formats", their names by line.
#include <QApplication>
#include <QDir>
#include <QDrag>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QMimeData>
#include <QMouseEvent>
#include <QUrl>

#include <cstdio>

namespace {

class Window final : public QLabel {
public:
    Window(const QList<QUrl>& files, const QString& folder) : m_files(files), m_folder(folder) {
        setAlignment(Qt::AlignCenter);
        setWindowTitle(QStringLiteral("Coursier"));
        setText(folder.isEmpty() ? QStringLiteral("À prendre") : QStringLiteral("À déposer"));
        setFixedSize(150, 90);
        setAcceptDrops(!folder.isEmpty());
    }

protected:
    void mousePressEvent(QMouseEvent* event) override { m_pressed = event->position(); }

    void mouseMoveEvent(QMouseEvent* event) override {
        const auto distance = (event->position() - m_pressed).manhattanLength();
        if (m_files.isEmpty() || !event->buttons().testFlag(Qt::LeftButton) ||
            distance < QApplication::startDragDistance())
            return;
        auto* const files = new QMimeData;
        files->setUrls(m_files);
        auto* const drag = new QDrag(this);
        drag->setMimeData(files);
        // The other side fetches the data only after this has returned: we stay.
        switch (drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::CopyAction)) {
        case Qt::CopyAction:
            say("copied");
            break;
        case Qt::MoveAction:
            say("moved");
            break;
        default:
            say("refused");
        }
    }

    void dragEnterEvent(QDragEnterEvent* event) override { event->acceptProposedAction(); }

    void dropEvent(QDropEvent* event) override {
        const QMimeData& dropped = *event->mimeData();
        for (const QString& format : dropped.formats())
            write(QString(format).replace(u'/', u'_'), dropped.data(format));
        event->acceptProposedAction();
        write(QStringLiteral("formats"), dropped.formats().join(u'\n').toUtf8());
        setText(QStringLiteral("Reçu"));
    }

private:
    static void say(const char* line) {
        std::puts(line);
        std::fflush(stdout);
    }

    /// Whole, or not there: whoever waits for the file may read it.
    void write(const QString& name, const QByteArray& bytes) const {
        const QString path = QDir(m_folder).filePath(name);
        QFile file(path + QStringLiteral(".part"));
        if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush())
            file.rename(path);
    }

    QList<QUrl> m_files;
    QString m_folder;
    QPointF m_pressed;
};

} // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QStringList words = QApplication::arguments().mid(1);
    QString folder;
    if (words.value(0) == QStringLiteral("--take")) {
        folder = words.value(1);
        words.clear();
    }
    QList<QUrl> files;
    for (const QString& word : words)
        files.append(QUrl::fromLocalFile(QFileInfo(word).absoluteFilePath()));
    Window window(files, folder);
    window.show();
    return QApplication::exec();
}
