#include "Interface/WindowHold.h"

namespace stillwick {

WindowHold::WindowHold(const QWidget& widget)
    : m_window(widget.window()), m_goesWhenClosed(m_window->testAttribute(Qt::WA_DeleteOnClose)) {
    m_window->setAttribute(Qt::WA_DeleteOnClose, false);
}

WindowHold::~WindowHold() {
    if (!m_window || !m_goesWhenClosed)
        return;
    m_window->setAttribute(Qt::WA_DeleteOnClose);
    if (!m_window->isVisible())
        m_window->deleteLater();
}

} // namespace stillwick
