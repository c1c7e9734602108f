// A titled part that folds away. Main thread.
#pragma once

#include "Interface/Theme.h"

#include <QAbstractButton>
#include <QIcon>
#include <QWidget>

namespace stillwick {

/// The line that opens and closes a disclosure group: an arrow, a symbol, a title.
class DisclosureHeader final : public QAbstractButton {
    Q_OBJECT

public:
    DisclosureHeader(QStringView symbol, const QString& title, QWidget* parent);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;

private:
    QIcon m_icon;
};

/// Shows its content while it is expanded. A new group of the same title begins as the last one was
/// left, for as long as the program runs; the first begins collapsed.
class DisclosureGroup final : public QWidget {
    Q_OBJECT

public:
    DisclosureGroup(QStringView symbol, const QString& title, QWidget* parent = nullptr);

    /// Takes the widget over.
    void setContent(QWidget* content);

    [[nodiscard]] bool isExpanded() const { return m_header->isChecked(); }
    void setExpanded(bool isExpanded);

signals:
    void expandedChanged(bool isExpanded);

private:
    void onToggled(bool isExpanded);

    DisclosureHeader* m_header;
    QWidget* m_content = nullptr;
    QString m_title;
};

} // namespace stillwick
