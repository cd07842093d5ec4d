// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QObject>

#include <deque>
#include <functional>
#include <memory>

/// The application-modal dialogs, one at a time: a dialog waits while another one is open or a break is on,
/// and nothing else waits for it. User-interface thread only.
class AlertQueue final : public QObject
{
    Q_OBJECT

public:
    using Finished = std::function<void(int result)>;

    /// `isFree` tells whether a dialog may be shown now; `present` shows one and brings it to the front.
    AlertQueue(std::function<bool()> isFree, std::function<void(QWidget &)> present);
    ~AlertQueue() override;

    /// Shows `dialog` when its turn has come and calls `finished` with its result when the user has answered;
    /// then the dialog goes.
    void add(std::unique_ptr<QDialog> dialog, Finished finished);

    /// Looks again whether the next dialog may be shown; to be called when that may have changed.
    void proceed();

    /// Whether a dialog is shown or waits.
    [[nodiscard]] bool isBusy() const { return m_shown || !m_waiting.empty(); }

private:
    struct Entry
    {
        std::unique_ptr<QDialog> dialog;
        Finished finished;
    };

    void finish(int result);

    std::function<bool()> m_isFree;
    std::function<void(QWidget &)> m_present;
    std::deque<Entry> m_waiting;
    std::unique_ptr<Entry> m_shown;
};
