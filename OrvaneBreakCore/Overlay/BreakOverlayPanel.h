// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ColumnFit.h"

#include <QWidget>

#include <cstdint>
#include <functional>
#include <optional>

class QPushButton;
class RingView;

/// The break screen on one screen: everything darkened, and in the middle the message, the ring and the skip
/// button, smaller where the screen has no room for them; the content never changes the panel's size. Nothing
/// in it ever has the keyboard focus, so that a user who is typing when the break begins presses nothing. The
/// background is the Window role of its palette, at first black that lets a quarter of the desktop through; a
/// picture there is painted from the upper left corner, at its own device pixel ratio.
class BreakOverlayPanel final : public QWidget
{
    Q_OBJECT

public:
    explicit BreakOverlayPanel(int pauseSeconds);

    /// Called for Escape and for the cancel command, which is Ctrl and whatever key types a period; both are
    /// swallowed also when this is not set.
    std::function<void()> onEscape;

    /// Calls `onEscape` if set.
    void cancelOperation() const;

    /// The native code of the key while `onEscape` is called for it; 0 at other times.
    [[nodiscard]] std::uint32_t pressedKey() const { return m_pressedKey; }

    [[nodiscard]] RingView *ring() const { return m_ring; }
    [[nodiscard]] QPushButton *skipButton() const { return m_skipButton; }

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void describe(int pauseSeconds);

    RingView *m_ring;
    QPushButton *m_skipButton;
    std::optional<ColumnFit> m_columnFit;
    std::uint32_t m_pressedKey = 0;
};
