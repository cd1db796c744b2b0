#include "QVLLinuxUserDefaults.h"

#include "QVLJSONSerialization.h"
#include "QVLLinuxArguments.h"

#include <glib.h>

#include <filesystem>
#include <string_view>
#include <system_error>

namespace fs = std::filesystem;

namespace {

/// The name of the program that runs, also when its file has been replaced since.
std::string executableName() {
    constexpr std::string_view kDeletedMark = " (deleted)";
    std::error_code error;
    std::string name = fs::read_symlink("/proc/self/exe", error).filename().string();
    if (name.size() > kDeletedMark.size() && name.ends_with(kDeletedMark)) {
        name.resize(name.size() - kDeletedMark.size());
    }
    return name.empty() ? "Quorvel" : name;
}

} // namespace

std::shared_ptr<QVLLinuxUserDefaults> QVLLinuxUserDefaults::standard(std::shared_ptr<QVLFileManager> fileManager) {
    const fs::path path = fs::path(g_get_user_config_dir()) / executableName() / "QuorvelUserDefaults.json";
    return std::make_shared<QVLLinuxUserDefaults>(std::move(fileManager), path.string(), QVLProcessArguments());
}

QVLLinuxUserDefaults::QVLLinuxUserDefaults(std::shared_ptr<QVLFileManager> fileManager, std::string path,
                                           const std::vector<std::string>& arguments)
    : m_fileManager(std::move(fileManager)),
      m_path(std::move(path)),
      m_arguments(QVLDefaultsFromArguments(arguments)) {}

QVLJSONDictionary QVLLinuxUserDefaults::dictionaryRepresentation() const {
    const std::lock_guard lock(m_mutex);
    if (!m_values) {
        const auto content = readContent();
        m_values = content ? content->values : QVLJSONDictionary();
    }
    return QVLJSONDictionary::merged(*m_values, m_arguments);
}

void QVLLinuxUserDefaults::setObjectForKey(const QVLJSONValue& value, const std::string& key) {
    const std::lock_guard lock(m_mutex);
    auto content = readContent();
    if (!content || value.depth() >= QVLJSONValue::kMaximumDepth) {
        return;
    }
    content->values = content->values.withValueForKey(value, key);
    if (write(*content)) {
        m_values = content->values;
    }
}

/// No value when there is a file that cannot be read at all, which must not be written over.
std::optional<QVLLinuxUserDefaults::Content> QVLLinuxUserDefaults::readContent() const {
    if (!m_fileManager->itemExistsAtPath(m_path)) {
        return Content();
    }
    auto data = m_fileManager->contentsOfFileAtPath(m_path);
    if (!data) {
        return std::nullopt;
    }
    const auto read = QVLJSONSerialization::JSONObjectWithData(*data);
    if (const auto values = read.value.qvl_castToDictionaryValue()) {
        return Content{*values, std::nullopt};
    }
    return Content{{}, std::move(data.value)};
}

bool QVLLinuxUserDefaults::write(const Content& content) const {
    const auto written =
        QVLJSONSerialization::dataWithJSONObject(content.values, QVLJSONSerialization::Writing::Pretty);
    if (!written) {
        return false;
    }
    const std::string directory = fs::path(m_path).parent_path().string();
    if (!m_fileManager->createDirectoryAtPath(directory, /*withIntermediateDirectories=*/true)) {
        return false;
    }
    if (content.foreignData && !m_fileManager->writeAtomically(*content.foreignData, m_path + ".unreadable")) {
        return false;
    }
    return static_cast<bool>(m_fileManager->writeAtomically(written.text, m_path));
}
