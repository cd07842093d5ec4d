// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDescriptor.h"

#include <QObject>

#include <array>

/// Reserves a few file descriptors for windows as long as it exists: the X server passes the memory of a
/// window's picture as a descriptor, and a process without a free one waits for it forever, with a break on
/// the screen. The reserve is released while a window appears or is resized. One instance, created after the
/// QGuiApplication, on the user-interface thread.
class DescriptorReserve final : public QObject
{
    Q_OBJECT

public:
    DescriptorReserve();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void customEvent(QEvent *event) override;

private:
    void take();
    void give();

    std::array<FileDescriptor, 2> m_descriptors;
    bool m_isGiven = false;
};
