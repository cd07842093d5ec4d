// SPDX-License-Identifier: GPL-3.0-or-later
#include "NetworkModule.h"

#include "NetworkDownloads.h"
#include "NetworkHttp.h"

#include <QObject>

class NetworkPlugin final : public QObject, public NetworkModule
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "OrvaneBreak.NetworkModule" FILE "module.json")
    Q_INTERFACES(NetworkModule)

public:
    [[nodiscard]] std::unique_ptr<Http> makeHttp() const override { return std::make_unique<NetworkHttp>(); }
    [[nodiscard]] std::unique_ptr<Downloads> makeDownloads() const override
    {
        return std::make_unique<NetworkDownloads>();
    }
};

#include "NetworkModule.moc"
