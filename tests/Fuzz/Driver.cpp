// SPDX-License-Identifier: GPL-3.0-or-later
//
// usage: PROGRAM TARGET COUNT CORPUS [WORDS]
//
// Runs one target without libFuzzer: on every file of the folder CORPUS, then on COUNT mutations of them.
// WORDS is a dictionary in libFuzzer's format. If the process crashes, the input is saved as "crash-TARGET"
// in the current folder.
#include "Mutator.h"
#include "Support/TestSeed.h"
#include "Target.h"

#include <QDir>
#include <QFile>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <optional>

namespace {

constexpr std::size_t maxInputSize = 65'536;

FuzzTarget target;
QByteArray current;
QByteArray crashFile;
std::optional<Mutator> mutator;

void saveInput(int number)
{
    const int file = open(crashFile.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (file >= 0 && write(file, current.constData(), static_cast<std::size_t>(current.size())) >= 0) {
        constexpr char message[] = "the crashing input is saved\n";
        static_cast<void>(!write(STDERR_FILENO, message, sizeof message - 1));
    }
    std::signal(number, SIG_DFL);
    std::raise(number);
}

/// Leaves a sanitizer's handlers in place: they end with a SIGABRT.
void saveInputOfCrashes()
{
    for (const int number : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL}) {
        struct sigaction action = {};
        if (sigaction(number, nullptr, &action) != 0 || action.sa_handler != SIG_DFL)
            continue;
        action.sa_handler = saveInput;
        sigaction(number, &action, nullptr);
    }
}

FuzzTarget findTarget(const QByteArray &name)
{
    const std::vector<FuzzTarget> &targets = fuzzTargets();
    const auto found = std::find_if(targets.begin(), targets.end(),
                                    [&](const FuzzTarget &each) { return each.name == name; });
    require(found != targets.end(), "there is a target of this name");
    return *found;
}

QList<QByteArray> readCorpus(const QString &folder)
{
    QList<QByteArray> corpus;
    for (const QFileInfo &entry : QDir(folder).entryInfoList(QDir::Files, QDir::Name)) {
        QFile file(entry.filePath());
        if (file.open(QIODevice::ReadOnly))
            corpus.append(file.readAll());
    }
    require(!corpus.isEmpty(), "there is a corpus");
    return corpus;
}

/// The word in quotation marks in a line of a dictionary.
QByteArray readWord(const QByteArray &line)
{
    QByteArray word = line.mid(line.indexOf('"') + 1);
    word.truncate(word.lastIndexOf('"'));
    for (qsizetype place = word.indexOf('\\'); place >= 0; place = word.indexOf('\\', place + 1)) {
        if (word.mid(place + 1, 1) == "x")
            word.replace(place, 4, QByteArray::fromHex(word.mid(place + 2, 2)));
        else
            word.remove(place, 1);
    }
    return word;
}

QList<QByteArray> readWords(const QString &path)
{
    QList<QByteArray> words;
    QFile file(path);
    require(file.open(QIODevice::ReadOnly), "there are words");
    while (!file.atEnd()) {
        const QByteArray line = file.readLine().trimmed();
        if (!line.isEmpty() && !line.startsWith('#'))
            words.append(readWord(line));
    }
    return words;
}

QByteArray nextInput()
{
    QByteArray input = mutator->any();
    if (!target.mutate)
        return mutator->changed(input);
    const auto size = static_cast<std::size_t>(input.size());
    input.resize(maxInputSize);
    input.truncate(static_cast<qsizetype>(target.mutate(reinterpret_cast<std::uint8_t *>(input.data()), size,
                                                        maxInputSize, mutator->number())));
    return input;
}

void run(const QByteArray &input)
{
    current = input;
    const QByteArray copy(input.constData(), input.size());
    target.run(reinterpret_cast<const std::uint8_t *>(copy.constData()),
               static_cast<std::size_t>(copy.size()));
}

} // namespace

std::size_t LLVMFuzzerMutate(std::uint8_t *data, std::size_t size, std::size_t maxSize)
{
    const QByteArray changed = mutator->changed(fuzzInput(data, size));
    const std::size_t newSize = std::min(static_cast<std::size_t>(changed.size()), maxSize);
    std::copy_n(changed.constData(), newSize, data);
    return newSize;
}

int main(int argc, char **argv)
{
    require(argc == 4 || argc == 5, "the arguments are: TARGET COUNT CORPUS [WORDS]");
    target = findTarget(argv[1]);
    const int count = QByteArray(argv[2]).toInt();
    const QList<QByteArray> corpus = readCorpus(QFile::decodeName(argv[3]));
    mutator.emplace(corpus, argc == 5 ? readWords(QFile::decodeName(argv[4])) : QList<QByteArray>(),
                    testSeed());
    crashFile = QByteArray("crash-") + target.name;
    saveInputOfCrashes();
    for (const QByteArray &input : corpus)
        run(input);
    for (int index = 0; index < count; ++index)
        run(nextInput());
    const auto runs = static_cast<std::size_t>(corpus.size()) + static_cast<std::size_t>(count);
    std::printf("%zu of %zu inputs were accepted\n", acceptedInputs, runs);
    require(acceptedInputs > 0 && acceptedInputs < runs, "some inputs are accepted, and some are not");
    return EXIT_SUCCESS;
}
