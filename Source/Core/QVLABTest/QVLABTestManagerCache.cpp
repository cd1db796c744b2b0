// The manager's results on disk.

#include "QVLABTestManager.h"

#include "QVLAccount.h"
#include "QVLJSONStore.h"
#include "QVLLogMacros.h"
#include "QVLPlatform.h"

#include <vector>

std::string QVLABTestManager::directoryPath() const {
    if (m_account->accountDirectory().empty()) {
        return {};
    }
    const auto self = shared_from_this();
    std::string path = m_account->accountDirectory() + "/" + kQVLABTestDirectory;
    QVLFileManager& fileManager = *m_platform->fileManager;
    const QVLFileManager::ItemKind kind = fileManager.itemKindAtPath(path);
    if (kind == QVLFileManager::ItemKind::Directory) {
        return path;
    }
    if (kind == QVLFileManager::ItemKind::File) {
        if (const QVLOutcome removed = fileManager.removeItemAtPath(path); !removed) {
            QVL_LOG_ERROR(this, "ABTest: removeItemAtPath: %@ returned error: %@", path, removed.error);
        }
    }
    if (const QVLOutcome made = fileManager.createDirectoryAtPath(path, /*withIntermediateDirectories=*/true); !made) {
        QVL_LOG_ERROR(this, "ABTest: createDirectoryAtPath: %@ returned error: %@", path, made.error);
    }
    return path;
}

std::string QVLABTestManager::cacheFilePath() const {
    const std::string directory = directoryPath();
    // A manager without a directory keeps no file, rather than one at the file system's root.
    return directory.empty() ? std::string() : directory + "/" + kQVLABTestCacheFile;
}

void QVLABTestManager::saveTestResults() const {
    std::vector<QVLJSONDictionary::Entry> entries;
    entries.reserve(m_testResults.size());
    for (const auto& [guid, result] : m_testResults) {
        // Under the result's own guid, which a file made elsewhere may have kept under another key.
        entries.push_back({result->testGuid(), result->toJSON()});
    }
    QVLJSONStore::sharedStore()->saveJSONObject(QVLJSONDictionary(std::move(entries)), cacheFilePath());
}

void QVLABTestManager::readTestResults() {
    const auto self = shared_from_this();
    TestResults results;
    const QVLJSONValue document = QVLJSONStore::sharedStore()->loadJSONFromFileAtPath(cacheFilePath());
    for (const auto& [key, value] : document.dictionaryOrEmpty()) {
        if (auto result = QVLABTestResult::resultWithJSON(value)) {
            results.emplace(key.text(), std::move(result));
        }
    }
    m_testResults = std::move(results);
}
