#include "Interface/Alert.h"

#include "Interface/Symbol.h"
#include "Interface/TextStyle.h"

#include <QApplication>
#include <QGridLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

#include <utility>

namespace stillwick {

namespace {

constexpr QSize iconSize(36, 36);

QMessageBox* makeAlert(QWidget* window, const QString& title, const QString& message) {
    auto* alert = new QMessageBox(window);
    alert->setAttribute(Qt::WA_DeleteOnClose);
    alert->setWindowTitle(title);
    alert->setTextFormat(Qt::PlainText);
    alert->setText(title);
    alert->setInformativeText(message);
    alert->setWindowModality(Qt::WindowModal);
    if (auto* heading = alert->findChild<QLabel*>(QStringLiteral("qt_msgbox_label")))
        setTextStyle(heading, TextStyle::headline);
    return alert;
}

void addDismissal(QMessageBox& alert) {
    QPushButton* button = alert.addButton(QStringLiteral("OK"), QMessageBox::RejectRole);
    alert.setEscapeButton(button);
    alert.setDefaultButton(button);
}

/// Wide enough for a sentence. The layout is made anew whenever something is added: this comes
/// last.
void open(QMessageBox& alert) {
    if (auto* grid = qobject_cast<QGridLayout*>(alert.layout())) {
        constexpr int leastWidth = 380;
        grid->addItem(new QSpacerItem(leastWidth, 0), grid->rowCount(), 0, 1, grid->columnCount());
    }
    alert.open();
}

} // namespace

QMessageBox* openErrorAlert(QWidget* window, const QString& message,
                            std::function<void()> dismissed) {
    QMessageBox* alert = makeAlert(window, QStringLiteral("Erreur"), message);
    alert->setIconPixmap(symbolIcon(u"exclamationmark.triangle.fill", ThemeColor::destructive)
                             .pixmap(iconSize, window->devicePixelRatioF()));
    addDismissal(*alert);
    if (dismissed)
        QObject::connect(alert, &QDialog::finished, window, std::move(dismissed));
    open(*alert);
    return alert;
}

QMessageBox* openAlert(QWidget* window, const QString& title, const QString& message,
                       const QString& actionText, std::function<void()> action) {
    QMessageBox* alert = makeAlert(window, title, message);
    // Not drawn anew: each drawing would stay in the toolkit's cache of pictures.
    alert->setIconPixmap(QApplication::windowIcon().pixmap(iconSize, window->devicePixelRatioF()));
    QPushButton* button = alert->addButton(actionText, QMessageBox::AcceptRole);
    addDismissal(*alert);
    QObject::connect(button, &QPushButton::clicked, window, std::move(action));
    open(*alert);
    return alert;
}

} // namespace stillwick
