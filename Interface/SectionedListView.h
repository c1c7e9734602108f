// A list of rows in sections. Main thread.
#pragma once

#include "Interface/SectionedListModel.h"

#include <QElapsedTimer>
#include <QListView>
#include <QRegion>
#include <QSet>
#include <QTimer>

#include <functional>
#include <optional>

class QMenu;

namespace stillwick {

/// What holds a section's header widget in the list.
class SectionHeaderHost final : public QWidget {
    Q_OBJECT

public:
    SectionHeaderHost(QWidget* header, QWidget* parent);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
};

/// Shows sections of rows: headers are widgets, rows are painted, so that ten thousand of them cost
/// nothing. Several rows can be selected; rows are moved within their section by dragging them or
/// with Alt and the arrows up and down. It shows what it is given and tells what is asked for: an
/// order changes only by setSections.
class SectionedListView final : public QListView {
    Q_OBJECT

public:
    /// Makes the header of a section; the list takes it over.
    using HeaderFactory = std::function<QWidget*(const QUuid& section)>;

    SectionedListView(SectionedListModel::RowSource rowSource, HeaderFactory headerFactory,
                      QWidget* parent = nullptr);

    void setSections(const QList<ListSection>& sections);
    [[nodiscard]] const QList<ListSection>& sections() const { return m_model->sections(); }
    void announceRow(const QUuid& row) { m_model->announceRow(row); }

    [[nodiscard]] QSet<QUuid> selectedRows() const;
    /// Shows the selection; no signal. Ids that are not in the list are left out.
    void setSelectedRows(const QSet<QUuid>& rows);
    void scrollToRow(const QUuid& row);
    /// The widget that the factory made; none for an unknown section.
    [[nodiscard]] QWidget* headerOf(const QUuid& section) const;

    [[nodiscard]] QRect visualRect(const QModelIndex& index) const override;
    [[nodiscard]] const SectionedListModel& listModel() const { return *m_model; }
    [[nodiscard]] SectionHeaderHost* headerHost(int row) const;
    /// For the delegate: a box that turns was painted there.
    void noteProgress(const QRect& rect) { m_progressRegion += rect; }
    [[nodiscard]] int progressStep() const;

signals:
    /// The user selected other rows.
    void selectionChosen(const QSet<QUuid>& rows);
    /// The rows at these offsets (ascending) are to stand before the one that is now at
    /// `destination`, which may be the section's count.
    void moveRequested(const QUuid& section, const QList<int>& offsets, int destination);
    /// A menu for the row is about to be shown; it is shown if it is filled.
    void menuRequested(const QUuid& row, QMenu* menu);
    void rowActivated(const QUuid& row);

protected:
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void keyboardSearch(const QString& search) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void selectionChanged(const QItemSelection& selected,
                          const QItemSelection& deselected) override;
    void startDrag(Qt::DropActions actions) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    using MovingRows = SectionedListModel::MovingRows;

    void makeHeaders();
    void orderTabs();
    [[nodiscard]] QModelIndexList rowsToMove() const;
    void requestMove(const MovingRows& rows, int destination);
    void moveByOne(bool isDown);
    bool takes(const QDropEvent& event);
    [[nodiscard]] std::optional<int> destinationAt(const QPoint& position) const;
    [[nodiscard]] int lineAt(int destination) const;
    void setDestination(std::optional<int> destination);
    [[nodiscard]] QPixmap dragPicture(int rowCount) const;
    [[nodiscard]] int neighbour(int row, int direction) const;

    SectionedListModel* m_model;
    HeaderFactory m_headerFactory;
    QHash<QUuid, QWidget*> m_headers;
    bool m_isShowing = false;            // what happens to the selection is not the user's doing
    std::optional<MovingRows> m_dragged; // over the list
    std::optional<int> m_destination;
    QRegion m_progressRegion;
    QTimer m_progressTimer;
    QElapsedTimer m_progressClock;
};

} // namespace stillwick
