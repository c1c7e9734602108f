#include "Interface/SectionedListAccessibility.h"

#include "Interface/SectionedListView.h"

#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QPointer>

#include <utility>

namespace stillwick {

namespace {

/// One row; it knows its row by its id, for rows move.
class RowInterface final : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    RowInterface(SectionedListView* view, QUuid id) : m_view(view), m_id(id) {}

    [[nodiscard]] QUuid id() const { return m_id; }

    bool isValid() const override { return !m_view.isNull() && index().isValid(); }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override {
        return m_view.isNull() ? nullptr : m_view->window()->windowHandle();
    }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(m_view);
    }
    QAccessibleInterface* child(int /*index*/) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface* /*child*/) const override { return -1; }
    QAccessibleInterface* childAt(int /*x*/, int /*y*/) const override { return nullptr; }
    QAccessible::Role role() const override { return QAccessible::ListItem; }

    QString text(QAccessible::Text kind) const override {
        if (kind == QAccessible::Name)
            return index().data(Qt::AccessibleTextRole).toString();
        return kind == QAccessible::Description ? index().data(Qt::ToolTipRole).toString()
                                                : QString();
    }
    void setText(QAccessible::Text /*kind*/, const QString& /*text*/) override {}

    QRect rect() const override {
        const QRect inView = m_view->visualRect(index());
        return {m_view->viewport()->mapToGlobal(inView.topLeft()), inView.size()};
    }
    QAccessible::State state() const override {
        QAccessible::State state;
        state.selectable = true;
        state.multiSelectable = true;
        state.extSelectable = true;
        state.focusable = true;
        state.selected = m_view->selectionModel()->isSelected(index());
        state.focused = m_view->hasFocus() && m_view->currentIndex() == index();
        const QRect inView = m_view->visualRect(index());
        state.offscreen = !inView.intersects(m_view->viewport()->rect());
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }
    QStringList actionNames() const override {
        return {pressAction(), setFocusAction(), showMenuAction()};
    }
    void doAction(const QString& name) override {
        if (name == pressAction())
            m_view->selectionModel()->setCurrentIndex(index(), QItemSelectionModel::ClearAndSelect);
        else if (name == setFocusAction())
            m_view->selectionModel()->setCurrentIndex(index(), QItemSelectionModel::NoUpdate);
        m_view->setFocus(Qt::OtherFocusReason);
        if (name == showMenuAction())
            showMenu();
    }
    QStringList keyBindingsForAction(const QString& /*name*/) const override { return {}; }

private:
    QModelIndex index() const { return m_view->listModel().indexOf(m_id); }

    /// As the menu key does.
    void showMenu() {
        m_view->selectionModel()->setCurrentIndex(index(), QItemSelectionModel::NoUpdate);
        const QPoint place = m_view->visualRect(index()).center();
        QContextMenuEvent event(QContextMenuEvent::Keyboard, place,
                                m_view->viewport()->mapToGlobal(place));
        QCoreApplication::sendEvent(m_view->viewport(), &event);
    }

    QPointer<SectionedListView> m_view;
    QUuid m_id;
};

} // namespace

SectionedListInterface::SectionedListInterface(SectionedListView* view)
    : QAccessibleWidget(view, QAccessible::List), m_view(view) {}

SectionedListInterface::~SectionedListInterface() {
    for (const QAccessible::Id id : std::as_const(m_rows))
        QAccessible::deleteAccessibleInterface(id);
}

int SectionedListInterface::childCount() const {
    return m_view->listModel().rowCount();
}

QAccessibleInterface* SectionedListInterface::child(int index) const {
    const SectionedListModel& model = m_view->listModel();
    if (index < 0 || index >= model.rowCount())
        return nullptr;
    if (model.isHeader(index))
        return QAccessible::queryAccessibleInterface(m_view->headerHost(index));
    return rowInterface(model.idOf(index));
}

QAccessibleInterface* SectionedListInterface::rowInterface(const QUuid& id) const {
    if (const auto found = m_rows.constFind(id); found != m_rows.cend())
        return QAccessible::accessibleInterface(*found);
    forgetRowsThatWent();
    auto* row = new RowInterface(m_view, id); // the registry owns it
    m_rows.insert(id, QAccessible::registerAccessibleInterface(row));
    return row;
}

void SectionedListInterface::forgetRowsThatWent() const {
    // Seldom, for it looks at all of them: once they are twice as many as there can be.
    if (m_rows.size() <= 2 * m_view->listModel().rowCount())
        return;
    m_rows.removeIf([this](const auto& row) {
        if (m_view->listModel().indexOf(row.key()).isValid())
            return false;
        QAccessible::deleteAccessibleInterface(row.value());
        return true;
    });
}

int SectionedListInterface::indexOfChild(const QAccessibleInterface* child) const {
    if (const auto* row = dynamic_cast<const RowInterface*>(child))
        return m_view->listModel().indexOf(row->id()).row();
    for (const ListSection& section : m_view->listModel().sections()) {
        const int row = m_view->listModel().indexOf(section.id).row();
        if (child != nullptr && m_view->headerHost(row) == child->object())
            return row;
    }
    return -1;
}

QAccessibleInterface* SectionedListInterface::childAt(int x, int y) const {
    const QModelIndex index = m_view->indexAt(m_view->viewport()->mapFromGlobal(QPoint(x, y)));
    return index.isValid() ? child(index.row()) : nullptr;
}

QAccessibleInterface* SectionedListInterface::focusChild() const {
    if (m_view->hasFocus() && m_view->currentIndex().isValid())
        return child(m_view->currentIndex().row());
    return QAccessibleWidget::focusChild();
}

SectionHeaderInterface::SectionHeaderInterface(QWidget* host)
    : QAccessibleWidget(host, QAccessible::Grouping) {}

QAccessibleInterface* SectionHeaderInterface::parent() const {
    // The viewport between the two is none of the reader's business.
    return QAccessible::queryAccessibleInterface(widget()->parentWidget()->parentWidget());
}

} // namespace stillwick
