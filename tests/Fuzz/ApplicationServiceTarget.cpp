// SPDX-License-Identifier: GPL-3.0-or-later
#include "ApplicationService.h"
#include "Target.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusServer>
#include <QDBusVariant>
#include <QEventLoop>

#include <array>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype maxTokenLength = 1'024;
const QString objectPath = u"/ch/example/Eyes"_s;
const QString interfaceName = u"org.freedesktop.Application"_s;

/// Reads values for a message from the input; after its end, zeros and empty texts.
class ValueReader
{
public:
    explicit ValueReader(QByteArray bytes)
        : m_bytes(std::move(bytes))
    {
    }

    [[nodiscard]] unsigned char number()
    {
        return m_place < m_bytes.size() ? static_cast<unsigned char>(m_bytes.at(m_place++)) : 0;
    }

    /// Up to the next zero byte.
    [[nodiscard]] QByteArray bytes()
    {
        const qsizetype end = m_bytes.indexOf('\0', m_place);
        const QByteArray result = m_bytes.mid(m_place, end < 0 ? -1 : end - m_place);
        m_place = end < 0 ? m_bytes.size() : end + 1;
        return result;
    }

    [[nodiscard]] QString text() { return QString::fromUtf8(bytes()); }

    [[nodiscard]] QVariantMap map(int depth)
    {
        QVariantMap result;
        for (int count = number() % 4; count > 0; --count) {
            const QString key = number() % 2 == 0 ? u"activation-token"_s : text();
            result.insert(key, value(depth - 1));
        }
        return result;
    }

    [[nodiscard]] QVariantList list(int depth)
    {
        QVariantList result;
        for (int count = number() % 4; count > 0; --count)
            result.append(value(depth - 1));
        return result;
    }

    [[nodiscard]] QVariant value(int depth)
    {
        switch (number() % (depth > 0 ? 11 : 8)) {
        case 0:
            return text();
        case 1:
            return bytes();
        case 2:
            return number() % 2 == 0;
        case 3:
            return static_cast<int>(number()) - 128;
        case 4:
            return static_cast<qulonglong>(number()) << 56;
        case 5:
            return number() / 7.0;
        case 6:
            return QStringList{text(), text()};
        case 7:
            return QVariant::fromValue(QDBusObjectPath(u"/"_s));
        case 8:
            return map(depth);
        case 9:
            return list(depth);
        default:
            return QVariant::fromValue(QDBusVariant(value(depth - 1)));
        }
    }

private:
    QByteArray m_bytes;
    qsizetype m_place = 0;
};

/// The service, connected to a caller in the same process without a bus.
class ServedConnection
{
public:
    ServedConnection()
    {
        service.onActivate = [this] { ++activations; };
        service.onBreakNow = [this] { ++breaks; };
        QObject::connect(
            &m_server, &QDBusServer::newConnection, &m_server, [this](const QDBusConnection &accepted) {
                m_accepted = std::make_unique<QDBusConnection>(accepted);
                m_accepted->registerObject(objectPath, &service, QDBusConnection::ExportAdaptors);
            });
        m_caller = QDBusConnection::connectToPeer(m_server.address(), u"caller"_s);
        while (!m_accepted && m_caller.isConnected())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        require(m_caller.isConnected(), "the connection is established");
    }

    [[nodiscard]] QDBusMessage answer(const QDBusMessage &call) const
    {
        const QDBusPendingCallWatcher pending(m_caller.asyncCall(call));
        QEventLoop loop;
        QObject::connect(&pending, &QDBusPendingCallWatcher::finished, &loop, &QEventLoop::quit);
        loop.exec();
        return pending.reply();
    }

    ApplicationService service{u"ch.example.Eyes"_s};
    int activations = 0;
    int breaks = 0;

private:
    QDBusServer m_server;
    QDBusConnection m_caller{u"none"_s};
    std::unique_ptr<QDBusConnection> m_accepted;
};

QDBusMessage readCall(ValueReader &reader)
{
    constexpr std::array methods{"Activate"_L1, "Open"_L1, "ActivateAction"_L1, "Quit"_L1};
    const QString method = methods.at(reader.number() % methods.size());
    QDBusMessage call = QDBusMessage::createMethodCall(QString(), objectPath, interfaceName, method);
    switch (reader.number() % 4) {
    case 0:
        call << reader.map(3);
        break;
    case 1:
        call << QStringList{reader.text(), reader.text()} << reader.map(3);
        break;
    case 2:
        call << (reader.number() % 2 == 0 ? u"break-now"_s : reader.text()) << reader.list(3)
             << reader.map(3);
        break;
    default:
        for (int count = reader.number() % 4; count > 0; --count)
            call << reader.value(3);
    }
    return call;
}

void checkToken()
{
    const QByteArray token = qgetenv("XDG_ACTIVATION_TOKEN");
    require(token.size() <= maxTokenLength, "a token is short");
    require(std::ranges::none_of(token, [](char byte) { return byte >= 0 && byte < ' '; }),
            "a token is one line of text");
}

} // namespace

/// The input encodes a method call with its arguments.
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static int count = 1;
    static std::array<char *, 2> arguments{const_cast<char *>("orvanebreak"), nullptr};
    static const QCoreApplication application(count, arguments.data());
    static ServedConnection connection;
    connection.activations = 0;
    connection.breaks = 0;
    qunsetenv("XDG_ACTIVATION_TOKEN");
    ValueReader reader(fuzzInput(data, size));
    const QDBusMessage call = readCall(reader);
    const QDBusMessage answer = connection.answer(call);

    const bool isAnswered = answer.type() == QDBusMessage::ReplyMessage;
    const bool isAction = call.member() == "ActivateAction"_L1;
    const bool isBreak = isAction && call.arguments().value(0) == QVariant(u"break-now"_s);
    require(isAnswered || answer.type() == QDBusMessage::ErrorMessage, "a call is answered or refused");
    require(!isAnswered || answer.arguments().isEmpty(), "the answer is empty");
    require(connection.activations == (isAnswered && !isAction ? 1 : 0), "an activation activates");
    require(connection.breaks == (isAnswered && isBreak ? 1 : 0), "only break-now starts a break");
    checkToken();
    acceptedInputs += isAnswered ? 1 : 0;
    return 0;
}
