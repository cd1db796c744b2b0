#pragma once

#include "QVLUserDefaults.h"

#include <mutex>
#include <string>

/// User defaults that nobody else sees and nothing keeps.
class MemoryUserDefaults final : public QVLUserDefaults {
public:
    /// What a command line would have brought; stands above the stored values.
    void setArguments(QVLJSONDictionary arguments) {
        const std::lock_guard lock(m_mutex);
        m_arguments = std::move(arguments);
    }

    [[nodiscard]] QVLJSONDictionary dictionaryRepresentation() const override {
        const std::lock_guard lock(m_mutex);
        return QVLJSONDictionary::merged(m_values, m_arguments);
    }

    void setObjectForKey(const QVLJSONValue& value, const std::string& key) override {
        const std::lock_guard lock(m_mutex);
        m_values = m_values.withValueForKey(value, key);
    }

private:
    mutable std::mutex m_mutex;
    QVLJSONDictionary m_values;
    QVLJSONDictionary m_arguments;
};
