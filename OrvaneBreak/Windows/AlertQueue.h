// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QObject>

#include <deque>
#include <functional>
#include <memory>
#include <vector>

/// The dialogs, one at a time: a dialog waits while another one is open or a break is on. Nothing waits for a
/// quiet one, neither another dialog nor anything else. User-interface thread only.
class AlertQueue final : public QObject
{
    Q_OBJECT

public:
    using Finished = std::function<void(int result)>;

    /// How a dialog comes.
    enum class Attention
    {
        Front, ///< In front of everything, and the other windows of the application wait for the answer.
        Quiet  ///< Without the focus, and nothing waits.
    };

    /// `isFree` tells whether a dialog may be shown now; `present` shows one in the given way.
    AlertQueue(std::function<bool()> isFree, std::function<void(QWidget &, Attention)> present);
    ~AlertQueue() override;

    /// Shows `dialog` when its turn has come and calls `finished` with its result when the user has answered;
    /// then the dialog goes.
    void add(std::unique_ptr<QDialog> dialog, Finished finished, Attention attention = Attention::Front);

    /// Takes `dialog` away, shown or waiting, without calling anything; does nothing when it has gone
    /// already.
    void withdraw(const QDialog *dialog);

    /// Looks again whether the next dialog may be shown; to be called when that may have changed.
    void proceed();

    /// Whether a dialog is in front or waits.
    [[nodiscard]] bool isBusy() const { return hasFront() || !m_waiting.empty(); }

private:
    struct Entry
    {
        std::unique_ptr<QDialog> dialog;
        Finished finished;
        Attention attention = Attention::Front;
    };

    [[nodiscard]] bool hasFront() const;
    void open(Entry entry);
    void finish(const QDialog *dialog, int result);

    std::function<bool()> m_isFree;
    std::function<void(QWidget &, Attention)> m_present;
    std::deque<Entry> m_waiting;
    std::vector<Entry> m_open;
};
