// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Alert.h"

class QLineEdit;
class WritingField;

/// The form for reporting a problem to the makers. Its result is Accepted only after "Envoyer".
class ReportForm final : public Alert
{
    Q_OBJECT

public:
    /// Starts with a report that could not be sent, or empty.
    explicit ReportForm(const QString &text = {}, const QString &email = {});

    /// Stays open, and says why, if the report is too long.
    void accept() override;

    /// The report without leading and trailing white space.
    [[nodiscard]] QString text() const;

    /// The address as typed.
    [[nodiscard]] QString email() const;

private:
    WritingField *m_text;
    QLineEdit *m_email;
};
