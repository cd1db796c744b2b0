#include "QVLJSONStore.h"

#include "QVLJSONSerialization.h"
#include "QVLLogMacros.h"

namespace {

std::shared_ptr<QVLFileManager> fileManager() {
    return QVLPlatform::current()->fileManager;
}

} // namespace

const std::shared_ptr<QVLJSONStore>& QVLJSONStore::sharedStore() {
    // Never destroyed: an engine's queue may save during the process's exit.
    static const auto* const store = new std::shared_ptr<QVLJSONStore>(std::make_shared<QVLJSONStore>());
    return *store;
}

QVLJSONValue QVLJSONStore::loadJSONFromFileAtPath(const std::string& path) const {
    switch (fileManager()->itemKindAtPath(path)) {
    case QVLFileManager::ItemKind::Missing:
        return {};
    case QVLFileManager::ItemKind::Directory:
        QVL_LOG_ERROR(this, "Found directory instead of a JSON file at path: '%@'.", path);
        return {};
    case QVLFileManager::ItemKind::File:
        break;
    }
    const QVLResult<std::string> data = fileManager()->contentsOfFileAtPath(path);
    if (!data) {
        QVL_LOG_ERROR(this, "Could not read file at path: '%@'.", path);
        return {};
    }
    QVLJSONReadResult document = QVLJSONSerialization::JSONObjectWithData(*data);
    if (!document) {
        QVL_LOG_ERROR(this, "Could not read JSON data at path: '%@', error: %@.", path, document.error);
        return {};
    }
    return std::move(document.value);
}

QVLJSONValue QVLJSONStore::loadJSONObjectFromFileAtPath(const std::string& path) const {
    QVLJSONValue document = loadJSONFromFileAtPath(path);
    if (document.isDictionary()) {
        return document;
    }
    deleteItemAtPathIfExists(path);
    return {};
}

void QVLJSONStore::saveJSONObject(const QVLJSONValue& object, const std::string& toPath,
                                  QVLDurability durability) const {
    const QVLJSONWriteResult data = QVLJSONSerialization::dataWithJSONObject(object);
    if (!data) {
        // Writing finds what is not valid, so that a good object is walked through only once.
        if (QVLJSONSerialization::isValidJSONObject(object)) {
            QVL_LOG_ERROR(this, "Could not serialize data: %@, error: %@", object, data.error);
        } else {
            QVL_LOG_ERROR(this, "Invalid JSON object: %@", object);
        }
        return;
    }
    saveJSONText(data.text, toPath, durability);
}

void QVLJSONStore::saveJSONText(std::string_view text, const std::string& toPath, QVLDurability durability) const {
    if (fileManager()->itemKindAtPath(toPath) == QVLFileManager::ItemKind::Directory) {
        QVL_LOG_ERROR(this, "Found directory instead of a JSON file at path: '%@'.", toPath);
        deleteItemAtPathIfExists(toPath);
    }
    if (const QVLOutcome written = fileManager()->writeAtomically(text, toPath, durability); !written) {
        QVL_LOG_ERROR(this, "Could not save file: '%@', error: %@", toPath, written.error);
    }
}

void QVLJSONStore::deleteItemAtPathIfExists(const std::string& path) const {
    if (!fileManager()->itemExistsAtPath(path)) {
        return;
    }
    QVL_LOG_ERROR(this, "Deleting item at path: '%@'", path);
    if (const QVLOutcome removed = fileManager()->removeItemAtPath(path); !removed) {
        // The error stands where the label says path; hosts' log filters know the line like this.
        QVL_LOG_ERROR(this, "Could not delete item at path: '%@'", removed.error);
    }
}
