// SPDX-License-Identifier: GPL-3.0-or-later
#include "UnpackedUpdate.h"

#include "FileCalls.h"
#include "FolderWriter.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <array>
#include <cstring>
#include <system_error>

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t bufferSize = 65'536;
constexpr qint64 informationLimit = 65'536;
constexpr auto informationFile = "/share/OrvaneBreak/Info.json";

class Unpacking
{
public:
    Unpacking(ArchiveReader &archive, const std::filesystem::path &folder, const UnpackLimits &limits)
        : m_folder(folder)
        , m_reader(archive)
        , m_rules(limits)
        , m_writer(folder)
    {
    }

    [[nodiscard]] bool hasCreatedFolder() const { return m_writer.isOpen(); }

    std::variant<UnpackedUpdate, UnpackFailure> run();

private:
    std::optional<UnpackFailure> unpack(const ArchiveEntry &entry);
    std::optional<UnpackProblem> make(const ArchiveEntry &entry);
    std::optional<UnpackProblem> makeFile(const std::vector<std::string> &names, const ArchiveEntry &entry);
    std::optional<UnpackProblem> copyContent(int file, qint64 size);
    [[nodiscard]] bool syncFolders() const;
    [[nodiscard]] std::variant<UnpackedUpdate, UnpackFailure> verifiedUpdate() const;

    std::filesystem::path m_folder;
    ArchiveReader &m_reader;
    ArchiveRules m_rules;
    FolderWriter m_writer;
};

UnpackFailure diskFailure()
{
    return {UnpackProblem::Disk, QString::fromLocal8Bit(std::strerror(errno))};
}

std::variant<UnpackedUpdate, UnpackFailure> Unpacking::run()
{
    if (!m_writer.isOpen())
        return diskFailure();
    while (true) {
        const auto next = m_reader.next();
        if (const auto *problem = std::get_if<UnpackProblem>(&next))
            return UnpackFailure{*problem, {}};
        const auto *entry = std::get_if<ArchiveEntry>(&next);
        if (!entry)
            break;
        if (const auto failure = unpack(*entry))
            return *failure;
    }
    if (!syncFolders())
        return diskFailure();
    return verifiedUpdate();
}

std::optional<UnpackFailure> Unpacking::unpack(const ArchiveEntry &entry)
{
    auto problem = m_rules.admit(entry);
    if (!problem)
        problem = make(entry);
    if (!problem)
        return std::nullopt;
    return *problem == UnpackProblem::Disk ? diskFailure()
                                           : UnpackFailure{*problem, QString::fromStdString(entry.path)};
}

std::optional<UnpackProblem> Unpacking::make(const ArchiveEntry &entry)
{
    const std::vector<std::string> names = ArchiveRules::split(entry.path).value();
    bool isMade = false;
    switch (entry.kind) {
    case ArchiveEntry::Kind::Folder:
        isMade = m_writer.makeFolder(names);
        break;
    case ArchiveEntry::Kind::Link:
        isMade = m_writer.makeLink(names, entry.target);
        break;
    case ArchiveEntry::Kind::File:
        return makeFile(names, entry);
    }
    return isMade ? std::nullopt : std::optional(UnpackProblem::Disk);
}

std::optional<UnpackProblem> Unpacking::makeFile(const std::vector<std::string> &names,
                                                 const ArchiveEntry &entry)
{
    std::optional<UnpackProblem> problem;
    const bool isMade = m_writer.makeFile(names, entry.isExecutable, [&](int file) {
        problem = copyContent(file, entry.size);
        return !problem;
    });
    if (isMade || problem)
        return problem;
    return UnpackProblem::Disk;
}

std::optional<UnpackProblem> Unpacking::copyContent(int file, qint64 size)
{
    std::array<char, bufferSize> buffer = {};
    while (true) {
        const auto length = m_reader.read(buffer);
        if (!length || static_cast<qint64>(*length) > size)
            return UnpackProblem::Damaged;
        if (*length == 0)
            return size == 0 ? std::nullopt : std::optional(UnpackProblem::Damaged);
        size -= static_cast<qint64>(*length);
        if (!writeBytes(file, {buffer.data(), static_cast<qsizetype>(*length)}))
            return UnpackProblem::Disk;
    }
}

bool Unpacking::syncFolders() const
{
    for (const std::string &folder : m_rules.folders()) {
        if (!m_writer.syncFolder(ArchiveRules::split(folder).value()))
            return false;
    }
    return m_writer.syncFolder({});
}

std::variant<UnpackedUpdate, UnpackFailure> Unpacking::verifiedUpdate() const
{
    const std::string path = m_rules.topFolder() + informationFile;
    QFile file(m_folder / path);
    if (!m_rules.hasFile(path) || !file.open(QIODevice::ReadOnly))
        return UnpackFailure{UnpackProblem::Version, u"no Info.json"_s};
    const QJsonObject information = QJsonDocument::fromJson(file.read(informationLimit)).object();
    const QString version = information.value("CFBundleShortVersionString"_L1).toString();
    if (version.isEmpty() || version != m_rules.version())
        return UnpackFailure{UnpackProblem::Version, version};
    return UnpackedUpdate{m_folder / m_rules.topFolder(), UpdateVersion(version)};
}

} // namespace

std::variant<UnpackedUpdate, UnpackFailure>
unpackArchive(ArchiveReader &&archive, const std::filesystem::path &folder, const UnpackLimits &limits)
{
    Unpacking unpacking(archive, folder, limits);
    auto result = unpacking.run();
    if (std::holds_alternative<UnpackFailure>(result) && unpacking.hasCreatedFolder()) {
        std::error_code error;
        std::filesystem::remove_all(folder, error);
    }
    return result;
}
