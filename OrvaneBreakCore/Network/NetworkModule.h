// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ModuleInterface.h"

#include <memory>

class Downloads;
class Http;

/// The interface of the network module.
class NetworkModule : public ModuleInterface
{
public:
    static constexpr const char *fileName = "network.so";

    [[nodiscard]] virtual std::unique_ptr<Http> makeHttp() const = 0;
    [[nodiscard]] virtual std::unique_ptr<Downloads> makeDownloads() const = 0;
};

Q_DECLARE_INTERFACE(NetworkModule, "OrvaneBreak.NetworkModule")
