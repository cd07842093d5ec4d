// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class QDialogButtonBox;
class QVBoxLayout;

/// A dialog with the application's icon, a message, an informative text, which scrolls if it is long, and
/// buttons. All texts are plain text.
class Alert : public QDialog
{
    Q_OBJECT

public:
    Alert(const QString &name, const QString &message, const QString &information);

    /// Adds a view between the informative text and the buttons.
    void addAccessory(QWidget *view);

    /// Adds the button that accepts the dialog. Return presses it.
    void addDefaultButton(const QString &title);

    /// Adds a button that rejects the dialog, as Escape and the close button do.
    void addCancelButton(const QString &title);

    /// Adds a button that ends the dialog with `result`.
    void addButton(const QString &title, int result);

    /// The width of the texts and of accessories, in device-independent pixels.
    static constexpr int contentWidth = 380;

private:
    QVBoxLayout *m_column;
    QDialogButtonBox *m_buttons;
};
