// SPDX-License-Identifier: GPL-3.0-or-later
#include "SignedFeed.h"

#include "QueuedAnswer.h"
#include "SignalStack.h"

#include <algorithm>
#include <system_error>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr auto lastLineBegin = "<!-- edSignature: ";
constexpr auto lastLineEnd = "-->";
constexpr auto certifiedText = "OrvaneBreak update key ";
constexpr qsizetype lastLineLimit = 4'096;

// Words of the last line: "<!--", "edSignature:", the signature; then of each key "key:", the key,
// "certificate:", the signature; then "-->".
constexpr qsizetype signatureWord = 2;
constexpr qsizetype firstKeyWord = 3;
constexpr qsizetype wordsPerKey = 4;

bool isSignedByOne(const std::vector<Ed25519::PublicKey> &keys, QByteArrayView message,
                   const QByteArray &signature)
{
    const QByteArray bytes = QByteArray::fromBase64(signature);
    return std::any_of(keys.begin(), keys.end(),
                       [&](const auto &key) { return Ed25519::verify(message, bytes, key); });
}

/// The keys that the makers may sign with: `key`, and those that the last line names with a certificate.
std::vector<Ed25519::PublicKey> keysIn(const QByteArrayList &words, const Ed25519::PublicKey &key)
{
    std::vector<Ed25519::PublicKey> keys{key};
    for (qsizetype place = firstKeyWord; place + wordsPerKey < words.size(); place += wordsPerKey) {
        const QByteArray &text = words.at(place + 1);
        const std::optional<Ed25519::PublicKey> later = Ed25519::publicKey(text);
        if (later && isSignedByOne(keys, certifiedText + text, words.at(place + 3)))
            keys.push_back(*later);
    }
    return keys;
}

} // namespace

FeedResult readSignedFeed(const QByteArray &bytes, const Ed25519::PublicKey &key, AddressRule isAllowed,
                          const ReadingLimits &limits)
{
    const qsizetype begin = bytes.lastIndexOf(lastLineBegin);
    if (begin < 0 || bytes.size() - begin > lastLineLimit)
        return FeedProblem::NotGenuine;
    const QByteArrayList words = bytes.sliced(begin).trimmed().split(' ');
    const std::vector<Ed25519::PublicKey> keys = keysIn(words, key);
    const QByteArray content = bytes.first(begin);
    if (words.last() != lastLineEnd || !isSignedByOne(keys, content, words.value(signatureWord)))
        return FeedProblem::NotGenuine;
    std::optional<Appcast> feed = parseAppcast(content, isAllowed, limits);
    if (!feed || feed->serial <= 0 || !feed->expires.isValid())
        return FeedProblem::Unreadable;
    for (AppcastItem &item : feed->items)
        item.laterKeys.assign(keys.begin() + 1, keys.end());
    return *std::move(feed);
}

void FeedThread::read(const QByteArray &bytes, const Ed25519::PublicKey &key, AddressRule isAllowed,
                      QObject &context, Completion completion)
{
    const auto finish = queuedAnswer(*this, context, std::move(completion));
    try {
        m_thread = std::jthread([=](const std::stop_token &stop) {
            const SignalStack signalStack;
            finish(readSignedFeed(bytes, key, isAllowed, {stop}));
        });
    } catch (const std::system_error &) {
        finish(FeedProblem::Unreadable);
    }
}
