// SPDX-License-Identifier: GPL-3.0-or-later
#include "EarlyKeys.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWindow>

namespace {

constexpr qint64 earlyMilliseconds = 1000;

} // namespace

EarlyKeys::EarlyKeys(QDialog &dialog)
    : QObject(&dialog)
    , m_dialog(dialog)
{
    m_sinceActivation.start();
    qApp->installEventFilter(this);
}

bool EarlyKeys::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::WindowActivate && watched == &m_dialog)
        m_sinceActivation.start();
    const bool isKey = event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease ||
                       event->type() == QEvent::ShortcutOverride;
    if (!isKey)
        return false;
    // A key comes to the native window first, and before that as the question whether it may be a shortcut.
    const auto *widget = qobject_cast<QWidget *>(watched);
    const bool isOfDialog = widget ? widget->window() == &m_dialog : watched == m_dialog.windowHandle();
    if (!isOfDialog || !isEarly(*static_cast<QKeyEvent *>(event)))
        return false;
    event->accept();
    return true;
}

bool EarlyKeys::isEarly(const QKeyEvent &key)
{
    const bool isFirstSecond = m_sinceActivation.elapsed() < earlyMilliseconds;
    switch (key.type()) {
    case QEvent::KeyPress:
        // A key that repeats has been down since before the dialog.
        if (isFirstSecond || !m_down.isEmpty() || key.isAutoRepeat()) {
            m_down.insert(key.key());
            return true;
        }
        qApp->removeEventFilter(this);
        return false;
    case QEvent::KeyRelease:
        if (!key.isAutoRepeat())
            m_down.remove(key.key());
        return true;
    default:
        return isFirstSecond || !m_down.isEmpty() || key.isAutoRepeat();
    }
}
