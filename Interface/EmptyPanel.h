// What stands where there is nothing yet. Main thread.
#pragma once

#include <QStringView>
#include <QWidget>

class QLabel;
class QVBoxLayout;

namespace stillwick {

/// A large symbol, a title and a line that says what to do, in the middle of its room.
class EmptyPanel final : public QWidget {
    Q_OBJECT

public:
    EmptyPanel(QStringView symbol, const QString& title, const QString& description,
               QWidget* parent = nullptr);

    /// Puts the widget below the text, and takes it over.
    void setAction(QWidget* action);

private:
    QVBoxLayout* m_column;
};

} // namespace stillwick
