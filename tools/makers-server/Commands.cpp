// SPDX-License-Identifier: GPL-3.0-or-later
#include "Commands.h"

#include "Endpoints.h"
#include "HttpListener.h"
#include "Misbehaviour.h"
#include "Outbox.h"
#include "ReceivedLog.h"
#include "SigningKey.h"
#include "StateFolder.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace {

/// One command; `run` returns the exit status.
struct Command
{
    QLatin1StringView name;
    QLatin1StringView arguments;
    QLatin1StringView summary;
    int fewest = 0;
    int most = 0;
    int (*run)(const StateFolder &folder, const Invocation &invocation) = nullptr;
};

/// The reader of a pipe waits for the line.
void print(const QString &line)
{
    std::printf("%s\n", line.toUtf8().constData());
    std::fflush(stdout);
}

qint64 messageId(const QString &text)
{
    bool isNumber = false;
    const qint64 id = text.toLongLong(&isNumber);
    if (!isNumber)
        throw std::runtime_error((text + u" is no integer"_s).toStdString());
    return id;
}

QByteArray content(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error((path + u": "_s + file.errorString()).toStdString());
    return file.readAll();
}

std::optional<QSslConfiguration> tls(const Invocation &invocation)
{
    if (invocation.certificate.isEmpty() && invocation.privateKey.isEmpty())
        return std::nullopt;
    if (invocation.certificate.isEmpty() || invocation.privateKey.isEmpty())
        throw std::runtime_error("--certificate and --private-key go together");
    const QList<QSslCertificate> chain = QSslCertificate::fromData(content(invocation.certificate));
    const QByteArray keyText = content(invocation.privateKey);
    QSslKey key(keyText, QSsl::Rsa);
    if (key.isNull())
        key = QSslKey(keyText, QSsl::Ec);
    if (chain.isEmpty() || key.isNull())
        throw std::runtime_error("TLS needs a certificate and its RSA or EC key, both in PEM form");
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificateChain(chain);
    configuration.setPrivateKey(key);
    return configuration;
}

int serve(const StateFolder &folder, const Invocation &invocation)
{
    bool isPort = false;
    const quint16 port = invocation.port.toUShort(&isPort);
    if (!isPort)
        throw std::runtime_error((invocation.port + u" is no port"_s).toStdString());
    Endpoints endpoints(folder);
    const auto answer = [&](const HttpRequest &request) { return endpoints.answer(request); };
    print(u"public key "_s +
          QString::fromLatin1(SigningKey::keptIn(folder.file(u"signing-key"_s)).publicKey()));
    const std::optional<QSslConfiguration> configuration = tls(invocation);
    HttpListener listener(answer, configuration);
    HttpListener plainListener(answer, std::nullopt);
    const QString address = listener.start(port);
    const QString plainAddress = configuration ? plainListener.start(0) : address;
    endpoints.setPlainAddress(plainAddress);
    if (configuration)
        print(u"without TLS on "_s + plainAddress);
    print(u"listening on "_s + address);
    return QCoreApplication::exec();
}

int printPublicKey(const StateFolder &folder, const Invocation &)
{
    print(QString::fromLatin1(SigningKey::keptIn(folder.file(u"signing-key"_s)).publicKey()));
    return 0;
}

int publish(const StateFolder &folder, const Invocation &invocation)
{
    Outbox(folder.file(u"messages.json"_s))
        .publish({messageId(invocation.arguments[0]), invocation.arguments[1]});
    return 0;
}

int withdraw(const StateFolder &folder, const Invocation &invocation)
{
    if (!Outbox(folder.file(u"messages.json"_s)).withdraw(messageId(invocation.arguments[0])))
        throw std::runtime_error("there is no message with this id");
    return 0;
}

int list(const StateFolder &folder, const Invocation &invocation)
{
    const QByteArrayList lines = ReceivedLog(folder.file(u"received.jsonl"_s)).lines().split('\n');
    for (const QByteArray &line : lines) {
        const QString kind = QJsonDocument::fromJson(line).object()["kind"_L1].toString();
        const bool isWanted = invocation.arguments.isEmpty() || invocation.arguments.contains(kind);
        if (!line.isEmpty() && isWanted)
            print(QString::fromUtf8(line));
    }
    return 0;
}

int misbehave(const StateFolder &folder, const Invocation &invocation)
{
    MisbehaviourChoice(folder.file(u"misbehaviour.json"_s))
        .choose(invocation.arguments[0], invocation.arguments.value(1));
    return 0;
}

constexpr std::array commands{
    Command{"serve"_L1, ""_L1, "answers until it is ended; what is done without a command"_L1, 0, 0, serve},
    Command{"public-key"_L1, ""_L1, "prints the base64 text of the public key"_L1, 0, 0, printPublicKey},
    Command{"publish"_L1, "ID TEXT"_L1, "makes this the message that check-ins are given"_L1, 2, 2, publish},
    Command{"withdraw"_L1, "ID"_L1, "takes a message back"_L1, 1, 1, withdraw},
    Command{
        "list"_L1, "[KIND...]"_L1,
        "prints what was received, one JSON object per line; kinds: check-in acknowledgement report crash "
        "other"_L1,
        0, 5, list},
    Command{"misbehave"_L1, "MODE [ARGUMENT]"_L1, "answers wrongly from the next request on"_L1, 1, 2,
            misbehave},
};

QString helpLine(const QString &usage, const QString &summary)
{
    return u"  %1 %2\n"_s.arg(usage, -25).arg(summary);
}

} // namespace

QString commandHelp()
{
    QString text = u"\nCommands:\n"_s;
    for (const Command &command : commands)
        text += helpLine(command.name + u' ' + command.arguments, command.summary);
    text += u"\nModes of misbehave:\n"_s + helpLine(u"none"_s, u"answers rightly again"_s);
    for (const Misbehaviour &mode : allMisbehaviours()) {
        const QString argument =
            mode.standardArgument.isEmpty() ? QString() : u" ["_s + mode.standardArgument + u']';
        text += helpLine(mode.name + argument, mode.summary);
    }
    return text;
}

int carryOut(const Invocation &invocation)
{
    const auto command = std::ranges::find_if(
        commands, [&](const Command &candidate) { return candidate.name == invocation.command; });
    if (command == commands.end())
        throw std::runtime_error((u"unknown command: "_s + invocation.command).toStdString());
    const auto count = invocation.arguments.size();
    if (count < command->fewest || count > command->most)
        throw std::runtime_error(
            (u"usage: makers-server "_s + command->name + u' ' + command->arguments).toStdString());
    return command->run(StateFolder(invocation.folder), invocation);
}
