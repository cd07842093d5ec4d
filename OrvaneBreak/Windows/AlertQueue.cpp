// SPDX-License-Identifier: GPL-3.0-or-later
#include "Windows/AlertQueue.h"

#include <QApplication>

#include <utility>

AlertQueue::AlertQueue(std::function<bool()> isFree, std::function<void(QWidget &)> present)
    : m_isFree(std::move(isFree))
    , m_present(std::move(present))
{
}

AlertQueue::~AlertQueue() = default;

void AlertQueue::add(std::unique_ptr<QDialog> dialog, Finished finished)
{
    m_waiting.push_back({std::move(dialog), std::move(finished)});
    proceed();
}

void AlertQueue::proceed()
{
    if (m_shown || m_waiting.empty() || !m_isFree() || QApplication::activeModalWidget())
        return;
    m_shown = std::make_unique<Entry>(std::move(m_waiting.front()));
    m_waiting.pop_front();
    QDialog &dialog = *m_shown->dialog;
    dialog.setWindowModality(Qt::ApplicationModal);
    connect(&dialog, &QDialog::finished, this, &AlertQueue::finish);
    m_present(dialog);
}

void AlertQueue::finish(int result)
{
    const std::unique_ptr<Entry> entry = std::move(m_shown);
    if (entry->finished)
        entry->finished(result);
    // It is in the middle of telling that it has finished.
    entry->dialog.release()->deleteLater();
    QMetaObject::invokeMethod(this, &AlertQueue::proceed, Qt::QueuedConnection);
}
