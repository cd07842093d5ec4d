// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Alert.h"

class QLineEdit;
class QPlainTextEdit;

/// The form for reporting a problem to the makers. Its result is Accepted only after "Envoyer".
class ReportForm final : public Alert
{
    Q_OBJECT

public:
    ReportForm();

    /// The report without leading and trailing white space.
    [[nodiscard]] QString text() const;

    /// The address as typed.
    [[nodiscard]] QString email() const;

private:
    QPlainTextEdit *m_text;
    QLineEdit *m_email;
};
