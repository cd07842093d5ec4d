# SPDX-License-Identifier: GPL-3.0-or-later
"""The command line."""

import getopt
import os
import signal
import sys
import threading

from . import Trouble, misbehaviours
from .endpoints import Endpoints
from .files import Outbox, ReceivedLog, StateFolder, standard_folder
from .listener import Listener
from .signing_key import SigningKey

_OPTIONS = (
    ("-h, --help", "shows this help"),
    ("--folder FOLDER", "folder for keys, messages and logs"),
    ("--port PORT", "port on 127.0.0.1; 0 for any free one"),
    ("--certificate FILE", "certificate in PEM form, for TLS"),
    ("--private-key FILE", "key of the certificate in PEM form"),
)


def carry_out(words):
    """Executes the command line; "serve" never returns. Raises Trouble or OSError on failure."""
    try:
        options, words = getopt.gnu_getopt(words, "h", ["help", "folder=", "port=", "certificate=", "private-key="])
    except getopt.GetoptError as error:
        raise Trouble(error) from error
    options = dict(options)
    if options.keys() & {"-h", "--help"}:
        print(_help())
        return
    name, *arguments = [os.fsencode(word).decode(errors="replace") for word in words] or ["serve"]
    if name not in _COMMANDS:
        raise Trouble(f"unknown command: {name}")
    usage, _, run = _COMMANDS[name]
    required = sum(not word.startswith("[") for word in usage.split())
    if len(arguments) < required or len(arguments) > len(usage.split()) and "..." not in usage:
        raise Trouble(f"usage: makers-server {name} {usage}")
    run(StateFolder(options.get("--folder", standard_folder())), options, *arguments)


def _help():
    modes = [(f"{mode.name} [{mode.standard_argument}]" if mode.standard_argument else mode.name, mode.summary)
             for mode in (misbehaviours.NONE, *misbehaviours.ALL)]
    commands = [(f"{name} {usage}", summary) for name, (usage, summary, _) in _COMMANDS.items()]
    return "Usage: makers-server [options] [command]\nA makers' server for testing the program.\n" + "\n".join(
        f"\n{title}:\n" + "".join(f"  {words:25} {summary}\n" for words, summary in entries)
        for title, entries in (("Commands", commands), ("Modes of misbehave", modes), ("Options", _OPTIONS)))


def _print(line):
    # Flushed, because the reader of a pipe waits for the line.
    print(line, flush=True)


def _serve(folder, options):
    port = misbehaviours.whole_number(options.get("--port", "0"))
    if port is None or not 0 <= port < 2 ** 16:
        raise Trouble(f"{options['--port']} is not a port")
    key = SigningKey.kept_in(folder.file("signing-key"))
    _print(f"public key {key.public_key()}")
    endpoints = Endpoints(folder, key)
    tls = _tls(options.get("--certificate"), options.get("--private-key"))
    listener = Listener(port, endpoints.answer, tls)
    plain = Listener(0, endpoints.answer) if tls else listener
    endpoints.plain_address = plain.address
    if tls:
        threading.Thread(target=plain.serve, daemon=True).start()
        _print(f"without TLS on {plain.address}")
    _print(f"listening on {listener.address}")
    listener.serve()


def _tls(certificate, private_key):
    if not certificate and not private_key:
        return None
    if not certificate or not private_key:
        raise Trouble("--certificate and --private-key go together")
    import ssl  # Imported late, because it takes longer than the rest of the startup.
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    try:
        # The empty password keeps openssl from prompting.
        context.load_cert_chain(certificate, private_key, password="")
    except OSError as error:
        raise Trouble(f"TLS needs a certificate and its key, both in PEM form: {error}") from error
    return context


def _message_id(text):
    identifier = misbehaviours.whole_number(text)
    if identifier is None:
        raise Trouble(f"{text} is not an integer")
    return identifier


def _list(folder, _options, *kinds):
    # The reader may close the pipe early.
    signal.signal(signal.SIGPIPE, signal.SIG_DFL)
    sys.stdout.buffer.writelines(ReceivedLog(folder).lines(kinds))


#: Per command: its arguments, a summary, and its function, which takes the folder, the options and the arguments.
_COMMANDS = {
    "serve": ("", "answers requests until it is terminated (the default)", _serve),
    "public-key": ("", "prints the base64 text of the public key",
                   lambda folder, _: _print(SigningKey.kept_in(folder.file("signing-key")).public_key())),
    "publish": ("ID TEXT", "makes this the message for check-ins",
                lambda folder, _, identifier, text: Outbox(folder).publish(_message_id(identifier), text)),
    "withdraw": ("ID", "withdraws a message",
                 lambda folder, _, identifier: Outbox(folder).withdraw(_message_id(identifier))),
    "list": ("[KIND...]", "prints what was received, one JSON object per line; kinds: check-in acknowledgement report crash "
                          "other", _list),
    "misbehave": ("MODE [ARGUMENT]", "sends wrong answers from the next request on",
                  lambda folder, _, *words: misbehaviours.choose(folder, *words)),
}
