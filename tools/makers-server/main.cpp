// SPDX-License-Identifier: GPL-3.0-or-later
#include "Commands.h"
#include "StateFolder.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <sodium.h>

#include <cstdio>
#include <exception>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace {

Invocation invocation(const QCoreApplication &application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(u"A server of the makers, to try the program against.\n"_s +
                                     commandHelp());
    parser.addHelpOption();
    parser.addOptions(
        {{u"folder"_s, u"Where everything is kept."_s, u"folder"_s, StateFolder::standardPath()},
         {u"port"_s, u"Port on 127.0.0.1; 0 for any free one."_s, u"port"_s, u"0"_s},
         {u"certificate"_s, u"Certificate in PEM form, for TLS."_s, u"file"_s},
         {u"private-key"_s, u"Key of the certificate in PEM form."_s, u"file"_s}});
    parser.addPositionalArgument(u"command"_s, u"One of the commands above."_s, u"[command]"_s);
    parser.process(application);
    const QStringList words = parser.positionalArguments();
    return {.folder = parser.value(u"folder"_s),
            .command = words.value(0, u"serve"_s),
            .arguments = words.mid(1),
            .port = parser.value(u"port"_s),
            .certificate = parser.value(u"certificate"_s),
            .privateKey = parser.value(u"private-key"_s)};
}

} // namespace

int main(int argc, char **argv)
{
    try {
        const QCoreApplication application(argc, argv);
        if (sodium_init() < 0)
            throw std::runtime_error("libsodium cannot be used");
        return carryOut(invocation(application));
    } catch (const std::exception &trouble) {
        std::fprintf(stderr, "makers-server: %s\n", trouble.what());
        return 1;
    }
}
