// Widgets as a user has them before him, in a test.
#pragma once

#include <QAccessible>
#include <QApplication>
#include <QTest>
#include <QVBoxLayout>
#include <QWidget>

namespace stillwick::testing {

/// A window, shown and active, with these widgets one above the other.
class ShownWindow final : public QWidget {
public:
    explicit ShownWindow(std::initializer_list<QWidget*> widgets, QSize size = {400, 300}) {
        auto* layout = new QVBoxLayout(this);
        for (QWidget* widget : widgets)
            layout->addWidget(widget);
        resize(size);
        show();
        activateWindow();
        (void)QTest::qWaitForWindowActive(this);
    }
};

inline QAccessibleInterface* accessible(QObject* object) {
    return QAccessible::queryAccessibleInterface(object);
}

inline QString accessibleName(QObject* object) {
    return accessible(object)->text(QAccessible::Name);
}

/// How many pixels differ between two pictures of one size.
inline int differingPixels(const QImage& one, const QImage& other) {
    int count = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x)
            count += one.pixel(x, y) == other.pixel(x, y) ? 0 : 1;
    }
    return count;
}

} // namespace stillwick::testing
