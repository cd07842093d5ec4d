// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "OverlaySurface.h"

#include <QScreen>
#include <QStringList>

#include <vector>

/// Shows the panels as plain windows and logs the calls.
class FakeOverlaySurface final : public OverlaySurface
{
public:
    void begin() override { log.append(QStringLiteral("begin")); }

    void present(QWidget &panel, QScreen &screen, bool takesKeyboard) override
    {
        log.append(QStringLiteral("present %1%2")
                       .arg(screen.name(), QString::fromLatin1(takesKeyboard ? " keyboard" : "")));
        panel.setWindowFlags(Qt::Tool | Qt::FramelessWindowHint);
        panel.setGeometry(screen.geometry());
        panel.show();
        panels.push_back(&panel);
    }

    void end(const EndingPress &press) override
    {
        log.append(QStringLiteral("end"));
        endingPress = press;
        panels.clear();
    }

    QStringList log;
    EndingPress endingPress;       ///< Of the last break that ended.
    std::vector<QWidget *> panels; ///< Of the current break.
};
