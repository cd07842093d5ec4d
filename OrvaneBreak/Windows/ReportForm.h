// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Alert.h"

class QLineEdit;
class QPlainTextEdit;

/// The form in which the user tells the makers of a problem. Its result is Accepted for "Envoyer" alone.
class ReportForm final : public Alert
{
    Q_OBJECT

public:
    ReportForm();

    /// The report without white space and line breaks at its ends.
    [[nodiscard]] QString text() const;

    /// The address as it was typed.
    [[nodiscard]] QString email() const;

private:
    QPlainTextEdit *m_text;
    QLineEdit *m_email;
};
