#include "Interface/EmptyPanel.h"

#include "Interface/Labels.h"

#include <QVBoxLayout>

namespace stillwick {

namespace {

constexpr int symbolSide = 44;

} // namespace

EmptyPanel::EmptyPanel(QStringView symbol, const QString& title, const QString& description,
                       QWidget* parent)
    : QWidget(parent), m_column(new QVBoxLayout) {
    auto* titleLabel = makeLabel(title, TextStyle::title2);
    titleLabel->setAlignment(Qt::AlignCenter);
    auto* text = makeLabel(description, TextStyle::callout, ThemeColor::secondaryText);
    text->setAlignment(Qt::AlignCenter);
    text->setWordWrap(true);

    m_column->setSpacing(4);
    m_column->addWidget(new SymbolView(symbol, symbolSide, ThemeColor::secondaryText), 0,
                        Qt::AlignHCenter);
    m_column->addSpacing(8);
    m_column->addWidget(titleLabel);
    m_column->addWidget(text);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 16, 16, 16);
    layout->addStretch();
    layout->addLayout(m_column);
    layout->addStretch();
}

void EmptyPanel::setAction(QWidget* action) {
    m_column->addSpacing(12);
    m_column->addWidget(action, 0, Qt::AlignHCenter);
}

} // namespace stillwick
