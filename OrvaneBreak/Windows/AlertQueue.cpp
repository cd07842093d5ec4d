// SPDX-License-Identifier: GPL-3.0-or-later
#include "AlertQueue.h"

#include "BreakEngine.h"
#include "EarlyKeys.h"
#include "WindowPresence.h"

#include <QApplication>

#include <algorithm>
#include <utility>

AlertQueue::AlertQueue(const BreakEngine &engine, WindowPresence &presence)
    : m_engine(engine)
    , m_presence(presence)
{
}

void AlertQueue::add(std::unique_ptr<QDialog> dialog, Finished finished, Attention attention)
{
    m_waiting.push_back({std::move(dialog), std::move(finished), attention});
    proceed();
}

void AlertQueue::withdraw(const QDialog *dialog)
{
    const auto isIt = [dialog](const Entry &entry) { return entry.dialog.get() == dialog; };
    std::erase_if(m_waiting, isIt);
    const auto shown = std::find_if(m_open.begin(), m_open.end(), isIt);
    if (shown == m_open.end())
        return;
    shown->finished = {};
    shown->dialog->reject();
}

void AlertQueue::proceed()
{
    while (!m_waiting.empty() && !hasFront() && !m_engine.isOnBreak() && !QApplication::activeModalWidget()) {
        Entry entry = std::move(m_waiting.front());
        m_waiting.pop_front();
        open(std::move(entry));
    }
}

bool AlertQueue::hasFront() const
{
    return std::any_of(m_open.begin(), m_open.end(),
                       [](const Entry &entry) { return entry.attention != Attention::Quiet; });
}

void AlertQueue::open(Entry entry)
{
    QDialog &dialog = *entry.dialog;
    const Attention attention = entry.attention;
    connect(&dialog, &QDialog::finished, this, [this, &dialog](int result) { finish(&dialog, result); });
    m_open.push_back(std::move(entry));
    m_presence.adopt(dialog);
    if (onOpen)
        onOpen(dialog);
    if (attention == Attention::Unasked)
        new EarlyKeys(dialog);
    if (attention != Attention::Quiet)
        dialog.setWindowModality(Qt::ApplicationModal);
    if (attention == Attention::Front || (attention == Attention::Unasked && QApplication::activeWindow())) {
        m_presence.bringToFront(dialog);
    } else if (attention == Attention::Unasked) {
        dialog.setAttribute(Qt::WA_ShowWithoutActivating);
        dialog.show();
        dialog.raise();
        QApplication::alert(&dialog);
    } else {
        dialog.setAttribute(Qt::WA_ShowWithoutActivating);
        // The user has not asked for this dialog, so it does not keep the program running after the windows
        // are closed.
        dialog.setAttribute(Qt::WA_QuitOnClose, false);
        dialog.show();
    }
}

void AlertQueue::finish(const QDialog *dialog, int result)
{
    const auto found = std::find_if(m_open.begin(), m_open.end(),
                                    [dialog](const Entry &entry) { return entry.dialog.get() == dialog; });
    if (found == m_open.end())
        return;
    Entry entry = std::move(*found);
    m_open.erase(found);
    if (entry.finished)
        entry.finished(result);
    // The dialog is still emitting its signal.
    entry.dialog.release()->deleteLater();
    QMetaObject::invokeMethod(
        this,
        [this] {
            proceed();
            if (onIdle && !isBusy())
                onIdle();
        },
        Qt::QueuedConnection);
}
