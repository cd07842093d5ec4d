// SPDX-License-Identifier: GPL-3.0-or-later
#include "DescriptorReserve.h"

#include "SpareDescriptors.h"

#include <QCoreApplication>
#include <QEvent>

DescriptorReserve::DescriptorReserve()
{
    take();
    QCoreApplication::instance()->installEventFilter(this);
}

bool DescriptorReserve::eventFilter(QObject * /*watched*/, QEvent *event)
{
    if (event->type() == QEvent::Expose || event->type() == QEvent::Resize)
        give();
    return false;
}

void DescriptorReserve::customEvent(QEvent * /*event*/)
{
    m_isGiven = false;
    take();
}

void DescriptorReserve::take()
{
    for (FileDescriptor &descriptor : m_descriptors) {
        if (!descriptor.isOpen())
            descriptor = SpareDescriptors::make();
    }
}

void DescriptorReserve::give()
{
    if (m_isGiven)
        return;
    m_isGiven = true;
    m_descriptors = {};
    // Handled after the repaint that follows, which has the lowest priority among the toolkit's events.
    QCoreApplication::postEvent(this, new QEvent(QEvent::User), Qt::LowEventPriority - 1);
}
