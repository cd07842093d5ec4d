// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Process/DescriptorReserve.h"

#include <QCoreApplication>
#include <QEvent>

#include <sys/eventfd.h>

#include <algorithm>

namespace {

/// An event loop, the certificates, connections for both kinds of addresses, and a few more.
constexpr std::size_t descriptorsOfThread = 24;

FileDescriptor newDescriptor()
{
    return FileDescriptor(eventfd(0, EFD_CLOEXEC));
}

} // namespace

DescriptorReserve::DescriptorReserve()
{
    take();
    QCoreApplication::instance()->installEventFilter(this);
}

bool DescriptorReserve::canThreadsWork()
{
    std::array<FileDescriptor, descriptorsOfThread> descriptors;
    return std::all_of(descriptors.begin(), descriptors.end(), [](FileDescriptor &descriptor) {
        descriptor = newDescriptor();
        return descriptor.isOpen();
    });
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
            descriptor = newDescriptor();
    }
}

void DescriptorReserve::give()
{
    if (m_isGiven)
        return;
    m_isGiven = true;
    m_descriptors = {};
    // After the repaint that follows, which has the lowest priority of the toolkit's own.
    QCoreApplication::postEvent(this, new QEvent(QEvent::User), Qt::LowEventPriority - 1);
}
