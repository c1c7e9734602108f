// How a row of a sectioned list is painted. Main thread.
#pragma once

#include "Interface/SectionedListModel.h"

#include <QStyledItemDelegate>

namespace stillwick {

class SectionedListView;

class SectionedListDelegate final : public QStyledItemDelegate {
    Q_OBJECT

public:
    static constexpr int rowHeight = 44;

    explicit SectionedListDelegate(SectionedListView& view);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const override;
    /// A header fills its row.
    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override;

private:
    struct Look;

    [[nodiscard]] static Look lookOf(const QStyleOptionViewItem& option);
    static void paintGround(QPainter& painter, const QStyleOptionViewItem& option,
                            const Look& look);
    void paintBox(QPainter& painter, const QRect& rect, const ThumbnailBox& box,
                  const Look& look) const;
    static int paintBadge(QPainter& painter, const QRect& room, const QString& badge,
                          const Look& look);

    SectionedListView& m_view;
};

} // namespace stillwick
