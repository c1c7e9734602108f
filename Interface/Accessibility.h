// What screen readers are told of our own widgets. Main thread.
#pragma once

#include <QAccessible>

class QWidget;

namespace stillwick {

/// Makes our widgets known to assistive technologies with their roles, values and states. Calling
/// it again changes nothing.
void installAccessibility();

/// Says what a widget of no kind that the toolkit knows is. Before it is named, for a reader may
/// ask then.
void setAccessibleRole(QWidget* widget, QAccessible::Role role);

} // namespace stillwick
