// SPDX-License-Identifier: GPL-3.0-or-later
#include "CheckInAnswer.h"
#include "Support/Signer.h"
#include "Target.h"

#include <cstdlib>
#include <cstring>

using namespace std::chrono_literals;

namespace {

constexpr qint64 now = 1'700'000'000;
constexpr qint64 maxAge = 600;
const QString nonce = QStringLiteral("0F1E2D3C4B5A69788796A5B4C3D2E1F0");

const Signer &makers()
{
    static const Signer signer(Signer::Seed{1});
    return signer;
}

CheckInVerdict judged(const QByteArray &body)
{
    return judgeCheckInAnswer(body, nonce, makers().publicKeyBase64(), Date(std::chrono::seconds(now)));
}

/// Removes the number at the beginning of `input` and returns it.
qint64 takeNumber(QByteArray &input)
{
    qint64 number = 0;
    const auto length = std::min<qsizetype>(input.size(), sizeof number);
    std::memcpy(&number, input.constData(), static_cast<std::size_t>(length));
    input.remove(0, length);
    return number;
}

/// A signed answer arrives unchanged.
void checkWhole(qint64 id, qint64 timestamp, const QString &text)
{
    const CheckInVerdict verdict = judged(jsonBytes(makers().answer(nonce, timestamp, id, text)));
    const bool isFresh = timestamp > now - maxAge && timestamp < now + maxAge;
    if (!isFresh)
        require(verdict == CheckInVerdict(CheckInRefusal::Stale),
                "a signed answer that is not fresh is stale");
    else if (id < 1 || text.isEmpty())
        require(verdict == CheckInVerdict(), "without an id or a text there is no message");
    else
        require(verdict == CheckInVerdict(ServerMessage{id, text}), "a message arrives as it was signed");
}

/// Changes bytes of an answer: in `edits`, two bytes give the position and one the new value.
void checkChanged(const QByteArray &edits)
{
    const ServerMessage message{7, QStringLiteral("Bonjour | é 👁")};
    QByteArray body = jsonBytes(makers().answer(nonce, now, message.id, message.text));
    for (qsizetype index = 0; index + 2 < edits.size(); index += 3) {
        const auto high = static_cast<unsigned char>(edits.at(index));
        const auto low = static_cast<unsigned char>(edits.at(index + 1));
        body[(high * 256 + low) % body.size()] = edits.at(index + 2);
    }
    const CheckInVerdict verdict = judged(body);
    require(verdict == CheckInVerdict(message) || std::holds_alternative<CheckInRefusal>(verdict),
            "a changed answer has the signed message or is refused");
    acceptedInputs += std::holds_alternative<ServerMessage>(verdict) ? 1 : 0;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    QByteArray input = fuzzInput(data, size);
    checkChanged(input);
    const qint64 id = takeNumber(input);
    const qint64 timestamp = takeNumber(input);
    const QString text = QString::fromUtf8(input);
    checkWhole(id, timestamp, text);
    checkWhole(1, now, text);
    return 0;
}
