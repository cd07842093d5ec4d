// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "UpdaterDriver.h"

#include <QStringList>

#include <utility>

/// Logs what the user would see; the test calls the stored callbacks to answer.
class FakeUpdaterDriver final : public UpdaterDriver
{
public:
    void askPermission(std::function<void(bool)> answered) override
    {
        log.append(QStringLiteral("permission?"));
        permission = std::move(answered);
    }

    void offerUpdate(const Offer &offer, Occasion occasion, std::function<void(Answer)> answered) override
    {
        const bool installsItself = offer.ability == UpdateInstaller::Ability::Itself;
        const QString how = installsItself ? QString() : QStringLiteral(" elsewhere");
        log.append(QStringLiteral("offer %1%2%3").arg(offer.version, how, suffix(occasion)));
        lastOffer = offer;
        choice = std::move(answered);
    }

    void offerRelaunch(const QString &version, Occasion occasion, std::function<void(bool)> answered) override
    {
        log.append(QStringLiteral("relaunch %1?%2").arg(version, suffix(occasion)));
        relaunch = std::move(answered);
    }

    void showProgress(const QString &text, std::function<void()> cancelled) override
    {
        log.append(text);
        cancel = std::move(cancelled);
    }

    void setProgress(double fraction) override { progress = fraction; }
    void hideProgress() override { log.append(QStringLiteral("hide")); }

    void tell(const QString &message, const QString &information, Occasion occasion) override
    {
        log.append(message + suffix(occasion));
        lastInformation = information;
    }

    /// The log since the last call.
    QStringList takeLog() { return std::exchange(log, {}); }

    QStringList log;
    Offer lastOffer;
    QString lastInformation;
    double progress = 0;
    std::function<void(bool)> permission;
    std::function<void(Answer)> choice;
    std::function<void(bool)> relaunch;
    std::function<void()> cancel;

private:
    static QString suffix(Occasion occasion)
    {
        return occasion == Occasion::Unasked ? QStringLiteral(" quietly") : QString();
    }
};
