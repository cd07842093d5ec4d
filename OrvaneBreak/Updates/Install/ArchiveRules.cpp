// SPDX-License-Identifier: GPL-3.0-or-later
#include "ArchiveRules.h"

#include <algorithm>

namespace {

constexpr std::string_view topFolderPrefix = "OrvaneBreak-";

bool isPlain(char character)
{
    return character >= ' ' && character <= '~';
}

bool isName(std::string_view name)
{
    return !name.empty() && name != "." && name != ".." && std::all_of(name.begin(), name.end(), isPlain);
}

/// Whether a link in a folder `depth` levels below the top folder stays inside that folder. ".." is allowed
/// only at the beginning: after the name of another link it would be relative to that link's target.
bool staysInside(std::string_view target, std::size_t depth)
{
    constexpr std::string_view upwards = "..";
    while (target == upwards || target.starts_with("../")) {
        if (depth == 0)
            return false;
        --depth;
        target.remove_prefix(std::min(target.size(), upwards.size() + 1));
    }
    return target.empty() || ArchiveRules::split(target).has_value();
}

} // namespace

std::optional<std::vector<std::string>> ArchiveRules::split(std::string_view path)
{
    if (path.ends_with('/'))
        path.remove_suffix(1);
    std::vector<std::string> names;
    while (true) {
        const std::size_t end = path.find('/');
        const std::string_view name = path.substr(0, end);
        if (!isName(name))
            return std::nullopt;
        names.emplace_back(name);
        if (end == std::string_view::npos)
            return names;
        path.remove_prefix(end + 1);
    }
}

std::optional<UnpackProblem> ArchiveRules::admit(const ArchiveEntry &entry)
{
    const auto names = split(entry.path);
    if (!names || entry.path.size() > m_limits.pathLength ||
        (entry.path.ends_with('/') && entry.kind != ArchiveEntry::Kind::Folder))
        return UnpackProblem::Path;
    if (const auto problem = admitTopFolder(*names, entry.kind))
        return problem;
    if (const auto problem = admitPath(*names, entry.kind))
        return problem;
    if (entry.kind == ArchiveEntry::Kind::Link &&
        (entry.target.empty() || entry.target.size() > m_limits.pathLength ||
         !staysInside(entry.target, names->size() - 2)))
        return UnpackProblem::Link;
    if (entry.size < 0 || entry.size > m_limits.entryBytes || entry.size > m_limits.totalBytes - m_totalBytes)
        return UnpackProblem::TooLarge;
    m_totalBytes += entry.size;
    return std::nullopt;
}

std::optional<UnpackProblem> ArchiveRules::admitTopFolder(const std::vector<std::string> &names,
                                                          ArchiveEntry::Kind kind)
{
    if (m_topFolder.empty())
        m_topFolder = names.front();
    const bool isFolder = names.size() > 1 || kind == ArchiveEntry::Kind::Folder;
    if (names.front() != m_topFolder || !isFolder || !m_topFolder.starts_with(topFolderPrefix) ||
        !UpdateVersion(version()).isValid())
        return UnpackProblem::TopFolder;
    return std::nullopt;
}

std::optional<UnpackProblem> ArchiveRules::admitPath(const std::vector<std::string> &names,
                                                     ArchiveEntry::Kind kind)
{
    std::string path;
    for (std::size_t index = 0; index + 1 < names.size(); ++index) {
        path += path.empty() ? names[index] : '/' + names[index];
        const Known known = m_known.try_emplace(path, Known::ImpliedFolder).first->second;
        if (known == Known::File || known == Known::Link)
            return UnpackProblem::Path;
    }
    path += path.empty() ? names.back() : '/' + names.back();
    const Known now = kind == ArchiveEntry::Kind::Folder ? Known::Folder
                      : kind == ArchiveEntry::Kind::Link ? Known::Link
                                                         : Known::File;
    const auto [place, isNew] = m_known.try_emplace(path, now);
    if (!isNew && (place->second != Known::ImpliedFolder || now != Known::Folder))
        return UnpackProblem::Duplicate;
    place->second = now;
    return m_known.size() > m_limits.entries ? std::optional(UnpackProblem::TooMany) : std::nullopt;
}

QString ArchiveRules::version() const
{
    return QString::fromStdString(m_topFolder)
        .sliced(static_cast<qsizetype>(std::min(m_topFolder.size(), topFolderPrefix.size())));
}

std::vector<std::string> ArchiveRules::folders() const
{
    std::vector<std::string> result;
    for (const auto &[path, known] : m_known) {
        if (known == Known::Folder || known == Known::ImpliedFolder)
            result.push_back(path);
    }
    return result;
}

bool ArchiveRules::hasFile(const std::string &path) const
{
    const auto found = m_known.find(path);
    return found != m_known.end() && found->second == Known::File;
}
