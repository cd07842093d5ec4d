// SPDX-License-Identifier: GPL-3.0-or-later
#include "CommandLine.h"
#include "Target.h"

#include <QList>

#include <algorithm>
#include <string>
#include <vector>

namespace {

/// Captures what is printed on a standard stream.
class PrintedText
{
public:
    explicit PrintedText(FILE *&stream)
        : m_stream(stream)
        , m_before(stream)
    {
        m_stream = open_memstream(&m_text, &m_size);
    }

    ~PrintedText()
    {
        restore();
        std::free(m_text);
    }

    PrintedText(const PrintedText &) = delete;
    PrintedText &operator=(const PrintedText &) = delete;

    /// Ends the capture and returns the text.
    std::string take()
    {
        restore();
        return {m_text, m_size};
    }

private:
    void restore()
    {
        if (m_stream != m_before)
            std::fclose(m_stream);
        m_stream = m_before;
    }

    FILE *&m_stream;
    FILE *m_before;
    char *m_text = nullptr;
    std::size_t m_size = 0;
};

bool isSwitch(const QByteArray &argument)
{
    return argument == "--break-now" || argument == "--diagnostics";
}

bool isSwitchesUpTo(const QList<QByteArray> &arguments, qsizetype index)
{
    return std::all_of(arguments.cbegin() + 1, arguments.cbegin() + index, isSwitch);
}

/// Checks the output for the first argument that is not a switch.
void checkAnswer(const QByteArray &argument, int status, const std::string &output, const std::string &error)
{
    const bool isHelp = argument == "--help" || argument == "-h";
    if (isHelp || argument == "--version") {
        require(status == 0 && error.empty(), "a question is answered");
        require(output.starts_with(isHelp ? "Usage: orvanebreak" : "OrvaneBreak "), "a question is answered");
        return;
    }
    require(status == 2 && output.empty(), "an unknown argument is refused");
    require(error.find(argument.toStdString()) != std::string::npos, "the refused argument is named");
}

} // namespace

/// The input is a command line with a zero byte after each argument.
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    QList<QByteArray> arguments = fuzzInput(data, size).split('\0');
    if (arguments.size() > 1)
        arguments.removeLast();
    std::vector<char *> pointers;
    for (QByteArray &argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);

    PrintedText printedOutput(stdout);
    PrintedText printedError(stderr);
    const CommandLine commandLine = CommandLine::parse(static_cast<int>(arguments.size()), pointers.data());
    const std::string error = printedError.take();
    const std::string output = printedOutput.take();

    for (qsizetype index = arguments.indexOf("-session", 1); index > 0 && isSwitchesUpTo(arguments, index);
         index = arguments.indexOf("-session", index))
        arguments.remove(index, std::min<qsizetype>(2, arguments.size() - index));
    const auto end = std::find_if_not(arguments.cbegin() + 1, arguments.cend(), isSwitch);
    const auto isGiven = [&](const char *name) { return std::count(arguments.cbegin() + 1, end, name) > 0; };
    require(commandLine.isBreakNow == isGiven("--break-now") &&
                commandLine.isDiagnostics == isGiven("--diagnostics"),
            "a switch takes effect");
    require(commandLine.exitStatus.has_value() == (end != arguments.cend()),
            "only other arguments end the process");
    if (end != arguments.cend()) {
        checkAnswer(*end, *commandLine.exitStatus, output, error);
        return 0;
    }
    require(output.empty() && error.empty(), "a switch prints nothing");
    ++acceptedInputs;
    return 0;
}
