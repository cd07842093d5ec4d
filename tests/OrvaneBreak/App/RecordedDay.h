// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "PrivacyStatement.h"
#include "Support/ApplicationFixture.h"

#include <QObject>

/// An application with a server that answers every request and records it.
class RecordedDay final : public QObject, public ApplicationFixture
{
    Q_OBJECT

public:
    /// The address that all requests go to, without a slash at the end.
    static inline const QString server = QStringLiteral("https://makers.invalid");

    /// The recorded requests of one kind.
    struct Seen
    {
        void note(const PrivacyStatement::Names &members);

        int count = 0;
        PrivacyStatement::Names always;
        PrivacyStatement::Names atAll;
    };

    /// `updates` are the updater's settings.
    explicit RecordedDay(const QJsonObject &updates = {});
    ~RecordedDay() override;

    /// Advances the clock and answers the requests.
    void pass(Interval interval);

    /// Answers and records all pending requests.
    void settle();

    /// Clicks the button of this name in the main window.
    void click(const QString &button);

    /// Presses the default button of the open dialog.
    void confirm();

    /// The recorded requests, in the form of a statement.
    [[nodiscard]] QMap<QString, PrivacyStatement::Members> requests() const;

    QMap<QString, Seen> seen;
    QByteArray bodies;       ///< Of all requests.
    QByteArray item;         ///< The item of the update feed.
    bool hasMessage = false; ///< Whether the next check-in gets a message.

public Q_SLOTS:
    /// Records what would be opened in the browser.
    void opened(const QUrl &url);

private:
    void note(const QString &request, const PrivacyStatement::Names &members);
    [[nodiscard]] QByteArray answerTo(const FakeHttp::Request &request);

    qsizetype m_downloads = 0;
};
