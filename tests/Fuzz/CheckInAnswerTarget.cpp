// SPDX-License-Identifier: GPL-3.0-or-later
#include "CheckInAnswer.h"
#include "StrictJson.h"
#include "Support/Signer.h"
#include "Target.h"

using namespace std::chrono_literals;

/// No answer is accepted without a signature by the makers' key.
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const Signer makers(Signer::Seed{1});
    const QString nonce = QStringLiteral("0F1E2D3C4B5A69788796A5B4C3D2E1F0");
    const QByteArray body = fuzzInput(data, size);
    const CheckInVerdict verdict =
        judgeCheckInAnswer(body, nonce, makers.publicKeyBase64(), Date(1'700'000'000s));
    const auto *refusal = std::get_if<CheckInRefusal>(&verdict);
    require(refusal != nullptr, "an answer without the makers' signature is refused");
    require(*refusal != CheckInRefusal::PublicKey && *refusal != CheckInRefusal::Stale,
            "neither the public key nor the time is the reason");
    const std::optional<StrictJson> json = StrictJson::parseObject(body);
    if (!json) {
        require(*refusal == CheckInRefusal::Malformed, "an answer that is not an object is malformed");
        return 0;
    }
    const bool isForThisRequest = json->text("n") == nonce.toStdString();
    require(isForThisRequest || *refusal <= CheckInRefusal::ForeignNonce,
            "an answer to another request is refused as such");
    acceptedInputs += *refusal > CheckInRefusal::ForeignNonce ? 1 : 0;
    return 0;
}
