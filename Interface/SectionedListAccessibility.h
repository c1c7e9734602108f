// What screen readers are told of a sectioned list. Main thread.
#pragma once

#include <QAccessibleWidget>
#include <QHash>
#include <QUuid>

namespace stillwick {

class SectionedListView;

/// A list: its children are its headers and its rows, in the order in which they are seen.
class SectionedListInterface final : public QAccessibleWidget {
public:
    explicit SectionedListInterface(SectionedListView* view);
    ~SectionedListInterface() override;
    Q_DISABLE_COPY_MOVE(SectionedListInterface)

    [[nodiscard]] int childCount() const override;
    [[nodiscard]] QAccessibleInterface* child(int index) const override;
    [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override;
    [[nodiscard]] QAccessibleInterface* childAt(int x, int y) const override;
    [[nodiscard]] QAccessibleInterface* focusChild() const override;

private:
    [[nodiscard]] QAccessibleInterface* rowInterface(const QUuid& id) const;
    void forgetRowsThatWent() const;

    SectionedListView* m_view;
    mutable QHash<QUuid, QAccessible::Id> m_rows; // of those asked for
};

/// A header in the list.
class SectionHeaderInterface final : public QAccessibleWidget {
public:
    explicit SectionHeaderInterface(QWidget* host);

    [[nodiscard]] QAccessibleInterface* parent() const override;
};

} // namespace stillwick
