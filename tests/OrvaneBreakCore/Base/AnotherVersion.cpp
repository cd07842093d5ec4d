// SPDX-License-Identifier: GPL-3.0-or-later
#include <QObject>

class AnotherVersion final : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "OrvaneBreak.NetworkModule" FILE "AnotherVersion.json")
};

#include "AnotherVersion.moc"
