#include "QVLJSONSerialization.h"
#include "QVLLogMacros.h"
#include "QVLQuorvel.h"

// The engine's directory and its two files.

namespace {

constexpr const char* kContentSubdirectory = "/quorvel";
constexpr const char* kUnreadableSuffix = ".unreadable";

} // namespace

std::string QVLQuorvel::quorvelDirectoryPath() const {
    if (m_contentDirectory.empty()) {
        // No files at all, rather than files at the file system's root.
        return {};
    }
    QVLFileManager& fileManager = *m_platform->fileManager;
    std::string path = m_contentDirectory + kContentSubdirectory;
    if (fileManager.itemKindAtPath(path) == QVLFileManager::ItemKind::File) {
        if (const QVLOutcome removed = fileManager.removeItemAtPath(path); !removed) {
            QVL_LOG_ERROR(this, "removeItemAtPath: %@ returned error: %@", path, removed.error);
        }
    }
    if (!fileManager.itemExistsAtPath(path)) {
        const QVLOutcome created = fileManager.createDirectoryAtPath(path, /*withIntermediateDirectories=*/true);
        if (!created) {
            QVL_LOG_ERROR(this, "createDirectoryAtPath: %@ returned error: %@", path, created.error);
        }
    }
    return path;
}

std::string QVLQuorvel::pathInQuorvelDirectory(const char* name) const {
    const std::string directory = quorvelDirectoryPath();
    return directory.empty() ? directory : directory + "/" + name;
}

QVLJSONDictionary QVLQuorvel::loadOutputsCache() const {
    return QVLJSONStore::sharedStore()
        ->loadJSONObjectFromFileAtPath(pathInQuorvelDirectory(kQVLOutputsCacheFile))
        .dictionaryOrEmpty();
}

void QVLQuorvel::saveOutputsCache(const QVLJSONDictionary& outputs) const {
    // The next run makes it again, so no run waits for the disk.
    QVLJSONStore::sharedStore()->saveJSONObject(outputs, pathInQuorvelDirectory(kQVLOutputsCacheFile),
                                                QVLDurability::Fleeting);
}

std::shared_ptr<QVLJournals> QVLQuorvel::loadJournals() const {
    const std::string path = pathInQuorvelDirectory(kQVLJournalsFile);
    const QVLJSONDictionary stored =
        QVLJSONStore::sharedStore()->loadJSONObjectFromFileAtPath(path).dictionaryOrEmpty();
    try {
        return QVLJournals::initWithQVLJSONObject(stored);
    } catch (const std::logic_error& malformed) {
        // The journals refuse a file that is malformed inside. A host must be able to start all the same, and what the
        // file holds must not be lost to the next save.
        QVL_LOG_ERROR(this, "Could not load journals at path: '%@', error: %@", path, malformed.what());
        QVLJSONStore::sharedStore()->saveJSONObject(stored, path + kUnreadableSuffix);
        return QVLJournals::initWithQVLJSONObject(QVLJSONDictionary());
    }
}

void QVLQuorvel::saveJournals() const {
    const QVLJSONStore& store = *QVLJSONStore::sharedStore();
    const std::string path = pathInQuorvelDirectory(kQVLJournalsFile);
    if (const QVLJSONWriteResult written = m_journals->textToSave()) {
        store.saveJSONText(written.text, path);
    } else {
        // Says what cannot be written.
        store.saveJSONObject(m_journals->qvl_JSONObject(), path);
    }
}
