// SPDX-License-Identifier: GPL-3.0-or-later
#include "CrashReporter.h"

#include "CallStack.h"
#include "CrashCapture.h"
#include "CrashText.h"
#include "CrashUpload.h"
#include "ModuleSymbols.h"

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t maxErrorFrames = 15;

} // namespace

void CrashReporter::install()
{
    CrashUpload &upload = CrashUpload::shared();
    upload.sendPendingCrash();
    upload.sendSystemCrashReports();
    CrashCapture::install(upload.places().pendingReport);
}

void CrashReporter::reportError(const QString &message)
{
    CallStack stack;
    stack.captureHere();
    CrashText text;
    stack.appendTo(text, maxErrorFrames, ModuleSymbols(ModuleSymbols::program));
    const std::string_view lines = text.view();
    CrashUpload::shared().send(u"error"_s, message,
                               QString::fromUtf8(lines.data(), static_cast<qsizetype>(lines.size())));
}
