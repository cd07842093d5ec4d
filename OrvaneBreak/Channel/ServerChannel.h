// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "MessageArchive.h"
#include "SystemVersion.h"

#include <QObject>
#include <QUrl>

#include <chrono>
#include <functional>
#include <optional>

class Bundle;
class Http;
class Preferences;
class QJsonObject;
class RunLoop;

/// The channel to the makers' server: check-ins that bring signed messages, and reports that the user sends.
/// Failures are silent here; who asked for something is told whether it went. User-interface thread only, and
/// nothing waits.
class ServerChannel final : public QObject
{
    Q_OBJECT

public:
    /// What the channel works with; the references outlive it.
    struct Services
    {
        Http &http;
        Preferences &preferences;
        const RunLoop &runLoop;
        const Bundle &bundle;
        SystemVersion systemVersion;
    };

    /// Where the server is, and what it signs with.
    struct Configuration
    {
        QString serverBase;         ///< Scheme and host, for example "https://example.org".
        QByteArray publicKeyBase64; ///< The 32-byte Ed25519 key.
    };

    /// Stops the process when the address is none that the program may talk to.
    ServerChannel(Services services, Configuration configuration);

    /// The one channel of the process.
    [[nodiscard]] static ServerChannel &shared();

    /// What the makers configured for this build.
    [[nodiscard]] static Configuration builtInConfiguration();

    /// The identifier of this installation, a random UUID made at the first call and kept under "OBDeviceId";
    /// whatever text stands there is taken as it is.
    [[nodiscard]] QString deviceId();

    /// What the server is told of the system.
    [[nodiscard]] QString osString() const;

    /// The message that waits to be shown, until `markMessageShown()` or the end of the process.
    [[nodiscard]] const std::optional<ServerMessage> &pendingMessage() const { return m_pendingMessage; }

    /// Asks the server for a message, at most for 8 seconds, and then calls `completion`, whatever came of
    /// it. Only what the makers signed for this very request is believed.
    void checkWithServer(std::function<void()> completion);

    /// Archives and acknowledges the pending message, which is pending no more; does nothing without one.
    void markMessageShown();

    /// The same for `message`, which was pending; another one that has come meanwhile stays pending.
    void markMessageShown(const ServerMessage &message);

    /// The conversation, newest first.
    [[nodiscard]] QList<ArchivedMessage> messageHistory() const;

    /// Adds a reply of the user's to the conversation.
    void archiveOwn(const QString &text);

    /// Sends `text`, and `email` unless it is empty, as they are, at most for 10 seconds; `completion` gets
    /// whether the server accepted them.
    void reportProblem(const QString &text, const QString &email, std::function<void(bool)> completion);

private:
    void judge(const QByteArray &body, const QString &nonce);
    void post(const QString &path, const QJsonObject &body, std::chrono::seconds limit,
              std::function<void(const std::optional<struct HttpAnswer> &)> completion);
    [[nodiscard]] QJsonObject clientDescription();
    [[nodiscard]] QDateTime now() const;

    Services m_services;
    Configuration m_configuration;
    MessageArchive m_archive;
    std::optional<ServerMessage> m_pendingMessage;
};
