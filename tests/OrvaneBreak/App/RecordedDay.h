// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "PrivacyStatement.h"
#include "Support/ApplicationFixture.h"

#include <QObject>

/// An application with a server that answers everything, and a record of what it was asked.
class RecordedDay final : public QObject, public ApplicationFixture
{
    Q_OBJECT

public:
    /// The address that all requests go to, without a slash at the end.
    static inline const QString server = QStringLiteral("https://makers.invalid");

    /// What was seen of the requests of one kind.
    struct Seen
    {
        void note(const PrivacyStatement::Names &members);

        int count = 0;
        PrivacyStatement::Names always;
        PrivacyStatement::Names atAll;
    };

    /// `updates` is what the updater remembers.
    explicit RecordedDay(const QJsonObject &updates = {});
    ~RecordedDay() override;

    /// Lets time pass and the server answer.
    void pass(Interval interval);

    /// Answers and notes all that waits.
    void settle();

    /// Clicks the button of this name in the main window.
    void click(const QString &button);

    /// Presses the default button of the open dialog.
    void confirm();

    /// What was seen, in the form of a statement.
    [[nodiscard]] QMap<QString, PrivacyStatement::Members> requests() const;

    QMap<QString, Seen> seen;
    QByteArray bodies;       ///< Of all requests.
    QByteArray item;         ///< What the feed offers from now on.
    bool hasMessage = false; ///< The next check-in brings a message.

public Q_SLOTS:
    /// The browser of this day.
    void opened(const QUrl &url);

private:
    void note(const QString &request, const PrivacyStatement::Names &members);
    [[nodiscard]] QByteArray answerTo(const FakeHttp::Request &request);

    qsizetype m_downloads = 0;
};
