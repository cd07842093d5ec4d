// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QObject>

#include <deque>
#include <functional>
#include <memory>
#include <vector>

class BreakEngine;
class WindowPresence;

/// Shows dialogs one at a time: a dialog waits while another one is open and while a break is showing. Only a
/// quiet dialog holds nothing back. User-interface thread only.
class AlertQueue final : public QObject
{
    Q_OBJECT

public:
    using Finished = std::function<void(int result)>;

    /// How a dialog is shown.
    enum class Attention
    {
        Front,   ///< Modal, in front of all windows, with the focus.
        Unasked, ///< The same, except that it leaves the focus to other programs and ignores early keys.
        Quiet    ///< Not modal, without the focus; closing the last window still ends the application.
    };

    /// `engine` and `presence` outlive this object.
    AlertQueue(const BreakEngine &engine, WindowPresence &presence);

    /// Shows `dialog` as soon as it is its turn. Once the user has closed it, calls `finished` with its
    /// result and deletes it.
    void add(std::unique_ptr<QDialog> dialog, Finished finished, Attention attention = Attention::Front);

    /// Closes `dialog`, or removes it if it is waiting, without calling `finished`. Does nothing if it is
    /// closed already.
    void withdraw(const QDialog *dialog);

    /// Shows the next dialog if it need not wait any longer. To be called when a break has ended.
    void proceed();

    /// Called after the last dialog that is not quiet was closed.
    std::function<void()> onIdle;

    /// Called with each dialog before it is shown.
    std::function<void(QDialog &dialog)> onOpen;

    /// Whether a dialog that is not quiet is open, or any is waiting.
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

    const BreakEngine &m_engine;
    WindowPresence &m_presence;
    std::deque<Entry> m_waiting;
    std::vector<Entry> m_open;
};
