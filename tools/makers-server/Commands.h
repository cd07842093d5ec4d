// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

/// What was asked for on the command line.
struct Invocation
{
    QString folder;
    QString command;
    QStringList arguments; ///< Of the command.
    QString port;          ///< For the command "serve", as the two that follow.
    QString certificate;   ///< A file in PEM form; empty for a server without TLS.
    QString privateKey;    ///< The file with the key of the certificate.
};

/// The commands and the misbehaviours, one per line, as --help shows them.
[[nodiscard]] QString commandHelp();

/// Carries the command out and returns the exit status of the process; "serve" returns when the event loop
/// of the application ends. Throws std::runtime_error when it cannot be carried out.
[[nodiscard]] int carryOut(const Invocation &invocation);
