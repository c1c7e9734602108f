// The head of a group in the list of captures. Main thread.
#pragma once

#include <QUuid>
#include <QWidget>

class QLabel;
class QLineEdit;
class QPlainTextEdit;

namespace stillwick {

class AppState;
class CaptureGroup;
class Popover;
class SymbolButton;

/// A group's name, its number of captures, its description, and whether it takes new captures.
class GroupHeaderView final : public QWidget {
    Q_OBJECT

public:
    /// `state` outlives the view.
    GroupHeaderView(AppState& state, const QUuid& group, QWidget* parent = nullptr);

    /// Shows the group as it is now.
    void refresh();

private:
    void build();
    QWidget* makeDescription();
    [[nodiscard]] const CaptureGroup* group() const;

    AppState& m_state;
    QUuid m_id;
    SymbolButton* m_activate = nullptr;
    QLineEdit* m_name = nullptr;
    QLabel* m_count = nullptr;
    SymbolButton* m_notesButton = nullptr;
    SymbolButton* m_delete = nullptr;
    Popover* m_popover = nullptr;
    QLabel* m_descriptionTitle = nullptr;
    QPlainTextEdit* m_notes = nullptr;
};

} // namespace stillwick
