// SPDX-License-Identifier: GPL-3.0-or-later
#include "LibarchiveReader.h"
#include "Support/ArchiveMaker.h"
#include "Support/ScratchFolder.h"
#include "Target.h"
#include "UnpackedUpdate.h"

#include <QList>

#include <array>
#include <random>
#include <string>

namespace {

constexpr qsizetype blockSize = 512;

QList<qsizetype> headers(const QByteArray &tar)
{
    constexpr qsizetype magicField = 257;
    QList<qsizetype> result;
    for (qsizetype block = 0; block + blockSize <= tar.size(); block += blockSize) {
        if (QByteArrayView(tar).sliced(block + magicField).startsWith("ustar"))
            result.append(block);
    }
    return result;
}

/// The archive with the correct checksum in every header; readers reject others at once.
QByteArray withCorrectChecksums(QByteArray tar)
{
    constexpr qsizetype field = 148;
    constexpr qsizetype length = 8;
    for (const qsizetype block : headers(tar)) {
        tar.replace(block + field, length, QByteArray(length, ' '));
        unsigned sum = 0;
        for (const char byte : QByteArrayView(tar).sliced(block, blockSize))
            sum += static_cast<unsigned char>(byte);
        tar.replace(block + field, length - 1, QByteArray::number(sum, 8).rightJustified(6, '0') + '\0');
    }
    return tar;
}

/// Changes a few bytes in headers to values that are meaningful there.
void changeHeaders(QByteArray &tar, std::mt19937 &random)
{
    constexpr QByteArrayView meaningful("01234567/.\0xgLK \xff", 17);
    constexpr std::array<qsizetype, 2> nameFields{0, 157};
    constexpr qsizetype typeField = 156;
    const QList<qsizetype> blocks = headers(tar);
    const auto below = [&](qsizetype limit) {
        return static_cast<qsizetype>(random() % static_cast<unsigned>(limit));
    };
    for (qsizetype change = below(4); change >= 0 && !blocks.isEmpty(); --change) {
        // Half of the changes are in the type, the others in the names, the mode and the size.
        const qsizetype place = below(2) == 0 ? typeField : nameFields.at(random() % 2) + below(24);
        tar[blocks.at(below(blocks.size())) + place] = meaningful.at(below(meaningful.size()));
    }
}

bool isSound(const std::filesystem::directory_entry &entry, const std::filesystem::path &top)
{
    if (entry.is_symlink()) {
        // The target may not exist, so only its path can be resolved.
        std::error_code error;
        const auto target = std::filesystem::weakly_canonical(
            entry.path().parent_path() / std::filesystem::read_symlink(entry.path()), error);
        return error || target == top || target.string().starts_with(top.string() + '/');
    }
    const auto mode = entry.symlink_status().permissions();
    return entry.is_directory() ? mode == std::filesystem::perms(0755)
                                : entry.is_regular_file() && (mode == std::filesystem::perms(0755) ||
                                                              mode == std::filesystem::perms(0644));
}

void checkUpdate(const UnpackedUpdate &update, const std::filesystem::path &folder,
                 const UnpackLimits &limits)
{
    require(update.version.isValid(), "an update has a version");
    require(update.folder == folder / ("OrvaneBreak-" + update.version.text().toStdString()),
            "the top folder is named for the version");
    const std::filesystem::path top = std::filesystem::canonical(update.folder);
    std::size_t entries = 0;
    std::uintmax_t bytes = 0;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(folder)) {
        require(isSound(entry, top), "unpacked entries are plain, and links stay in the top folder");
        ++entries;
        // A link to itself has neither a type nor a size.
        bytes += !entry.is_symlink() && entry.is_regular_file() ? entry.file_size() : 0;
    }
    require(entries <= limits.entries && bytes <= static_cast<std::uintmax_t>(limits.totalBytes),
            "the unpacked files are within the limits");
}

} // namespace

/// The input is a tar archive, compressed or not.
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const ScratchFolder scratch;
    const QByteArray input = fuzzInput(data, size);
    const bool isCompressed = input.startsWith("\x28\xb5\x2f\xfd");
    const QByteArray archive = isCompressed ? input : ArchiveMaker::compressed(withCorrectChecksums(input));
    UnpackLimits limits;
    limits.entries = 100;
    limits.totalBytes = 1'000'000;
    const std::filesystem::path folder = scratch.path("unpacked");
    const auto result = unpackArchive(LibarchiveReader(archive), folder, limits);
    const auto *update = std::get_if<UnpackedUpdate>(&result);
    require(scratch.names() == (update ? QStringList{QStringLiteral("unpacked")} : QStringList()),
            "nothing is outside the folder, and a failure leaves nothing");
    if (update) {
        checkUpdate(*update, folder, limits);
        ++acceptedInputs;
    }
    std::filesystem::remove_all(folder);
    return 0;
}

/// Half of the mutations change headers, which random ones would rarely hit.
std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size, std::size_t maxSize, unsigned seed)
{
    std::mt19937 random(seed);
    if (random() % 2 == 0)
        return LLVMFuzzerMutate(data, size, maxSize);
    QByteArray tar = fuzzInput(data, size);
    changeHeaders(tar, random);
    std::copy(tar.cbegin(), tar.cend(), data);
    return size;
}
