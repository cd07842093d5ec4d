// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AlertQueue.h"
#include "UpdaterDriver.h"

#include <QPointer>

class Alert;
class QProgressBar;

/// Shows the updater's questions as dialogs, one at a time: a new one replaces an unanswered one, whose
/// callback is then never called.
class UpdaterDialogs final : public UpdaterDriver
{
public:
    /// `alerts` outlives this object.
    explicit UpdaterDialogs(AlertQueue &alerts);

    void askPermission(std::function<void(bool)> answered) override;
    void offerUpdate(const Offer &offer, Occasion occasion, std::function<void(Answer)> answered) override;
    void offerRelaunch(const QString &version, Occasion occasion,
                       std::function<void(bool)> answered) override;
    void showProgress(const QString &text, std::function<void()> cancelled) override;
    void setProgress(double fraction) override;
    void hideProgress() override;
    void tell(const QString &message, const QString &information, Occasion occasion) override;

private:
    void show(std::unique_ptr<Alert> dialog, AlertQueue::Finished finished, Occasion occasion);

    AlertQueue &m_alerts;
    QPointer<Alert> m_dialog;
    QPointer<Alert> m_progress;
    QPointer<QProgressBar> m_bar;
};
