// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMetaObject>
#include <QObject>
#include <QPointer>

#include <functional>
#include <utility>

/// A function that may be called on any thread while `receiver` exists: `completion` is called with its
/// argument on the thread of `receiver`, in a later turn of its event loop, unless `context` or `receiver` is
/// gone by then.
template <typename Result>
[[nodiscard]] std::function<void(const Result &)> queuedAnswer(QObject &receiver, QObject &context,
                                                               std::function<void(const Result &)> completion)
{
    return
        [&receiver, context = QPointer(&context), completion = std::move(completion)](const Result &result) {
            QMetaObject::invokeMethod(
                &receiver,
                [context, completion, result] {
                    if (context)
                        completion(result);
                },
                Qt::QueuedConnection);
        };
}
