// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPlainTextEdit>

/// A field for a text to the makers, of at most 20,000 characters. It takes no paste that would exceed them;
/// the owner sends no text while `isTooLong()`.
class WritingField : public QPlainTextEdit
{
    Q_OBJECT

public:
    WritingField();

    /// The text exactly as it was typed or pasted, except that every line break is a line feed.
    [[nodiscard]] QString text() const;

    [[nodiscard]] bool isTooLong() const;

    /// What to tell the user when `limitChecked(true)` is emitted.
    [[nodiscard]] static QString limitText();

Q_SIGNALS:
    /// Emitted at every change, and when a paste is refused.
    void limitChecked(bool isExceeded);

protected:
    void insertFromMimeData(const QMimeData *source) override;
};
