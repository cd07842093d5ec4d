// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDescriptor.h"

#include <QObject>

#include <array>

/// Keeps a few descriptors for windows, from construction to destruction: an X server sends the memory for a
/// window's picture as a descriptor, and in a process that has used up its own the toolkit waits for it for
/// ever, with a break on the screen. They are free while a window comes or changes its size. One instance,
/// after the QGuiApplication, on the user-interface thread.
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
