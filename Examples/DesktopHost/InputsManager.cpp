#include "InputsManager.h"

#include <QDateTime>
#include <QFileInfo>
#include <QLocale>
#include <QStandardPaths>
#include <QStorageInfo>

#include <chrono>

namespace {

constexpr int kExportLimitPerMonth = 5;

QVLTimeInterval timeOf(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::steady_clock::now() - start;
}

/// When the application's directory was made.
QVLDate firstRun() {
    const QFileInfo directory(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation));
    // Not every file system knows when something was made.
    const QDateTime made = directory.birthTime().isValid() ? directory.birthTime() : directory.lastModified();
    return QVLDate(std::chrono::milliseconds(made.toMSecsSinceEpoch()));
}

QStorageInfo storage() {
    return QStorageInfo(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation));
}

} // namespace

InputsManager::InputsManager(std::shared_ptr<QVLQuorvel> engine, const Notes& notes)
    : m_engine(std::move(engine)), m_notes(notes) {}

std::map<std::string, InputsManager::Source> InputsManager::sources() const {
    return {
        {"appVersion", [] { return "4.4.2"; }},
        {"appPlatform", [] { return "linux"; }},
        {"appLocale", [] { return QLocale().name().toStdString(); }},
        {"userId", [] { return qgetenv("USER").toStdString(); }},
        {"accountCreatedAt", [] { return QVLQuorvel::dateFormatter().stringFromDate(firstRun()); }},
        {"plan", [this] { return m_notes.plan; }},
        {"isManagedAccount", [] { return false; }},
        {"documentCount", [this] { return m_notes.texts.size(); }},
        {"exportsThisMonth", [this] { return m_notes.exportsThisMonth; }},
        {"exportLimitPerMonth", [] { return kExportLimitPerMonth; }},
        {"storageUsedBytes", [] { return storage().bytesTotal() - storage().bytesAvailable(); }},
        {"storageLimitBytes", [] { return storage().bytesTotal(); }},
        {"syncErrorCount", [] { return 0; }},
        {"isOffline", [] { return false; }},
        {"isPresenting", [this] { return m_notes.isPresenting; }},
    };
}

void InputsManager::updateInputsNow() {
    std::vector<QVLJSONDictionary::Entry> inputs;
    m_totalTime = timeOf([&] {
        for (const auto& [key, source] : sources()) {
            m_times[key] = timeOf([&, &name = key, &make = source] { inputs.push_back({name, make()}); });
        }
    });
    m_engine->setInputs(QVLJSONDictionary(std::move(inputs)));
}

double InputsManager::generationTimeForInput(const std::string& key) const {
    const auto found = m_times.find(key);
    return found == m_times.end() ? 0 : found->second.count();
}
