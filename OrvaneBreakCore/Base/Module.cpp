// SPDX-License-Identifier: GPL-3.0-or-later
#include "Module.h"

#include "MessageFilter.h"

#include <QCoreApplication>
#include <QJsonObject>
#include <QPluginLoader>

using namespace Qt::StringLiterals;

QString Module::folder()
{
    return QCoreApplication::applicationDirPath() + u"/../lib/orvanebreak/modules"_s;
}

QObject *Module::load(const QString &path)
{
    QPluginLoader loader(path);
    // A missing function fails the load and not a later call, in the middle of an update. The code that a
    // sound thread runs is never unloaded.
    loader.setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
    // Reading the metadata runs no code of the module.
    const QJsonValue description = loader.metaData().value("MetaData"_L1);
    const bool isOurs = description["version"_L1] == QJsonValue(QStringLiteral(ORVANE_VERSION));
    QObject *module = isOurs ? loader.instance() : nullptr;
    if (!module) {
        const bool isOtherVersion = !isOurs && description.isObject();
        qCWarning(orvaneLog).noquote()
            << u"OrvaneBreak:"_s << path << u"cannot be used:"_s
            << (isOtherVersion ? u"it is from another version"_s : loader.errorString());
    }
    return module;
}
