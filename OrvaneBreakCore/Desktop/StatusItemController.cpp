// SPDX-License-Identifier: GPL-3.0-or-later
#include "StatusItemController.h"

#include "Palette.h"

#include <utility>

using namespace Qt::StringLiterals;

StatusItemController::StatusItemController(MakeTrayItem makeTrayItem)
    : m_makeTrayItem(std::move(makeTrayItem))
{
}

void StatusItemController::enable(std::unique_ptr<QMenu> menu)
{
    if (!m_statusItem) {
        m_statusItem = m_makeTrayItem();
        m_statusItem->onHosted = onHosted;
        m_statusItem->onLost = onLost;
    }
    m_statusItem->setMenu(std::move(menu));
    refreshIcon();
}

void StatusItemController::disable()
{
    m_statusItem.reset();
}

void StatusItemController::setActive(bool active)
{
    m_active = active;
    refreshIcon();
}

void StatusItemController::refreshIcon()
{
    if (!m_statusItem)
        return;
    if (m_active)
        m_statusItem->setSymbol(u"eye.fill"_s, breakTealFixed);
    else
        m_statusItem->setSymbol(u"eye"_s, std::nullopt);
}
