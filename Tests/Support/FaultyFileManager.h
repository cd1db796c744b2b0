#pragma once

#include "QVLFileManager.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

/// The real file manager, of which each operation can be made to fail.
///
/// A fault is asked with the path before the operation; the text that it answers is the error, and no value lets the
/// operation through. Set faults while no other thread uses the files.
class FaultyFileManager final : public QVLFileManager {
public:
    using Fault = std::function<std::optional<std::string>(const std::string& path)>;

    explicit FaultyFileManager(std::shared_ptr<QVLFileManager> real) : m_real(std::move(real)) {}

    Fault readFault;
    Fault writeFault;
    Fault removeFault;
    Fault createDirectoryFault;
    Fault creationDateFault;
    Fault listFault;
    /// Answers for the real item at a path; no value lets the real one show.
    std::function<std::optional<ItemKind>(const std::string& path)> itemKind;
    /// Answers for the real creation date.
    std::function<std::optional<QVLDate>(const std::string& path)> creationDate;

    /// Fails for every path.
    [[nodiscard]] static Fault always(std::string error);
    /// Fails for paths that end like this.
    [[nodiscard]] static Fault atPathsEndingWith(std::string end, std::string error);

    [[nodiscard]] ItemKind itemKindAtPath(const std::string& path) const override;
    [[nodiscard]] QVLResult<std::string> contentsOfFileAtPath(const std::string& path) const override;
    using QVLFileManager::writeAtomically;
    [[nodiscard]] QVLOutcome writeAtomically(std::string_view data, const std::string& path,
                                             QVLDurability durability) override;
    [[nodiscard]] QVLOutcome removeItemAtPath(const std::string& path) override;
    [[nodiscard]] QVLOutcome createDirectoryAtPath(const std::string& path, bool withIntermediateDirectories) override;
    [[nodiscard]] QVLResult<QVLDate> creationDateOfItemAtPath(const std::string& path) const override;
    [[nodiscard]] QVLResult<std::vector<std::string>> contentsOfDirectoryAtPath(const std::string& path) const override;
    [[nodiscard]] std::string temporaryDirectory() const override { return m_real->temporaryDirectory(); }

private:
    std::shared_ptr<QVLFileManager> m_real;
};
