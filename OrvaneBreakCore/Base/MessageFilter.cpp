// SPDX-License-Identifier: GPL-3.0-or-later
#include "MessageFilter.h"

#include <cstdio>
#include <cstring>

Q_LOGGING_CATEGORY(orvaneLog, "orvanebreak")

namespace {

void filterMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    const bool isOurs = context.category && std::strcmp(context.category, orvaneLog().categoryName()) == 0;
    if (isOurs || type == QtFatalMsg)
        std::fprintf(stderr, "%s\n", qPrintable(message));
}

} // namespace

bool installMessageFilter()
{
    if (qgetenv("ORVANE_DEBUG_LOG") == "1")
        return false;
    qInstallMessageHandler(filterMessage);
    return true;
}
