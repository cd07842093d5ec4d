// SPDX-License-Identifier: GPL-3.0-or-later
#include "CheckInAnswer.h"
#include "StrictJson.h"
#include "Support/Signer.h"
#include "Target.h"

using namespace std::chrono_literals;

/// Nobody who does not have the makers' key is believed, whatever they send.
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const Signer makers(Signer::Seed{1});
    const QString nonce = QStringLiteral("0F1E2D3C4B5A69788796A5B4C3D2E1F0");
    const QByteArray body = fuzzInput(data, size);
    const CheckInVerdict verdict =
        judgeCheckInAnswer(body, nonce, makers.publicKeyBase64(), Date(1'700'000'000s));
    const auto *refusal = std::get_if<CheckInRefusal>(&verdict);
    require(refusal != nullptr, "what the makers did not sign is not believed");
    require(*refusal != CheckInRefusal::PublicKey && *refusal != CheckInRefusal::Stale,
            "only what comes from the server can be wrong, and only what is signed can be old");
    const std::optional<StrictJson> json = StrictJson::parseObject(body);
    if (!json) {
        require(*refusal == CheckInRefusal::Malformed, "what is no object is malformed");
        return 0;
    }
    const bool isForThisRequest = json->text("n") == nonce.toStdString();
    require(isForThisRequest || *refusal <= CheckInRefusal::ForeignNonce,
            "an answer to another request is refused as such");
    acceptedInputs += *refusal > CheckInRefusal::ForeignNonce ? 1 : 0;
    return 0;
}
