#include "FaultyFileManager.h"

namespace {

std::optional<std::string> errorOf(const FaultyFileManager::Fault& fault, const std::string& path) {
    return fault ? fault(path) : std::nullopt;
}

} // namespace

FaultyFileManager::Fault FaultyFileManager::always(std::string error) {
    return [error = std::move(error)](const std::string&) { return error; };
}

FaultyFileManager::Fault FaultyFileManager::atPathsEndingWith(std::string end, std::string error) {
    return [end = std::move(end), error = std::move(error)](const std::string& path) {
        return path.ends_with(end) ? std::optional(error) : std::nullopt;
    };
}

QVLFileManager::ItemKind FaultyFileManager::itemKindAtPath(const std::string& path) const {
    const auto kind = itemKind ? itemKind(path) : std::nullopt;
    return kind ? *kind : m_real->itemKindAtPath(path);
}

QVLResult<std::string> FaultyFileManager::contentsOfFileAtPath(const std::string& path) const {
    const auto error = errorOf(readFault, path);
    return error ? QVLResult<std::string>::failure(*error) : m_real->contentsOfFileAtPath(path);
}

QVLOutcome FaultyFileManager::writeAtomically(std::string_view data, const std::string& path,
                                              QVLDurability durability) {
    const auto error = errorOf(writeFault, path);
    return error ? QVLOutcome::failure(*error) : m_real->writeAtomically(data, path, durability);
}

QVLOutcome FaultyFileManager::removeItemAtPath(const std::string& path) {
    const auto error = errorOf(removeFault, path);
    return error ? QVLOutcome::failure(*error) : m_real->removeItemAtPath(path);
}

QVLOutcome FaultyFileManager::createDirectoryAtPath(const std::string& path, bool withIntermediateDirectories) {
    const auto error = errorOf(createDirectoryFault, path);
    return error ? QVLOutcome::failure(*error) : m_real->createDirectoryAtPath(path, withIntermediateDirectories);
}

QVLResult<QVLDate> FaultyFileManager::creationDateOfItemAtPath(const std::string& path) const {
    if (const auto error = errorOf(creationDateFault, path)) {
        return QVLResult<QVLDate>::failure(*error);
    }
    const auto date = creationDate ? creationDate(path) : std::nullopt;
    return date ? QVLResult<QVLDate>::success(*date) : m_real->creationDateOfItemAtPath(path);
}

QVLResult<std::vector<std::string>> FaultyFileManager::contentsOfDirectoryAtPath(const std::string& path) const {
    const auto error = errorOf(listFault, path);
    return error ? QVLResult<std::vector<std::string>>::failure(*error) : m_real->contentsOfDirectoryAtPath(path);
}
