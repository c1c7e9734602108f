#include "Interface/Accessibility.h"

#include "Interface/Buttons.h"
#include "Interface/ColorPicker.h"
#include "Interface/ColorWell.h"
#include "Interface/ContinuousSlider.h"
#include "Interface/DisclosureGroup.h"
#include "Interface/PlayerControls.h"
#include "Interface/Popover.h"
#include "Interface/ProgressIndicator.h"
#include "Interface/SectionedListAccessibility.h"
#include "Interface/SectionedListView.h"
#include "Interface/SegmentedPicker.h"
#include "Interface/SplitView.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QLabel>

namespace stillwick {

namespace {

constexpr const char* roleProperty = "accessibleRole";

/// A widget whose tool tip is not read where it says the name over again.
class WithoutEcho : public QAccessibleWidget {
public:
    using QAccessibleWidget::QAccessibleWidget;

    QString text(QAccessible::Text kind) const override {
        const QString text = QAccessibleWidget::text(kind);
        const bool isEcho =
            kind == QAccessible::Description && text == QAccessibleWidget::text(QAccessible::Name);
        return isEcho ? QString() : text;
    }
};

/// A button that its symbol stands for.
class SymbolButtonInterface final : public WithoutEcho {
public:
    explicit SymbolButtonInterface(QAbstractButton* button)
        : WithoutEcho(button,
                      button->isCheckable() ? QAccessible::RadioButton : QAccessible::Button),
          m_button(button) {}

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = m_button->isCheckable();
        state.checked = m_button->isChecked();
        state.pressed = m_button->isDown();
        return state;
    }
    QStringList actionNames() const override {
        return QStringList(mainAction()) + QAccessibleWidget::actionNames();
    }
    void doAction(const QString& name) override {
        if (name != mainAction())
            QAccessibleWidget::doAction(name);
        else if (m_button->isEnabled())
            m_button->click();
    }
    QStringList keyBindingsForAction(const QString& /*name*/) const override { return {}; }

private:
    QString mainAction() const { return m_button->isCheckable() ? toggleAction() : pressAction(); }

    QAbstractButton* m_button;
};

class SliderInterface final : public WithoutEcho, public QAccessibleValueInterface {
public:
    explicit SliderInterface(ContinuousSlider* slider)
        : WithoutEcho(slider, QAccessible::Slider), m_slider(slider) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface)
            return static_cast<QAccessibleValueInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Value ? m_slider->valueText() : WithoutEcho::text(kind);
    }
    QVariant currentValue() const override { return m_slider->realValue(); }
    void setCurrentValue(const QVariant& value) override {
        m_slider->chooseRealValue(value.toDouble());
    }
    QVariant maximumValue() const override { return m_slider->greatest(); }
    QVariant minimumValue() const override { return m_slider->least(); }
    QVariant minimumStepSize() const override { return m_slider->step(); }

private:
    ContinuousSlider* m_slider;
};

class SplitHandleInterface final : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit SplitHandleInterface(SplitHandle* handle)
        : QAccessibleWidget(handle, QAccessible::Splitter), m_handle(handle) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface)
            return static_cast<QAccessibleValueInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QVariant currentValue() const override { return m_handle->position(); }
    void setCurrentValue(const QVariant& value) override { m_handle->moveTo(value.toInt()); }
    QVariant maximumValue() const override { return m_handle->bounds().second; }
    QVariant minimumValue() const override { return m_handle->bounds().first; }
    QVariant minimumStepSize() const override { return 1; }

private:
    SplitHandle* m_handle;
};

class DisclosureInterface final : public QAccessibleWidget {
public:
    explicit DisclosureInterface(DisclosureHeader* header)
        : QAccessibleWidget(header, QAccessible::Button), m_header(header) {}

    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name ? m_header->text() : QAccessibleWidget::text(kind);
    }
    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.expandable = true;
        state.expanded = m_header->isChecked();
        state.collapsed = !m_header->isChecked();
        return state;
    }
    QStringList actionNames() const override {
        return QStringList(pressAction()) + QAccessibleWidget::actionNames();
    }
    void doAction(const QString& name) override {
        if (name == pressAction())
            m_header->click();
        else
            QAccessibleWidget::doAction(name);
    }
    QStringList keyBindingsForAction(const QString& /*name*/) const override { return {}; }

private:
    DisclosureHeader* m_header;
};

/// A label that has a name beside its text: what it shows is read, and what that is about it after.
class NamedLabelInterface final : public QAccessibleWidget {
public:
    explicit NamedLabelInterface(QLabel* label)
        : QAccessibleWidget(label, QAccessible::StaticText), m_label(label) {}

    QString text(QAccessible::Text kind) const override {
        if (kind == QAccessible::Name)
            return m_label->text();
        return kind == QAccessible::Description ? m_label->accessibleName()
                                                : QAccessibleWidget::text(kind);
    }
    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.readOnly = true;
        return state;
    }

private:
    QLabel* m_label;
};

class BusyInterface final : public QAccessibleWidget {
public:
    explicit BusyInterface(QWidget* widget) : QAccessibleWidget(widget, QAccessible::ProgressBar) {}

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.busy = true;
        return state;
    }
};

QAccessibleInterface* makeInterface(const QString& /*className*/, QObject* object) {
    if (auto* slider = qobject_cast<ContinuousSlider*>(object))
        return new SliderInterface(slider);
    if (auto* handle = qobject_cast<SplitHandle*>(object))
        return new SplitHandleInterface(handle);
    if (auto* header = qobject_cast<DisclosureHeader*>(object))
        return new DisclosureInterface(header);
    if (qobject_cast<SymbolButton*>(object) != nullptr ||
        qobject_cast<ColorWell*>(object) != nullptr ||
        qobject_cast<ColorSwatch*>(object) != nullptr || qobject_cast<Segment*>(object) != nullptr)
        return new SymbolButtonInterface(static_cast<QAbstractButton*>(object));
    if (auto* list = qobject_cast<SectionedListView*>(object))
        return new SectionedListInterface(list);
    if (auto* host = qobject_cast<SectionHeaderHost*>(object))
        return new SectionHeaderInterface(host);
    if (auto* popover = qobject_cast<Popover*>(object))
        return new QAccessibleWidget(popover, QAccessible::Dialog);
    if (auto* label = qobject_cast<QLabel*>(object);
        label != nullptr && !label->accessibleName().isEmpty())
        return new NamedLabelInterface(label);
    if (auto* indicator = qobject_cast<ProgressIndicator*>(object))
        return new BusyInterface(indicator);
    if (qobject_cast<SegmentedPicker*>(object) != nullptr ||
        qobject_cast<DisclosureGroup*>(object) != nullptr ||
        qobject_cast<PlayerControls*>(object) != nullptr)
        return new QAccessibleWidget(static_cast<QWidget*>(object), QAccessible::Grouping);
    if (const QVariant role = object->property(roleProperty); role.isValid())
        return new QAccessibleWidget(static_cast<QWidget*>(object),
                                     QAccessible::Role(role.toInt()));
    return nullptr;
}

} // namespace

void installAccessibility() {
    QAccessible::installFactory(makeInterface); // one that is installed already is not added again
}

void setAccessibleRole(QWidget* widget, QAccessible::Role role) {
    widget->setProperty(roleProperty, int(role));
}

} // namespace stillwick
