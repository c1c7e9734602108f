// The column of captures. Main thread.
#pragma once

#include <QUuid>
#include <QWidget>

class QLabel;
class QMenu;
class QStackedWidget;

namespace stillwick {

class AppState;
class SectionedListView;
struct ListRow;

/// All captures, group by group.
class CapturedFramesListView final : public QWidget {
    Q_OBJECT

public:
    /// `state` outlives the view.
    explicit CapturedFramesListView(AppState& state, QWidget* parent = nullptr);

    [[nodiscard]] SectionedListView& list() const { return *m_list; }
    /// What a capture's row shows.
    [[nodiscard]] ListRow rowFor(const QUuid& id) const;
    /// Fills the menu of a capture's row.
    void fillMenu(const QUuid& id, QMenu* menu);

private:
    QWidget* makeHeader();
    void showGroups();

    AppState& m_state;
    QLabel* m_count = nullptr;
    QStackedWidget* m_pages = nullptr;
    SectionedListView* m_list = nullptr;
};

} // namespace stillwick
