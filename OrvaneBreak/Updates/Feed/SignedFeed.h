// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Appcast.h"

#include <QObject>

#include <functional>
#include <thread>
#include <variant>

/// Why a feed cannot be used.
enum class FeedProblem
{
    Unreadable, ///< Not a feed within the limits, or without a serial number or a date of expiry.
    NotGenuine  ///< Not signed by the makers.
};

using FeedResult = std::variant<Appcast, FeedProblem>;

/// Reads a feed whose last line is "<!-- edSignature: SIGNATURE -->", a signature by `key` in base64 of all
/// bytes before that line. Before "-->" the line can name later keys of the makers, each as
/// "key: KEY certificate: SIGNATURE": a signature of "OrvaneBreak update key KEY" by `key` or one of the keys
/// before; then the feed and its archives can also be signed by these. Any bytes are safe; any thread.
[[nodiscard]] FeedResult readSignedFeed(const QByteArray &bytes, const Ed25519::PublicKey &key,
                                        AddressRule isAllowed, const ReadingLimits &limits = {});

/// Reads feeds on a thread of its own. User-interface thread.
class FeedThread final : public QObject
{
    Q_OBJECT

public:
    using Completion = std::function<void(const FeedResult &)>;

    /// Calls `completion` from the event loop, unless `context` was destroyed. Gives up the feed before.
    void read(const QByteArray &bytes, const Ed25519::PublicKey &key, AddressRule isAllowed, QObject &context,
              Completion completion);

private:
    std::jthread m_thread;
};
