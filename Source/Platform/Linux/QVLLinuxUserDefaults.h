#pragma once

#include "QVLFileManager.h"
#include "QVLUserDefaults.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

/// User defaults in one JSON file, under the process's arguments.
///
/// On disk: the file at the given path, `$XDG_CONFIG_HOME/<executable name>/QuorvelUserDefaults.json` for the standard
/// one. It is read on first use, and again before each change so that what another process has changed meanwhile
/// survives; its directory is made when something is first stored. A file that is not a JSON object counts as empty,
/// and its content is kept under the same path with ".unreadable" added before anything is written over it.
class QVLLinuxUserDefaults final : public QVLUserDefaults {
public:
    /// The process's own.
    [[nodiscard]] static std::shared_ptr<QVLLinuxUserDefaults> standard(std::shared_ptr<QVLFileManager> fileManager);

    /// `arguments` are those of a command line, without the program's name.
    QVLLinuxUserDefaults(std::shared_ptr<QVLFileManager> fileManager, std::string path,
                         const std::vector<std::string>& arguments);

    [[nodiscard]] QVLJSONDictionary dictionaryRepresentation() const override;
    void setObjectForKey(const QVLJSONValue& value, const std::string& key) override;

private:
    /// What the file holds.
    struct Content {
        QVLJSONDictionary values;
        /// What stands in a file that is no user defaults.
        std::optional<std::string> foreignData;
    };
    [[nodiscard]] std::optional<Content> readContent() const;
    [[nodiscard]] bool write(const Content& content) const;

    std::shared_ptr<QVLFileManager> m_fileManager;
    const std::string m_path;
    const QVLJSONDictionary m_arguments;

    mutable std::mutex m_mutex;
    mutable std::optional<QVLJSONDictionary> m_values;
};
