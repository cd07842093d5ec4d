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
/// Failures are not logged; only `reportProblem()` reports them to its caller. User-interface thread only;
/// nothing blocks.
class ServerChannel final : public QObject
{
    Q_OBJECT

public:
    /// What the channel uses; the references outlive it.
    struct Services
    {
        Http &http;
        Preferences &preferences;
        const RunLoop &runLoop;
        const Bundle &bundle;
        SystemVersion systemVersion;
    };

    /// The address of the server and the key that it signs with.
    struct Configuration
    {
        QString serverBase;         ///< Scheme and host, for example "https://example.org".
        QByteArray publicKeyBase64; ///< The 32-byte Ed25519 key.
    };

    /// Aborts the process if `Http::isAllowed()` is false for the address.
    ServerChannel(Services services, Configuration configuration);

    /// The channel of the process; aborts it if none is registered.
    [[nodiscard]] static ServerChannel &shared();

    /// The configuration of this build.
    [[nodiscard]] static Configuration builtInConfiguration();

    /// The identifier of this installation, a random UUID that is created at the first call and stored under
    /// "OBDeviceId"; any text stored there is used as it is.
    [[nodiscard]] QString deviceId();

    /// The description of the system that the server gets.
    [[nodiscard]] QString osString() const;

    /// The message to be shown, until `markMessageShown()` or the end of the process.
    [[nodiscard]] const std::optional<ServerMessage> &pendingMessage() const { return m_pendingMessage; }

    /// Asks the server for a message, with a timeout of 8 seconds, and then calls `completion`, also after a
    /// failure. Accepts only a message that the makers signed for this very request.
    void checkWithServer(std::function<void()> completion);

    /// Archives and acknowledges the pending message, which is then no longer pending; does nothing without
    /// one.
    void markMessageShown();

    /// The same for `message`, which was pending. One with another id that has replaced it meanwhile stays
    /// pending; one with the same id, whose text the makers have edited, does not.
    void markMessageShown(const ServerMessage &message);

    /// The conversation, newest first.
    [[nodiscard]] QList<ArchivedMessage> messageHistory() const;

    /// Adds a reply of the user to the conversation.
    void archiveOwn(const QString &text);

    /// Sends `text` and, unless it is empty, `email` unchanged, with a timeout of 10 seconds; `completion`
    /// gets whether the server accepted the report.
    void reportProblem(const QString &text, const QString &email, std::function<void(bool)> completion);

private:
    void takeMessage(const QByteArray &body, const QString &nonce);
    void post(const QString &path, const QJsonObject &body, std::chrono::seconds timeout,
              std::function<void(const std::optional<struct HttpAnswer> &)> completion);
    [[nodiscard]] QJsonObject clientDescription();
    [[nodiscard]] QDateTime now() const;

    Services m_services;
    Configuration m_configuration;
    MessageArchive m_archive;
    std::optional<ServerMessage> m_pendingMessage;
};
